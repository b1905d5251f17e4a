#include "phase1/known_path_1.h"

#include <algorithm>
#include <utility>

#include "base/diagnostics.h"
#include "model/text.h"

namespace {

void forget_steps(known_path& path, const conv& script) {
    path.steps.truncate(0);
    path.stretches.truncate(0);
    path.is_silent = false;
    path.messages = reported_messages;
    path.data_blocks = script.data_offset_table.inserted;
}

void end_stretch(known_path& path, std::int32_t end) {
    if (path.is_silent) path.stretches.back().end = end;
    path.is_silent = false;
}

bool is_current(const known_path& path, const conv& script) {
    return path.data_blocks == script.data_offset_table.inserted;
}

// Adds the starts of a silent step, all or the first `count`.
result add_starts(known_path& path, const array<std::int32_t>& starts, std::size_t count) {
    if (!path.is_silent && failed(push(path.stretches, {}))) return result::failed;
    path.is_silent = true;
    const auto stretch = static_cast<std::uint32_t>(path.stretches.size() - 1);
    for (std::size_t i = 0; i < count; ++i) {
        if (failed(push(path.steps, {starts[i], stretch}))) return result::failed;
    }
    return result::ok;
}

}  // namespace

void finish_path(path_memory& memory, const conv& script, std::int32_t end) {
    end_stretch(memory.current, end);
    if (!memory.followed) std::swap(memory.latest, memory.current);
    forget_steps(memory.current, script);
    memory.followed = false;
    memory.records = true;
}

result begin_step(path_memory& memory, std::int32_t start) {
    memory.starts.truncate(0);
    return continue_step(memory, start);
}

result continue_step(path_memory& memory, std::int32_t start) {
    return memory.records ? push(memory.starts, start) : result::ok;
}

result note_step(path_memory& memory, const conv& script, bool is_sident) {
    if (!memory.records) return result::ok;
    known_path& path = memory.current;
    const std::int32_t start = memory.starts[0];
    if (!is_current(path, script)) {
        forget_steps(path, script);
        return result::ok;
    }
    if (path.messages != reported_messages) {
        path.messages = reported_messages;
        end_stretch(path, start);
        return result::ok;
    }
    // Which of a chain's answers took the npc id is not known.
    if (failed(add_starts(path, memory.starts, is_sident ? 1 : memory.starts.size()))) return result::failed;
    if (is_sident) {
        path.stretches.back().last_sident = start;
        path.stretches.back().npc_id = script.npc_id;
    }
    return result::ok;
}

bool follow_known_path(path_memory& memory, conv& script, std::int32_t& cursor) {
    const known_path& path = memory.latest;
    if (!is_current(path, script)) return false;
    const known_step* const step =
        std::lower_bound(path.steps.begin(), path.steps.end(), cursor,
                         [](const known_step& other, std::int32_t start) { return other.start < start; });
    if (step == path.steps.end() || step->start != cursor) return false;
    const silent_stretch& stretch = path.stretches[step->stretch];
    if (cursor <= stretch.last_sident) script.npc_id = stretch.npc_id;
    cursor = stretch.end;
    memory.followed = true;
    return true;
}

result text_length_from(path_memory& memory, const conv& script, std::int32_t start, std::int32_t& length) {
    const bool is_end_of_last =
        start > memory.text_start && start < memory.text_end && is_outside_passage(script, memory.text_start, start);
    if (is_end_of_last) {
        length = memory.text_end - start;
    } else if (failed(text_length(script, start, script.data_size, length))) {
        return result::failed;
    }
    memory.text_start = start;
    memory.text_end = start + length;
    return result::ok;
}
