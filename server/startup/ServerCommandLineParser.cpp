#include "ServerCommandLineParser.h"

#include <QCommandLineOption>
#include <QCoreApplication>
#include <QStringList>

namespace {

QString tr_(const char* text) {
    return QCoreApplication::translate("ServerCommandLineParser", text);
}

int read_int(const QString& text) {
    // An empty value reads as 0, and so does one that isn't a base-10 number.
    return (text.isEmpty() ? QStringLiteral("0") : text).toInt(nullptr, 10);
}

} // namespace

ServerCommandLineParser::ServerCommandLineParser() {
    // "-port 8000" means "--port 8000"; a single dash never starts a cluster of letters.
    setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    setApplicationDescription(tr_("Run an instance of the Tarvo server on the specified port"));

    addOption(
        QCommandLineOption(QStringList{QStringLiteral("port")},
                           tr_("The port the server will listen to (default is a random port)."),
                           QStringLiteral("port")));
    addOption(QCommandLineOption(QStringList{QStringLiteral("tls")},
                                 tr_("Use TLS for a secure connection.")));
    // Accepted for symmetry and never read: plain WebSocket is the default anyway, and a command
    // line with both flags gets TLS.
    addOption(QCommandLineOption(QStringList{QStringLiteral("notls")},
                                 tr_("Do not use TLS for a secure connection.")));
    addOption(QCommandLineOption(
        QStringList{QStringLiteral("connection-id")},
        tr_("The connection id used to determine which client connections to accept."),
        QStringLiteral("connection-id")));
    addOption(QCommandLineOption(QStringList{QStringLiteral("debug-json")},
                                 tr_("For debugging, print the JSON strings.")));
    addOption(QCommandLineOption(QStringList{QStringLiteral("timeout-after-disconnect")},
                                 tr_("The timeout, in seconds, used to determine when to exit the "
                                     "server after the last disconnection."),
                                 QStringLiteral("timeout-after-disconnect")));
    addOption(QCommandLineOption(
        QStringList{QStringLiteral("allow-origin")},
        tr_("A browser origin (scheme://host:port) that may connect; repeatable. Clients that "
            "send no Origin header are always admitted."),
        QStringLiteral("origin")));
    addOption(QCommandLineOption(
        QStringList{QStringLiteral("max-client-backlog")},
        tr_("Unsent output, in MiB, past which a client that doesn't read is disconnected "
            "(default 256)."),
        QStringLiteral("mib")));
    addHelpOption();
}

int ServerCommandLineParser::port() const {
    return read_int(value(QStringLiteral("port")));
}

bool ServerCommandLineParser::use_tls() const {
    return isSet(QStringLiteral("tls"));
}

QString ServerCommandLineParser::connection_id() const {
    return value(QStringLiteral("connection-id"));
}

bool ServerCommandLineParser::debug_json() const {
    return isSet(QStringLiteral("debug-json"));
}

int ServerCommandLineParser::timeout_after_disconnect() const {
    return read_int(value(QStringLiteral("timeout-after-disconnect")));
}

QStringList ServerCommandLineParser::allowed_origins() const {
    return values(QStringLiteral("allow-origin"));
}

qint64 ServerCommandLineParser::max_client_backlog() const {
    return qint64{read_int(value(QStringLiteral("max-client-backlog")))} * 1024 * 1024;
}

std::vector<std::string> ServerCommandLineParser::kernel_arguments() const {
    // The kernel always sees the same program name, whatever the executable is called.
    std::vector<std::string> arguments{"tarvo_server"};
    for (const QString& argument : positionalArguments())
        arguments.push_back(argument.toUtf8().toStdString());
    return arguments;
}
