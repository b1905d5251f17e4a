// Phase 1: the ways that walks have gone.
//
// A way is kept as a chain of known places, each with the effect of the way to the next one and with that
// of a leap over many, so that to follow it and to find what still holds of it takes a logarithm of its
// length. A place is known by its offset and by what the walk was doing there, its role; ways that join
// have the rest of the chain in common.
//
// Places become known so far apart that walking from one to the next costs little. What a path costs is,
// from its end on, what another walk would pay for it: up to its first known place. So what lies around a
// path that is known is as cheap as the path itself, and need not become known for its sake.
#pragma once

#include <cstdint>

#include "phase1/walk_memory_1.h"

path_role role_in(block_kind kind);
path_role role_of_chain(block_kind kind);

// One walk in one role.
struct path {
    path_role role = path_role::top_level;
    std::uint32_t known = 0;      // the last known place on it, if any
    effect edge = {};             // from there to where the last step began
    path_moment first = {};       // where the walk began
    path_moment last = {};        // where the last step did
    std::int64_t edge_start = 0;  // the cost where the edge begins
    std::int64_t lead = -1;       // the cost up to the first known place and of edges that are not kept, -1 for all
    std::int32_t deepest = 0;     // before the walk and up to its last step
    std::size_t trail = 0;        // where its part of the memory's trail begins
};

path begin_path(walk_memory& memory, path_role role, std::int32_t offset);

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
