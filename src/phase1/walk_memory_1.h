// Phase 1: what walks remember, so that no way is taken twice.
//
// At a data block the top-level walk goes on at the lowest jump target not walked yet. Each such walk
// would take the whole way from there to the next data block, however much of it is known:
//
//     00: B0 @13  B0 @14  B0 @15     three jumps
//     0F: "Well met"                 whose targets lie in this text
//     17: ...                        a thousand statements
//         C4 D2 @0F00 A7             and one that names the data block behind them
//
// How a walk goes on from a place follows from the script's bytes and from what it is doing there. So a
// walk that does the same where another one did goes straight to where that one ended, and leaves behind
// what walking would: the npc id, and nothing in the offset tables, since entries are never taken away or
// given another type. Where there are messages it walks, which says them again.
//
// Two things make it untrue. A data block start ends or breaks a block where a step would begin: what
// leads over it is walked anew, once. The recovery cuts the code table: nothing known before holds.
//
// known_places_1.h knows places and leads from one to the next, known_ways_1.h makes them of the ways that
// walks go, known_ifs_1.h of ifs: these may be nested, and what changes in the innermost one must not have
// each of them walked anew.
#pragma once

#include <cstdint>
#include <limits>

#include "base/diagnostics.h"
#include "model/block.h"
#include "model/conv.h"

// What a walk is doing at a place: one role for each kind of block, then for the chains in them.
enum class path_role : std::uint8_t {
    top_level,
    if_branch,
    else_branch,
    answer,
    answer_in_if,
    answer_in_else,
    chain,  // at a keywords statement
    chain_in_if,
    chain_in_else,
    if_statement,  // with all that is in it
    item,          // of an expression
    reference,     // an item of a variable reference
    text,          // outside its passages
};

// What a stretch of a way does. The balance is what a walk carries along: the values on the stack of a
// variable reference, the answers of a chain that ended with a jump or bye; 0 in the other roles.
struct effect {
    std::int32_t need = 0;                                           // with a lower balance the way is another
    std::int32_t gain = 0;                                           // of the balance
    std::int16_t height = 0;                                         // levels of blocks that it opens
    bool speaks = false;                                             // it has messages
    std::int32_t sident = -1;                                        // where the last npc id is, -1 for nowhere
    std::uint32_t time = std::numeric_limits<std::uint32_t>::max();  // how many changes there had been
};

// A place of a way, whose next place lies behind it; or an if, whose next place is the longest known if in
// it. What is between the two is known, and what is between it and a place farther on.
struct known_place {
    std::int32_t offset;
    path_role role;
    std::uint8_t rank = 0;        // of the leap
    std::int32_t end = 0;         // of an if: behind its endif
    std::uint32_t neighbour = 0;  // another place of the same stretch of the script, 0 for none
    std::uint32_t next = 0;       // 0 in an innermost if, the place itself where the way is not known further
    std::uint32_t far = 0;        // 2^rank - 1 places on
    effect step = {};             // up to `next`
    effect leap = {};             // up to `far`
};

// A known if in the one that is being walked.
struct if_within {
    std::uint32_t known = 0;     // 0 for none
    std::uint64_t messages = 0;  // that it had there
};

// When tests want it: from the first code break on, everything; or never.
enum class remembering : std::uint8_t { when_it_pays, always, never };
inline remembering walks_remember = remembering::when_it_pays;

// How many steps, items and pieces of text the last run of phase 1 looked at.
inline std::int64_t phase_1_looks = 0;

// What lies where is kept by stretches of the script.
constexpr std::int32_t stretch_size = 64;
constexpr std::size_t stretch_of(std::int32_t offset) { return static_cast<std::size_t>(offset / stretch_size); }

struct walk_memory {
    conv& script;
    bool is_on = false;
    std::int64_t cost = 0;  // looks that walking here again would cost
    std::int64_t spacing = 20;

    array<known_place> places = {};       // the first is none
    array<std::uint32_t> stretches = {};  // the first known place of each stretch
    array<std::uint32_t> trail = {};      // places whose leaps are to be found, in the order of the way
    if_within longest = {};               // so far in the if that is being walked

    array<std::uint8_t> steps = {};    // one bit for each offset: in some walk a block's step began there
    array<std::uint32_t> latest = {};  // a tree over the stretches: the last change in each part
    std::uint32_t changes = 1;         // data blocks that were found where steps began, and recoveries
    std::uint32_t since = 1;           // what was walked before this change is forgotten

    std::int32_t depth = 0;     // of the block that is being walked
    std::int32_t deepest = 0;   // so far in the step that is being walked
    std::int32_t sident = -1;   // where the npc id was taken last
    std::uint32_t sidents = 0;  // how often it was
};

inline void count_looks(walk_memory& memory, std::int64_t looks) {
    phase_1_looks += looks;
    memory.cost += looks;
}

// How much at least walking costs between known places. Steps of blocks hold such places themselves.
inline std::int64_t spacing_of(const walk_memory& memory, path_role role) {
    return role < path_role::item ? 2 * memory.spacing : memory.spacing;
}

// To be called at a code break. From here on walks are remembered if much was looked at without finding
// anything new, which an ordinary script never asks for. Fails, as all that remembers does, when
// memory runs out, after its message.
result start_remembering(walk_memory& memory);

// What a walk has done when it stands at a place.
struct path_moment {
    std::int32_t offset = 0;
    std::int32_t balance = 0;
    std::uint32_t sidents = 0;
    std::uint64_t messages = 0;
    std::uint32_t time = 0;
    std::int64_t cost = 0;
};
path_moment moment_at(const walk_memory& memory, std::int32_t offset, std::int32_t balance);

// What was done since a moment, and how deep.
effect effect_since(const walk_memory& memory, const path_moment& moment, std::int32_t balance, std::int32_t need);

// Does it once more without walking, but for the balance.
void apply(walk_memory& memory, const effect& way);

// Enters and leaves a block. Fails where blocks are nested too deep.
inline bool enter_block(walk_memory& memory) {
    if (memory.depth == max_nesting) return false;
    if (++memory.depth > memory.deepest) memory.deepest = memory.depth;
    return true;
}
inline void leave_block(walk_memory& memory) { --memory.depth; }

// To be called where a step of a block begins: a data block start that is found there later matters.
inline void note_step(walk_memory& memory, std::int32_t offset) {
    if (memory.is_on) memory.steps[static_cast<std::size_t>(offset) / 8] |= static_cast<std::uint8_t>(1 << offset % 8);
}
void note_sident(walk_memory& memory, std::int32_t offset);

// To be called when the recovery has cut the code table.
void forget_walks(walk_memory& memory);

// Records a data block start.
result name_data_block(walk_memory& memory, std::int32_t offset);

// The last change from one offset to another, both included.
std::uint32_t latest_change(const walk_memory& memory, std::int32_t from, std::int32_t to);
