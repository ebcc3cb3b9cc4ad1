#pragma once
// What a client selected to watch, by kind and a pair of numbers. Plain values: the registry on
// the main thread owns the per-client selections; a task carries a merged copy to the worker.
//
// Kinds: "entity" (entity type code, id), "model" (0, 0), "TIObserve" (event code, 0),
// "graphics" (graphics notification, 0).

#include <QString>

#include <map>
#include <set>
#include <utility>

struct MonitorKey {
    QString kind; // empty: no key
    std::pair<int, int> pair{0, 0};

    bool is_empty() const { return kind.isEmpty(); }
};

// A kind whose set has become empty is erased from the map.
using MonitorSelection = std::map<QString, std::set<std::pair<int, int>>>;

// Adds every pair of `from` to `into`, kind by kind.
inline void merge_selection(MonitorSelection& into, const MonitorSelection& from) {
    for (const auto& [kind, pairs] : from)
        into[kind].insert(pairs.begin(), pairs.end());
}
