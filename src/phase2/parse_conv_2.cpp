#include "phase2/parse_conv_2.h"

#include <utility>

#include "base/diagnostics.h"
#include "model/block.h"
#include "phase2/parse_expr_2.h"

namespace {

// What the walks of all blocks share.
struct walk_state {
    conv& script;
    inst_tree& tree;
    entry_reader entry;  // the next entry to consume
    expr_builder expressions;
    int depth = 0;
};

// The walk of one block: the top level or a sub block.
struct block_walk {
    walk_state& shared;
    inst_index owner;  // whose sub block the list is; no_inst at the top level
    block_kind kind;
    inst_index last = no_inst;  // the node linked last
};

result walk_block(block_walk& block);

// The first node of a sub block follows its owner at once.
void link(block_walk& block, inst_index node) {
    inst_tree& tree = block.shared.tree;
    if (block.last != no_inst) {
        tree.nodes[block.last].next = node;
    } else if (block.owner != no_inst) {
        tree.nodes[block.owner].has_subblock = true;
    } else {
        tree.root = node;
    }
    block.last = node;
}

// Makes a node of the entry, links it and moves on.
result take_node(block_walk& block, std::uint8_t code) {
    entry_reader& entry = block.shared.entry;
    const inst_index node = inst_new(block.shared.tree, entry.offset, entry.type, code);
    if (node == no_inst) return result::failed;
    link(block, node);
    advance(entry);
    return result::ok;
}

void trace_node(const walk_state& shared, const char* what, inst_index index) {
    const inst& node = shared.tree.nodes[index];
    TRACE("%s: offset=%08X, code=%02X, type=%02X", what, node.offset, node.code, node.type);
}

// Takes the node of a text or a statement. Its type may be DATA: a block start whose byte closes or
// continues the block it stands in is read as that statement and treated as data from then on.
result take_traced(block_walk& block, const char* what) {
    if (failed(take_node(block, block.shared.entry.code))) return result::failed;
    trace_node(block.shared, what, block.last);
    return result::ok;
}

void trace_sub_block(const walk_state& shared, const char* what, inst_index owner) {
    if (!verbose(2)) return;
    const inst_index first = inst_subblock(shared.tree, owner);
    if (first != no_inst) trace_node(shared, what, first);
    for (inst_index node = first; node != no_inst; node = shared.tree.nodes[node].next) {
        trace_node(shared, "parse_conv_2(): SUB BLOCK", node);
    }
}

// Walks a sub block. A failure is reported with `context`, an offset that tells whose it was.
result walk_sub_block(block_walk& inner, std::int32_t context) {
    walk_state& shared = inner.shared;
    result outcome = result::failed;
    if (shared.depth == max_nesting) {
        outcome = ERROR("nesting too deep: offset=%08X", context);
    } else {
        ++shared.depth;
        outcome = walk_block(inner);
        --shared.depth;
    }
    return failed(outcome) ? ERROR("parse sub block error: offset=%08X", context) : result::ok;
}

// The text that begins at `offset`, once the entry behind it is reached: there it ends. Every data
// block start has an entry too.
operand text_operand(const walk_state& shared, std::int32_t offset) {
    return {offset, static_cast<std::uint32_t>(shared.entry.offset), TEXT};
}

result walk_text_run(block_walk& block) {
    walk_state& shared = block.shared;
    const std::int32_t offset = shared.entry.offset;
    if (failed(take_traced(block, "parse_conv_2(): TEXT"))) return result::failed;
    if (failed(inst_add_param(shared.tree, block.last, text_operand(shared, offset)))) return result::failed;
    shared.tree.nodes[block.last].num_params = 0;
    return result::ok;
}

result missing_endif() { return ERROR("'endif' not found"); }

// The branch below the if or else node that was linked last, up to the entry that closes it.
result walk_branch(block_walk& block, opcode code, const char* trace) {
    walk_state& shared = block.shared;
    const inst_index owner = block.last;
    block_walk branch = {shared, owner, {code, 0}};
    if (failed(walk_sub_block(branch, shared.tree.nodes[owner].offset))) return result::failed;
    trace_sub_block(shared, trace, owner);
    return shared.entry.at_end ? missing_endif() : result::ok;
}

// Lists the node linked last, whose operands were just built, among those that name data blocks, if they do.
result note_block_user(const block_walk& block) {
    if (!std::exchange(block.shared.expressions.names_block, false)) return result::ok;
    return push(block.shared.tree.block_users, block.last);
}

// The node and condition of an if, up to its branch.
result begin_if(block_walk& block) {
    walk_state& shared = block.shared;
    const std::int32_t start = shared.entry.offset;
    if (failed(take_traced(block, "parse_conv_2(): IF"))) return result::failed;
    const std::int32_t condition_offset = shared.entry.offset;
    std::uint32_t condition = 0;
    if (failed(parse_eval_2(shared.expressions, shared.entry, condition))) {
        return ERROR("parse conditon error: offset=%08X", start);
    }
    if (failed(inst_add_param(shared.tree, block.last, {condition_offset, condition, VALUE}))) return result::failed;
    if (failed(note_block_user(block))) return result::failed;
    if (shared.entry.at_end) return ERROR("can't get sub block: offset=%08X", start);
    return result::ok;
}

result begin_else(block_walk& block) {
    if (failed(take_traced(block, "parse_conv_2(): ELSE"))) return result::failed;
    return block.shared.entry.at_end ? missing_endif() : result::ok;
}

result end_if(block_walk& block) {
    if (block.shared.entry.code != OP_ENDIF) return missing_endif();
    return take_traced(block, "parse_conv_2(): ENDIF");
}

result walk_if(block_walk& block) {
    if (failed(begin_if(block))) return result::failed;
    if (failed(walk_branch(block, OP_IF, "parse_conv_2(): IF: SUB BLOCK"))) return result::failed;
    if (block.shared.entry.code == OP_ELSE) {
        if (failed(begin_else(block))) return result::failed;
        if (failed(walk_branch(block, OP_ELSE, "parse_conv_2(): ELSE: SUB BLOCK"))) return result::failed;
    }
    return end_if(block);
}

result missing_param(const walk_state& shared, inst_index index, std::int32_t k) {
    const inst& node = shared.tree.nodes[index];
    return ERROR("parameter not found: offset=%08X, code=%02X, type=%02X, param=%d", node.offset, node.code, node.type,
                 k);
}

// One keywords statement with its text, whose offset it gives, up to its answer.
result begin_keywords(block_walk& block, std::int32_t& text) {
    walk_state& shared = block.shared;
    const entry_reader& entry = shared.entry;
    const std::int32_t start = entry.offset;
    if (failed(take_traced(block, "parse_conv_2(): KEYWORDS"))) return result::failed;
    if (entry.at_end) return ERROR("keywords not found: offset=%08X", start);
    if (entry.type != TEXT && entry.type != MB_IN) {
        return ERROR("not text: offset=%08X, code=%02X, type=%02X", entry.offset, entry.code, entry.type);
    }
    text = entry.offset;
    advance(shared.entry);
    if (failed(inst_add_param(shared.tree, block.last, text_operand(shared, text)))) return result::failed;
    if (entry.at_end) return ERROR("keywords without answer: offset=%08X", start);
    return result::ok;
}

// The jump or bye that ends an answer becomes the answer's last node.
result walk_exit_of_answer(block_walk& answer) {
    walk_state& shared = answer.shared;
    const std::int32_t keywords = shared.tree.nodes[answer.owner].offset;
    const std::int32_t offset = shared.entry.offset;
    const std::uint8_t code = shared.entry.code;
    if (failed(take_node(answer, code))) return result::failed;
    if (code == OP_BYE) {
        INFORMATION(2, "'keywards' break by 'bye': offset=%08X, %08X", keywords, offset);
        return result::ok;
    }
    INFORMATION(2, "'keywards' break by 'jump': offset=%08X, %08X", keywords, offset);
    if (shared.entry.at_end) return missing_param(shared, answer.owner, 0);
    const std::int32_t target_offset = shared.entry.offset;
    const std::uint32_t target = conv_int32(shared.script, target_offset);
    advance(shared.entry);
    return inst_add_param(shared.tree, answer.last, {target_offset, target, code_info[OP_JUMP].params[0]});
}

result walk_end_of_chain(block_walk& block, bool chain_exit) {
    const entry_reader& entry = block.shared.entry;
    if (entry.at_end) {
        WARNING("'endanswer' not found: end of buffer");
        return result::ok;
    }
    if (entry.code == OP_ENDANSWER) return take_traced(block, "parse_conv_2(): ENDANSWER");
    if (chain_exit || is_closer(entry.code, branch_closers(block.kind.parent_code)) || entry.type == DATA) {
        WARNING("'endanswer' not found ... ignore");
        return result::ok;
    }
    return ERROR("'endanswer' not found: offset=%08X, code=%02X, type=%02X", entry.offset, entry.code, entry.type);
}

result walk_keywords_chain(block_walk& block) {
    walk_state& shared = block.shared;
    bool chain_exit = false;  // a jump or bye ended one of the answers
    do {
        std::int32_t text = 0;
        if (failed(begin_keywords(block, text))) return result::failed;
        block_walk answer = {shared, block.last, {OP_KEYWORDS, block.kind.parent_code}};
        if (failed(walk_sub_block(answer, text))) return result::failed;
        trace_sub_block(shared, "parse_conv_2(): KEYWORDS: SUB BLOCK", block.last);
        if (shared.entry.code == OP_JUMP || shared.entry.code == OP_BYE) {
            chain_exit = true;
            if (failed(walk_exit_of_answer(answer))) return result::failed;
        }
    } while (shared.entry.code == OP_KEYWORDS);
    return walk_end_of_chain(block, chain_exit);
}

// Operand `k` of the node, from the entry on.
result walk_operand(walk_state& shared, inst_index node, std::uint8_t code, std::int32_t k) {
    const code_type type = code_info[code].params[static_cast<std::size_t>(k)];
    const std::int32_t offset = shared.entry.offset;
    std::uint32_t value = 0;
    switch (type) {
        case BYTE:
            value = conv_byte(shared.script, offset);
            advance(shared.entry);
            break;
        case INT16:
            value = conv_int16(shared.script, offset);
            advance(shared.entry);
            break;
        case INT32:
            value = conv_int32(shared.script, offset);
            advance(shared.entry);
            break;
        case STR32:
            value = conv_int32(shared.script, offset + 1);
            shared.expressions.names_block = true;
            advance(shared.entry);
            break;
        case TEXT: advance(shared.entry); return inst_add_param(shared.tree, node, text_operand(shared, offset));
        case VARIABLE:
            if (failed(parse_var_2(shared.expressions, shared.entry, value))) {
                return ERROR("parse variable/data error: offset=%08X", offset);
            }
            break;
        case VALUE:
            if (failed(parse_eval_2(shared.expressions, shared.entry, value))) {
                return ERROR("parse expression error: offset=%08X", offset);
            }
            break;
        default: return ERROR("BUG: code_info[%02X].params[%d].type=%02X", code, k, type);
    }
    return inst_add_param(shared.tree, node, {offset, value, type});
}

// ":=" and a value behind the operand of a decl node.
result walk_assignment(walk_state& shared, inst_index node) {
    const std::int32_t start = shared.entry.offset;
    if (failed(inst_add_param(shared.tree, node, {start, 0, ASSIGN}))) return result::failed;
    advance(shared.entry);
    if (shared.entry.at_end) return ERROR("assign without value: offset=%08X", start);
    const std::int32_t value_offset = shared.entry.offset;
    std::uint32_t value = 0;
    if (failed(parse_eval_2(shared.expressions, shared.entry, value))) {
        return ERROR("parse expression error: offset=%08X", inst_param(shared.tree, shared.tree.nodes[node], 0).offset);
    }
    return inst_add_param(shared.tree, node, {value_offset, value, VALUE});
}

// Any statement that opens no block.
result walk_statement(block_walk& block) {
    walk_state& shared = block.shared;
    const std::int32_t offset = shared.entry.offset;
    const std::uint8_t code = shared.entry.code;
    if (failed(take_traced(block, "parse_conv_2(): other CODE"))) return result::failed;
    if (code == OP_ENDIF) {
        WARNING("'endif' without 'if': offset=%08X, code=%02X, type=%02X", offset, code, STATEMENT);
        options.endif_without_if = true;
    }
    for (std::int32_t k = 0; k < code_info[code].num_params; ++k) {
        if (shared.entry.at_end) return missing_param(shared, block.last, k);
        if (failed(walk_operand(shared, block.last, code, k))) return result::failed;
    }
    if (code == OP_DECL && shared.entry.type == ASSIGN && shared.entry.code == OP_ASSIGN &&
        failed(walk_assignment(shared, block.last))) {
        return result::failed;
    }
    return note_block_user(block);
}

// An expression that stands as a statement: a node of its "eval" at the expression's first byte
// or, for an assignment, of the target's opcode. Either has the whole expression as its operand.
result walk_expression(block_walk& block) {
    walk_state& shared = block.shared;
    TRACE("parse_conv_2(): EXPRESSION");
    const std::int32_t start = shared.entry.offset;
    std::uint32_t root = 0;
    if (failed(parse_eval_2(shared.expressions, shared.entry, root))) {
        return ERROR("parse expression error: offset=%08X", start);
    }
    const std::uint32_t assign = expr_assign(shared.tree, root);
    const bool is_value = assign == no_item;
    const std::int32_t offset = is_value ? start : shared.tree.items[assign - 1].offset;
    const code_type type = is_value ? OPERATOR : FUNCTION;
    const std::uint8_t code = is_value ? std::uint8_t{OP_EVAL} : conv_byte(shared.script, offset);
    const inst_index node = inst_new(shared.tree, offset, type, code);
    if (node == no_inst) return result::failed;
    link(block, node);
    if (failed(inst_add_param(shared.tree, node, {start, root, VALUE}))) return result::failed;
    return note_block_user(block);
}

result walk_data_block(block_walk& block) {
    if (failed(take_node(block, 0))) return result::failed;
    DEBUG("add data block: offset=%08X", block.shared.tree.nodes[block.last].offset);
    return result::ok;
}

result walk_step(block_walk& block) {
    const entry_reader& entry = block.shared.entry;
    switch (entry.type) {
        case TEXT: return walk_text_run(block);
        case STATEMENT:
            if (entry.code == OP_IF) return walk_if(block);
            if (entry.code == OP_KEYWORDS) return walk_keywords_chain(block);
            return walk_statement(block);
        default: return walk_expression(block);
    }
}

// Walks to the entry that closes the block, a data block or the table's end.
result walk_block(block_walk& block) {
    const entry_reader& entry = block.shared.entry;
    const std::uint8_t closers = closers_of(block.kind);
    while (!entry.at_end) {
        if (entry.type == DATA) {
            INFORMATION(1, "code break by data block: offset=%08X", entry.offset);
            if (block.kind.parent_code != 0) {
                INFORMATION(1, "return to parent: parent=%02X", block.kind.parent_code);
                return result::ok;
            }
            if (failed(walk_data_block(block))) return result::failed;
            continue;
        }
        if (is_closer(entry.code, closers)) return result::ok;
        if (failed(walk_step(block))) return result::failed;
    }
    return result::ok;
}

}  // namespace

result parse_conv_2(conv& script) {
    walk_state shared = {script, script.tree, read_first_entry(script), {script}};
    block_walk top_level = {shared, no_inst, {}};
    const result outcome = walk_block(top_level);
    script.tree.walked = static_cast<std::uint32_t>(script.tree.nodes.size());
    return outcome;
}
