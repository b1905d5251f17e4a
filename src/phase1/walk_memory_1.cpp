#include "phase1/walk_memory_1.h"

#include <algorithm>

namespace {

constexpr std::int32_t stretch_size = 64;

std::size_t stretch_of(std::int32_t offset) { return static_cast<std::size_t>(offset / stretch_size); }

// How much walking a stretch costs at least that becomes known. Steps of blocks hold stretches themselves.
std::int64_t spacing_of(const walk_memory& memory, path_role role) {
    return role < path_role::item ? 4 * memory.spacing : memory.spacing;
}

std::uint8_t place_of(std::uint8_t parent_code) { return parent_code == OP_IF ? 1 : parent_code == OP_ELSE ? 2 : 0; }

path_role role_from(path_role first, std::uint8_t place) {
    return static_cast<path_role>(static_cast<std::uint8_t>(first) + place);
}

bool is_silent(const effect& way) { return way.messages == way.messages_end; }

effect join(const effect& first, const effect& second) {
    return {
        .need = std::max(first.need, second.need - first.gain),
        .gain = first.gain + second.gain,
        .sident = second.sident >= 0 ? second.sident : first.sident,
        .messages = is_silent(first) ? second.messages : first.messages,
        .messages_end = is_silent(first) || !is_silent(second) ? second.messages_end : first.messages_end,
        .time = std::min(first.time, second.time),
    };
}

path_moment moment_at(const walk_memory& memory, std::int32_t offset, std::int32_t balance) {
    return {offset,
            balance,
            memory.sidents,
            static_cast<std::uint32_t>(memory.messages.text.size()),
            memory.messages.lost,
            memory.changes,
            memory.cost};
}

// What the walk did since the last step began. Messages that could not be kept make it useless.
effect last_step(const walk_memory& memory, const path& way, std::int32_t balance, std::int32_t need) {
    return {
        .need = need,
        .gain = balance - way.last.balance,
        .sident = memory.sidents == way.last.sidents ? -1 : memory.sident,
        .messages = way.last.messages,
        .messages_end = static_cast<std::uint32_t>(memory.messages.text.size()),
        .time = memory.messages.lost == way.last.lost_messages ? way.last.time : 0,
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

// What walking must cost so that what it says is worth keeping. Less would fill the copy, and there
// would be no room for the one message of a way that costs much.
std::int64_t price_of(const walk_memory& memory, const effect& way) {
    if (is_silent(way) || way.messages_end <= memory.messages_kept) return 0;
    return static_cast<std::int64_t>(way.messages_end - memory.messages_kept) / 2;
}

// The way has come to a known place.
result reach_place(walk_memory& memory, path& way, std::uint32_t at, std::int64_t cost) {
    if (way.known != 0) {
        known_place& before = memory.places[way.known];
        before.step = way.edge;
        before.next = at;
        if (cost - way.edge_start < price_of(memory, way.edge)) {
            before.step.time = 0;
            if (way.lead >= 0) way.lead += cost - way.edge_start;
        } else {
            memory.messages_kept = std::max<std::size_t>(memory.messages_kept, way.edge.messages_end);
        }
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

// How many places a leap from before `next` goes over: either one or, so that leaps grow as they do in a
// counter whose digits are 2^n - 1, those of the two leaps behind.
std::uint32_t span_before(const walk_memory& memory, const known_place& next) {
    const std::uint32_t behind = memory.places[next.far].span;
    return next.span == behind ? 1 + next.span + behind : 1;
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

std::uint32_t latest_change(const walk_memory& memory, std::int32_t from, std::int32_t to) {
    std::uint32_t latest = 0;
    const std::size_t leaves = memory.latest.size() / 2;
    std::size_t low = leaves + stretch_of(from);
    for (std::size_t high = leaves + stretch_of(to) + 1; low < high; low /= 2, high /= 2) {
        if (low % 2 == 1) latest = std::max(latest, memory.latest[low++]);
        if (high % 2 == 1) latest = std::max(latest, memory.latest[--high]);
    }
    return latest;
}

bool holds(const walk_memory& memory, const effect& way, std::int32_t from, std::uint32_t to, std::int32_t balance) {
    return balance >= way.need && way.time >= memory.since &&
           (way.time == memory.changes || latest_change(memory, from, memory.places[to].offset) <= way.time);
}

void apply(walk_memory& memory, const effect& way, std::int32_t& balance) {
    balance += way.gain;
    if (way.sident >= 0) note_sident(memory, way.sident);
    if (!is_silent(way)) repeat_messages(memory.messages, way.messages, way.messages_end);
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

}  // namespace

path_role role_in(block_kind kind) {
    if (kind.parent_code != OP_KEYWORDS) return role_from(path_role::top_level, place_of(kind.parent_code));
    return role_from(path_role::answer, place_of(kind.grandparent_code));
}

path_role role_of_chain(block_kind kind) { return role_from(path_role::chain, place_of(kind.parent_code)); }

result start_remembering(walk_memory& memory) {
    memory.messages.text.truncate(memory.messages_kept);
    const std::int32_t size = memory.script.data_size;
    const bool pays = phase_1_looks > size || walks_remember == remembering::always;
    if (memory.is_on || !pays || walks_remember == remembering::never) return result::ok;
    if (walks_remember == remembering::always) memory.spacing = 0;
    const std::size_t stretches = stretch_of(size) + 1;
    const bool has_memory = memory.stretches.assign_zero(stretches) && memory.latest.assign_zero(2 * stretches) &&
                            memory.steps.assign_zero(static_cast<std::size_t>(size) / 8 + 1);
    if (!has_memory) return ERROR("memory exhausted! (size=%zu)", 2 * stretches * sizeof(std::uint32_t));
    memory.messages.limit = 2 * static_cast<std::size_t>(size) + std::size_t{stretch_size} * stretch_size;
    kept_messages = &memory.messages;
    memory.is_on = true;
    return push(memory.places, {});
}

path begin_path(const walk_memory& memory, path_role role, std::int32_t offset) {
    path way = {.role = role};
    if (!memory.is_on) return way;
    way.first = way.last = moment_at(memory, offset, 0);
    way.edge_start = memory.cost;
    way.trail = memory.trail.size();
    return way;
}

// Places become known at both ends of a stretch that costs enough and before a step that costs half of it:
// there ways join. But hardly any other walk comes to where a text or a top-level walk begins.
result take_step(walk_memory& memory, path& way, std::int32_t offset, std::int32_t balance, std::int32_t need) {
    if (offset == way.last.offset) return result::ok;
    const effect step = last_step(memory, way, balance, need);
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
    if (way.lead >= 0) memory.cost = way.first.cost + way.lead + 1;
    return result::ok;
}

void note_sident(walk_memory& memory, std::int32_t offset) {
    memory.script.npc_id = conv_byte(memory.script, offset);
    memory.sident = offset;
    ++memory.sidents;
}

void note_recovery(walk_memory& memory) { memory.since = ++memory.changes; }

result name_data_block(walk_memory& memory, std::int32_t offset) {
    conv& script = memory.script;
    const std::int32_t known = script.data_offset_table.inserted;
    if (failed(add_data_block(script, offset))) return result::failed;
    if (!memory.is_on || known == script.data_offset_table.inserted || !conv_has(script, offset)) return result::ok;
    if ((memory.steps[static_cast<std::size_t>(offset) / 8] >> offset % 8 & 1) == 0) return result::ok;
    ++memory.changes;
    for (std::size_t part = memory.latest.size() / 2 + stretch_of(offset); part != 0; part /= 2) {
        memory.latest[part] = memory.changes;
    }
    return result::ok;
}
