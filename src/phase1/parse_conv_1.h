// Phase 1: walks the byte code and records what begins where.
#pragma once

#include "base/result.h"
#include "model/conv.h"

// Walks a loaded script from offset 0, follows its blocks and, at data blocks, goes on at the
// lowest jump target not walked yet. Fills the three offset tables and takes the npc id. On
// failure the ERROR lines are written and what was recorded stays.
result parse_conv_1(conv& script);
