#include "phase1/known_ifs_1.h"

#include <algorithm>
#include <utility>

#include "base/diagnostics.h"
#include "phase1/known_places_1.h"

namespace {

// Of blocks between known ifs.
constexpr std::int32_t most_levels = 8;

std::int32_t size_of(const walk_memory& memory, std::uint32_t at) {
    return memory.places[at].end - memory.places[at].offset;
}

if_within longer_of(const walk_memory& memory, const if_within& one, const if_within& other) {
    return size_of(memory, one.known) < size_of(memory, other.known) ? other : one;
}

}  // namespace

result begin_if_walk(walk_memory& memory, std::int32_t offset, if_walk& walk) {
    walk.first = moment_at(memory, offset, 0);
    walk.known = walk.part = find_place(memory, path_role::if_statement, offset);
    walk.trail = memory.trail.size();
    if (failed(follow(memory, walk.part, 0, walk.around))) return result::failed;
    walk.longest = std::exchange(memory.longest, {});
    return result::ok;
}

result end_if_walk(walk_memory& memory, const if_walk& walk, std::int32_t end) {
    effect around = effect_since(memory, walk.first, 0, 0);
    const bool is_small = memory.cost - walk.first.cost < memory.spacing &&
                          around.height - memory.places[memory.longest.known].step.height < most_levels;
    if (walk.known == 0 && is_small) {
        memory.longest = longer_of(memory, walk.longest, memory.longest);
        return result::ok;
    }
    std::uint32_t at = 0;
    if (failed(make_place(memory, path_role::if_statement, walk.first.offset, at))) return result::failed;
    known_place& place = memory.places[at];
    // A longer one than those that were met was passed, without messages, by a way that leads past it.
    const if_within passed = {walk.known == 0 ? 0 : place.next, 0};
    const if_within inner = longer_of(memory, memory.longest, passed);
    const if_within whole = {at, messages_said - walk.first.messages};
    around.speaks = whole.messages != inner.messages;
    place.end = end;
    place.next = inner.known;
    place.step = around;
    find_leap(memory, place);
    memory.cost = walk.first.cost + 1;
    memory.longest = longer_of(memory, walk.longest, whole);
    return result::ok;
}

std::int32_t pass_if(walk_memory& memory, const if_walk& walk) {
    find_leaps(memory, walk.trail);
    apply(memory, walk.around);
    memory.cost = walk.first.cost + 1;
    memory.longest = longer_of(memory, walk.longest, {walk.known, messages_said - walk.first.messages});
    return memory.places[walk.known].end;
}
