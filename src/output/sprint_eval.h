// Expressions in infix form.
#pragma once

#include <cstdint>

#include "output/listing.h"

// The longest rendering of an expression. What goes beyond is cut off.
inline constexpr std::size_t max_expression = 4095;

// Prints the expression whose root item is given, cut to its first max_expression characters.
// Fails, after an ERROR line and with nothing written, when memory runs out.
result sprint_eval(listing& print, std::uint32_t root);
