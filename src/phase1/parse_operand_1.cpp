#include "phase1/parse_operand_1.h"

#include "base/diagnostics.h"

namespace {

// Bytes outside this list stand for themselves inside an expression.
code_type item_type(std::uint8_t code) {
    const code_type type = code_types[code];
    const bool is_item = type == LITERAL || type == OPERATOR || type == FUNCTION || type == ASSIGN;
    return is_item ? type : BYTE;
}

// A literal's number, behind its opcode at `cursor`. Moves the cursor behind the number.
result scan_literal(conv& script, std::int32_t& cursor, std::uint8_t code) {
    const code_info_entry& info = code_info[code];
    if (info.num_params != 1) return ERROR("BUG: code_info[%02X].num_params=%d", code, info.num_params);
    std::int32_t size = 0;
    switch (info.params[0]) {
        case BYTE: size = 1; break;
        case INT16: size = 2; break;
        case INT32: size = 4; break;
        default: return ERROR("BUG: code_info[%02X].params[0].type=%02X", code, info.params[0]);
    }
    if (script.data_size - cursor <= size) return ERROR("end of buffer: offset=%08X code=%02X", cursor, code);
    if (size == 4 && failed(add_data_block(script, static_cast<std::int32_t>(conv_int32(script, cursor + 1))))) {
        return result::failed;
    }
    cursor += 1 + size;
    return result::ok;
}

// The item at the cursor, inside the script. Moves the cursor behind it.
result scan_item(conv& script, std::int32_t& cursor, std::uint8_t code, code_type type) {
    if (failed(add_code_offset(script, cursor, type))) return result::failed;
    if (type == LITERAL) return scan_literal(script, cursor, code);
    ++cursor;
    return result::ok;
}

}  // namespace

result parse_eval_1(conv& script, std::int32_t& cursor) {
    for (std::int32_t position = cursor; position < script.data_size;) {
        const std::uint8_t code = conv_byte(script, position);
        if (failed(scan_item(script, position, code, item_type(code)))) return result::failed;
        if (code == OP_EVAL) {
            cursor = position;
            return result::ok;
        }
    }
    return ERROR("'eval' not found: offset=%08X", cursor);
}

result parse_var_1(conv& script, std::int32_t& cursor) {
    std::int32_t depth = 0;  // values on the evaluation stack
    std::uint8_t code = 0;
    std::int32_t position = cursor;
    while (position < script.data_size) {
        code = conv_byte(script, position);
        const code_type type = item_type(code);
        if (type == OPERATOR || type == FUNCTION) {
            depth -= code_info[code].num_params;
            if (depth < 0) {
                return ERROR("can't find variable/data: stack exhausted: offset=%08X, %08X, code=%02X, type=%02X",
                             cursor, position, code, type);
            }
        }
        if (failed(scan_item(script, position, code, type))) return result::failed;
        if (is_reference(code) && depth == 0) break;
        ++depth;
    }
    // At the script's end the last opcode alone decides.
    if (!is_reference(code)) return ERROR("variable/data not found: offset=%08X", cursor);
    cursor = position;
    return result::ok;
}
