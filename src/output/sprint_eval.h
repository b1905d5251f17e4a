// Expressions in infix form.
#pragma once

#include <cstddef>

#include "base/array.h"
#include "model/conv.h"
#include "model/infix.h"

// A part of an expression that is rendered later.
enum class piece_kind : std::uint8_t;
struct pending_piece {
    std::uint32_t item;
    piece_kind kind;
    std::uint8_t code;
};

// The room that the rendering takes: the last step may pass the limit, a name's padding included.
inline constexpr std::size_t expression_room = max_expression + 3 * code_name::max_size;

// Renders the expression of a VALUE or VARIABLE operand at `to`, which it moves behind the rendering. What `pieces`
// holds is lost. Fails, after an ERROR line, when memory runs out.
result sprint_eval(const conv& script, array<pending_piece>& pieces, const operand& param, char*& to);
