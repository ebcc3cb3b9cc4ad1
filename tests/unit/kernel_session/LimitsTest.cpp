// Limits of the command language and the session against hostile or mistaken input: deep and
// non-finite expressions, growing strings and stores, files that are not journals, and commands
// that are planned but not built.

#include "SessionTestSupport.h"

#include "core/Runner.h"
#include "core/Valfold.h"

#include <fstream>

using namespace tarvo::kernel;
using session_test::eval;
using session_test::eval_error;
using session_test::SessionTest;

namespace {

std::string repeat(const std::string& text, int times) {
    std::string out;
    for (int i = 0; i < times; ++i) {
        out += text;
    }
    return out;
}

TEST(ValfoldLimits, DeepOrNonFiniteExpressionsAreRefusedNotEvaluated) {
    const struct {
        std::string text;
        std::string error;
    } cases[] = {
        {repeat("(", 20000) + "1" + repeat(")", 20000), "nested more than 200"},
        {repeat("-", 29000) + "1", "nested more than 200"},
        {"1" + repeat("^1", 58000), "nested more than 200"},
        {repeat("sqrt(", 300) + "1" + repeat(")", 300), "nested more than 200"},
        {"1e308 * 10", "not a finite number"},
        {"1e308 + 1e308", "not a finite number"},
        {"-1e308 - 1e308", "not a finite number"},
        {"1 / 1e-308 / 1e-308", "not a finite number"},
        {"1e400", "bad number"},
    };
    for (const auto& c : cases) {
        Valfold v;
        const std::string error = eval_error(v, c.text);
        EXPECT_NE(error.find(c.error), std::string::npos) << error;
        EXPECT_LT(error.size(), 200u) << "the error quotes the whole expression";
    }
    // Nesting below the limit still evaluates.
    Valfold v;
    EXPECT_EQ(eval(v, repeat("(", 190) + "-2" + repeat(")", 190) + "^2"), 4);
}

TEST(ValfoldLimits, StringsAndVariablesAreBounded) {
    Valfold v;
    ValfoldValue value;
    bool defined = false;
    std::string error_text;
    ASSERT_TRUE(v.evaluate("s = 'abcdefgh'", value, defined, error_text));
    int doublings = 0;
    while (v.evaluate("s = s + s", value, defined, error_text)) {
        ASSERT_LT(++doublings, 30);
    }
    EXPECT_NE(error_text.find("at most 1048576 characters"), std::string::npos) << error_text;
    ASSERT_TRUE(v.get("s", value));
    EXPECT_EQ(value.text.size(), kMaxValfoldString); // 8 * 2^17: the last doubling that fitted

    // Many variables of the largest size: the store stops at its total.
    for (int i = 0; v.evaluate("t" + std::to_string(i) + " = s", value, defined, error_text);) {
        ASSERT_LT(++i, 100);
    }
    EXPECT_NE(error_text.find("characters of text"), std::string::npos) << error_text;
    v.clear();
    size_t made = 0;
    while (v.evaluate("n" + std::to_string(made) + " = 1", value, defined, error_text)) {
        ASSERT_LE(++made, kMaxValfoldVariables);
    }
    EXPECT_EQ(made, kMaxValfoldVariables);
    EXPECT_NE(error_text.find("at most 10000 variables"), std::string::npos) << error_text;
}

class LimitsTest : public SessionTest {
protected:
    void write_file(const std::string& name, const std::string& text) {
        std::ofstream out(scratch / name, std::ios::binary);
        out << text;
    }
};

TEST_F(LimitsTest, DeepExpressionsFailInEveryWayALineArrives) {
    const std::string line = "add volume #{" + repeat("(", 20000) + "1" + repeat(")", 20000) + "}";
    write_file("deep.jou", line + "\n");
    TarvoInterface::set_playback_paused_on_error(false);
    EXPECT_FALSE(TarvoInterface::cmd(line.c_str()));
    EXPECT_FALSE(TarvoInterface::silent_cmd(line.c_str()));
    EXPECT_FALSE(TarvoInterface::cmd("playback 'deep.jou'"));
    EXPECT_EQ(TarvoInterface::get_error_count(), 3);
    for (const std::string& error : error_lines()) {
        EXPECT_NE(error.find("nested more than 200"), std::string::npos) << error.substr(0, 200);
    }
    EXPECT_TRUE(model.contents.volumes.empty());
}

TEST_F(LimitsTest, HistoryKeepsOnlyTheNewestLines) {
    const size_t extra = 5;
    for (size_t i = 1; i <= SessionState::kMaxHistoryLines + extra; ++i) {
        ASSERT_TRUE(TarvoInterface::cmd(("#{x = " + std::to_string(i) + "}").c_str()));
    }
    EXPECT_EQ(TarvoInterface::get_command_from_history(1),
              "#{x = " + std::to_string(extra + 1) + "}");
    const int last = static_cast<int>(SessionState::kMaxHistoryLines);
    EXPECT_EQ(TarvoInterface::get_command_from_history(last),
              "#{x = " + std::to_string(last + extra) + "}");
    EXPECT_EQ(TarvoInterface::get_command_from_history(last + 1), "");
    EXPECT_EQ(TarvoInterface::get_previous_command_from_history(),
              "#{x = " + std::to_string(last + extra) + "}");
}

TEST_F(LimitsTest, FilesThatAreNotJournalsAreRefusedWithoutQuotingThem) {
    write_file("hostname", "secrethost\n");
    write_file("binary.jou", std::string("add volume 1\nadd\0volume 2\n", 26));
    write_file("long.jou", "add volume 1\n" + std::string(70000, 'x') + "\n");
    write_file("blank_then_word.jou", "\n# note\nsecrethost volume 1\n");
    std::filesystem::create_directory(scratch / "dir.jou");
    TarvoInterface::cmd("echo on");
    output->take();
    const struct {
        std::string file, error;
    } cases[] = {
        {"hostname", "'hostname' is not a journal: line 1 does not start with a command"},
        {"blank_then_word.jou", "line 3 does not start with a command"},
        {"binary.jou", "line 2 holds binary data"},
        {"long.jou", "line 2 is longer than 65536 characters"},
        {"dir.jou", "'dir.jou' is not a journal: it is not a regular file"},
        {"/dev/zero", "'/dev/zero' is not a journal: it is not a regular file"},
        {"missing.jou", "Cannot open journal 'missing.jou'"},
    };
    for (const auto& c : cases) {
        const std::string error = rejected("playback '" + c.file + "'");
        EXPECT_NE(error.find(c.error), std::string::npos) << error;
        // Nothing of the file reaches any channel, not even the echo.
        EXPECT_EQ(output->all().find("secrethost"), std::string::npos) << c.file;
    }
    EXPECT_TRUE(model.contents.volumes.empty());
}

// Interrupts every command as it starts (after the runner cleared the flag).
class InterruptOnStart : public TarvoInterface::TIObserve {
public:
    void notify_command_start() override { TarvoInterface::set_tarvo_interrupt(true); }
};

TEST_F(LimitsTest, ReadingAJournalHonoursTheInterrupt) {
    write_file("long.jou", repeat("#{x = 1}\n", 5000));
    InterruptOnStart interrupter;
    interrupter.register_observer();
    const std::string error = rejected("playback 'long.jou'");
    interrupter.unregister_observer();
    EXPECT_EQ(error, "ERROR: Interrupted: reading 'long.jou' stopped at line 1024");
}

} // namespace
