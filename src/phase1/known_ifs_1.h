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
// So of a known if only the parts that have messages, or to which a new data block came, must be walked
// again, and where nothing of that is around an inner if, only that one. Each leads to the longest known if
// in it. Another one in it is at most half as long as it: few of them lie in each other. Of ifs in each other
// at least one in a few levels becomes known, since what is known in them makes walking them seem cheap.
#pragma once

#include <cstddef>
#include <cstdint>

#include "phase1/walk_memory_1.h"

// One if that is walked, perhaps only in part.
struct if_walk {
    path_moment first = {};
    std::uint32_t known = 0;  // 0 when it was not walked before
    std::uint32_t part = 0;   // it or the only if in it that must be walked, 0 for none
    effect around = {};       // what is around the part
    std::size_t trail = 0;    // where its part of the memory's trail begins
    if_within longest = {};   // before it, in the same if around both
};

// To be called where an if begins.
result begin_if_walk(walk_memory& memory, std::int32_t offset, if_walk& walk);

// To be called behind its endif when the part was all of it.
result end_if_walk(walk_memory& memory, const if_walk& walk, std::int32_t end);

// To be called when the part was not, behind its endif. Returns where the whole if ends.
std::int32_t pass_if(walk_memory& memory, const if_walk& walk);
