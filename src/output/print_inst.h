// The lines of statements and data blocks.
#pragma once

#include "output/print_job.h"

// Both print at indentation depth `depth` and fail after an ERROR line; what was printed of the
// line before stays.

// The line of a statement with its operands.
result print_statement(print_job& job, const inst& node, int depth);

// The lines of a DATA_TEXT, DATA_INT16 or DATA node whose `size` bytes lie inside the script.
result print_data_block(print_job& job, const inst& node, int depth, std::int32_t size);
