// Phase 1: the ifs that were walked.
//
// An if is the same wherever it stands: its closers, and with them its end, follow from its bytes alone. A
// data block start inside it changes nothing within a step or at a closer, and else ends the run:
//
//     A1 .. A7                 if
//        A1 .. A7              if
//           'a' 'b' 'c'           a text, whose letters may be data blocks; but at 'a' the walk returns
//        A2                    endif       to the inner if, which misses its endif there
//     A2                       endif
//
// So what is to be found out about a known if is whether new data blocks have come to lie in it at a step.
// Each remembers the longest known if in it, and leaps over many of those: where nothing has changed
// around an inner if, that one is looked at instead, and the innermost that has changed is walked again,
// without a word. If it ends as before and says the same, so do all those around it. An if that is not the
// longest is at most half as long as what is around it: few of them lie in each other.
#pragma once

#include <cstdint>

#include "phase1/walk_memory_1.h"

// One if that is walked.
struct if_walk {
    path_moment first = {};
    std::int32_t deepest = 0;   // before it
    std::uint32_t longest = 0;  // before it, in the same if around both
};

// The known if at an offset, 0 if there is none.
std::uint32_t find_if(const walk_memory& memory, std::int32_t offset);

// The innermost part of a known if that has changed since that was walked, perhaps itself; 0 if none has.
std::uint32_t find_changed(walk_memory& memory, std::uint32_t at);

// Does what walking the if would do, but for moving the cursor. Nothing of it may have changed.
void pass_if(walk_memory& memory, std::uint32_t at);

// To be called before an if is walked, and behind its endif.
if_walk begin_if_walk(walk_memory& memory, std::int32_t offset);
result end_if_walk(walk_memory& memory, const if_walk& walk, std::int32_t end);
