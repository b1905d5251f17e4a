// Expressions in infix form, put into the script in postfix order.
#pragma once

#include "assemble/reader.h"

// Both read an operand at the reader's place and add its bytes. They fail after reporting an error,
// and when memory runs out.

// A value: an expression that ends with an "eval" in the script, or a reference, ":=" and such a one.
result read_value(reader& read);

// A reference: "$var", "$str" or "data" with what belongs to it.
result read_reference(reader& read);
