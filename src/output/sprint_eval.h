// Expressions in infix form.
#pragma once

#include "output/listing.h"

// Prints the expression of a VALUE or VARIABLE operand, cut to its first max_expression characters.
// Fails, after an ERROR line and with nothing written, when memory runs out.
result sprint_eval(listing& print, const operand& param);
