// The instruction tree: one node for each text, statement, data block and element of one.
//
// Nodes, operands and expression items lie in three arrays of the tree and refer to each other
// by index, so that a node costs 16 bytes and the whole tree is released at once.
#pragma once

#include <cstdint>

#include "base/array.h"
#include "base/diagnostics.h"
#include "base/result.h"
#include "model/code_info.h"

using inst_index = std::uint32_t;
inline constexpr inst_index no_inst = 0xFFFFFFFF;
inline constexpr std::uint32_t no_params = 0xFFFFFFFF;

// What `value` holds depends on `type`:
//   BYTE, INT16, INT32, STR32   the number
//   TEXT                        the offset just behind the text
//   VALUE, VARIABLE             the index of the expression's root item, its last, or no_item for a
//                               value that is one item only, which is at the operand's offset
//   ASSIGN                      0; the operand only marks the ":="
struct operand {
    std::int32_t offset = 0;  // of the operand's first entry in the code offset table
    std::uint32_t value = 0;
    code_type type = NONE;
};

struct inst {
    inst_index next = no_inst;  // the following node of the same list
    std::int32_t offset = 0;
    std::uint32_t params = no_params;  // index of the first operand; they stand side by side
    code_type type = NONE;
    std::uint8_t code = 0;
    std::uint8_t num_params = 0;  // 0 for a text node, although it has its text as operand 0
    bool has_subblock = false;    // a list of nodes is nested in it; it begins with the next index
};

// An expression is stored as its items in script order: an operator or function behind its
// operands' trees. `extent` counts the items of the tree that an item ends, itself included. The
// item's kind is its type in the code offset table.
//
// The "eval" that ends a VALUE operand is not stored. In front of the value's tree an assignment has
// its target's tree and the ":=", whose extent is 0.
struct expr_item {
    std::int32_t offset = 0;
    std::uint32_t extent = 1;
};
inline constexpr std::uint32_t no_item = 0xFFFFFFFF;

// Nodes stand in ascending order of their offsets, first those that phase 2 walked, each before its
// sub block, then the elements added to data blocks.
struct inst_tree {
    inst_index root = no_inst;
    std::uint32_t walked = 0;  // nodes that phase 2 walked
    array<inst> nodes;
    array<operand> operands;
    array<expr_item> items;
    array<inst_index> block_users;  // nodes whose operands may name data blocks, ascending
};

// Adds a node without operands. Returns no_inst, after its message, when memory runs out.
inline inst_index inst_new(inst_tree& tree, std::int32_t offset, code_type type, std::uint8_t code) {
    if (failed(push(tree.nodes, {.offset = offset, .type = type, .code = code}))) return no_inst;
    return static_cast<inst_index>(tree.nodes.size() - 1);
}

// Adds an operand to a node; counts it in num_params. Since the node's first operand no other node
// may have got one. The same failure.
inline result inst_add_param(inst_tree& tree, inst_index node, const operand& param) {
    if (failed(push(tree.operands, param))) return result::failed;
    inst& owner = tree.nodes[node];
    if (owner.num_params == 0) owner.params = static_cast<std::uint32_t>(tree.operands.size() - 1);
    ++owner.num_params;
    return result::ok;
}

// Operand `k` of a node, all zero when the node has none.
inline operand inst_param(const inst_tree& tree, const inst& node, std::uint32_t k) {
    if (node.params == no_params) return {};
    return tree.operands[node.params + k];
}

// The first node of the list nested in a node, or no_inst.
inline inst_index inst_subblock(const inst_tree& tree, inst_index node) {
    return tree.nodes[node].has_subblock ? node + 1 : no_inst;
}

// The root of the tree in front of the one that ends with this item: of an operator's operands,
// which end in front of it, the one before. Before the first item it is no_item.
inline std::uint32_t expr_before(const inst_tree& tree, std::uint32_t item) { return item - tree.items[item].extent; }

// The ":=" item of the assignment whose value has this root, or no_item when there is none.
inline std::uint32_t expr_assign(const inst_tree& tree, std::uint32_t root) {
    const std::uint32_t before = root == no_item ? no_item : expr_before(tree, root);
    return before != no_item && tree.items[before].extent == 0 ? before : no_item;
}
