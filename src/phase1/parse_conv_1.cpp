#include "phase1/parse_conv_1.h"

#include <limits>
#include <optional>

#include "base/diagnostics.h"
#include "model/block.h"
#include "model/text.h"
#include "phase1/known_ifs_1.h"
#include "phase1/known_ways_1.h"
#include "phase1/open_targets_1.h"
#include "phase1/parse_operand_1.h"
#include "phase1/recover_1.h"

namespace {

struct walk_state {
    conv& script;
    open_targets open = {};  // those walked since they were recorded are closed when they come up
    walk_memory memory;
};

// One walk: the top level or a sub block. The cursor moves on as the walk consumes bytes; it may
// stand behind the script's end when an operand is cut off there.
struct block_walk {
    walk_state& shared;
    conv& script;
    std::int32_t cursor;
    block_kind kind;
    bool is_cut = false;  // an operand was cut off by the script's end
};

result walk_block(block_walk& block);

bool at_end(const block_walk& block) { return block.cursor >= block.script.data_size; }
std::uint8_t byte_at_cursor(const block_walk& block) { return conv_byte(block.script, block.cursor); }

// Bytes of the script from the cursor on.
std::int32_t bytes_left(const block_walk& block) { return block.script.data_size - block.cursor; }

result walk_sub_block(block_walk& outer, std::int32_t opener, block_kind kind) {
    if (!enter_block(outer.shared.memory)) return ERROR("nesting too deep: offset=%08X", opener);
    block_walk inner = {.shared = outer.shared, .script = outer.script, .cursor = outer.cursor, .kind = kind};
    const result outcome = walk_block(inner);
    leave_block(outer.shared.memory);
    outer.cursor = inner.cursor;
    return outcome;
}

// Takes the target of a jump whose operand is at `operand`.
result add_jump_target(block_walk& block, std::int32_t operand) {
    conv& script = block.script;
    const auto target = static_cast<std::int32_t>(conv_int32(script, operand));
    if (failed(add_jump_offset(script, target))) return result::failed;
    const bool is_open = conv_has(script, target) && !offset_table_find(script.code_offset_table, target);
    if (is_open && are_kept(block.shared.open)) open_target(block.shared.open, target);
    return result::ok;
}

result gather_open_targets(walk_state& shared) {
    const conv& script = shared.script;
    if (failed(keep_open_targets(shared.open, script.data_size))) return result::failed;
    auto target = offset_table_first_above(script.jump_offset_table, -1);
    for (; target && conv_has(script, *target); target = offset_table_first_above(script.jump_offset_table, *target)) {
        open_target(shared.open, *target);
    }
    return result::ok;
}

// The lowest jump target that was not walked yet, if there is one; those outside the script come last. Targets
// below 0 are left to the jump check.
std::optional<std::int32_t> lowest_target(walk_state& shared) {
    const conv& script = shared.script;
    while (const auto target = lowest_open(shared.open)) {
        if (!offset_table_find(script.code_offset_table, *target)) return target;
        close_target(shared.open, *target);
    }
    auto outside = offset_table_first_above(script.jump_offset_table, script.data_size - 1);
    while (outside && offset_table_find(script.code_offset_table, *outside)) {
        outside = offset_table_first_above(script.jump_offset_table, *outside);
    }
    return outside;
}

// What walk_block calls must not lie in its frame: there is one of it for each level of nesting.
#define OUT_OF_FRAME [[gnu::noinline]]

// Steps over the text at the cursor; where walks are remembered, by pieces. A malformed one is left to
// text_length.
OUT_OF_FRAME result walk_text(block_walk& block) {
    walk_memory& memory = block.shared.memory;
    std::int32_t length = 0;
    if (memory.is_on) {
        std::int32_t end = block.cursor;
        auto way = begin_path(memory, path_role::text, end);
        do {
            if (failed(pass(memory, way, end))) return result::failed;
            count_looks(memory, 1);
            length = text_piece(block.script, end);
            end += length;
        } while (length > 0);
        if (length == 0) return block.cursor = end, end_path(memory, way, end);
    }
    if (failed(text_length(block.script, block.cursor, block.script.data_size, length))) {
        return ERROR("can't get text length: offset=%08X", block.cursor);
    }
    count_looks(memory, 1 + length / text_piece_size);
    block.cursor += length;
    return result::ok;
}

result walk_expression_operand(block_walk& block) {
    if (!failed(parse_eval_1(block.shared.memory, block.cursor))) return result::ok;
    return ERROR("parse expression failure: offset=%08X", block.cursor);
}

result walk_text_run(block_walk& block) {
    DEBUG("TEXT: offset=%08X", block.cursor);
    if (failed(add_code_offset(block.script, block.cursor, TEXT))) return result::failed;
    return walk_text(block);
}

// The branch of the if or else whose opcode is at `opener`; the cursor is at its first byte.
result walk_branch(block_walk& block, std::int32_t opener, opcode code) {
    if (at_end(block)) return ERROR("end of buffer: offset=%08X, code=%02X", opener, code);
    if (failed(walk_sub_block(block, opener, {code, 0}))) return result::failed;
    if (at_end(block)) {
        return ERROR("end of buffer: 'endif' not found: offset=%08X, code=%02X", opener, code);
    }
    return result::ok;
}

// The opcode and condition of an if, up to its branch.
result begin_if(block_walk& block) {
    const std::int32_t start = block.cursor;
    DEBUG("IF: offset=%08X", start);
    if (failed(add_code_offset(block.script, start, STATEMENT))) return result::failed;
    ++block.cursor;
    DEBUG("IF: sub block: offset=%08X", block.cursor);
    if (at_end(block)) return ERROR("end of buffer: offset=%08X, code=%02X", start, OP_IF);
    return walk_expression_operand(block);
}

result begin_else(block_walk& block) {
    DEBUG("ELSE: offset=%08X", block.cursor);
    if (failed(add_code_offset(block.script, block.cursor, STATEMENT))) return result::failed;
    ++block.cursor;
    DEBUG("ELSE: sub block: offset=%08X", block.cursor);
    return result::ok;
}

// The endif of the if at `start`.
result end_if(block_walk& block, std::int32_t start) {
    if (byte_at_cursor(block) != OP_ENDIF) {
        return ERROR("'endif' not found: 'if'=%08X, offset=%08X, code=%02X", start, block.cursor,
                     byte_at_cursor(block));
    }
    DEBUG("ENDIF: offset=%08X", block.cursor);
    if (failed(add_code_offset(block.script, block.cursor, STATEMENT))) return result::failed;
    ++block.cursor;
    return result::ok;
}

// A1 condition branch, then A2, or A3 branch A2.
result walk_whole_if(block_walk& block) {
    const std::int32_t start = block.cursor;
    if (failed(begin_if(block)) || failed(walk_branch(block, start, OP_IF))) return result::failed;
    if (byte_at_cursor(block) == OP_ELSE) {
        const std::int32_t start_of_else = block.cursor;
        if (failed(begin_else(block)) || failed(walk_branch(block, start_of_else, OP_ELSE))) return result::failed;
    }
    return end_if(block, start);
}

// Walks as much of an if as must be.
result walk_if(block_walk& block) {
    walk_memory& memory = block.shared.memory;
    if (!memory.is_on) return walk_whole_if(block);
    if_walk walk;
    if (failed(begin_if_walk(memory, block.cursor, walk))) return result::failed;
    if (walk.part == walk.known) {
        if (failed(walk_whole_if(block))) return result::failed;
        return end_if_walk(memory, walk, block.cursor);
    }
    if (walk.part != 0) {
        block.cursor = memory.places[walk.part].offset;
        if (failed(walk_if(block))) return result::failed;
    }
    block.cursor = pass_if(memory, walk);
    return result::ok;
}

// EF text: one keywords statement, up to its answer.
result begin_keywords(block_walk& block) {
    const std::int32_t start = block.cursor;
    DEBUG("KEYWORDS: offset=%08X", start);
    if (failed(add_code_offset(block.script, start, STATEMENT))) return result::failed;
    ++block.cursor;
    if (at_end(block) || !begins_text(byte_at_cursor(block))) {
        return ERROR("keywords not found: offset=%08X, code=%02X", start, OP_KEYWORDS);
    }
    if (failed(add_code_offset(block.script, block.cursor, TEXT))) return result::failed;
    if (failed(walk_text(block))) return result::failed;
    DEBUG("KEYWORDS: sub block: offset=%08X", block.cursor);
    if (at_end(block)) return ERROR("keywards without answer: offset=%08X, code=%02X", start, OP_KEYWORDS);
    return result::ok;
}

// The jump that ends an answer. Its operand may be cut off by the script's end; then the cursor
// ends up behind it, which fails the walk.
result walk_jump_of_answer(block_walk& block) {
    if (failed(add_code_offset(block.script, block.cursor, STATEMENT))) return result::failed;
    ++block.cursor;
    if (failed(add_code_offset(block.script, block.cursor, INT32))) return result::failed;
    block.is_cut = bytes_left(block) < 4;
    if (!block.is_cut && failed(add_jump_target(block, block.cursor))) return result::failed;
    constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();
    block.cursor = block.cursor <= highest - 4 ? block.cursor + 4 : highest;
    return result::ok;
}

result walk_end_of_chain(block_walk& block, std::int32_t keywords, bool chain_exit) {
    if (at_end(block)) {
        WARNING("'endanswer' not found: end of buffer: keywords=%08X, offset=%08X", keywords, block.cursor);
        return result::ok;
    }
    const std::uint8_t code = byte_at_cursor(block);
    if (code == OP_ENDANSWER) {
        DEBUG("ENDANSWER: offset=%08X", block.cursor);
        if (failed(add_code_offset(block.script, block.cursor, STATEMENT))) return result::failed;
        ++block.cursor;
        return result::ok;
    }
    if (chain_exit || is_closer(code, branch_closers(block.kind.parent_code)) ||
        offset_table_find(block.script.data_offset_table, block.cursor)) {
        WARNING("'endanswer' not found ... ignore: 'keywords'=%08X, offset=%08X, code=%02X", keywords, block.cursor,
                code);
        return result::ok;
    }
    return ERROR("'endanswer' not found: 'keywords'=%08X, offset=%08X, code=%02X", keywords, block.cursor, code);
}

// The jump or bye that ends an answer, if one does. `exits` counts them.
result walk_exit_of_answer(block_walk& block, std::int32_t& exits) {
    if (at_end(block)) return result::ok;
    const std::uint8_t code = byte_at_cursor(block);
    if (code != OP_JUMP && code != OP_BYE) return result::ok;
    ++exits;
    if (code == OP_JUMP) return walk_jump_of_answer(block);
    if (failed(add_code_offset(block.script, block.cursor, STATEMENT))) return result::failed;
    ++block.cursor;
    return result::ok;
}

// Keywords statements one after the other, each with its answer, then EE.
OUT_OF_FRAME result walk_keywords_chain(block_walk& block) {
    walk_memory& memory = block.shared.memory;
    auto way = begin_path(memory, role_of_chain(block.kind), block.cursor);
    std::int32_t exits = 0;  // answers that a jump or bye ended
    for (;;) {
        if (failed(pass(memory, way, block.cursor, exits))) return result::failed;
        const std::int32_t start = block.cursor;
        const std::int32_t exits_before = exits;
        if (failed(begin_keywords(block))) return result::failed;
        if (failed(walk_sub_block(block, start, {OP_KEYWORDS, block.kind.parent_code}))) return result::failed;
        if (failed(walk_exit_of_answer(block, exits))) return result::failed;
        if (at_end(block) || byte_at_cursor(block) != OP_KEYWORDS) {
            if (failed(end_path(memory, way, start, exits_before))) return result::failed;
            return walk_end_of_chain(block, start, exits != 0);
        }
    }
}

// A number operand of a statement: how many bytes it takes and what messages call it.
struct number_form {
    code_type type;
    std::int32_t size;
    const char* name;
};
constexpr number_form byte_form = {BYTE, 1, "BYTE"};
constexpr number_form int16_form = {INT16, 2, "INT16"};
constexpr number_form int32_form = {INT32, 4, "INT32"};
constexpr number_form str32_form = {STR32, 5, "STR32"};

// Records a number operand and moves behind it.
result walk_number(block_walk& block, std::int32_t start, std::uint8_t code, const number_form& form) {
    if (bytes_left(block) < form.size) {
        return ERROR("end of buffer: offset=%08X, code=%02X, param=%08X, type=%s", start, code, block.cursor,
                     form.name);
    }
    if (failed(add_code_offset(block.script, block.cursor, form.type))) return result::failed;
    block.cursor += form.size;
    return result::ok;
}

// Operand `k` of the statement at `start`; the cursor is at the operand, inside the script.
result walk_operand(block_walk& block, std::int32_t start, std::uint8_t code, std::int32_t k) {
    conv& script = block.script;
    const code_type type = code_info[code].params[static_cast<std::size_t>(k)];
    const std::uint8_t first = byte_at_cursor(block);
    switch (type) {
        case TEXT:
            if (!begins_text(first)) {
                return ERROR("parameter type mismatch: not text: offset=%08X, code=%02X, param=%08X, %02X", start, code,
                             block.cursor, first);
            }
            if (failed(add_code_offset(script, block.cursor, TEXT))) return result::failed;
            return walk_text(block);
        case BYTE:
            if (code == OP_SIDENT) note_sident(block.shared.memory, block.cursor);
            return walk_number(block, start, code, byte_form);
        case INT16: return walk_number(block, start, code, int16_form);
        case INT32: {
            const std::int32_t operand = block.cursor;
            if (failed(walk_number(block, start, code, int32_form))) return result::failed;
            return code == OP_JUMP ? add_jump_target(block, operand) : result::ok;
        }
        case STR32: {
            if (first != OP_INT32) {
                return ERROR("parameter is not 'int32': offset=%08X, code=%02X, param=%08X, %02X", start, code,
                             block.cursor, first);
            }
            const std::int32_t value = block.cursor + 1;
            if (failed(walk_number(block, start, code, str32_form))) return result::failed;
            return name_data_block(block.shared.memory, static_cast<std::int32_t>(conv_int32(script, value)));
        }
        case VARIABLE: return parse_var_1(block.shared.memory, block.cursor);
        case VALUE: return walk_expression_operand(block);
        default: return ERROR("BUG: code_info[%02X].params[%d].type=%02X", code, k, type);
    }
}

// ":=" and a value, which may follow the operand of "decl".
result walk_assignment(block_walk& block) {
    const std::int32_t start = block.cursor;
    if (failed(add_code_offset(block.script, start, ASSIGN))) return result::failed;
    ++block.cursor;
    if (at_end(block)) return ERROR("assign without value: offset=%08X, code=%02X", start, OP_ASSIGN);
    return walk_expression_operand(block);
}

// Any statement that opens no block: its opcode, then its operands.
result walk_statement(block_walk& block, std::uint8_t code) {
    const std::int32_t start = block.cursor;
    DEBUG("other CODE: offset=%08X, code=%02X", start, code);
    if (failed(add_code_offset(block.script, start, STATEMENT))) return result::failed;
    ++block.cursor;
    for (std::int32_t k = 0; k < code_info[code].num_params; ++k) {
        if (at_end(block)) return ERROR("end of buffer: offset=%08X, code=%02X", start, code);
        if (failed(walk_operand(block, start, code, k))) return result::failed;
    }
    if (code == OP_DECL && !at_end(block) && byte_at_cursor(block) == OP_ASSIGN) return walk_assignment(block);
    return result::ok;
}

// An expression that stands as a statement. One that fails may turn out to be a data block.
result walk_expression(block_walk& block) {
    DEBUG("EXPR: offset=%08X", block.cursor);
    if (failed(walk_expression_operand(block))) {
        if (failed(recover_as_data_block(block.script, block.cursor))) return result::failed;
        forget_walks(block.shared.memory);
    }
    DEBUG("EXPR END: offset=%08X", block.cursor);
    return result::ok;
}

// One step of a walk: whatever begins with the byte `code` at the cursor.
result walk_step(block_walk& block, std::uint8_t code) {
    switch (code_info[code].type) {
        case TEXT:
        case MB_IN: return walk_text_run(block);
        case STATEMENT:
            if (code == OP_IF) return walk_if(block);
            if (code == OP_KEYWORDS) return walk_keywords_chain(block);
            return walk_statement(block, code);
        default: return walk_expression(block);
    }
}

// At a data block start. `goes_on` tells whether the walk does, at another offset.
OUT_OF_FRAME result walk_past_data_block(block_walk& block, std::optional<path>& way, bool& goes_on) {
    walk_memory& memory = block.shared.memory;
    goes_on = false;
    INFORMATION(1, "code break by data block: offset=%08X", block.cursor);
    if (block.kind.parent_code != 0) {
        INFORMATION(1, "return to parent: parent=%02X", block.kind.parent_code);
        return result::ok;
    }
    if (!are_kept(block.shared.open) && failed(gather_open_targets(block.shared))) return result::failed;
    const auto target = lowest_target(block.shared);
    if (!target) return result::ok;
    if (failed(end_path(memory, way, block.cursor)) || failed(start_remembering(memory))) return result::failed;
    INFORMATION(1, "next offset=%08X", *target);
    block.cursor = *target;
    way = begin_path(memory, role_in(block.kind), block.cursor);
    goes_on = true;
    return result::ok;
}

// Walks to the byte that closes the block, a data block or the script's end.
result walk_block(block_walk& block) {
    walk_memory& memory = block.shared.memory;
    const auto [parent_code, grandparent_code] = block.kind;
    const std::uint8_t closers = closers_of(block.kind);
    DEBUG("parse_conv_1(*, %08X, *, %02X, %02X)", block.cursor, parent_code, grandparent_code);
    auto way = begin_path(memory, role_in(block.kind), block.cursor);
    while (!at_end(block)) {
        if (failed(arrive(memory, way, block.cursor))) return result::failed;
        if (offset_table_find(block.script.data_offset_table, block.cursor)) {
            bool goes_on = false;
            if (failed(walk_past_data_block(block, way, goes_on))) return result::failed;
            if (!goes_on) break;
            continue;
        }
        const std::uint8_t code = byte_at_cursor(block);
        if (is_closer(code, closers)) {
            if (verbose(1)) note_step(memory, block.cursor);  // a data block there is reported
            DEBUG("return to parent: offset=%08X, code=%02X, parent=%02X, %02X", block.cursor, code, parent_code,
                  grandparent_code);
            break;
        }
        note_step(memory, block.cursor);
        const std::int32_t start = block.cursor;
        if (failed(pass(memory, way, block.cursor))) return result::failed;
        if (block.cursor != start) continue;
        count_looks(memory, 1);
        if (failed(walk_step(block, code))) return result::failed;
    }
    if (block.is_cut || block.cursor > block.script.data_size) {
        return ERROR("buffer overrun: offset=%08X, data_size=%08X", block.cursor, block.script.data_size);
    }
    if (failed(end_path(memory, way, block.cursor))) return result::failed;
    DEBUG("parse_conv_1(*, *, *, %02X, %02X) return", parent_code, grandparent_code);
    return result::ok;
}

}  // namespace

result parse_conv_1(conv& script) {
    phase_1_looks = 0;
    walk_state shared = {.script = script, .memory = {.script = script}};
    block_walk top_level = {.shared = shared, .script = script, .cursor = 0, .kind = {}};
    return walk_block(top_level);
}
