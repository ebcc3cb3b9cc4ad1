// `list <list>` and `list model` on real geometry, their dispatch beside `list variables`, and the
// agreement between the command reference and the registry: a section marked "Not built yet."
// names no registered command, and every other section names one.

#include "core/CommandRegistry.h"
#include "core/Runner.h"
#include "tarvo/TarvoInterface.h"
#include "tarvo_util/TarvoMessage.h"

#include "../support/KernelTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

// One entity as printed: the header line ("Volume 1") and its "  Label: value" lines.
struct Listing {
    std::string header;
    std::map<std::string, std::string> fields;

    std::string operator[](const std::string& label) const {
        auto it = fields.find(label);
        return it == fields.end() ? "<missing " + label + ">" : it->second;
    }
};

class ListCommandTest : public test_support::KernelTest {
protected:
    ListCommandTest() : KernelTest("list") {}

    // Runs a listing command that must succeed without errors and parses what it printed.
    std::vector<Listing> list(const std::string& line) {
        output->clear();
        const int errors = TarvoInterface::get_error_count();
        EXPECT_TRUE(TarvoInterface::cmd(line.c_str())) << line << "\n" << output->all();
        EXPECT_EQ(TarvoInterface::get_error_count(), errors) << output->all();
        std::vector<Listing> listings;
        for (const auto& [is_error, text] : output->take()) {
            if (is_error || text.empty() || text.starts_with("WARNING: ")) {
                continue;
            }
            if (!text.starts_with("  ")) {
                listings.push_back({text, {}});
                continue;
            }
            const size_t colon = text.find(':');
            if (listings.empty() || colon == std::string::npos) {
                ADD_FAILURE() << "unexpected line '" << text << "'";
                continue;
            }
            const size_t value = text.find_first_not_of(' ', colon + 1);
            listings.back().fields[text.substr(2, colon - 2)] =
                value == std::string::npos ? "" : text.substr(value);
        }
        return listings;
    }

    Listing list_one(const std::string& line) {
        std::vector<Listing> listings = list(line);
        EXPECT_EQ(listings.size(), 1u) << line;
        return listings.empty() ? Listing{} : listings.front();
    }
};

std::vector<double> numbers_in(const std::string& text) {
    std::vector<double> values;
    std::istringstream in(text);
    double value = 0;
    while (in >> value) {
        values.push_back(value);
    }
    return values;
}

TEST_F(ListCommandTest, EntitiesOfABoxShowTheirMeasuresTopologyAndLook) {
    run("create box 2");
    run("create box 1 2 3 at 5 0 0");
    run("volume 2 name 'brick'");
    run("color volume 2 red");
    run("hide volume 2");
    Listing volume = list_one("list vol 2");
    EXPECT_EQ(volume.header, "Volume 2");
    EXPECT_EQ(volume["Name"], "brick");
    EXPECT_EQ(volume["Body"], "2");
    EXPECT_EQ(volume["Volume"], "6");
    EXPECT_EQ(volume["Bounding box"], "x 4.5 to 5.5, y -1 to 1, z -1.5 to 1.5");
    EXPECT_EQ(volume["Surfaces"], "6 (7 to 12)");
    EXPECT_EQ(volume["Curves"], "12 (13 to 24)");
    EXPECT_EQ(volume["Vertices"], "8 (9 to 16)");
    EXPECT_EQ(volume["Colour"], "1 0 0");
    EXPECT_EQ(volume["Visible"], "no");
    EXPECT_EQ(list_one("list volume 1")["Name"], "none");

    const Listing surface = list_one("list surface 1");
    EXPECT_EQ(surface["Type"], "Plane");
    EXPECT_EQ(surface["Area"], "4");
    EXPECT_EQ(surface["Volumes"], "1 (1)");
    EXPECT_TRUE(surface["Curves"].starts_with("4 (")) << surface["Curves"];

    const Listing curve = list_one("list curve 1");
    EXPECT_EQ(curve["Type"], "Line");
    EXPECT_EQ(curve["Length"], "2");
    EXPECT_TRUE(curve["Surfaces"].starts_with("2 (")) << curve["Surfaces"];
    EXPECT_EQ(curve.fields.count("Radius"), 0u); // only curves with a radius show one

    const Listing vertex = list_one("list vertex 1");
    const std::vector<double> p = numbers_in(vertex["Coordinates"]);
    ASSERT_EQ(p.size(), 3u) << vertex["Coordinates"];
    for (double v : p)
        EXPECT_EQ(std::abs(v), 1.0) << vertex["Coordinates"];
    EXPECT_TRUE(vertex["Curves"].starts_with("3 (")) << vertex["Curves"];

    EXPECT_EQ(list_one("list volume 1")["Mesh"], "not meshed");
    run("volume 1 interval 4");
    run("mesh volume 1");
    EXPECT_EQ(list_one("list volume 1")["Mesh"], "64 HEX8 elements, 125 nodes");
    EXPECT_EQ(list_one("list curve 1")["Scheme"], "equal, 4 intervals (HARD)");
    EXPECT_EQ(list_one("list surface 1")["Mesh"], "16 QUAD4 elements, 25 nodes");
}

TEST_F(ListCommandTest, CurvedEntitiesAndTheDigitsSetting) {
    run("create cylinder radius 1 height 2");
    std::vector<Listing> curves = list("list curve all");
    const auto circle = std::find_if(curves.begin(), curves.end(),
                                     [](const Listing& l) { return l["Type"] == "Circle"; });
    ASSERT_NE(circle, curves.end());
    EXPECT_EQ((*circle)["Radius"], "1");
    EXPECT_EQ((*circle)["Length"], "6.28319");

    std::vector<Listing> surfaces = list("list surface all");
    const auto side = std::find_if(surfaces.begin(), surfaces.end(),
                                   [](const Listing& l) { return l["Type"] == "Cylinder"; });
    ASSERT_NE(side, surfaces.end());
    EXPECT_EQ((*side)["Area"], "12.5664");

    run("set digits 3");
    curves = list("list " + circle->header);
    ASSERT_EQ(curves.size(), 1u);
    EXPECT_EQ(curves[0]["Length"], "6.28");
    EXPECT_EQ(list_one("list volume 1")["Volume"], "6.28");
}

TEST_F(ListCommandTest, BodiesFreeEntitiesAndTheModelSummary) {
    run("create surface rectangle width 2 height 3");
    run("create vertex 0 0 5");
    run("create box 2 at 10 0 0");

    const Listing sheet = list_one("list body 1");
    EXPECT_EQ(sheet.header, "Body 1");
    EXPECT_EQ(sheet["Volumes"], "none");
    EXPECT_EQ(sheet["Surfaces"], "1 (1)");
    EXPECT_EQ(list_one("list body 3")["Volumes"], "1 (1)");

    const Listing free_surface = list_one("list surface 1");
    EXPECT_EQ(free_surface["Area"], "6");
    EXPECT_EQ(free_surface["Volumes"], "none (free surface)");
    const Listing free_vertex = list_one("list vertex 5");
    EXPECT_EQ(free_vertex["Coordinates"], "0 0 5");
    EXPECT_EQ(free_vertex["Curves"], "none (free vertex)");

    Listing model = list_one("list model");
    EXPECT_EQ(model.header, "Model");
    EXPECT_EQ(model["Bodies"], "3");
    EXPECT_EQ(model["Volumes"], "1");
    EXPECT_EQ(model["Surfaces"], "7");
    EXPECT_EQ(model["Curves"], "16");
    EXPECT_EQ(model["Vertices"], "13");
    // The rectangle's curves bound a surface and its corners end curves: only the surface and
    // the lone vertex are free.
    EXPECT_EQ(model["Free surfaces"], "1");
    EXPECT_EQ(model["Free curves"], "0");
    EXPECT_EQ(model["Free vertices"], "1");

    // A curve between two lone vertices is free, and takes them in.
    run("create vertex 0 0 7");
    run("create curve vertex 5 14");
    model = list_one("list model");
    EXPECT_EQ(model["Free curves"], "1");
    EXPECT_EQ(model["Free vertices"], "0");
}

TEST_F(ListCommandTest, MixedListsInOrderAndUnknownIdsSkipped) {
    run("create box 2");
    run("create box 1 at 3 0 0");
    std::vector<Listing> listings = list("list volume 2 1 7, surface 3");
    ASSERT_EQ(listings.size(), 3u);
    EXPECT_EQ(listings[0].header, "Volume 2");
    EXPECT_EQ(listings[0]["Volume"], "1");
    EXPECT_EQ(listings[1].header, "Volume 1");
    EXPECT_EQ(listings[2].header, "Surface 3");
    // list() took the output; run again to see the warning about volume 7.
    output->clear();
    EXPECT_TRUE(TarvoInterface::cmd("list volume 2 1 7, surface 3"));
    const std::vector<std::string> warnings = output->starting("WARNING: ");
    ASSERT_EQ(warnings.size(), 1u);
    EXPECT_NE(warnings[0].find("volume 7"), std::string::npos) << warnings[0];

    listings = list("list volume 9");
    ASSERT_EQ(listings.size(), 1u);
    EXPECT_EQ(listings[0].header, "Nothing to list");
}

TEST_F(ListCommandTest, DispatchBesideListVariablesAndNothingToUndo) {
    run("#{r = 2}");
    output->clear();
    run("list variables");
    EXPECT_TRUE(output->has_line("r = 2")) << output->all();

    run("create box 2");
    EXPECT_EQ(list_one("list mod").header, "Model");
    EXPECT_FALSE(TarvoInterface::was_last_cmd_undoable());
    EXPECT_EQ(TarvoInterface::number_undo_commands(), 1);

    // Rejections: one error each, and what was expected.
    const struct {
        const char* line;
        const char* says;
    } refused[] = {
        {"list", "variables, model, an entity list"},
        {"list model extra", "unexpected 'extra'"},
        {"list volume 1 extra", "unexpected 'extra'"},
        {"list variables 3", "unexpected '3'"},
        {"list volume x", "volume"},
    };
    for (const auto& r : refused) {
        const std::string error = rejected(r.line);
        EXPECT_NE(error.find(r.says), std::string::npos) << r.line << ": " << error;
    }
}

// ---- The reference and the registry --------------------------------------------------------
// (What a user meets on a planned command is the limits tests' concern.)

struct Section {
    std::vector<std::string> heading; // the words after "### "
    std::vector<std::string> usage;   // its indented usage lines
    bool not_built = false;           // its text starts with "Not built yet."
    bool seen_text = false;
};

std::vector<std::string> words_of(const std::string& text, const std::string& separators) {
    std::vector<std::string> words;
    std::string word;
    for (char c : text + separators.substr(0, 1)) {
        if (separators.find(c) != std::string::npos) {
            if (!word.empty()) {
                words.push_back(word);
            }
            word.clear();
        } else {
            word += c;
        }
    }
    return words;
}

// The command sections of the reference (the language chapter describes no command).
std::vector<Section> reference_sections() {
    std::vector<Section> sections;
    std::istringstream in{std::string(tarvo::kernel::command_reference())};
    std::string line;
    std::string chapter;
    bool inside = false;
    while (std::getline(in, line)) {
        if (line.starts_with("## ")) {
            chapter = line.substr(3);
            inside = false;
        } else if (line.starts_with("### ")) {
            inside = chapter != "The language";
            if (inside) {
                sections.push_back({words_of(line.substr(4), " "), {}, false, false});
            }
        } else if (inside && !line.empty()) {
            Section& section = sections.back();
            if (!section.seen_text) {
                section.not_built = line == "Not built yet.";
                section.seen_text = true;
            }
            if (line.starts_with("    ")) {
                section.usage.push_back(line);
            }
        }
    }
    return sections;
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

// The words of a usage line that a user types as they stand, up to the first value: the first
// of alternatives ("step|iges|brep" gives "step"), an entity list as "volume 1".
// "    import step|iges|brep '<file>' [heal]" gives "import step".
std::string typed_prefix(std::string usage) {
    for (size_t at = usage.find("<"); at != std::string::npos; at = usage.find("<", at + 1)) {
        const size_t close = usage.find('>', at);
        if (close != std::string::npos && usage.compare(close - 4, 5, "list>") == 0) {
            usage.replace(at, close - at + 1, "<list>"); // "<curve list>"
        }
    }
    std::string line;
    for (const std::string& token : words_of(usage, " ")) {
        const std::string word = token.substr(0, token.find('|'));
        std::string typed;
        if (word == "<list>") {
            typed = "volume 1";
        } else if (!word.empty() && std::all_of(word.begin(), word.end(),
                                                [](char c) { return c >= 'a' && c <= 'z'; })) {
            typed = word;
        } else {
            break;
        }
        line += (line.empty() ? "" : " ") + typed;
    }
    return line;
}

// Whether the line reaches a registered command of the section: one whose pattern starts with
// the heading's words.
bool reaches(const std::string& line, const std::vector<std::string>& heading) {
    std::vector<tarvo::kernel::Token> tokens;
    std::string error_text;
    if (!tarvo::kernel::tokenize(line, tokens, error_text)) {
        return false;
    }
    const tarvo::kernel::DispatchResult found = tarvo::kernel::dispatch(tokens);
    return found.command && found.command->words.size() >= heading.size() &&
           std::equal(heading.begin(), heading.end(), found.command->words.begin());
}

TEST_F(ListCommandTest, ReferenceMarksExactlyTheCommandsThatAreNotRegistered) {
    const std::vector<Section> sections = reference_sections();
    size_t marked = 0;
    size_t built = 0;
    for (const Section& section : sections) {
        const std::string heading = joined(section.heading);
        ASSERT_FALSE(section.usage.empty()) << heading;
        (section.not_built ? marked : built) += 1;
        // Every form the section shows must reach one of its commands, or none may.
        for (const std::string& usage : section.usage) {
            const std::string line = typed_prefix(usage);
            ASSERT_FALSE(line.empty()) << usage;
            EXPECT_EQ(reaches(line, section.heading), !section.not_built)
                << "'" << line << "' (section '" << heading << "') "
                << (section.not_built ? "is marked \"Not built yet.\" but is a command"
                                      : "is no command: mark the section \"Not built yet.\"");
        }
        if (section.not_built) {
            EXPECT_NE(tarvo::kernel::help_text(heading).find("Not built yet."), std::string::npos)
                << heading;
        }
    }
    // Planned sections may be none (all built); the built half must not be empty.
    EXPECT_GT(built, 40u);
    const auto list_section = std::find_if(sections.begin(), sections.end(), [](const Section& s) {
        return s.heading == std::vector<std::string>{"list"};
    });
    ASSERT_NE(list_section, sections.end());
    EXPECT_FALSE(list_section->not_built);
}

} // namespace
