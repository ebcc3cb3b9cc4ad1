// Entry point: builds the long-lived objects in a fixed order, runs the event loop, and lets them
// be destroyed in reverse. The router must outlive the server (connections call it) and the
// worker must outlive the router (the worker thread calls it until the router joins it).

#include "routing/TarvoMessageRouter.h"
#include "routing/TarvoWorker.h"
#include "startup/OpenGLCheck.h"
#include "startup/ServerCommandLineParser.h"
#include "transport/TarvoServer.h"

#include <QCoreApplication>
#include <QHostAddress>

#include <clocale>
#include <string>
#include <utility>
#include <vector>

int main(int argc, char* argv[]) {
    // The user's locale for everything but numbers: floating-point text always uses a point.
    std::setlocale(LC_ALL, "");
    std::setlocale(LC_NUMERIC, "C");

    run_opengl_check();

    // Qt's own event dispatcher rather than GLib's: nothing in this process needs a GLib main
    // loop, and every request passes the main loop several times, which Qt's poll loop does for
    // less. Whoever sets the variable still decides.
    if (!qEnvironmentVariableIsSet("QT_NO_GLIB"))
        qputenv("QT_NO_GLIB", "1");

    QCoreApplication app(argc, argv);

    ServerCommandLineParser parser;
    parser.process(app);

    std::vector<std::string> kernel_args = parser.kernel_arguments();
    TarvoWorker worker(std::move(kernel_args));
    // Starts the worker thread, which initialises the kernel while the rest starts up.
    TarvoMessageRouter router(&worker, false);

    QHostAddress address(QHostAddress::LocalHost);

    const bool debug_json = parser.debug_json();
    const QString connection_id = parser.connection_id();
    const bool use_tls = parser.use_tls();
    const int port = parser.port();

    TarvoServer server(&router, address, static_cast<quint16>(port), use_tls, connection_id,
                       debug_json);
    server.set_timeout_after_disconnect(parser.timeout_after_disconnect());
    server.set_allowed_origins(parser.allowed_origins());
    server.set_max_backlog(parser.max_client_backlog());
    QObject::connect(&server, &TarvoServer::closed, &app, &QCoreApplication::quit);

    return app.exec();
}
