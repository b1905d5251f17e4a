#include "phase1/known_ifs_1.h"

#include <algorithm>
#include <utility>

namespace {

// Whether nothing has changed in an if around an inner one. At the inner one's start begins a step of the outer.
bool is_same_around(const walk_memory& memory, const known_if& outer, const known_if& inner, std::uint32_t time) {
    return latest_change(memory, outer.offset, inner.offset) <= time &&
           latest_change(memory, inner.end, outer.end - 1) <= time;
}

std::int32_t size_of(const walk_memory& memory, std::uint32_t at) { return memory.ifs[at].end - memory.ifs[at].offset; }

std::uint32_t longer_of(const walk_memory& memory, std::uint32_t one, std::uint32_t other) {
    return size_of(memory, one) < size_of(memory, other) ? other : one;
}

void find_leap_inwards(walk_memory& memory, known_if& around) {
    const known_if& inner = memory.ifs[around.inner];
    const known_if& behind = memory.ifs[inner.far];
    around.span = leap_span(inner.span, behind.span);
    around.far = around.span == 1 ? around.inner : behind.far;
}

result add_if(walk_memory& memory, std::int32_t offset, std::uint32_t& at) {
    at = static_cast<std::uint32_t>(memory.ifs.size());
    std::uint32_t& first = memory.if_stretches[stretch_of(offset)];
    if (failed(push(memory.ifs, {.offset = offset, .end = offset, .neighbour = first}))) return result::failed;
    first = at;
    return result::ok;
}

}  // namespace

std::uint32_t find_if(const walk_memory& memory, std::int32_t offset) {
    std::uint32_t at = memory.if_stretches[stretch_of(offset)];
    while (at != 0 && memory.ifs[at].offset != offset) at = memory.ifs[at].neighbour;
    return at;
}

std::uint32_t find_changed(walk_memory& memory, std::uint32_t at) {
    const std::uint32_t whole = at;
    if (memory.depth + memory.ifs[at].whole.height > max_nesting) return whole;
    for (std::uint32_t time = memory.ifs[at].whole.time; time >= memory.since;) {
        const known_if& place = memory.ifs[at];
        count_looks(memory, 1);
        if (place.said > time) return whole;
        time = std::max(time, place.whole.time);
        if (latest_change(memory, place.offset, place.end - 1) <= time) return 0;
        if (place.inner == 0) return at;
        if (is_same_around(memory, place, memory.ifs[place.far], time)) {
            at = place.far;
        } else if (is_same_around(memory, place, memory.ifs[place.inner], time)) {
            at = place.inner;
        } else {
            return at;
        }
    }
    return whole;
}

void pass_if(walk_memory& memory, std::uint32_t at) {
    std::int32_t balance = 0;
    apply(memory, memory.ifs[at].whole, balance);
    memory.ifs[at].whole.time = memory.changes;
    memory.longest = longer_of(memory, memory.longest, at);
}

if_walk begin_if_walk(walk_memory& memory, std::int32_t offset) {
    return {moment_at(memory, offset, 0), std::exchange(memory.deepest, memory.depth),
            std::exchange(memory.longest, 0)};
}

result end_if_walk(walk_memory& memory, const if_walk& walk, std::int32_t end) {
    const std::int64_t cost = memory.cost - walk.first.cost;
    effect whole = effect_since(memory, walk.first, 0, 0);
    memory.deepest = std::max(memory.deepest, walk.deepest);
    std::uint32_t at = find_if(memory, walk.first.offset);
    const std::int64_t least = std::max(memory.spacing, price_of(memory, whole));
    if (at == 0 && cost >= least && failed(add_if(memory, walk.first.offset, at))) return result::failed;
    if (at == 0) {
        memory.longest = longer_of(memory, walk.longest, memory.longest);
        return result::ok;
    }
    known_if& place = memory.ifs[at];
    keep_messages(memory, whole, place.whole, cost);
    if (is_silent(whole) ? !is_silent(place.whole) : whole.messages != place.whole.messages)
        place.said = walk.first.time;
    if (whole.time != 0) memory.cost = walk.first.cost + 1;
    place.end = end;
    place.whole = whole;
    place.inner = longer_of(memory, place.inner, memory.longest);
    if (place.inner != 0) find_leap_inwards(memory, place);
    memory.longest = longer_of(memory, walk.longest, at);
    return result::ok;
}
