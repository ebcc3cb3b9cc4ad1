#include "core/EntityList.h"

#include "core/CommandRegistry.h"
#include "core/EntityCatalog.h"
#include "core/ListParser.h"
#include "core/Session.h"
#include "core/Wildcard.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <map>
#include <set>

namespace tarvo::kernel {

const std::vector<std::string>& entity_type_words() {
    static const std::vector<std::string> words = {"body",  "volume", "surface", "curve",  "vertex",
                                                   "node",  "edge",   "tri",     "quad",   "tet",
                                                   "hex",   "wedge",  "pyramid", "sphere", "face",
                                                   "group", "block",  "nodeset", "sideset",
                                                   // the analysis set-up (module bc)
                                                   "force", "pressure", "heatflux", "temperature",
                                                   "convection", "displacement", "acceleration",
                                                   "velocity", "constraint", "contact region",
                                                   "contact pair", "cfd_bc", "material", "media",
                                                   "boundary_layer", "coordinate_system"};
    return words;
}

namespace {
std::string to_lower(std::string_view text) {
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(), [](char c) {
        return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    });
    return out;
}
} // namespace

std::string canonical_entity_type(std::string_view word) {
    if (word.empty()) {
        return {};
    }
    const std::string lower = to_lower(word);
    const auto& words = entity_type_words();
    if (std::find(words.begin(), words.end(), lower) != words.end()) {
        return lower;
    }
    static const std::map<std::string, std::string> plurals = {
        {"bodies", "body"},      {"volumes", "volume"},  {"surfaces", "surface"},
        {"curves", "curve"},     {"vertices", "vertex"}, {"nodes", "node"},
        {"edges", "edge"},       {"tris", "tri"},        {"quads", "quad"},
        {"tets", "tet"},         {"hexes", "hex"},       {"wedges", "wedge"},
        {"pyramids", "pyramid"}, {"spheres", "sphere"},  {"faces", "face"},
        {"groups", "group"},     {"blocks", "block"},    {"nodesets", "nodeset"},
        {"sidesets", "sideset"}};
    if (auto it = plurals.find(lower); it != plurals.end()) {
        return it->second;
    }
    std::vector<std::string_view> views(words.begin(), words.end());
    const int index = match_word(lower, views);
    return index >= 0 ? words[static_cast<size_t>(index)] : std::string();
}

std::string compress_ids(std::vector<int> ids) {
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
    std::string text;
    for (size_t i = 0; i < ids.size();) {
        size_t j = i;
        while (j + 1 < ids.size() && ids[j + 1] == ids[j] + 1) {
            ++j;
        }
        if (!text.empty()) {
            text += ' ';
        }
        text += std::to_string(ids[i]);
        if (j >= i + 2) {
            text += " to " + std::to_string(ids[j]);
        } else if (j == i + 1) {
            text += " " + std::to_string(ids[j]);
        }
        i = j + 1;
    }
    return text;
}

// ---- EntityList --------------------------------------------------------------------------------

bool EntityList::empty() const {
    return size() == 0;
}

size_t EntityList::size() const {
    size_t n = 0;
    for (const Group& group : groups) {
        n += group.ids.size();
    }
    return n;
}

std::vector<int> EntityList::ids_of(std::string_view type) const {
    for (const Group& group : groups) {
        if (group.type == type) {
            return group.ids;
        }
    }
    return {};
}

void EntityList::add(const std::string& type, const std::vector<int>& ids) {
    auto it =
        std::find_if(groups.begin(), groups.end(), [&](const Group& g) { return g.type == type; });
    if (it == groups.end()) {
        groups.push_back({type, {}});
        it = std::prev(groups.end());
    }
    std::set<int> present(it->ids.begin(), it->ids.end());
    for (int id : ids) {
        if (present.insert(id).second) {
            it->ids.push_back(id);
        }
    }
}

std::string EntityList::describe() const {
    std::string text;
    for (const Group& group : groups) {
        if (group.ids.empty()) {
            continue;
        }
        if (!text.empty()) {
            text += ", ";
        }
        text += group.type + " " + compress_ids(group.ids);
    }
    return text;
}

// ---- Catalog access ----------------------------------------------------------------------------

namespace {
std::vector<int> all_of(const std::string& type) {
    EntityCatalog* catalog = catalog_for(type);
    return catalog ? catalog->all_ids(type) : std::vector<int>{};
}

bool exists(const std::string& type, int id) {
    EntityCatalog* catalog = catalog_for(type);
    return catalog && catalog->exists(type, id);
}

std::vector<int> relatives_of(const std::string& source, int id, const std::string& target) {
    if (source == target) {
        return exists(source, id) ? std::vector<int>{id} : std::vector<int>{};
    }
    std::set<int> found;
    EntityCatalog* by_target = catalog_for(target);
    EntityCatalog* by_source = catalog_for(source);
    if (by_target) {
        for (int r : by_target->relatives(source, id, target)) {
            found.insert(r);
        }
    }
    if (by_source && by_source != by_target) {
        for (int r : by_source->relatives(source, id, target)) {
            found.insert(r);
        }
    }
    return {found.begin(), found.end()};
}

// ---- Parser ------------------------------------------------------------------------------------

struct Parser {
    const std::vector<Token>& tokens;
    size_t pos;
    std::string error_text;
    // Explicitly named ids that do not exist, per type.
    std::map<std::string, std::vector<int>> missing;

    bool at_end() const { return pos >= tokens.size(); }
    const Token* peek(size_t ahead = 0) const {
        return pos + ahead < tokens.size() ? &tokens[pos + ahead] : nullptr;
    }
    bool word_is(size_t ahead, std::string_view word) const {
        const Token* token = peek(ahead);
        return token && !token->quoted && !token->comma && keyword_matches(token->text, word);
    }
    bool type_at(size_t ahead, std::string& type) const {
        const Token* token = peek(ahead);
        if (!token || token->quoted || token->comma) {
            return false;
        }
        type = canonical_entity_type(token->text);
        return !type.empty();
    }
    bool integer_at(size_t ahead, int& value) const {
        const Token* token = peek(ahead);
        if (!token || token->quoted || token->comma) {
            return false;
        }
        const std::string& text = token->text;
        const auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
        return ec == std::errc() && ptr == text.data() + text.size();
    }
    bool fail(const std::string& text) {
        if (error_text.empty()) {
            error_text = text;
        }
        return false;
    }
    std::string near() const {
        return at_end() ? "at the end of the line" : "at '" + tokens[pos].text + "'";
    }

    // ids := range ([','] range)*; range := int ['to' int ['by' int]]
    bool ids(const std::string& type, std::vector<int>& out, bool check_exist) {
        int first = 0;
        if (!integer_at(0, first)) {
            return fail("expected an id " + near());
        }
        for (;;) {
            ++pos;
            if (first <= 0) {
                return fail("ids are positive, found " + std::to_string(first));
            }
            if (word_is(0, "to")) {
                ++pos;
                int last = 0;
                if (!integer_at(0, last)) {
                    return fail("expected an id after 'to' " + near());
                }
                ++pos;
                int step = 1;
                if (word_is(0, "by")) {
                    ++pos;
                    if (!integer_at(0, step) || step <= 0) {
                        return fail("expected a positive step after 'by' " + near());
                    }
                    ++pos;
                }
                const int lo = std::min(first, last), hi = std::max(first, last);
                if (lo <= 0) {
                    return fail("ids are positive, found " + std::to_string(lo));
                }
                // Walk the existing ids rather than the range, so "1 to 1000000" is cheap.
                for (int id : all_of(type)) {
                    if (id >= lo && id <= hi && (id - lo) % step == 0) {
                        out.push_back(id);
                    }
                }
            } else if (!check_exist || exists(type, first)) {
                out.push_back(first);
            } else {
                missing[type].push_back(first);
            }
            // Another range, possibly after a comma.
            size_t skip = (peek() && peek()->comma) ? 1 : 0;
            if (!integer_at(skip, first)) {
                return true;
            }
            pos += skip;
        }
    }

    // selector for `type`; fills `out` in order.
    bool selector(const std::string& type, std::vector<int>& out) {
        if (word_is(0, "all")) {
            ++pos;
            std::vector<int> ids = all_of(type);
            if (word_is(0, "except")) {
                ++pos;
                std::vector<int> excluded;
                if (!this->ids(type, excluded, false)) {
                    return false;
                }
                std::set<int> drop(excluded.begin(), excluded.end());
                std::erase_if(ids, [&](int id) { return drop.count(id) > 0; });
            }
            out.insert(out.end(), ids.begin(), ids.end());
            return true;
        }
        if (word_is(0, "in")) {
            ++pos;
            std::string inner_type;
            if (!type_at(0, inner_type)) {
                return fail("expected an entity type after 'in' " + near());
            }
            ++pos;
            std::vector<int> inner;
            if (!selector(inner_type, inner)) {
                return false;
            }
            std::set<int> seen;
            for (int id : inner) {
                for (int r : relatives_of(inner_type, id, type)) {
                    if (seen.insert(r).second) {
                        out.push_back(r);
                    }
                }
            }
            std::sort(out.begin(), out.end());
            return true;
        }
        if (word_is(0, "with")) {
            ++pos;
            if (!word_is(0, "name")) {
                return fail("expected 'name' after 'with' " + near());
            }
            ++pos;
            const Token* token = peek();
            if (!token || token->comma) {
                return fail("expected a name pattern after 'with name' " + near());
            }
            const std::string pattern = token->text;
            ++pos;
            EntityCatalog* catalog = catalog_for(type);
            for (int id : all_of(type)) {
                if (catalog &&
                    wildcard_match(pattern, catalog->name_of(type, id), CaseRule::Insensitive)) {
                    out.push_back(id);
                }
            }
            return true;
        }
        int dummy = 0;
        if (integer_at(0, dummy)) {
            return ids(type, out, true);
        }
        return fail("expected ids, 'all', 'in' or 'with name' after '" + type + "' " + near());
    }

    bool list(EntityList& result, const std::string& default_type) {
        bool first = true;
        for (;;) {
            std::string type;
            size_t skip = (!first && peek() && peek()->comma) ? 1 : 0;
            if (type_at(skip, type)) {
                pos += skip + 1;
            } else if (first && !default_type.empty()) {
                type = default_type;
            } else if (first) {
                return fail("expected an entity type " + near());
            } else {
                return true;
            }
            std::vector<int> ids;
            if (!selector(type, ids)) {
                return false;
            }
            result.add(type, ids);
            first = false;
        }
    }
};
} // namespace

bool starts_entity_list(const std::vector<Token>& tokens, size_t pos) {
    return pos < tokens.size() && !tokens[pos].quoted && !tokens[pos].comma &&
           !canonical_entity_type(tokens[pos].text).empty();
}

bool parse_entity_list(const std::vector<Token>& tokens, size_t& pos, EntityList& list,
                       std::string& error_text, const ListParseOptions& options) {
    Parser parser{tokens, pos, {}, {}};
    EntityList result;
    if (!parser.list(result, options.default_type)) {
        error_text = parser.error_text;
        return false;
    }
    if (options.report_missing && !parser.missing.empty()) {
        std::string text;
        for (const auto& [type, ids] : parser.missing) {
            text += (text.empty() ? "" : ", ") + type + " " + compress_ids(ids);
        }
        if (options.missing_text) {
            *options.missing_text = text + " not found, skipped";
        } else {
            warning(text + " not found, skipped");
        }
    }
    pos = parser.pos;
    list = std::move(result);
    return true;
}

std::vector<int> parse_entity_ids(std::string_view type, std::string_view text) {
    const std::string wanted = canonical_entity_type(type);
    if (wanted.empty()) {
        error("Unknown entity type '" + std::string(type) + "'");
        return {};
    }
    std::vector<Token> tokens;
    std::string error_text;
    if (!tokenize(text, tokens, error_text)) {
        error(error_text);
        return {};
    }
    if (tokens.empty()) {
        return {};
    }
    size_t pos = 0;
    EntityList list;
    ListParseOptions options;
    options.default_type = wanted;
    if (!parse_entity_list(tokens, pos, list, error_text, options)) {
        error("Bad " + wanted + " list '" + std::string(text) + "': " + error_text);
        return {};
    }
    if (pos < tokens.size()) {
        error("Bad " + wanted + " list '" + std::string(text) + "': unexpected '" +
              tokens[pos].text + "'");
        return {};
    }
    std::vector<int> ids;
    std::set<int> seen;
    for (const EntityList::Group& group : list.groups) {
        for (int id : group.ids) {
            const std::vector<int> mapped =
                group.type == wanted ? std::vector<int>{id} : relatives_of(group.type, id, wanted);
            for (int m : mapped) {
                if (seen.insert(m).second) {
                    ids.push_back(m);
                }
            }
        }
    }
    return ids;
}

} // namespace tarvo::kernel
