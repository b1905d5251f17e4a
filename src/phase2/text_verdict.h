// Whether the rest of a number block is a table of texts.
#pragma once

#include <cstdint>

#include "model/conv.h"

// The verdict for one position. A malformed text shows as the offset (0 or more) that
// report_malformed_text takes.
using text_verdict = std::int32_t;
inline constexpr text_verdict all_text = -1;  // texts of two characters or more, each with its NUL
inline constexpr text_verdict no_text = -2;

// Judges the block's bytes from each of the positions start, start + 2, ... up to `end`, all at
// once and in a time proportional to the block. Verdict k is that of start + 2 * k. The rest of a
// block is text when it consists of NUL-terminated texts without control characters up to `end`
// or up to an "enddata" byte there. Fails, after its message, when memory runs out.
result judge_texts(const conv& script, std::int32_t start, std::int32_t end, array<text_verdict>& verdicts);
