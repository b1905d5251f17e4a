#include "phase1/parse_operand_1.h"

#include "base/diagnostics.h"

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
    path way = begin_path(memory, path_role::item, cursor);
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
    std::int32_t depth = 0;  // values on the evaluation stack
    std::int32_t need = 0;   // of the item before
    std::uint8_t code = 0;
    path way = begin_path(memory, path_role::reference, cursor);
    std::int32_t position = cursor;
    while (position < script.data_size) {
        if (failed(pass(memory, way, position, depth, need))) return result::failed;
        const std::int32_t balance = depth;
        code = conv_byte(script, position);
        const code_type type = code_info[code].item_type;
        need = 0;
        if (type == OPERATOR || type == FUNCTION) {
            depth -= code_info[code].num_params;
            if (depth < 0) {
                return ERROR("can't find variable/data: stack exhausted: offset=%08X, %08X, code=%02X, type=%02X",
                             cursor, position, code, type);
            }
            need = code_info[code].num_params + (is_reference(code) ? 1 : 0);
        }
        const bool is_last = is_reference(code) && depth == 0;
        if (is_last && failed(end_path(memory, way, position, balance))) return result::failed;
        if (failed(scan_item(memory, position, code))) return result::failed;
        if (is_last) break;
        ++depth;
    }
    // At the script's end the last opcode alone decides.
    if (!is_reference(code)) return ERROR("variable/data not found: offset=%08X", cursor);
    cursor = position;
    return result::ok;
}
