#include "model/conv.h"

#include <algorithm>
#include <utility>

#include "base/diagnostics.h"

void conv_init(conv& script) {
    script.npc_id = no_npc_id;
    script.dump = false;
    conv_set_buffer(script, {});
}

void conv_set_buffer(conv& script, array<std::uint8_t> buffer) {
    conv_free(script);
    script.buffer = std::move(buffer);
    script.data_size = static_cast<std::int32_t>(script.buffer.size());
    offset_table_init(script.code_offset_table, code_marks, script.position_marks, script.data_size);
    offset_table_init(script.jump_offset_table, jump_marks, script.position_marks, script.data_size);
    offset_table_init(script.data_offset_table, data_marks, script.position_marks, script.data_size);
}

void conv_free(conv& script) {
    offset_table_free(script.code_offset_table);
    offset_table_free(script.jump_offset_table);
    offset_table_free(script.data_offset_table);
    script.position_marks.release();
    script.tree = {};
    script.dump_count.release();
    script.buffer.release();
    script.data_size = 0;
}

std::span<const std::uint8_t> conv_bytes(const conv& script, std::int32_t start, std::int32_t end) {
    if (!conv_has(script, start)) return {};
    end = std::clamp(end, start, script.data_size);
    return {script.buffer.data() + start, static_cast<std::size_t>(end - start)};
}

failure report_code_table() { return ERROR("can't add code offset table"); }

result add_jump_offset(conv& script, std::int32_t offset) {
    if (!failed(offset_table_add(script.jump_offset_table, offset, NONE))) return result::ok;
    return ERROR("can't add jump offset table");
}

result add_data_offset(conv& script, std::int32_t offset) {
    if (!failed(offset_table_add(script.data_offset_table, offset, DATA))) return result::ok;
    return ERROR("can't add data offset table");
}

result add_data_block(conv& script, std::int32_t offset) {
    if (failed(add_code_offset(script, offset, DATA))) return result::failed;
    return add_data_offset(script, offset);
}
