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
#include "../support/MapCatalog.h"

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
class FakeModel : public test_support::MapCatalog, public tarvo::kernel::UndoParticipant {
public:
    int restores = 0;

    struct Snapshot : tarvo::kernel::UndoSnapshot {
        Contents contents;
    };
    std::string participant_name() const override { return "fake"; }
    std::unique_ptr<tarvo::kernel::UndoSnapshot> save_state() override {
        auto snapshot = std::make_unique<Snapshot>();
        snapshot->contents = contents;
        return snapshot;
    }
    void restore_state(const tarvo::kernel::UndoSnapshot& base) override {
        const auto& snapshot = static_cast<const Snapshot&>(base);
        for (const auto& [id, name] : contents.volumes)
            if (!snapshot.contents.volumes.count(id))
                tarvo::kernel::events().volume_deleted(id);
        for (const auto& [id, name] : snapshot.contents.volumes)
            if (!contents.volumes.count(id))
                tarvo::kernel::events().volume_created(id);
        contents = snapshot.contents;
        ++restores;
    }
    void clear_state() override {
        for (const auto& [id, name] : contents.volumes)
            tarvo::kernel::events().volume_deleted(id);
        contents = {};
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
