#include "phase1/known_places_1.h"

#include <algorithm>

namespace {

std::uint8_t rank_before(const walk_memory& memory, const known_place& next) {
    const std::uint8_t behind = memory.places[next.far].rank;
    return next.rank == behind ? static_cast<std::uint8_t>(behind + 1) : std::uint8_t{1};
}

// The last change between two places of a way, or in an if and outside the one in it. Data blocks mean
// nothing to expressions and texts.
std::uint32_t latest_between(const walk_memory& memory, const known_place& from, const known_place& to) {
    if (from.role >= path_role::item) return 0;
    if (from.role != path_role::if_statement) return latest_change(memory, from.offset, to.offset);
    if (to.end == 0) return latest_change(memory, from.offset, from.end - 1);
    return std::max(latest_change(memory, from.offset, to.offset), latest_change(memory, to.end, from.end - 1));
}

bool holds(const walk_memory& memory, const effect& way, const known_place& from, std::uint32_t to,
           std::int32_t balance) {
    return !way.speaks && balance >= way.need && memory.depth + way.height <= max_nesting && way.time >= memory.since &&
           (way.time == memory.changes || latest_between(memory, from, memory.places[to]) <= way.time);
}

}  // namespace

effect join(const effect& first, const effect& second) {
    return {
        .need = std::max(first.need, second.need - first.gain),
        .gain = first.gain + second.gain,
        .height = std::max(first.height, second.height),
        .speaks = first.speaks || second.speaks,
        .sident = std::max(first.sident, second.sident),
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

result make_place(walk_memory& memory, path_role role, std::int32_t offset, std::uint32_t& at) {
    at = find_place(memory, role, offset);
    if (at != 0) return result::ok;
    at = static_cast<std::uint32_t>(memory.places.size());
    std::uint32_t& first = memory.stretches[stretch_of(offset)];
    if (failed(push(memory.places, {.offset = offset, .role = role, .neighbour = first, .next = at, .far = at}))) {
        return result::failed;
    }
    first = at;
    return result::ok;
}

// By leaps. Where they do not hold, or could reach farther by now, by single steps, whose leaps are found
// anew then.
result follow(walk_memory& memory, std::uint32_t& at, std::int32_t balance, effect& passed) {
    for (;;) {
        known_place& place = memory.places[at];
        if (place.next == at) return result::ok;
        count_looks(memory, 1);
        const std::int32_t here = balance + passed.gain;
        if (place.rank >= rank_before(memory, memory.places[place.next]) &&
            holds(memory, place.leap, place, place.far, here)) {
            place.leap.time = memory.changes;
            passed = join(passed, place.leap);
            at = place.far;
        } else if (holds(memory, place.step, place, place.next, here)) {
            place.step.time = memory.changes;
            passed = join(passed, place.step);
            if (failed(push(memory.trail, at))) return result::failed;
            at = place.next;
        } else {
            return result::ok;
        }
    }
}

// A leap over more than one place has no messages.
void find_leap(walk_memory& memory, known_place& place) {
    const known_place& next = memory.places[place.next];
    const known_place& behind = memory.places[next.far];
    place.rank = rank_before(memory, next);
    if (place.rank != 1 && !place.step.speaks && !next.leap.speaks && !behind.leap.speaks) {
        place.far = behind.far;
        place.leap = join(join(place.step, next.leap), behind.leap);
    } else {
        place.far = place.next;
        place.leap = place.step;
        place.rank = 1;
    }
}

void find_leaps(walk_memory& memory, std::size_t trail) {
    for (; memory.trail.size() > trail; memory.trail.pop_back()) {
        find_leap(memory, memory.places[memory.trail.back()]);
    }
}
