// Phase 1: makes sure that every jump target can carry a label.
#pragma once

#include "base/result.h"
#include "model/conv.h"

// Accepts a jump target that the walk reached, splits a text that a jump enters, so that its
// second part begins at the target, and fails, after an ERROR line, at any other target.
result check_jump_offset_1(conv& script);
