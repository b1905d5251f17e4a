// Phase 1: the ways that walks go, as chains of known places. Ways that join have the rest in common.
//
// Places become known so far apart that walking from one to the next costs little. What a path costs is,
// from its end on, what another walk would pay for it: up to its first known place. So what lies around a
// path that is known is as cheap as the path itself, and need not become known for its sake.
#pragma once

#include <cstdint>
#include <optional>

#include "phase1/walk_memory_1.h"

path_role role_in(block_kind kind);
path_role role_of_chain(block_kind kind);

// One walk in one role.
struct path {
    path_role role = path_role::top_level;
    bool has_begun = false;       // at the top level it does after a step, as hardly any other begins there
    std::uint32_t known = 0;      // the last known place on it, if any
    effect edge = {};             // from there to where the last step began
    std::int32_t start = 0;       // where the walk began
    std::int64_t start_cost = 0;  // the cost there
    path_moment last = {};        // where the last step began
    std::int64_t edge_start = 0;  // the cost where the edge begins
    std::int64_t lead = -1;       // the cost up to the first place that it made known, -1 for none
    std::int32_t deepest = 0;     // before the walk and up to its last step
    std::size_t trail = 0;        // where its part of the memory's trail begins
};

path path_from(walk_memory& memory, path_role role, std::int32_t offset);
// None where nothing is remembered; arrive, pass and end_path do nothing then.
inline std::optional<path> begin_path(walk_memory& memory, path_role role, std::int32_t offset) {
    if (!memory.is_on) return std::nullopt;
    return path_from(memory, role, offset);
}

// To be called wherever a step of the path begins, before anything is said there. `need` is that of the
// step before.
result take_step(walk_memory& memory, path& way, std::int32_t offset, std::int32_t balance, std::int32_t need);
inline result arrive(walk_memory& memory, std::optional<path>& way, std::int32_t offset) {
    return way ? take_step(memory, *way, offset, 0, 0) : result::ok;
}

// Arrives and moves on as far as the way is known.
result pass_known(walk_memory& memory, path& way, std::int32_t& offset, std::int32_t& balance, std::int32_t need);
inline result pass(walk_memory& memory, std::optional<path>& way, std::int32_t& offset, std::int32_t& balance,
                   std::int32_t need = 0) {
    return way ? pass_known(memory, *way, offset, balance, need) : result::ok;
}
inline result pass(walk_memory& memory, std::optional<path>& way, std::int32_t& offset) {
    std::int32_t balance = 0;
    return pass(memory, way, offset, balance);
}

// To be called where the path ends, or where the last step of it begins that is not to be followed.
result end_known(walk_memory& memory, path& way, std::int32_t offset, std::int32_t balance, std::int32_t need);
inline result end_path(walk_memory& memory, std::optional<path>& way, std::int32_t offset, std::int32_t balance = 0,
                       std::int32_t need = 0) {
    return way ? end_known(memory, *way, offset, balance, need) : result::ok;
}
