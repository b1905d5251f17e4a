#include "phase1/walk_memory_1.h"

#include <algorithm>

#include "base/diagnostics.h"

result start_remembering(walk_memory& memory) {
    const std::int32_t size = memory.script.data_size;
    const std::int64_t looks_again = phase_1_looks - memory.script.code_offset_table.inserted;
    const bool pays = looks_again > size / 32 || walks_remember == remembering::always;
    if (memory.is_on || !pays || walks_remember == remembering::never) return result::ok;
    if (walks_remember == remembering::always) memory.spacing = 0;
    const std::size_t stretches = stretch_of(size) + 1;
    const bool has_memory = memory.stretches.assign_zero(stretches) && memory.latest.assign_zero(2 * stretches) &&
                            memory.steps.assign_zero(static_cast<std::size_t>(size) / 8 + 1);
    if (!has_memory) return memory_exhausted(2 * stretches * sizeof(std::uint32_t));
    memory.is_on = true;
    return push(memory.places, {});
}

path_moment moment_at(const walk_memory& memory, std::int32_t offset, std::int32_t balance) {
    return {offset, balance, memory.sidents, messages_said, memory.changes, memory.cost};
}

effect effect_since(const walk_memory& memory, const path_moment& moment, std::int32_t balance, std::int32_t need) {
    return {
        .need = need,
        .gain = balance - moment.balance,
        .height = static_cast<std::int16_t>(memory.deepest - memory.depth),
        .speaks = messages_said != moment.messages,
        .sident = memory.sidents == moment.sidents ? -1 : memory.sident,
        .time = moment.time,
    };
}

void apply(walk_memory& memory, const effect& way) {
    memory.deepest = std::max(memory.deepest, memory.depth + way.height);
    if (way.sident >= 0) note_sident(memory, way.sident);
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
