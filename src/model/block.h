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

// What an opcode closes, one bit for each kind of block.
enum closing : std::uint8_t {
    closes_nothing = 0,
    closes_if = 1,
    closes_else = 2,
    closes_answer = 4,
};

constexpr std::array<std::uint8_t, 256> make_closings() {
    std::array<std::uint8_t, 256> closings{};
    closings[OP_ENDIF] = closes_if | closes_else;
    closings[OP_ELSE] = closes_if;
    for (const opcode code : {OP_ENDANSWER, OP_KEYWORDS, OP_JUMP, OP_BYE}) closings[code] = closes_answer;
    return closings;
}
inline constexpr auto closings = make_closings();

// What closes the branch of a statement.
constexpr std::uint8_t branch_closers(std::uint8_t parent_code) {
    switch (parent_code) {
        case OP_IF: return closes_if;
        case OP_ELSE: return closes_else;
        default: return closes_nothing;
    }
}

// What closes a block. What closes the branch in which a keywords statement stands closes its answer
// as well.
constexpr std::uint8_t closers_of(block_kind kind) {
    if (kind.parent_code != OP_KEYWORDS) return branch_closers(kind.parent_code);
    return closes_answer | branch_closers(kind.grandparent_code);
}

// Whether a byte is one of the closers, which is to say that the block ends before it.
constexpr bool is_closer(std::uint8_t code, std::uint8_t closers) { return (closings[code] & closers) != 0; }
