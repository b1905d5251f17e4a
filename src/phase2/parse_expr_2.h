// Phase 2: builds the trees of postfix expressions.
#pragma once

#include <cstdint>

#include "phase2/entry_reader.h"

// One item of an expression, as the code offset table has it.
struct expr_entry {
    std::int32_t offset;
    code_type type;
    std::uint8_t code;
};

// An operator or function that still waits for operands.
struct open_expr {
    std::uint32_t item;    // in the tree
    std::int32_t entry;    // among the expression's entries
    std::int32_t missing;  // operands not taken yet, the first ones
};

// What the builders work with; kept from one expression to the next for its memory.
struct expr_builder {
    conv& script;
    array<expr_entry> entries;  // the expression's, in script order
    array<open_expr> open;
    bool names_block = false;  // set when an expression has an "int32" literal
};

// Both build the tree of the expression whose first entry is `entry`, move `entry` behind its
// last one and give the tree's root item. They fail after their ERROR lines.

// An expression up to its "eval": a value, or a target, ":=" and a value.
result parse_eval_2(expr_builder& builder, entry_reader& entry, std::uint32_t& root);

// A variable reference, up to the "$var", "$str" or "data" that closes it.
result parse_var_2(expr_builder& builder, entry_reader& entry, std::uint32_t& root);
