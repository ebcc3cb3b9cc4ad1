#pragma once
// The process's command line and typed access to its values. Values are read, never validated:
// a number that doesn't parse reads as 0. Anything that isn't an option is passed on to the
// kernel; an argument for the kernel that begins with a dash goes behind "--".
//
// Thread: main thread; the accessors are valid after QCommandLineParser::process.

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

#include <string>
#include <vector>

class ServerCommandLineParser : public QCommandLineParser {
public:
    ServerCommandLineParser();

    // 0 when absent or unreadable (the system then picks a port). The caller passes it on as a
    // 16-bit port, so larger values keep their low 16 bits.
    int port() const;
    bool use_tls() const;
    // Empty when not given: every client is then admitted.
    QString connection_id() const;
    bool debug_json() const;
    // Seconds; 0 when absent or unreadable. Below 1 the server never ends by itself.
    int timeout_after_disconnect() const;
    // The browser origins admitted besides clients that send none; empty when not given.
    QStringList allowed_origins() const;
    // Bytes; 0 when absent or unreadable (the server's default then applies).
    qint64 max_client_backlog() const;
    // "tarvo_server", then the positional arguments in order, as UTF-8.
    std::vector<std::string> kernel_arguments() const;
};
