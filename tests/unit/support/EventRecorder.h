#pragma once
// A kernel observer for tests that records every event as one line of text, in arrival order:
// the event's name and its arguments, each behind a blank ("volume_created 4",
// "id_changed volume 3 2", "highlighted volume 1, surface 3", "developer_command_toggled 1").
// Strings go in as they are, bools as 1 or 0, (type, id) lists as "type id" joined by ", ".
// The overrides are generated from the table of events, so a new event is recorded without
// touching this file.
//
// Thread: the kernel's (the events arrive synchronously inside kernel calls).

#include "tarvo/TIObserve.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace test_support {

class EventRecorder : public TarvoInterface::TIObserve {
public:
    // Records only the events named in `only`, all when it is empty.
    explicit EventRecorder(std::set<std::string> only = {}) : only(std::move(only)) {}

    std::vector<std::string> events;

    std::size_t count(const std::string& line) const {
        return static_cast<std::size_t>(std::count(events.begin(), events.end(), line));
    }
    // The lines that start with `prefix`, in order.
    std::vector<std::string> starting(const std::string& prefix) const {
        std::vector<std::string> out;
        for (const std::string& line : events)
            if (line.starts_with(prefix))
                out.push_back(line);
        return out;
    }

#define TARVO_OBSERVER_EVENT(name, code, flags, mark, ...)                                         \
    void notify_##name(TARVO_EVENT_PARAMS(__VA_ARGS__)) override {                                 \
        add(#name TARVO_EVENT_ARGS(__VA_ARGS__));                                                  \
    }
#define TARVO_OBSERVER_UNSENT(name, ...) TARVO_OBSERVER_EVENT(name, -1, (), (), __VA_ARGS__)
#include "tarvo/TIObserveEvents.def"

private:
    static std::string text(int value) {
        return std::to_string(value);
    }
    static std::string text(bool value) {
        return value ? "1" : "0";
    }
    static std::string text(const std::string& value) {
        return value;
    }
    static std::string text(const std::vector<std::pair<std::string, int>>& entities) {
        std::string out;
        for (const auto& [type, id] : entities)
            out += (out.empty() ? "" : ", ") + type + " " + std::to_string(id);
        return out;
    }

    template <typename... Args> void add(const char* name, const Args&... args) {
        if (!only.empty() && !only.contains(name))
            return;
        std::string line = name;
        ((line += ' ', line += text(args)), ...);
        events.push_back(std::move(line));
    }

    std::set<std::string> only;
};

} // namespace test_support
