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
// How a walk goes on from a place follows from the script's bytes and from the role in which it comes
// there: as a step of a block, an item of an expression, a character of a text. So a walk that comes in
// the same role to where another one was goes straight to where that one ended, and leaves behind what
// walking would: nothing in the offset tables, since entries are never taken away or given another
// type; the messages, which are said again as they were; the npc id.
//
// Two things make it untrue. A data block start ends or breaks a block where a step would begin: what
// leads over it is walked anew, once. The recovery cuts the code table: nothing known before holds.
//
// A way is kept as a chain of known places, each with the effect of the way to the next one and with
// that of a leap over many, so that to follow it and to find what still holds of it takes a logarithm
// of its length. Ways that join have the rest of the chain in common.
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
    item,       // of an expression
    reference,  // an item of a variable reference
    text,       // outside its passages
};

path_role role_in(block_kind kind);
path_role role_of_chain(block_kind kind);

// What a stretch of a way does. The balance is what a walk carries along: the values on the stack of a
// variable reference, the answers of a chain that ended with a jump or bye; 0 in the other roles.
struct effect {
    std::int32_t need = 0;                                           // with a lower balance the way is another
    std::int32_t gain = 0;                                           // of the balance
    std::int32_t sident = -1;                                        // the last npc id taken, -1 for none
    std::uint32_t messages = 0;                                      // where they begin in the memory's copy,
    std::uint32_t messages_end = 0;                                  // and end
    std::uint32_t time = std::numeric_limits<std::uint32_t>::max();  // how many changes there had been
};

struct known_place {
    std::int32_t offset;
    path_role role;
    std::uint32_t neighbour = 0;  // the next place of the same stretch of the script, 0 for none
    std::uint32_t next = 0;       // the place itself where the way is not known further
    std::uint32_t far = 0;        // `span` places on
    std::uint32_t span = 0;
    effect step = {};  // up to `next`
    effect leap = {};  // up to `far`
};

// When tests want it: from the first code break on, every place; or never.
enum class remembering : std::uint8_t { when_it_pays, always, never };
inline remembering walks_remember = remembering::when_it_pays;

// How many steps, items and pieces of text the last run of phase 1 looked at.
inline std::int64_t phase_1_looks = 0;

struct walk_memory {
    conv& script;
    bool is_on = false;
    std::int64_t cost = 0;  // looks, but few for what need not be walked again
    std::int64_t spacing = 16;
    array<known_place> places = {};       // the first is none
    array<std::uint32_t> stretches = {};  // the first known place of each stretch of the script
    array<std::uint32_t> trail = {};      // places whose leaps are to be found, in the order of the way
    array<std::uint8_t> steps = {};       // one bit for each offset: a block's step began there
    array<std::uint32_t> latest = {};     // a tree over the stretches: the last change in each part
    std::uint32_t changes = 1;            // data blocks that were found where steps began, and recoveries
    std::uint32_t since = 1;              // what was walked before this change is forgotten
    std::int32_t sident = -1;             // where the npc id was taken last
    std::uint32_t sidents = 0;            // how often it was
    message_copy messages = {};
    std::size_t messages_kept = 0;  // by known places
};

// What a walk has done when it stands at a place.
struct path_moment {
    std::int32_t offset = 0;
    std::int32_t balance = 0;
    std::uint32_t sidents = 0;
    std::uint32_t messages = 0;
    std::uint32_t lost_messages = 0;
    std::uint32_t time = 0;
    std::int64_t cost = 0;
};

// One walk in one role.
struct path {
    path_role role = path_role::top_level;
    std::uint32_t known = 0;      // the last known place on it, if any
    effect edge = {};             // from there to where the last step began
    path_moment first = {};       // where the walk began
    path_moment last = {};        // where the last step did
    std::int64_t edge_start = 0;  // the cost where the edge begins
    std::int64_t lead = -1;       // the cost up to the first known place, and of what is not kept behind it
    std::size_t trail = 0;
};

inline void count_looks(walk_memory& memory, std::int64_t looks) {
    phase_1_looks += looks;
    memory.cost += looks;
}

// To be called at a code break. From here on walks are remembered if more was looked at than the
// script has bytes, which an ordinary script never asks for. Fails, as all below do, when memory runs
// out, after its message.
result start_remembering(walk_memory& memory);

path begin_path(const walk_memory& memory, path_role role, std::int32_t offset);

// To be called wherever a step of the path begins, before anything is said there. `need` is that of the
// step before.
result take_step(walk_memory& memory, path& way, std::int32_t offset, std::int32_t balance, std::int32_t need);
inline result arrive(walk_memory& memory, path& way, std::int32_t offset) {
    return memory.is_on ? take_step(memory, way, offset, 0, 0) : result::ok;
}

// Arrives and moves on as far as the way is known.
result pass_known(walk_memory& memory, path& way, std::int32_t& offset, std::int32_t& balance, std::int32_t need);
inline result pass(walk_memory& memory, path& way, std::int32_t& offset, std::int32_t& balance, std::int32_t need = 0) {
    return memory.is_on ? pass_known(memory, way, offset, balance, need) : result::ok;
}
inline result pass(walk_memory& memory, path& way, std::int32_t& offset) {
    std::int32_t balance = 0;
    return pass(memory, way, offset, balance);
}

// To be called where the path ends, or where the last step of it begins that is not to be followed.
result end_path(walk_memory& memory, path& way, std::int32_t offset, std::int32_t balance = 0, std::int32_t need = 0);

// To be called where a step of a block begins: a data block start that is found there later matters.
inline void note_step(walk_memory& memory, std::int32_t offset) {
    if (memory.is_on) memory.steps[static_cast<std::size_t>(offset) / 8] |= static_cast<std::uint8_t>(1 << offset % 8);
}
void note_sident(walk_memory& memory, std::int32_t offset);
void note_recovery(walk_memory& memory);

// Records a data block start.
result name_data_block(walk_memory& memory, std::int32_t offset);
