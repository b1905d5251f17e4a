// Phase 1: turns bytes that fail to parse as an expression into a data block.
#pragma once

#include <cstdint>

#include "base/result.h"
#include "model/conv.h"

// Makes a data block of the bytes from `offset` on, where an expression at statement level
// failed. Fails without a message when nothing tells that the code ended before them: they must
// follow a jump or, in the first game, an "end" statement, and no jump may lead to or behind them.
result recover_as_data_block(conv& script, std::int32_t offset);
