#include "phase1/parse_operand_1.h"

#include "base/diagnostics.h"
#include "model/reference.h"
#include "phase1/known_ways_1.h"

namespace {

// Why the item at `offset` can't be scanned.
failure report_item(std::int32_t offset, std::uint8_t code) {
    const code_info_entry& info = code_info[code];
    if (info.item_size != 0) return ERROR("end of buffer: offset=%08X code=%02X", offset, code);
    if (info.num_params != 1) return ERROR("BUG: code_info[%02X].num_params=%d", code, info.num_params);
    return ERROR("BUG: code_info[%02X].params[0].type=%02X", code, info.params[0]);
}

// The item at the cursor, inside the script. Moves the cursor behind it.
result scan_item(walk_memory& memory, std::int32_t& cursor, std::uint8_t code) {
    conv& script = memory.script;
    const code_info_entry& info = code_info[code];
    count_looks(memory, 1);
    if (failed(add_code_offset(script, cursor, info.item_type))) return result::failed;
    if (info.item_size == 0 || script.data_size - cursor < info.item_size) return report_item(cursor, code);
    if (code == OP_INT32 &&
        failed(name_data_block(memory, static_cast<std::int32_t>(conv_int32(script, cursor + 1))))) {
        return result::failed;
    }
    cursor += info.item_size;
    return result::ok;
}

}  // namespace

result parse_eval_1(walk_memory& memory, std::int32_t& cursor) {
    const conv& script = memory.script;
    auto way = begin_path(memory, path_role::item, cursor);
    for (std::int32_t position = cursor; position < script.data_size;) {
        if (failed(pass(memory, way, position))) return result::failed;
        const std::uint8_t code = conv_byte(script, position);
        if (code == OP_EVAL && failed(end_path(memory, way, position))) return result::failed;
        if (failed(scan_item(memory, position, code))) return result::failed;
        if (code == OP_EVAL) {
            cursor = position;
            return result::ok;
        }
    }
    return ERROR("'eval' not found: offset=%08X", cursor);
}

result parse_var_1(walk_memory& memory, std::int32_t& cursor) {
    const conv& script = memory.script;
    reference read = {cursor};
    auto way = begin_path(memory, path_role::reference, cursor);
    std::int32_t need = 0;
    std::uint8_t code = 0;
    std::int32_t position = cursor;
    while (position < script.data_size && !read.is_closed) {
        if (failed(pass(memory, way, position, read.depth, need))) return result::failed;
        code = conv_byte(script, position);
        need = least_depth(code);
        if (failed(add_reference_item(read, position, code_info[code].item_type, code))) return result::failed;
        if (failed(scan_item(memory, position, code))) return result::failed;
    }
    // At the script's end the last opcode alone decides.
    if (!is_reference(code)) return report_open_reference(read);
    cursor = position;
    return end_path(memory, way, position, read.depth, need);
}
