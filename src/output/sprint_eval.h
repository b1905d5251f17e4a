// Expressions in infix form.
#pragma once

#include <cstddef>

#include "output/listing.h"

// The longest rendering of an expression. What goes beyond is cut off.
inline constexpr std::size_t max_expression = 4095;

// Prints the expression of a VALUE or VARIABLE operand, cut to its first max_expression characters.
// Fails, after an ERROR line and with nothing written, when memory runs out.
result sprint_eval(listing& print, const operand& param);
