#include "phase1/known_ways_1.h"

#include <algorithm>
#include <utility>

#include "phase1/known_places_1.h"

namespace {

std::uint8_t place_of(std::uint8_t parent_code) { return parent_code == OP_IF ? 1 : parent_code == OP_ELSE ? 2 : 0; }

path_role role_from(path_role first, std::uint8_t place) {
    return static_cast<path_role>(static_cast<std::uint8_t>(first) + place);
}

// The way has come to a known place.
result reach_place(walk_memory& memory, path& way, std::uint32_t at) {
    const std::uint32_t before = std::exchange(way.known, at);
    if (before == 0) return result::ok;
    memory.places[before].step = way.edge;
    memory.places[before].next = at;
    return push(memory.trail, before);
}

// Makes a known place on the way, which the edge ends at; and one where the way begins if that is far.
result make_known(walk_memory& memory, path& way, const path_moment& moment) {
    if (way.known == 0 && moment.cost - way.start_cost >= memory.spacing) {
        if (failed(make_place(memory, way.role, way.start, way.known))) return result::failed;
        way.lead = 0;
    }
    std::uint32_t at = 0;
    if (failed(make_place(memory, way.role, moment.offset, at))) return result::failed;
    if (way.lead < 0) way.lead = moment.cost - way.start_cost;
    if (at != way.known && failed(reach_place(memory, way, at))) return result::failed;
    way.edge = {};
    way.edge_start = moment.cost;
    return result::ok;
}

void note_deepest(walk_memory& memory, path& way) {
    way.deepest = std::max(way.deepest, std::exchange(memory.deepest, memory.depth));
}

void begin_at(const walk_memory& memory, path& way, std::int32_t offset, std::int32_t balance) {
    way.last = moment_at(memory, offset, balance);
    way.start = offset;
    way.start_cost = way.edge_start = memory.cost;
}

}  // namespace

path_role role_in(block_kind kind) {
    if (kind.parent_code != OP_KEYWORDS) return role_from(path_role::top_level, place_of(kind.parent_code));
    return role_from(path_role::answer, place_of(kind.grandparent_code));
}

path_role role_of_chain(block_kind kind) { return role_from(path_role::chain, place_of(kind.parent_code)); }

path path_from(walk_memory& memory, path_role role, std::int32_t offset) {
    path way = {.role = role, .has_begun = role != path_role::top_level};
    begin_at(memory, way, offset, 0);
    way.deepest = std::exchange(memory.deepest, memory.depth);
    way.trail = memory.trail.size();
    return way;
}

// Places become known at both ends of a stretch that costs enough, and of a step that does: there ways join.
// And where messages begin or end, so that saying them again costs little else.
result take_step(walk_memory& memory, path& way, std::int32_t offset, std::int32_t balance, std::int32_t need) {
    if (offset == way.last.offset) return result::ok;
    const effect step = effect_since(memory, way.last, balance, need);
    note_deepest(memory, way);
    if (!way.has_begun && way.known == 0) {
        way.has_begun = true;
        begin_at(memory, way, offset, balance);
        return result::ok;
    }
    const std::int64_t spacing = spacing_of(memory, way.role);
    const bool is_dear = memory.cost - way.last.cost >= spacing;
    const bool is_turn = step.speaks != way.edge.speaks && way.last.cost - way.edge_start >= memory.spacing;
    if ((is_dear || is_turn) && failed(make_known(memory, way, way.last))) return result::failed;
    way.edge = join(way.edge, step);
    way.last = moment_at(memory, offset, balance);
    return memory.cost - way.edge_start < spacing ? result::ok : make_known(memory, way, way.last);
}

result pass_known(walk_memory& memory, path& way, std::int32_t& offset, std::int32_t& balance, std::int32_t need) {
    if (failed(take_step(memory, way, offset, balance, need))) return result::failed;
    std::uint32_t at = find_place(memory, way.role, offset);
    if (at == 0) return result::ok;
    if (at != way.known && failed(reach_place(memory, way, at))) return result::failed;
    effect passed = {};
    if (failed(follow(memory, at, balance, passed))) return result::failed;
    apply(memory, passed);
    balance += passed.gain;
    offset = memory.places[at].offset;
    way.known = at;
    way.edge = {};
    way.last = moment_at(memory, offset, balance);
    way.edge_start = memory.cost;
    note_deepest(memory, way);
    return result::ok;
}

result end_known(walk_memory& memory, path& way, std::int32_t offset, std::int32_t balance, std::int32_t need) {
    if (failed(take_step(memory, way, offset, balance, need))) return result::failed;
    // Where a reference ends depends on its balance, so that the place is of no use to others.
    const bool is_kept = way.known != 0 && way.role != path_role::reference;
    if (is_kept && failed(make_known(memory, way, way.last))) return result::failed;
    find_leaps(memory, way.trail);
    memory.deepest = std::max(memory.deepest, way.deepest);
    if (way.lead >= 0) memory.cost = way.start_cost + way.lead + 1;
    return result::ok;
}
