#pragma once
// Entity lists of the command language, shared by every command and by parse_tarvo_list.
//
//   list     := item ( [','] item )*
//   item     := type selector
//   selector := ids | 'all' [ 'except' ids ] | 'in' item | 'with' 'name' <string>
//   ids      := range ( [','] range )*
//   range    := <int> [ 'to' <int> [ 'by' <int> ] ]
//
// `type` is one of entity_type_words() (EntityCatalog.h), case-insensitive, or a prefix of at
// least 3 letters; a plural 's' is accepted ("volumes"). "in" maps the ids of the inner item to
// the outer type through EntityCatalog::relatives ("curve in surface 1 2", "node in volume 1",
// "surface in volume in group 2"). Name patterns are globs ('*', '?'), case-insensitive.
// Ids that do not exist are reported in one warning line and skipped; a range only yields the
// ids that exist.
//
// Threading: kernel thread only.

#include <string>
#include <string_view>
#include <vector>

namespace tarvo::kernel {

struct EntityList {
    struct Group {
        std::string type;     // canonical type word
        std::vector<int> ids; // order of first appearance, no duplicates
    };
    std::vector<Group> groups; // one per type, order of first appearance

    bool empty() const;
    size_t size() const;
    // Ids of one type (empty when the list has none of it).
    std::vector<int> ids_of(std::string_view type) const;
    // Adds ids to the group of `type`, skipping duplicates.
    void add(const std::string& type, const std::vector<int>& ids);
    // "volume 1 2 3, surface 4" (ranges compressed: "volume 1 to 5").
    std::string describe() const;
};

// The canonical type word for a user's spelling ("Vol", "surfaces"), or "" if it is none.
std::string canonical_entity_type(std::string_view word);

// "1 to 3 7 9" for {1,2,3,7,9}.
std::string compress_ids(std::vector<int> ids);

// Ids of `type` named by `text`. `text` may be a whole list ("volume 1 to 3") or bare selectors
// for `type` ("1 to 3", "all except 2", "in volume 1", "with name 'a*'"). Items of another type
// are mapped to `type` through relatives ("surface" of "volume 1" are the surfaces of volume 1).
// On a syntax error prints one error and gives an empty list.
std::vector<int> parse_entity_ids(std::string_view type, std::string_view text);

} // namespace tarvo::kernel
