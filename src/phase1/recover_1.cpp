#include "phase1/recover_1.h"

#include "base/diagnostics.h"

namespace {

bool is_statement(const conv& script, std::int32_t offset, opcode code) {
    return offset_table_find(script.code_offset_table, offset) == STATEMENT && conv_byte(script, offset) == code;
}

// Whether the last thing recorded before `offset` is the operand of a jump or, in the first
// game, an "end" statement.
bool follows_end_of_code(const conv& script, std::int32_t offset) {
    const auto last = offset_table_last_below(script.code_offset_table, offset);
    if (!last) return false;
    if (offset_table_find(script.code_offset_table, *last) == INT32) {
        const auto before = offset_table_last_below(script.code_offset_table, *last);
        return before && is_statement(script, *before, OP_JUMP);
    }
    return options.game_mode == game_mode_id::kelvorath && is_statement(script, *last, OP_END);
}

}  // namespace

result recover_as_data_block(conv& script, std::int32_t offset) {
    if (!follows_end_of_code(script, offset)) return result::failed;
    if (offset_table_find(script.jump_offset_table, offset)) return result::failed;
    if (offset_table_first_above(script.jump_offset_table, offset)) return result::failed;
    if (offset_table_find(script.data_offset_table, offset)) return result::failed;

    WARNING("error recovery ... change to data block: offset=%08X", offset);
    offset_table_truncate(script.code_offset_table, offset);
    if (failed(add_data_block(script, offset))) return result::failed;
    // The truncation took the entries of the data blocks behind along.
    auto block = offset_table_first_above(script.data_offset_table, offset);
    for (; block; block = offset_table_first_above(script.data_offset_table, *block)) {
        INFORMATION(1, "add data block again: offset=%08X", *block);
        if (failed(add_code_offset(script, *block, DATA))) return result::failed;
    }
    return result::ok;
}
