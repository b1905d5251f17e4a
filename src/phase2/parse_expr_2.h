// Phase 2: builds the trees of postfix expressions.
#pragma once

#include <cstdint>

#include "phase2/entry_reader.h"

// An operator or function whose operands are being read, the last one first.
struct open_expr {
    std::int32_t entry;    // among the expression's entries
    std::int32_t missing;  // operands, the first ones
};

// What the builders work with; kept from one expression to the next for its memory.
struct expr_builder {
    conv& script;
    array<open_expr> open = {};
    std::uint32_t first = 0;       // the expression's first item
    std::int32_t eval_offset = 0;  // of the "eval" that ends it
    bool names_block = false;      // set when an expression may have an "int32" literal
};

// Both build the tree of the expression whose first entry is `entry`, move `entry` behind its
// last one and give its root item, or no_item for a value of one item. They fail after their ERROR
// lines.

// An expression up to its "eval": a value, or a target, ":=" and a value.
result parse_eval_2(expr_builder& builder, entry_reader& entry, std::uint32_t& root);

// A variable reference, up to the "$var", "$str" or "data" that closes it.
result parse_var_2(expr_builder& builder, entry_reader& entry, std::uint32_t& root);
