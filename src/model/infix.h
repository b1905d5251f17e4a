// The infix form that expressions have in a listing, as far as writer and reader share it.
#pragma once

#include <cstddef>

#include "model/code_info.h"

// The longest rendering of an expression. What goes beyond is cut off.
inline constexpr std::size_t max_expression = 4095;

// Parentheses stand around an operation of two operands that is an operand of another one:
//   a comparison      always
//   + and -           except under + or -
//   * and /           except under +, -, * or /
//   || and &&         except under the same one of the two
// and around any right operand of the same group (additive, multiplicative or logical) as the
// operation above it, unless its text begins with a parenthesis as it is. What is left bare groups
// from the left. The exception makes two trees look alike, 1 - ((2 == 3) - 4) and
// (1 - (2 == 3)) - 4; with --verbosity-parenthesis every operation has parentheses of its own.

inline operator_group group_of(std::uint8_t code) { return code_info[code].group; }

// Whether the first rule wraps an operation as an operand of `parent`, the code of any item around it
// or 0.
inline bool is_wrapped(std::uint8_t code, std::uint8_t parent) {
    const operator_group around = group_of(parent);
    if (around == operator_group::none) return false;
    switch (group_of(code)) {
        case operator_group::additive: return around != operator_group::additive;
        case operator_group::multiplicative:
            return around != operator_group::additive && around != operator_group::multiplicative;
        case operator_group::logical: return parent != code;
        default: return true;
    }
}

// Whether the second rule looks at a right operand with this code.
inline bool is_same_group(std::uint8_t code, std::uint8_t right) {
    return group_of(code) != operator_group::comparison && group_of(code) == group_of(right);
}
