// Geometry commands against absurd numbers and results beyond the size of a model, and the
// errors of commands that are easy to get wrong.
#include "GeometryTestSupport.h"

using namespace geometry_test;
using namespace TarvoInterface;

namespace {

using GeometryLimitsTest = GeometryTest;

// A refused command says why in one error line, and changes nothing: no shape, no id, no event.
TEST_F(GeometryLimitsTest, RefusedCommandsLeaveTheModelAsItWas) {
    run("create box 10");
    run("create box 1 2 3 at 20 0 0");
    const struct {
        const char* line;
        const char* error;
    } cases[] = {
        {"create sphere radius 1e300 inner radius 10", "'1e300' after 'radius' is beyond the size"},
        {"create sphere radius 1e308", "is beyond the size of a model"},
        {"create box 1e8", "'1e8' after 'box' is beyond the size"},
        {"create cylinder radius 1 height 2 at 0 2e7 0", "'2e7' after '0' is beyond"},
        {"rotate volume 1 angle 1e308 about x", "angle '1e308' is out of range"},
        {"rotate volume 1 angle 10 about axis 1e300 1 0", "is beyond the size of a model"},
        {"move volume 1 to 1.79e308 720 1e15", "'1.79e308' after 'to' is beyond"},
        {"move volume 1 by inf 0 0", "expected a number, found 'inf'"},
        {"webcut volume 1 plane x offset nan", "expected a number, found 'nan'"},
        // Each number is within the limit, the result is not.
        {"move volume 1 by 1e7 0 0", "beyond the size of a model"},
        {"scale volume 1 factor 1e7", "beyond the size of a model"},
        {"copy volume 1 move 0 0 -1e7", "beyond the size of a model"},
        // Mistakes rather than absurd numbers.
        {"create box -1", ""},
        {"create cylinder radius 0 height 2", ""},
        {"create sphere radius 2 inner radius 3", ""},
        {"subtract volume 1 from volume 1", ""},
        {"subtract volume 99 from volume 1", ""},
        {"unite volume 1", ""},
        {"webcut volume 1 plane x offset 100", ""},
        {"create curve vertex 1 1", ""},
        {"delete surface 1", ""},
        {"move volume 1 by 1 2", ""},
        {"volume 1 name 'a b'", ""},
        {"color volume 1 nosuchcolour", ""},
        {"import step 'does-not-exist.step'", ""},
    };
    const std::string before = fingerprint();
    const auto box = get_bounding_box("volume", 1);
    for (const auto& c : cases) {
        recorder.events.clear();
        const std::string error = rejected(c.line);
        EXPECT_NE(error.find(c.error), std::string::npos) << error;
        EXPECT_EQ(fingerprint(), before) << c.line;
        EXPECT_EQ(get_bounding_box("volume", 1), box) << c.line;
        for (const std::string& e : recorder.events)
            EXPECT_TRUE(e.find("created") == std::string::npos &&
                        e.find("deleted") == std::string::npos)
                << c.line << ": " << e;
    }
}

TEST_F(GeometryLimitsTest, AnglesAreTakenModuloAFullTurn) {
    run("create box 2 4 6");
    run("rotate volume 1 angle 450 about z"); // a quarter turn: x and y extents swap
    auto box = get_bounding_box("volume", 1);
    EXPECT_NEAR(box[2], 4, 1e-9);
    EXPECT_NEAR(box[5], 2, 1e-9);
    run("rotate volume 1 angle -999990 about x"); // -999990 = -2778 * 360 + 90
    box = get_bounding_box("volume", 1);
    EXPECT_NEAR(box[5], 6, 1e-9);
    EXPECT_NEAR(box[8], 2, 1e-9);
}

TEST_F(GeometryLimitsTest, ErrorsSayWhatTheCommandWanted) {
    run("create box 10");
    output->take();
    const struct {
        const char* line;
        const char* error;
    } cases[] = {
        {"create box 10 20",
         "create box takes one size (a cube) or three (<dx> <dy> <dz>), not two"},
        {"create box width 10 depth", "expected a number at the end of the line after 'depth'"},
        {"scale volume 1 2", "expected 'factor <f>'"},
    };
    for (const auto& c : cases) {
        EXPECT_FALSE(cmd(c.line)) << c.line;
        const auto lines = output->take();
        // One line: the error, and no warning about a "volume 2" that was never meant.
        ASSERT_EQ(lines.size(), 1u) << c.line;
        EXPECT_EQ(lines[0].text, std::string("ERROR: ") + c.error);
    }
    run("create box width 1 depth 2 height 3");
    EXPECT_NEAR(get_volume_area(2), 6, 1e-9);
    // Ids that do not exist are still reported, once the line has parsed.
    run("scale volume 1 7 factor 2");
    EXPECT_TRUE(output->has_line("WARNING: volume 7 not found, skipped"));
    run("delete all");
    EXPECT_TRUE(get_entities("body").empty());
}

// Interrupts the command once its progress reaches `trigger` percent.
class InterruptAt : public TarvoProgressHandler {
public:
    explicit InterruptAt(double trigger) : trigger(trigger) {}
    void start(const char*, const char*, bool) override {}
    void percent(double value) override {
        if (!fired && value >= trigger) {
            fired = true;
            set_tarvo_interrupt(true);
        }
    }
    void end() override {}
    bool fired = false;

private:
    double trigger;
};

TEST_F(GeometryLimitsTest, InterruptStopsTheSewingOfAHeal) {
    run("import iges '" + cad_file("model1.igs") + "'");
    const std::string before = fingerprint();
    auto inside = std::make_shared<InterruptAt>(1);
    set_progress_handler(inside);
    output->take();
    EXPECT_FALSE(cmd("heal all"));
    set_progress_handler({});
    EXPECT_TRUE(inside->fired);
    EXPECT_EQ(output->starting("ERROR: "), std::vector<std::string>{"ERROR: Interrupted"});
    EXPECT_EQ(fingerprint(), before);
}

} // namespace
