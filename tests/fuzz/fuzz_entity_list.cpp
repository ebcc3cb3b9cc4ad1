// Fuzz target of the entity-list grammar over a small fixed model (FuzzCatalog.h). The first
// byte of an input picks the type of bare selectors ("1 to 3" meaning volumes, or none); the
// rest is the text. The text is read both as the command cursor reads it (parse_entity_list on
// its tokens) and as parse_tarvo_list does (parse_entity_ids). Beyond crashes and sanitizer
// faults it checks:
//  - a refused list leaves the position alone and says why; an accepted one moves forward;
//  - one group per canonical type, ids without duplicates, and every id exists in the model;
//  - the list's own description reads back as the same ids;
//  - parse_entity_ids either answers or reports exactly one error and answers nothing.

#include "FuzzCatalog.h"
#include "core/Command.h"
#include "core/EntityList.h"
#include "core/ListParser.h"
#include "core/Session.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace tarvo::kernel;

[[noreturn]] void fault(const char* what, std::string_view text) {
    std::fprintf(stderr, "fuzz_entity_list: %s\ntext: %.*s\n", what, static_cast<int>(text.size()),
                 text.data());
    __builtin_trap();
}

// Types with ids in the model, one without a catalog (node) and none.
constexpr const char* kDefaultTypes[] = {"", "volume", "surface", "curve", "group", "node"};

void check_list(const EntityList& list, std::string_view text) {
    const fuzz_support::FuzzCatalog& model = fuzz_support::FuzzCatalog::installed();
    std::set<std::string> types;
    for (const EntityList::Group& group : list.groups) {
        if (canonical_entity_type(group.type) != group.type || !types.insert(group.type).second) {
            fault("a group whose type is not canonical or repeats", text);
        }
        std::set<int> seen;
        for (int id : group.ids) {
            if (!seen.insert(id).second) {
                fault("an id appears twice in a group", text);
            }
            if (!model.handles(group.type) || !model.exists(group.type, id)) {
                fault("an id that does not exist came back", text);
            }
        }
    }
}

// describe() is what handlers print about the entities they changed; the user may paste it back.
void check_description(const EntityList& list, std::string_view text) {
    const std::string described = list.describe();
    if (described.empty()) {
        if (!list.empty()) {
            fault("a list with ids describes as nothing", text);
        }
        return;
    }
    std::vector<Token> tokens;
    std::string error_text;
    size_t pos = 0;
    EntityList reread;
    if (!tokenize(described, tokens, error_text) ||
        !parse_entity_list(tokens, pos, reread, error_text) || pos != tokens.size()) {
        fault("a description does not read back as a list", described);
    }
    for (const EntityList::Group& group : list.groups) {
        std::vector<int> expected = group.ids, got = reread.ids_of(group.type);
        std::sort(expected.begin(), expected.end());
        std::sort(got.begin(), got.end());
        if (expected != got) {
            fault("a description reads back as other ids", described);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    fuzz_support::FuzzCatalog::installed();
    const std::string default_type =
        kDefaultTypes[data[0] % (sizeof kDefaultTypes / sizeof kDefaultTypes[0])];
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);

    std::vector<Token> tokens;
    std::string error_text;
    if (tokenize(text, tokens, error_text) && !tokens.empty()) {
        ListParseOptions options;
        std::string missing;
        options.missing_text = &missing;
        options.default_type = default_type;
        size_t pos = 0;
        EntityList list;
        if (parse_entity_list(tokens, pos, list, error_text, options)) {
            if (pos == 0 || pos > tokens.size()) {
                fault("an accepted list did not move forward or went past the end", text);
            }
            check_list(list, text);
            check_description(list, text);
        } else if (pos != 0 || error_text.empty()) {
            fault("a refused list moved or said nothing", text);
        }
    }

    const int errors = error_count();
    const std::vector<int> ids =
        parse_entity_ids(default_type.empty() ? "volume" : default_type, text);
    const int reported = error_count() - errors;
    if (reported > 1 || (reported == 1 && !ids.empty())) {
        fault("parse_entity_ids reported more than one error, or answered after one", text);
    }
    return 0;
}
