#pragma once
// Shared fixture of the session tests: a live kernel session with captured output, a recording
// observer, a small fake model (entity catalog + undo participant) and a scratch working
// directory.

#include "core/Command.h"
#include "core/EntityCatalog.h"
#include "core/Session.h"
#include "core/SessionState.h"
#include "core/Undo.h"
#include "core/Valfold.h"
#include "tarvo/TarvoInterface.h"
#include "tarvo_util/TarvoFileUtil.h"
#include "tarvo_util/TarvoMessage.h"

#include "../support/KernelTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace session_test {

// The number an expression that must evaluate gives.
inline double eval(tarvo::kernel::Valfold& valfold, const std::string& text) {
    tarvo::kernel::ValfoldValue value;
    bool defined = false;
    std::string error_text;
    EXPECT_TRUE(valfold.evaluate(text, value, defined, error_text))
        << text.substr(0, 80) << ": " << error_text;
    EXPECT_FALSE(value.is_string) << text.substr(0, 80);
    return value.number;
}

// The error of an expression that must fail.
inline std::string eval_error(tarvo::kernel::Valfold& valfold, const std::string& text) {
    tarvo::kernel::ValfoldValue value;
    bool defined = false;
    std::string error_text;
    EXPECT_FALSE(valfold.evaluate(text, value, defined, error_text)) << text.substr(0, 80);
    return error_text;
}

// A tiny model: volumes, each bounded by surfaces, with names; snapshots copy it whole.
class FakeModel : public tarvo::kernel::EntityCatalog, public tarvo::kernel::UndoParticipant {
public:
    std::map<int, std::string> volumes;              // id -> name
    std::map<int, std::vector<int>> volume_surfaces; // volume -> its surfaces
    std::set<int> surfaces;
    int restores = 0;

    void add_volume(int id, const std::string& name, std::vector<int> faces) {
        volumes[id] = name;
        volume_surfaces[id] = faces;
        surfaces.insert(faces.begin(), faces.end());
    }

    bool handles(std::string_view type) const override {
        return type == "volume" || type == "surface";
    }
    std::vector<int> all_ids(std::string_view type) const override {
        std::vector<int> ids;
        if (type == "volume") {
            for (const auto& [id, name] : volumes) {
                ids.push_back(id);
            }
        } else if (type == "surface") {
            ids.assign(surfaces.begin(), surfaces.end());
        }
        return ids;
    }
    bool exists(std::string_view type, int id) const override {
        return type == "volume" ? volumes.count(id) > 0
                                : type == "surface" && surfaces.count(id) > 0;
    }
    std::vector<int> relatives(std::string_view source, int id,
                               std::string_view target) const override {
        std::set<int> found;
        for (const auto& [volume, faces] : volume_surfaces) {
            const bool bounds = std::find(faces.begin(), faces.end(), id) != faces.end();
            if (source == "volume" && target == "surface" && volume == id)
                found.insert(faces.begin(), faces.end());
            if (source == "surface" && target == "volume" && bounds)
                found.insert(volume);
        }
        return {found.begin(), found.end()};
    }
    std::string name_of(std::string_view type, int id) const override {
        return type == "volume" && volumes.count(id) ? volumes.at(id) : std::string();
    }

    struct Snapshot : tarvo::kernel::UndoSnapshot {
        std::map<int, std::string> volumes;
        std::map<int, std::vector<int>> volume_surfaces;
        std::set<int> surfaces;
    };
    std::string participant_name() const override { return "fake"; }
    std::unique_ptr<tarvo::kernel::UndoSnapshot> save_state() override {
        auto snapshot = std::make_unique<Snapshot>();
        snapshot->volumes = volumes;
        snapshot->volume_surfaces = volume_surfaces;
        snapshot->surfaces = surfaces;
        return snapshot;
    }
    void restore_state(const tarvo::kernel::UndoSnapshot& base) override {
        const auto& snapshot = static_cast<const Snapshot&>(base);
        for (const auto& [id, name] : volumes) {
            if (!snapshot.volumes.count(id)) {
                tarvo::kernel::events().volume_deleted(id);
            }
        }
        for (const auto& [id, name] : snapshot.volumes) {
            if (!volumes.count(id)) {
                tarvo::kernel::events().volume_created(id);
            }
        }
        volumes = snapshot.volumes;
        volume_surfaces = snapshot.volume_surfaces;
        surfaces = snapshot.surfaces;
        ++restores;
    }
    void clear_state() override {
        for (const auto& [id, name] : volumes) {
            tarvo::kernel::events().volume_deleted(id);
        }
        volumes.clear();
        volume_surfaces.clear();
        surfaces.clear();
    }
};

// A live session per test, in a scratch directory, over the fake model.
class SessionTest : public test_support::KernelTest {
protected:
    SessionTest() : KernelTest("session") {}

    void SetUp() override {
        KernelTest::SetUp();
        if (HasFatalFailure())
            return;
        scratch = session.dir();
        use_fake_model();
    }

    // The fake model stands alone: the kernel's own modules keep their commands, but neither
    // their catalogs nor their snapshots take part.
    void use_fake_model() {
        tarvo::kernel::set_entity_catalog(&model);
        tarvo::kernel::state().participants.clear();
        tarvo::kernel::add_undo_participant(&model);
        register_model_commands();
    }

    // Commands on the fake model:
    //   "add volume <id> [name '<n>']"  undoable: adds a volume with surfaces 10*id+1, 10*id+2
    //   "add then fail <id>"            undoable: adds a volume, then fails (a halfway failure)
    //   "add then throw <id>"           undoable: adds a volume, then throws
    void register_model_commands() {
        using tarvo::kernel::Cursor;
        using tarvo::kernel::register_command;
        const auto add_volume = [this](Cursor& c) {
            int id = 0;
            std::string name;
            if (!c.integer(id) || (c.keyword("name") && !c.string(name)) || !c.expect_end())
                return false;
            model.add_volume(id, name, {10 * id + 1, 10 * id + 2});
            tarvo::kernel::events().volume_created(id);
            tarvo::kernel::print("Created volume " + std::to_string(id));
            return true;
        };
        const auto add_then_fail = [this](Cursor& c) {
            int id = 0;
            if (!c.integer(id))
                return false;
            model.add_volume(id, "", {});
            return c.fail("Could not finish volume " + std::to_string(id));
        };
        const auto add_then_throw = [this](Cursor& c) -> bool {
            int id = 0;
            if (!c.integer(id))
                return false;
            model.add_volume(id, "", {});
            throw std::runtime_error("boom");
        };
        register_command({"add volume", add_volume, true, "add volume <id> [name '<name>']"});
        register_command({"add then fail", add_then_fail, true, "add then fail <id>"});
        register_command({"add then throw", add_then_throw, true, "add then throw <id>"});
    }

    std::vector<std::string> error_lines() { return output->starting("ERROR: "); }

    FakeModel model;
    // The test's working directory, empty at the start.
    std::filesystem::path scratch;
};

} // namespace session_test
