#include "phase1/walk_memory_1.h"

#include <algorithm>
#include <cstring>

result start_remembering(walk_memory& memory) {
    memory.messages.text.truncate(memory.messages_kept);
    const std::int32_t size = memory.script.data_size;
    const bool pays = phase_1_looks > size || walks_remember == remembering::always;
    if (memory.is_on || !pays || walks_remember == remembering::never) return result::ok;
    if (walks_remember == remembering::always) memory.spacing = 0;
    const std::size_t stretches = stretch_of(size) + 1;
    const bool has_memory = memory.stretches.assign_zero(stretches) && memory.if_stretches.assign_zero(stretches) &&
                            memory.latest.assign_zero(2 * stretches) &&
                            memory.steps.assign_zero(static_cast<std::size_t>(size) / 8 + 1);
    if (!has_memory) return memory_exhausted(2 * stretches * sizeof(std::uint32_t));
    memory.messages.limit = static_cast<std::size_t>(size) + std::size_t{stretch_size} * stretch_size;
    kept_messages = &memory.messages;
    memory.is_on = true;
    if (failed(push(memory.places, {}))) return result::failed;
    return push(memory.ifs, {});
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

// Messages that could not be copied make it useless.
effect effect_since(const walk_memory& memory, const path_moment& moment, std::int32_t balance, std::int32_t need) {
    return {
        .need = need,
        .gain = balance - moment.balance,
        .height = memory.deepest - memory.depth,
        .sident = memory.sidents == moment.sidents ? -1 : memory.sident,
        .messages = moment.messages,
        .messages_end = static_cast<std::uint32_t>(memory.messages.text.size()),
        .time = memory.messages.lost == moment.lost_messages ? moment.time : 0,
    };
}

void apply(walk_memory& memory, const effect& way, std::int32_t& balance) {
    balance += way.gain;
    memory.deepest = std::max(memory.deepest, memory.depth + way.height);
    if (way.sident >= 0) note_sident(memory, way.sident);
    if (!is_silent(way)) repeat_messages(memory.messages, way.messages, way.messages_end);
}

void take_back(walk_memory& memory, const path_moment& moment) {
    memory.messages.text.truncate(moment.messages);
    memory.messages.lost = moment.lost_messages;
    memory.cost = moment.cost + 1;
}

std::int64_t price_of(const walk_memory& memory, const effect& way) {
    if (is_silent(way) || way.messages_end <= memory.messages_kept) return 0;
    return static_cast<std::int64_t>(way.messages_end - memory.messages_kept) / 2;
}

void keep_messages(walk_memory& memory, effect& way, const effect& known, std::int64_t cost) {
    if (is_silent(way)) return;
    const std::size_t size = way.messages_end - way.messages;
    const char* const text = memory.messages.text.data();
    if (way.time != 0 && known.messages_end - known.messages == size &&
        std::memcmp(text + known.messages, text + way.messages, size) == 0) {
        way.messages = known.messages;
        way.messages_end = known.messages_end;
    } else if (way.time == 0 || memory.messages.is_quiet || cost < price_of(memory, way)) {
        way.messages = way.messages_end = 0;
        way.time = 0;
    } else {
        memory.messages_kept = std::max<std::size_t>(memory.messages_kept, way.messages_end);
    }
}

void note_sident(walk_memory& memory, std::int32_t offset) {
    memory.script.npc_id = conv_byte(memory.script, offset);
    memory.sident = offset;
    ++memory.sidents;
}

void forget_walks(walk_memory& memory) { memory.since = ++memory.changes; }

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
