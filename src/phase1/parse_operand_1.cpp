#include "phase1/parse_operand_1.h"

#include "base/diagnostics.h"

namespace {

// Bytes outside this list stand for themselves inside an expression.
code_type item_type(std::uint8_t code) {
    const code_type type = code_types[code];
    const bool is_item = type == LITERAL || type == OPERATOR || type == FUNCTION || type == ASSIGN;
    return is_item ? type : BYTE;
}

// A literal: its opcode at `offset`, then its number. Returns the offset behind it.
std::optional<std::int32_t> scan_literal(conv& script, std::int32_t offset, std::uint8_t code) {
    const code_info_entry& info = code_info[code];
    if (info.num_params != 1) {
        return ERROR("BUG: code_info[%02X].num_params=%d", code, info.num_params);
    }
    std::int32_t size = 0;
    switch (info.params[0].type) {
        case BYTE: size = 1; break;
        case INT16: size = 2; break;
        case INT32: size = 4; break;
        default: return ERROR("BUG: code_info[%02X].params[0].type=%02X", code, info.params[0].type);
    }
    if (script.data_size - offset <= size) {
        return ERROR("end of buffer: offset=%08X code=%02X", offset, code);
    }
    if (info.params[0].type == INT32) {
        const auto block = static_cast<std::int32_t>(conv_int32(script, offset + 1));
        if (failed(add_data_block(script, block))) return std::nullopt;
    }
    return offset + 1 + size;
}

// One item at `offset`, inside the script. Returns the offset behind it.
std::optional<std::int32_t> scan_item(conv& script, std::int32_t offset, std::uint8_t code, code_type type) {
    if (failed(add_code_offset(script, offset, type))) return std::nullopt;
    if (type == LITERAL) return scan_literal(script, offset, code);
    return offset + 1;
}

}  // namespace

std::optional<std::int32_t> parse_eval_1(conv& script, std::int32_t offset) {
    std::int32_t cursor = offset;
    while (cursor < script.data_size) {
        const std::uint8_t code = conv_byte(script, cursor);
        const auto behind = scan_item(script, cursor, code, item_type(code));
        if (!behind || code == OP_EVAL) return behind;
        cursor = *behind;
    }
    return ERROR("'eval' not found: offset=%08X", offset);
}

std::optional<std::int32_t> parse_var_1(conv& script, std::int32_t offset) {
    std::int32_t cursor = offset;
    std::int32_t depth = 0;  // values on the evaluation stack
    std::uint8_t code = 0;
    while (cursor < script.data_size) {
        code = conv_byte(script, cursor);
        const code_type type = item_type(code);
        if (type == OPERATOR || type == FUNCTION) {
            depth -= code_info[code].num_params;
            if (depth < 0) {
                return ERROR("can't find variable/data: stack exhausted: offset=%08X, %08X, code=%02X, type=%02X",
                             offset, cursor, code, type);
            }
        }
        const auto behind = scan_item(script, cursor, code, type);
        if (!behind || (is_reference(code) && depth == 0)) return behind;
        cursor = *behind;
        ++depth;
    }
    // At the script's end the last opcode alone decides.
    if (is_reference(code)) return cursor;
    return ERROR("variable/data not found: offset=%08X", offset);
}
