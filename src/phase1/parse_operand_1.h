// Phase 1: finds where expressions and variable references end.
#pragma once

#include <cstdint>

#include "phase1/walk_memory_1.h"

// Both scan items from the cursor, which lies inside the script, record each in the code offset
// table, and record the value of every "int32" literal as a data block start. They move the
// cursor past the last item or fail after an ERROR line; then the cursor stays, and so do the
// entries made so far.

// Scans an expression: up to and including the first "eval".
result parse_eval_1(walk_memory& memory, std::int32_t& cursor);

// Scans a variable reference: up to the "$var", "$str" or "data" that consumes every value
// pushed before it.
result parse_var_1(walk_memory& memory, std::int32_t& cursor);
