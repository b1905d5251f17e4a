#include "phase1/parse_conv_1.h"

#include <algorithm>
#include <array>
#include <functional>
#include <limits>
#include <optional>
#include <utility>

#include "base/diagnostics.h"
#include "model/block.h"
#include "phase1/known_path_1.h"
#include "phase1/parse_operand_1.h"
#include "phase1/recover_1.h"

namespace {

struct walker {
    conv& script;
    // Jump targets from 0 up that were not walked when they were recorded, as a heap with the
    // lowest on top. Those walked since are dropped when they come up.
    array<std::int32_t> open_targets = {};
    // Jump targets lie anywhere, so that recording one waits for memory. The last few are put off
    // until their marks have been fetched.
    std::array<std::int32_t, 32> new_targets = {};
    std::size_t num_new_targets = 0;
    path_memory memory = {};
    int sidents = 0;  // how often the npc id was taken
    int depth = 0;
};

// One walk: the top level or a sub block. The cursor moves on as the walk consumes bytes; it may
// stand behind the script's end when an operand is cut off there.
struct walk {
    walker& shared;
    conv& script;
    std::int32_t cursor;
    block_kind kind;
    bool is_cut = false;  // an operand was cut off by the script's end
};

result walk_block(walk& block);

bool at_end(const walk& block) { return block.cursor >= block.script.data_size; }
std::uint8_t byte_at_cursor(const walk& block) { return conv_byte(block.script, block.cursor); }

// Bytes of the script from the cursor on.
std::int32_t bytes_left(const walk& block) { return block.script.data_size - block.cursor; }

result walk_sub_block(walk& outer, std::int32_t opener, block_kind kind) {
    if (outer.shared.depth == max_nesting) return ERROR("nesting too deep: offset=%08X", opener);
    walk inner = {.shared = outer.shared, .script = outer.script, .cursor = outer.cursor, .kind = kind};
    ++outer.shared.depth;
    const result outcome = walk_block(inner);
    --outer.shared.depth;
    outer.cursor = inner.cursor;
    return outcome;
}

// Records a jump target, as an open one unless it was walked or recorded before.
result record_target(walker& shared, std::int32_t target) {
    conv& script = shared.script;
    array<std::int32_t>& open = shared.open_targets;
    const std::int32_t inserted = script.jump_offset_table.inserted;
    if (failed(add_jump_offset(script, target))) return result::failed;
    const bool is_walked = conv_has(script, target) && offset_table_find(script.code_offset_table, target);
    if (target < 0 || is_walked || inserted == script.jump_offset_table.inserted) return result::ok;
    if (failed(push(open, target))) return result::failed;
    std::push_heap(open.begin(), open.end(), std::greater());
    return result::ok;
}

// To be called before the jump targets are looked at.
result record_new_targets(walker& shared) {
    const std::size_t count = std::exchange(shared.num_new_targets, 0);
    for (std::size_t i = 0; i < count; ++i) {
        if (failed(record_target(shared, shared.new_targets[i]))) return result::failed;
    }
    return result::ok;
}

// Takes the target of a jump whose operand is at `operand`.
result add_jump_target(walk& block, std::int32_t operand) {
    walker& shared = block.shared;
    const auto target = static_cast<std::int32_t>(conv_int32(block.script, operand));
    offset_table_fetch(block.script.jump_offset_table, target);
    shared.new_targets[shared.num_new_targets++] = target;
    return shared.num_new_targets == shared.new_targets.size() ? record_new_targets(shared) : result::ok;
}

// Finds the lowest jump target that was not walked yet, no_target if there is none. Targets below 0
// are left to the jump check.
constexpr std::int32_t no_target = -1;
result take_open_target(walker& shared, std::int32_t& target) {
    if (failed(record_new_targets(shared))) return result::failed;
    array<std::int32_t>& open = shared.open_targets;
    for (target = no_target; !open.empty(); open.pop_back()) {
        if (!offset_table_find(shared.script.code_offset_table, open[0])) {
            target = open[0];
            break;
        }
        std::pop_heap(open.begin(), open.end(), std::greater());
    }
    return result::ok;
}

// Steps over the text at the cursor and records where it begins.
result walk_text(walk& block) {
    std::int32_t length = 0;
    if (failed(text_length_from(block.shared.memory, block.script, block.cursor, length))) {
        return ERROR("can't get text length: offset=%08X", block.cursor);
    }
    block.cursor += length;
    return result::ok;
}

result walk_expression_operand(walk& block) {
    if (!failed(parse_eval_1(block.script, block.cursor))) return result::ok;
    return ERROR("parse expression failure: offset=%08X", block.cursor);
}

result walk_text_run(walk& block) {
    DEBUG("TEXT: offset=%08X", block.cursor);
    if (failed(add_code_offset(block.script, block.cursor, TEXT))) return result::failed;
    return walk_text(block);
}

// The branch of the if or else whose opcode is at `opener`; the cursor is at its first byte.
result walk_branch(walk& block, std::int32_t opener, opcode code) {
    if (at_end(block)) return ERROR("end of buffer: offset=%08X, code=%02X", opener, code);
    if (failed(walk_sub_block(block, opener, {code, 0}))) return result::failed;
    if (at_end(block)) {
        return ERROR("end of buffer: 'endif' not found: offset=%08X, code=%02X", opener, code);
    }
    return result::ok;
}

// The opcode and condition of an if, up to its branch.
result begin_if(walk& block) {
    const std::int32_t start = block.cursor;
    DEBUG("IF: offset=%08X", start);
    if (failed(add_code_offset(block.script, start, STATEMENT))) return result::failed;
    ++block.cursor;
    DEBUG("IF: sub block: offset=%08X", block.cursor);
    if (at_end(block)) return ERROR("end of buffer: offset=%08X, code=%02X", start, OP_IF);
    return walk_expression_operand(block);
}

result begin_else(walk& block) {
    DEBUG("ELSE: offset=%08X", block.cursor);
    if (failed(add_code_offset(block.script, block.cursor, STATEMENT))) return result::failed;
    ++block.cursor;
    DEBUG("ELSE: sub block: offset=%08X", block.cursor);
    return result::ok;
}

// The endif of the if at `start`.
result end_if(walk& block, std::int32_t start) {
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
result walk_if(walk& block) {
    const std::int32_t start = block.cursor;
    if (failed(begin_if(block)) || failed(walk_branch(block, start, OP_IF))) return result::failed;
    if (byte_at_cursor(block) == OP_ELSE) {
        const std::int32_t start_of_else = block.cursor;
        if (failed(begin_else(block)) || failed(walk_branch(block, start_of_else, OP_ELSE))) return result::failed;
    }
    return end_if(block, start);
}

// EF text: one keywords statement, up to its answer.
result begin_keywords(walk& block) {
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
result walk_jump_of_answer(walk& block) {
    if (failed(add_code_offset(block.script, block.cursor, STATEMENT))) return result::failed;
    ++block.cursor;
    if (failed(add_code_offset(block.script, block.cursor, INT32))) return result::failed;
    block.is_cut = bytes_left(block) < 4;
    if (!block.is_cut && failed(add_jump_target(block, block.cursor))) return result::failed;
    constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();
    block.cursor = block.cursor <= highest - 4 ? block.cursor + 4 : highest;
    return result::ok;
}

result walk_end_of_chain(walk& block, std::int32_t keywords, bool chain_exit) {
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

// The jump or bye that ends an answer, if one does. `chain_exit` is set then.
result walk_exit_of_answer(walk& block, bool& chain_exit) {
    if (at_end(block)) return result::ok;
    const std::uint8_t code = byte_at_cursor(block);
    if (code != OP_JUMP && code != OP_BYE) return result::ok;
    chain_exit = true;
    if (code == OP_JUMP) return walk_jump_of_answer(block);
    if (failed(add_code_offset(block.script, block.cursor, STATEMENT))) return result::failed;
    ++block.cursor;
    return result::ok;
}

// Keywords statements one after the other, each with its answer, then EE.
result walk_keywords_chain(walk& block) {
    bool chain_exit = false;  // a jump or bye ended one of the answers
    for (;;) {
        const std::int32_t start = block.cursor;
        if (failed(begin_keywords(block))) return result::failed;
        if (failed(walk_sub_block(block, start, {OP_KEYWORDS, block.kind.parent_code}))) return result::failed;
        if (failed(walk_exit_of_answer(block, chain_exit))) return result::failed;
        if (at_end(block) || byte_at_cursor(block) != OP_KEYWORDS) return walk_end_of_chain(block, start, chain_exit);
        const bool is_top_level = block.kind.parent_code == 0;
        if (is_top_level && failed(continue_step(block.shared.memory, block.cursor))) return result::failed;
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
result walk_number(walk& block, std::int32_t start, std::uint8_t code, const number_form& form) {
    if (bytes_left(block) < form.size) {
        return ERROR("end of buffer: offset=%08X, code=%02X, param=%08X, type=%s", start, code, block.cursor,
                     form.name);
    }
    if (failed(add_code_offset(block.script, block.cursor, form.type))) return result::failed;
    block.cursor += form.size;
    return result::ok;
}

// Operand `k` of the statement at `start`; the cursor is at the operand, inside the script.
result walk_operand(walk& block, std::int32_t start, std::uint8_t code, std::int32_t k) {
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
            if (code == OP_SIDENT) {
                script.npc_id = first;
                ++block.shared.sidents;
            }
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
            return add_data_block(script, static_cast<std::int32_t>(conv_int32(script, value)));
        }
        case VARIABLE: return parse_var_1(script, block.cursor);
        case VALUE: return walk_expression_operand(block);
        default: return ERROR("BUG: code_info[%02X].params[%d].type=%02X", code, k, type);
    }
}

// ":=" and a value, which may follow the operand of "decl".
result walk_assignment(walk& block) {
    const std::int32_t start = block.cursor;
    if (failed(add_code_offset(block.script, start, ASSIGN))) return result::failed;
    ++block.cursor;
    if (at_end(block)) return ERROR("assign without value: offset=%08X, code=%02X", start, OP_ASSIGN);
    return walk_expression_operand(block);
}

// Any statement that opens no block: its opcode, then its operands.
result walk_statement(walk& block, std::uint8_t code) {
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
result walk_expression(walk& block) {
    DEBUG("EXPR: offset=%08X", block.cursor);
    if (failed(walk_expression_operand(block)) &&
        (failed(record_new_targets(block.shared)) || failed(recover_as_data_block(block.script, block.cursor)))) {
        return result::failed;
    }
    DEBUG("EXPR END: offset=%08X", block.cursor);
    return result::ok;
}

// One step of a walk: whatever begins with the byte `code` at the cursor.
result walk_step(walk& block, std::uint8_t code) {
    switch (code_types[code]) {
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
result walk_past_data_block(walk& block, bool& goes_on) {
    goes_on = false;
    INFORMATION(1, "code break by data block: offset=%08X", block.cursor);
    if (block.kind.parent_code != 0) {
        INFORMATION(1, "return to parent: parent=%02X", block.kind.parent_code);
        return result::ok;
    }
    std::int32_t target = no_target;
    if (failed(take_open_target(block.shared, target))) return result::failed;
    if (target == no_target) return result::ok;
    const std::int32_t end = std::exchange(block.cursor, target);
    INFORMATION(1, "next offset=%08X", block.cursor);
    finish_path(block.shared.memory, block.script, end);
    goes_on = true;
    return result::ok;
}

// A step of the top-level walk, unless the way from here on is known.
result walk_top_level_step(walk& block, std::uint8_t code) {
    walker& shared = block.shared;
    if (follow_known_path(shared.memory, block.script, block.cursor)) return result::ok;
    const int sidents = shared.sidents;
    if (failed(begin_step(shared.memory, block.cursor)) || failed(walk_step(block, code))) return result::failed;
    return note_step(shared.memory, block.script, sidents != shared.sidents);
}

// Walks to the byte that closes the block, a data block or the script's end.
result walk_block(walk& block) {
    const auto [parent_code, grandparent_code] = block.kind;
    const std::uint8_t closers = closers_of(block.kind);
    DEBUG("parse_conv_1(*, %08X, *, %02X, %02X)", block.cursor, parent_code, grandparent_code);
    while (!at_end(block)) {
        if (offset_table_find(block.script.data_offset_table, block.cursor)) {
            bool goes_on = false;
            if (failed(walk_past_data_block(block, goes_on))) return result::failed;
            if (!goes_on) break;
            continue;
        }
        const std::uint8_t code = byte_at_cursor(block);
        if (is_closer(code, closers)) {
            DEBUG("return to parent: offset=%08X, code=%02X, parent=%02X, %02X", block.cursor, code, parent_code,
                  grandparent_code);
            break;
        }
        if (failed(parent_code == 0 ? walk_top_level_step(block, code) : walk_step(block, code))) return result::failed;
    }
    if (block.is_cut || block.cursor > block.script.data_size) {
        return ERROR("buffer overrun: offset=%08X, data_size=%08X", block.cursor, block.script.data_size);
    }
    DEBUG("parse_conv_1(*, *, *, %02X, %02X) return", parent_code, grandparent_code);
    return result::ok;
}

}  // namespace

result parse_conv_1(conv& script) {
    walker shared = {.script = script};
    walk top_level = {.shared = shared, .script = script, .cursor = 0, .kind = {}};
    return failed(walk_block(top_level)) ? result::failed : record_new_targets(shared);
}
