#include "phase1/known_ways_1.h"

#include <algorithm>
#include <utility>

namespace {

std::uint8_t place_of(std::uint8_t parent_code) { return parent_code == OP_IF ? 1 : parent_code == OP_ELSE ? 2 : 0; }

path_role role_from(path_role first, std::uint8_t place) {
    return static_cast<path_role>(static_cast<std::uint8_t>(first) + place);
}

effect join(const effect& first, const effect& second) {
    return {
        .need = std::max(first.need, second.need - first.gain),
        .gain = first.gain + second.gain,
        .height = std::max(first.height, second.height),
        .sident = second.sident >= 0 ? second.sident : first.sident,
        .messages = is_silent(first) ? second.messages : first.messages,
        .messages_end = is_silent(first) || !is_silent(second) ? second.messages_end : first.messages_end,
        .time = std::min(first.time, second.time),
    };
}

std::uint32_t find_place(const walk_memory& memory, path_role role, std::int32_t offset) {
    std::uint32_t at = memory.stretches[stretch_of(offset)];
    while (at != 0 && (memory.places[at].offset != offset || memory.places[at].role != role)) {
        at = memory.places[at].neighbour;
    }
    return at;
}

result add_place(walk_memory& memory, path_role role, std::int32_t offset, std::uint32_t& at) {
    at = static_cast<std::uint32_t>(memory.places.size());
    std::uint32_t& first = memory.stretches[stretch_of(offset)];
    if (failed(push(memory.places, {.offset = offset, .role = role, .neighbour = first, .next = at, .far = at}))) {
        return result::failed;
    }
    first = at;
    return result::ok;
}

// The way has come to a known place.
result reach_place(walk_memory& memory, path& way, std::uint32_t at, std::int64_t cost) {
    if (way.known != 0) {
        known_place& before = memory.places[way.known];
        keep_messages(memory, way.edge, before.next == at ? before.step : effect{}, cost - way.edge_start);
        before.step = way.edge;
        before.next = at;
        if (way.edge.time == 0 && way.lead >= 0) way.lead += cost - way.edge_start;
        if (failed(push(memory.trail, way.known))) return result::failed;
    }
    way.known = at;
    return result::ok;
}

// Makes a known place on the way, which the edge ends at.
result make_known(walk_memory& memory, path& way, const path_moment& moment) {
    std::uint32_t at = find_place(memory, way.role, moment.offset);
    if (at == 0 && failed(add_place(memory, way.role, moment.offset, at))) return result::failed;
    if (way.lead < 0) way.lead = moment.cost - way.first.cost;
    if (at != way.known && failed(reach_place(memory, way, at, moment.cost))) return result::failed;
    way.edge = {};
    way.edge_start = moment.cost;
    return result::ok;
}

std::uint32_t span_before(const walk_memory& memory, const known_place& next) {
    return leap_span(next.span, memory.places[next.far].span);
}

// A leap over more than one place says nothing.
void find_leap(walk_memory& memory, known_place& place) {
    const known_place& next = memory.places[place.next];
    const known_place& behind = memory.places[next.far];
    place.span = span_before(memory, next);
    if (place.span != 1 && is_silent(place.step) && is_silent(next.leap) && is_silent(behind.leap)) {
        place.far = behind.far;
        place.leap = join(join(place.step, next.leap), behind.leap);
    } else {
        place.far = place.next;
        place.leap = place.step;
        place.span = 1;
    }
}

bool holds(const walk_memory& memory, const effect& way, std::int32_t from, std::uint32_t to, std::int32_t balance) {
    return balance >= way.need && memory.depth + way.height <= max_nesting && way.time >= memory.since &&
           (way.time == memory.changes || latest_change(memory, from, memory.places[to].offset) <= way.time);
}

// Follows the way that is known from `at` on, by leaps where they hold and say nothing. Where they do
// not, or could reach farther by now, by single steps, whose leaps are found anew then.
result follow(walk_memory& memory, std::uint32_t& at, std::int32_t& balance) {
    for (;;) {
        known_place& place = memory.places[at];
        if (place.next == at) return result::ok;
        count_looks(memory, 1);
        if (is_silent(place.leap) && place.span >= span_before(memory, memory.places[place.next]) &&
            holds(memory, place.leap, place.offset, place.far, balance)) {
            place.leap.time = memory.changes;
            apply(memory, place.leap, balance);
            at = place.far;
        } else if (holds(memory, place.step, place.offset, place.next, balance)) {
            place.step.time = memory.changes;
            apply(memory, place.step, balance);
            if (failed(push(memory.trail, at))) return result::failed;
            at = place.next;
        } else {
            return result::ok;
        }
    }
}

void note_deepest(walk_memory& memory, path& way) {
    way.deepest = std::max(way.deepest, std::exchange(memory.deepest, memory.depth));
}

}  // namespace

path_role role_in(block_kind kind) {
    if (kind.parent_code != OP_KEYWORDS) return role_from(path_role::top_level, place_of(kind.parent_code));
    return role_from(path_role::answer, place_of(kind.grandparent_code));
}

path_role role_of_chain(block_kind kind) { return role_from(path_role::chain, place_of(kind.parent_code)); }

path begin_path(walk_memory& memory, path_role role, std::int32_t offset) {
    path way = {.role = role};
    if (!memory.is_on) return way;
    way.first = way.last = moment_at(memory, offset, 0);
    way.edge_start = memory.cost;
    way.deepest = std::exchange(memory.deepest, memory.depth);
    way.trail = memory.trail.size();
    return way;
}

// Places become known at both ends of a stretch that costs enough and before a step that costs half of it:
// there ways join. But hardly any other walk comes to where a text or a top-level walk begins.
result take_step(walk_memory& memory, path& way, std::int32_t offset, std::int32_t balance, std::int32_t need) {
    if (offset == way.last.offset) return result::ok;
    const effect step = effect_since(memory, way.last, balance, need);
    note_deepest(memory, way);
    const std::int64_t spacing = spacing_of(memory, way.role);
    const std::int64_t step_cost = memory.cost - way.last.cost;
    const bool is_dear = 2 * step_cost >= spacing && step_cost >= price_of(memory, step);
    const bool is_start = way.role == path_role::top_level && way.last.cost == way.first.cost;
    if (is_dear && !is_start && failed(make_known(memory, way, way.last))) return result::failed;
    way.edge = join(way.edge, step);
    way.last = moment_at(memory, offset, balance);
    if (is_dear || memory.cost - way.edge_start < std::max(spacing, price_of(memory, way.edge))) return result::ok;
    if (way.known == 0 && way.role != path_role::text) {
        const effect edge = way.edge;
        if (failed(make_known(memory, way, way.first))) return result::failed;
        way.edge = edge;
    }
    return make_known(memory, way, way.last);
}

result pass_known(walk_memory& memory, path& way, std::int32_t& offset, std::int32_t& balance, std::int32_t need) {
    if (failed(take_step(memory, way, offset, balance, need))) return result::failed;
    std::uint32_t at = find_place(memory, way.role, offset);
    if (at == 0) return result::ok;
    if (at != way.known && failed(reach_place(memory, way, at, way.last.cost))) return result::failed;
    if (failed(follow(memory, at, balance))) return result::failed;
    offset = memory.places[at].offset;
    way.known = at;
    way.edge = {};
    way.last = moment_at(memory, offset, balance);
    way.edge_start = memory.cost;
    note_deepest(memory, way);
    return result::ok;
}

result end_path(walk_memory& memory, path& way, std::int32_t offset, std::int32_t balance, std::int32_t need) {
    if (!memory.is_on) return result::ok;
    if (failed(take_step(memory, way, offset, balance, need))) return result::failed;
    // Where a reference ends depends on its balance, so that the place is of no use to others.
    const bool is_kept = way.known != 0 && way.role != path_role::reference &&
                         4 * (memory.cost - way.edge_start) >= spacing_of(memory, way.role);
    if (is_kept && failed(make_known(memory, way, way.last))) return result::failed;
    for (; memory.trail.size() > way.trail; memory.trail.pop_back()) {
        find_leap(memory, memory.places[memory.trail.back()]);
    }
    memory.deepest = std::max(memory.deepest, way.deepest);
    if (way.lead >= 0) memory.cost = way.first.cost + way.lead + 1;
    return result::ok;
}
