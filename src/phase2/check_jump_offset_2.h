// Phase 2: makes sure that every jump leads to a node.
#pragma once

#include "base/result.h"
#include "model/conv.h"

// Fails, after an ERROR line, at the first jump target that is the offset of no node. The elements of
// data blocks count as well.
result check_jump_offset_2(const conv& script);
