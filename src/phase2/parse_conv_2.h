// Phase 2: builds the instruction tree.
#pragma once

#include "base/result.h"
#include "model/conv.h"

// Builds the script's tree from what phase 1 recorded in the code offset table, which it trusts;
// the bytes' structure is not decoded again. Sets options.endif_without_if when it meets an endif
// that closes no if. On failure the ERROR lines are written and the tree is incomplete.
result parse_conv_2(conv& script);
