#pragma once
// The kinds of mesh entity the kernel stores, in one table: the command-language word of each,
// its dimension, its corner-node count and its numeric code. Every other vocabulary of the mesh
// module (element type names, quality metrics) refers to these kinds.

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace tarvo::kernel::mesh {

// Element kinds, nodes excluded (a node is not an element and has its own id sequence).
enum class ElemKind : std::uint8_t { Edge, Tri, Quad, Tet, Hex, Wedge, Pyramid, Sphere };
inline constexpr int kElemKindCount = 8;

struct ElemKindInfo {
    ElemKind kind;
    std::string_view word; // entity word of the command language and of the query functions
    int dim;               // topological dimension
    int nodes;             // corner nodes, in the Exodus node order
    int code;              // numeric type answered by get_element_type_id
};

// clang-format off
inline constexpr std::array<ElemKindInfo, kElemKindCount> kElemKinds{{
    {ElemKind::Edge,    "edge",    1, 2, 1},
    {ElemKind::Tri,     "tri",     2, 3, 2},
    {ElemKind::Quad,    "quad",    2, 4, 3},
    {ElemKind::Tet,     "tet",     3, 4, 4},
    {ElemKind::Hex,     "hex",     3, 8, 5},
    {ElemKind::Wedge,   "wedge",   3, 6, 6},
    {ElemKind::Pyramid, "pyramid", 3, 5, 7},
    {ElemKind::Sphere,  "sphere",  0, 1, 8},
}};
// clang-format on

constexpr const ElemKindInfo& info(ElemKind kind) {
    return kElemKinds[static_cast<int>(kind)];
}

// The kind named by a canonical entity word ("hex"), if any.
constexpr std::optional<ElemKind> elem_kind_from_word(std::string_view word) {
    for (const auto& k : kElemKinds)
        if (k.word == word)
            return k.kind;
    return std::nullopt;
}

using Point3 = std::array<double, 3>;

// Local topology of each kind, 0-based corner indices in Exodus order.
struct LocalTopology {
    std::vector<std::pair<int, int>> edges;
    // Sides in Exodus side order, each with its corners as Exodus lists them.
    std::vector<std::vector<int>> faces;
};

inline const LocalTopology& topology(ElemKind kind) {
    // clang-format off
    static const std::array<LocalTopology, kElemKindCount> table{{
        {{{0, 1}}, {}},                                                   // edge
        {{{0, 1}, {1, 2}, {2, 0}}, {{0, 1, 2}}},                          // tri
        {{{0, 1}, {1, 2}, {2, 3}, {3, 0}}, {{0, 1, 2, 3}}},               // quad
        {{{0, 1}, {1, 2}, {2, 0}, {0, 3}, {1, 3}, {2, 3}},                // tet
         {{0, 1, 3}, {1, 2, 3}, {0, 3, 2}, {0, 2, 1}}},
        {{{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6}, {6, 7}, {7, 4}, // hex
          {0, 4}, {1, 5}, {2, 6}, {3, 7}},
         {{0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6}, {0, 4, 7, 3}, {0, 3, 2, 1}, {4, 5, 6, 7}}},
        {{{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 3}, {0, 3}, {1, 4}, {2, 5}}, // wedge
         {{0, 1, 4, 3}, {1, 2, 5, 4}, {0, 3, 5, 2}, {0, 2, 1}, {3, 4, 5}}},
        {{{0, 1}, {1, 2}, {2, 3}, {3, 0}, {0, 4}, {1, 4}, {2, 4}, {3, 4}}, // pyramid
         {{0, 1, 4}, {1, 2, 4}, {2, 3, 4}, {0, 4, 3}, {0, 3, 2, 1}}},
        {{}, {}},                                                         // sphere
    }};
    // clang-format on
    return table[static_cast<int>(kind)];
}

} // namespace tarvo::kernel::mesh
