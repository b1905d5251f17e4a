// Phase 1: what a walk is known to do again.
//
// At a data block the top-level walk goes on at the lowest jump target not walked yet. Thousands
// of targets may lie in one text; then each walk would take the whole way from that text to the
// next data block once more, only to find everything recorded. A walk that comes to a step of the
// walk before it goes on where that one's silence ended instead.
#pragma once

#include <cstdint>

#include "model/conv.h"

// Steps that follow each other without a message. Walking them again has no effect but to set the
// npc id.
struct silent_stretch {
    std::int32_t end = 0;           // where the step behind them begins, or the data block
    std::int32_t last_sident = -1;  // the step that took the npc id last
    std::uint32_t npc_id = no_npc_id;
};

struct known_step {
    std::int32_t start;
    std::uint32_t stretch;
};

// One walk between two code breaks, since its last new data block start.
struct known_path {
    array<known_step> steps;  // in ascending order
    array<silent_stretch> stretches;
    bool is_silent = false;        // the last stretch goes on
    std::uint32_t messages = 0;    // how many there had been
    std::int32_t data_blocks = 0;  // how many data block starts had been added
};

struct path_memory {
    known_path latest;      // the last walk that took a way of its own
    known_path current;     // this walk, so far
    bool records = false;   // from the first code break on
    bool followed = false;  // this walk followed the latest
    // Where the step that is walked begins, and its further keywords statements: a walk that begins
    // in one's text comes to the next as to a step.
    array<std::int32_t> starts;
    std::int32_t text_start = 0;  // the text run walked last, if any
    std::int32_t text_end = 0;
};

// To be called at a code break, when the walk that ended at `end` is done and the next begins.
void finish_path(path_memory& memory, const conv& script, std::int32_t end);

// To be called when a step begins, and at each further keywords statement of its chain. These two
// fail, after their message, only when memory runs out.
result begin_step(path_memory& memory, std::int32_t start);
result continue_step(path_memory& memory, std::int32_t start);

// To be called when the step is done; `is_sident` says whether it took the npc id. The same failure.
result note_step(path_memory& memory, const conv& script, bool is_sident);

// Whether the walk knows the way from `cursor` on. Then it moves to its end and sets the npc id.
bool follow_known_path(path_memory& memory, conv& script, std::int32_t& cursor);

// The length of the text run at `start`, as text_length gives it for the rest of the script. A
// run that is the end of the one walked last is not measured again.
result text_length_from(path_memory& memory, const conv& script, std::int32_t start, std::int32_t& length);
