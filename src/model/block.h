// The blocks that both phases walk: the top level and the sub blocks of if, else and keywords.
#pragma once

#include <array>
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

// The blocks that an opcode closes, one bit each.
enum block_mask : std::uint8_t {
    no_block = 0,
    if_branch = 1,
    else_branch = 2,
    answer = 4,
};

constexpr std::array<std::uint8_t, 256> make_closed_blocks() {
    std::array<std::uint8_t, 256> closed{};
    closed[OP_ENDIF] = if_branch | else_branch;
    closed[OP_ELSE] = if_branch;
    for (const opcode code : {OP_ENDANSWER, OP_KEYWORDS, OP_JUMP, OP_BYE}) closed[code] = answer;
    return closed;
}
inline constexpr auto closed_blocks = make_closed_blocks();

constexpr std::uint8_t branch_mask(std::uint8_t parent_code) {
    return parent_code == OP_IF ? if_branch : parent_code == OP_ELSE ? else_branch : no_block;
}

// What the closing of ends a block. An answer also ends where the branch is closed in which its
// keywords statement stands.
constexpr std::uint8_t closing_mask(block_kind kind) {
    if (kind.parent_code != OP_KEYWORDS) return branch_mask(kind.parent_code);
    return answer | branch_mask(kind.grandparent_code);
}

// Whether a block ends before this byte.
constexpr bool closes_block(std::uint8_t code, std::uint8_t mask) { return (closed_blocks[code] & mask) != 0; }
