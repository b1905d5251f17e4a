// Data blocks: what kind each one is and which elements it has.
#pragma once

#include "base/result.h"
#include "model/conv.h"

// Types each data block that an operand names: DATA_TEXT where the code wants texts, else
// DATA_INT16. Fails, after an ERROR line, when an operand names no block or a block is wanted as
// both kinds.
result set_data_block_type(conv& script);

// Splits each typed block into element nodes. The end of a number block that holds texts becomes
// a text block. Fails, after an ERROR line, at a block that is not properly ended.
result parse_data_block(conv& script);
