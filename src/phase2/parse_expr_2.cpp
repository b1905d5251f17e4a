#include "phase2/parse_expr_2.h"

#include "base/diagnostics.h"
#include "model/reference.h"

namespace {

// An expression's entries, counted from 0. Each is one item of the tree.
struct expr_entry {
    std::int32_t offset;
    code_type type;
    std::uint8_t code;
};

expr_item* items_of(const expr_builder& builder) { return builder.script.tree.items.begin() + builder.first; }

std::int32_t entry_offset(const expr_builder& builder, std::int32_t entry) { return items_of(builder)[entry].offset; }

std::uint8_t entry_code(const expr_builder& builder, std::int32_t entry) {
    return conv_byte(builder.script, entry_offset(builder, entry));
}

expr_entry entry_at(const expr_builder& builder, std::int32_t entry) {
    const std::int32_t offset = entry_offset(builder, entry);
    return {offset, *offset_table_find(builder.script.code_offset_table, offset), conv_byte(builder.script, offset)};
}

std::int32_t last_entry(const expr_builder& builder) {
    return static_cast<std::int32_t>(builder.script.tree.items.size() - builder.first) - 1;
}

void begin_items(expr_builder& builder) {
    builder.first = static_cast<std::uint32_t>(builder.script.tree.items.size());
}

// Takes the entry that the reader stands on as the expression's next item.
result take_item(expr_builder& builder, const entry_reader& entry) {
    if (entry.type == DATA) return ERROR("code break by data block: offset=%08X", entry.offset);
    if (entry.code == OP_INT32) builder.names_block = true;
    return push(builder.script.tree.items, {entry.offset});
}

// Takes the entries in front of the "eval" and moves behind it.
result take_expression(expr_builder& builder, entry_reader& entry) {
    const std::int32_t first = entry.offset;
    begin_items(builder);
    for (; !entry.at_end; advance(entry)) {
        if (entry.type == OPERATOR && entry.code == OP_EVAL) {
            builder.eval_offset = entry.offset;
            advance(entry);
            return result::ok;
        }
        if (failed(take_item(builder, entry))) return result::failed;
    }
    return ERROR("'eval' not found: offset=%08X", first);
}

// Takes the entries up to the reference's last one and moves behind it.
result take_reference(expr_builder& builder, entry_reader& entry) {
    reference read = {entry.offset};
    begin_items(builder);
    for (; !entry.at_end && !read.is_closed; advance(entry)) {
        if (failed(take_item(builder, entry))) return result::failed;
        if (failed(add_reference_item(read, entry.offset, entry.type, entry.code))) return result::failed;
    }
    return read.is_closed ? result::ok : report_open_reference(read);
}

// How many operands an entry's item takes.
result count_operands(const expr_builder& builder, const expr_entry& entry, std::int32_t& operands) {
    operands = 0;
    switch (entry.type) {
        case LITERAL:
            if (code_info[entry.code].type == LITERAL) return result::ok;
            return ERROR("BUG: offset=%08X, code=%02X, type=STORE", entry.offset, entry.code);
        case OPERATOR:
        case FUNCTION: operands = code_info[entry.code].num_params; return result::ok;
        case BYTE: return result::ok;
        default:
            return ERROR("illegal expression: offset=%08X-%08X, code=%02X", entry_offset(builder, 0), entry.offset,
                         entry.code);
    }
}

// Closes the items that have all their operands and takes the byte operands of the innermost other one,
// until an operand with a tree of its own comes next or the whole tree is done.
result take_operands(expr_builder& builder, std::int32_t& entry) {
    while (!builder.open.empty()) {
        open_expr& item = builder.open.back();
        if (item.missing == 0) {
            items_of(builder)[item.entry].extent = static_cast<std::uint32_t>(item.entry - entry);
            builder.open.pop_back();
            continue;
        }
        const std::uint8_t code = entry_code(builder, item.entry);
        if (entry < 0) {
            return ERROR("no expression: offset=%08X-%08X, code=%02X", entry_offset(builder, 0),
                         entry_offset(builder, item.entry), code);
        }
        const std::int32_t k = --item.missing;
        const code_type type = code_info[code].params[static_cast<std::size_t>(k)];
        if (type == VALUE) return result::ok;
        if (type != BYTE) return ERROR("BUG: code_info[%02X].params[%d].type=%02X", code, k, type);
        --entry;
    }
    return result::ok;
}

// Every open item around one that failed reports its own failure, the innermost first.
result fail_open_items(expr_builder& builder, std::int32_t failed_entry) {
    for (; !builder.open.empty(); builder.open.pop_back()) {
        (void)ERROR("parse expression error: offset=%08X-%08X", entry_offset(builder, 0),
                    entry_offset(builder, failed_entry));
        failed_entry = builder.open.back().entry;
    }
    return result::failed;
}

// Finds the tree whose root is `entry`, reading entries backwards, and moves `entry` below the lowest
// that the tree took.
result find_tree(expr_builder& builder, std::int32_t& entry) {
    array<open_expr>& open = builder.open;
    open.truncate(0);
    do {
        std::int32_t operands = 0;
        if (failed(count_operands(builder, entry_at(builder, entry), operands)) ||
            (operands > 0 && failed(push(open, {entry, operands})))) {
            return fail_open_items(builder, entry);
        }
        --entry;
        if (failed(take_operands(builder, entry))) {
            const std::int32_t failed_entry = open.back().entry;
            open.pop_back();
            return fail_open_items(builder, failed_entry);
        }
    } while (!open.empty());
    return result::ok;
}

// The same for the value of an expression or the target of its assignment.
result find_part(expr_builder& builder, std::int32_t& entry) {
    const std::int32_t root = entry;
    if (!failed(find_tree(builder, entry))) return result::ok;
    return ERROR("parse expression error: offset=%08X-%08X, %08X", entry_offset(builder, 0), builder.eval_offset,
                 entry_offset(builder, root));
}

bool is_assignment(const expr_builder& builder, std::int32_t assign) {
    if (assign < 1) return false;
    const expr_entry entry = entry_at(builder, assign);
    if (entry.type != ASSIGN || entry.code != OP_ASSIGN) return false;
    const expr_entry target = entry_at(builder, assign - 1);
    return target.type == FUNCTION && is_reference(target.code);
}

result find_trees_of_eval(expr_builder& builder) {
    const std::int32_t eval_offset = builder.eval_offset;
    std::int32_t rest = last_entry(builder);
    if (rest < 0) return ERROR("eval without expression: offset=%08X-%08X", eval_offset, eval_offset);
    if (failed(find_part(builder, rest))) return result::failed;
    if (is_assignment(builder, rest)) {
        items_of(builder)[rest--].extent = 0;
        if (failed(find_part(builder, rest))) return result::failed;
    }
    if (rest < 0) return result::ok;
    return ERROR("parse expression error: offset=%08X, %08X-%08X", entry_offset(builder, rest),
                 entry_offset(builder, 0), eval_offset);
}

result find_tree_of_var(expr_builder& builder) {
    const std::int32_t first_offset = entry_offset(builder, 0);
    std::int32_t rest = last_entry(builder);
    const std::int32_t last_offset = entry_offset(builder, rest);
    if (failed(find_tree(builder, rest))) {
        return ERROR("parse variable/data error: offset=%08X-%08X", first_offset, last_offset);
    }
    if (rest < 0) return result::ok;
    return ERROR("parse variable/data error: offset=%08X, %08X-%08X", entry_offset(builder, rest), first_offset,
                 last_offset);
}

}  // namespace

result parse_eval_2(expr_builder& builder, entry_reader& entry, std::uint32_t& root) {
    TRACE("parse_eval_2(*, *, %d, *): offset=%08X, code=%02X, type=%02X", entry.index, entry.offset, entry.code,
          entry.type);
    if (failed(take_expression(builder, entry)) || failed(find_trees_of_eval(builder))) return result::failed;
    array<expr_item>& items = builder.script.tree.items;
    root = static_cast<std::uint32_t>(items.size() - 1);
    if (root == builder.first) {
        items.pop_back();
        root = no_item;
    }
    return result::ok;
}

result parse_var_2(expr_builder& builder, entry_reader& entry, std::uint32_t& root) {
    TRACE("parse_var_2(*, *, %d, *): offset=%08X, code=%02X, type=%02X", entry.index, entry.offset, entry.code,
          entry.type);
    if (failed(take_reference(builder, entry)) || failed(find_tree_of_var(builder))) return result::failed;
    root = static_cast<std::uint32_t>(builder.script.tree.items.size() - 1);
    return result::ok;
}
