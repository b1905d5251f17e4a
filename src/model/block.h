// The blocks that both phases walk: the top level and the sub blocks of if, else and keywords.
#pragma once

#include <cstdint>

#include "model/code_info.h"

// How deep sub blocks may nest. The walkers and the printer recurse once for each level, which takes
// less than 2 KB of stack even in an unoptimised sanitizer build.
inline constexpr int max_nesting = 4100;

// The statement whose sub block is walked (0, OP_IF, OP_ELSE or OP_KEYWORDS) and, for the answer
// of a keywords statement, the parent code of the block in which that statement stands, else 0.
struct block_kind {
    std::uint8_t parent_code = 0;
    std::uint8_t grandparent_code = 0;
};

constexpr bool closes_branch(int code, std::uint8_t parent_code) {
    return (parent_code == OP_IF && (code == OP_ENDIF || code == OP_ELSE)) ||
           (parent_code == OP_ELSE && code == OP_ENDIF);
}

// Whether a block ends before this byte. An answer also ends at what closes the branch in which
// its keywords statement stands.
constexpr bool closes_block(int code, block_kind kind) {
    if (kind.parent_code != OP_KEYWORDS) return closes_branch(code, kind.parent_code);
    return code == OP_ENDANSWER || code == OP_KEYWORDS || code == OP_JUMP || code == OP_BYE ||
           closes_branch(code, kind.grandparent_code);
}
