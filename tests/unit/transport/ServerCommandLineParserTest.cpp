// The command line: option spellings, read-time defaults, and what reaches the kernel.

#include "startup/ServerCommandLineParser.h"

#include <gtest/gtest.h>

namespace {

struct Parsed {
    bool ok = false;
    int port = -1;
    bool tls = false;
    QString connection_id;
    bool debug_json = false;
    int timeout = -1;
    QStringList origins;
    qint64 backlog = -1;
    std::vector<std::string> kernel;
};

Parsed parse(QStringList arguments) {
    arguments.prepend("/opt/somewhere/tarvo_server_renamed");
    ServerCommandLineParser parser;
    Parsed parsed;
    parsed.ok = parser.parse(arguments);
    if (parsed.ok) {
        parsed.port = parser.port();
        parsed.tls = parser.use_tls();
        parsed.connection_id = parser.connection_id();
        parsed.debug_json = parser.debug_json();
        parsed.timeout = parser.timeout_after_disconnect();
        parsed.origins = parser.allowed_origins();
        parsed.backlog = parser.max_client_backlog();
        parsed.kernel = parser.kernel_arguments();
    }
    return parsed;
}

using Strings = std::vector<std::string>;

TEST(ServerCommandLineParser, NothingGivenMeansRandomPortPlainNoTimeout) {
    const Parsed p = parse({});
    ASSERT_TRUE(p.ok);
    EXPECT_EQ(p.port, 0);
    EXPECT_FALSE(p.tls);
    EXPECT_TRUE(p.connection_id.isEmpty());
    EXPECT_FALSE(p.debug_json);
    EXPECT_EQ(p.timeout, 0);
    EXPECT_TRUE(p.origins.isEmpty());
    EXPECT_EQ(p.backlog, 0) << "0: the server's default";
    EXPECT_EQ(p.kernel, Strings{"tarvo_server"});
}

TEST(ServerCommandLineParser, SingleAndDoubleDashSpellTheSameLongOption) {
    const Parsed p = parse({"-port", "8000", "--connection-id=xyz", "-debug-json", "-tls",
                            "--timeout-after-disconnect", "7", "-allow-origin", "http://a:1",
                            "--allow-origin=http://b:2", "--max-client-backlog", "3"});
    ASSERT_TRUE(p.ok);
    EXPECT_EQ(p.port, 8000);
    EXPECT_EQ(p.connection_id, "xyz");
    EXPECT_TRUE(p.debug_json);
    EXPECT_TRUE(p.tls);
    EXPECT_EQ(p.timeout, 7);
    EXPECT_EQ(p.origins, (QStringList{"http://a:1", "http://b:2"}));
    EXPECT_EQ(p.backlog, 3 * 1024 * 1024);
    EXPECT_EQ(p.kernel, Strings{"tarvo_server"});
}

TEST(ServerCommandLineParser, OddValuesAreReadNotRefused) {
    EXPECT_EQ(parse({"--port", "abc"}).port, 0);
    EXPECT_EQ(parse({"--port", "0x10"}).port, 0);
    EXPECT_EQ(parse({"--timeout-after-disconnect", "-5"}).timeout, -5);
    EXPECT_TRUE(parse({"--notls", "--tls"}).tls) << "--tls wins";
    EXPECT_TRUE(parse({"--connection-id", ""}).connection_id.isEmpty());
}

TEST(ServerCommandLineParser, PositionalArgumentsGoToTheKernelBehindAFixedName) {
    EXPECT_EQ(parse({"model.sat", "--port", "1", "x=1"}).kernel,
              (Strings{"tarvo_server", "model.sat", "x=1"}));
    EXPECT_EQ(parse({"--", "-driver", "x"}).kernel, (Strings{"tarvo_server", "-driver", "x"}));
    EXPECT_EQ(parse({"--", "\xC3\xA9t\xC3\xA9"}).kernel,
              (Strings{"tarvo_server", "\xC3\xA9t\xC3\xA9"}));
}

TEST(ServerCommandLineParser, UnknownOptionsAndMissingValuesAreErrors) {
    EXPECT_FALSE(parse({"-driver", "x"}).ok);
    EXPECT_FALSE(parse({"--port"}).ok);
    EXPECT_FALSE(parse({"-v"}).ok); // no version option
}

} // namespace
