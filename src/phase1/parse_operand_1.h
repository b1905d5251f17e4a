// Phase 1: finds where expressions and variable references end.
#pragma once

#include <cstdint>
#include <optional>

#include "model/conv.h"

// Both scan items from `offset`, which lies inside the script, record each in the code offset
// table, and record the value of every "int32" literal as a data block start. They return the
// offset just past the last item, or nothing after an ERROR line; the entries made so far stay.

// Scans an expression: up to and including the first "eval".
std::optional<std::int32_t> parse_eval_1(conv& script, std::int32_t offset);

// Scans a variable reference: up to the "$var", "$str" or "data" that consumes every value
// pushed before it.
std::optional<std::int32_t> parse_var_1(conv& script, std::int32_t offset);
