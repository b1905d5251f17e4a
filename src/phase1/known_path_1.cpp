#include "phase1/known_path_1.h"

#include <algorithm>
#include <utility>

#include "base/diagnostics.h"
#include "model/text.h"

namespace {

void forget_steps(known_path& path, const conv& script) {
    path.steps.truncate(0);
    path.last_sident = -1;
    path.messages = reported_messages;
    path.data_blocks = script.data_offset_table.inserted;
}

bool is_current(const known_path& path, const conv& script) {
    return path.data_blocks == script.data_offset_table.inserted;
}

}  // namespace

void finish_path(path_memory& memory, const conv& script, std::int32_t end) {
    memory.current.end = end;
    if (!memory.followed) std::swap(memory.latest, memory.current);
    forget_steps(memory.current, script);
    memory.followed = false;
    memory.records = true;
}

result note_step(path_memory& memory, const conv& script, std::int32_t start, bool is_sident) {
    if (!memory.records) return result::ok;
    known_path& path = memory.current;
    if (path.messages != reported_messages || !is_current(path, script)) {
        forget_steps(path, script);
        return result::ok;
    }
    if (!path.steps.push_back(start)) return ERROR("memory exhausted! (size=%zu)", path.steps.growth_bytes());
    if (is_sident) {
        path.last_sident = start;
        path.npc_id = script.npc_id;
    }
    return result::ok;
}

bool follow_known_path(path_memory& memory, conv& script, std::int32_t& cursor) {
    const known_path& path = memory.latest;
    if (!is_current(path, script) || !std::binary_search(path.steps.begin(), path.steps.end(), cursor)) return false;
    if (cursor <= path.last_sident) script.npc_id = path.npc_id;
    cursor = path.end;
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
