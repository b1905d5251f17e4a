#include "phase2/parse_expr_2.h"

#include "base/diagnostics.h"

namespace {

const expr_entry& entry_at(const expr_builder& builder, std::int32_t entry) {
    return builder.entries[static_cast<std::size_t>(entry)];
}

std::int32_t entry_offset(const expr_builder& builder, std::int32_t entry) { return entry_at(builder, entry).offset; }

// The index of the item that add_item adds next.
std::uint32_t next_item(const expr_builder& builder) {
    return static_cast<std::uint32_t>(builder.script.tree.items.size());
}

result add_item(expr_builder& builder, std::int32_t entry) {
    return inst_add_item(builder.script.tree, entry_offset(builder, entry));
}

void close_extent(inst_tree& tree, std::uint32_t item) {
    tree.items[item].extent = static_cast<std::uint32_t>(tree.items.size()) - item;
}

// How many operands the item at an entry takes.
result count_operands(expr_builder& builder, std::int32_t start, std::int32_t entry, std::int32_t& count) {
    const auto& [offset, type, code] = entry_at(builder, entry);
    count = 0;
    switch (type) {
        case LITERAL:
            builder.names_block |= code == OP_INT32;
            if (code_types[code] == LITERAL) return result::ok;
            return ERROR("BUG: offset=%08X, code=%02X, type=STORE", offset, code);
        case OPERATOR:
        case FUNCTION: count = code_info[code].num_params; return result::ok;
        case BYTE: return result::ok;
        default:
            return ERROR("illegal expression: offset=%08X-%08X, code=%02X", entry_offset(builder, start), offset, code);
    }
}

// Every open item around a tree that failed reports its own failure, the innermost first.
result fail_open_items(expr_builder& builder, std::int32_t start, std::int32_t failed_entry) {
    while (!builder.open.empty()) {
        (void)ERROR("parse expression error: offset=%08X-%08X", entry_offset(builder, start),
                    entry_offset(builder, failed_entry));
        failed_entry = builder.open.back().entry;
        builder.open.pop_back();
    }
    return result::failed;
}

enum class next_step : std::uint8_t { descend, done, fail };

// Closes the open items that have all their operands and takes byte operands of the innermost
// other one, until an operand with a tree of its own comes next or the whole tree is done.
next_step take_operands(expr_builder& builder, std::int32_t start, std::int32_t& entry) {
    while (!builder.open.empty()) {
        open_expr& top = builder.open.back();
        if (top.missing == 0) {
            close_extent(builder.script.tree, top.item);
            builder.open.pop_back();
            continue;
        }
        const std::uint8_t code = entry_at(builder, top.entry).code;
        if (entry < start) {
            (void)ERROR("no expression: offset=%08X-%08X, code=%02X", entry_offset(builder, start),
                        entry_offset(builder, top.entry), code);
            return next_step::fail;
        }
        const std::int32_t k = --top.missing;
        const code_type type = code_info[code].params[static_cast<std::size_t>(k)].type;
        if (type == VALUE) return next_step::descend;
        if (type != BYTE) {
            (void)ERROR("BUG: code_info[%02X].params[%d].type=%02X", code, k, type);
            return next_step::fail;
        }
        if (failed(add_item(builder, entry))) return next_step::fail;
        --entry;
    }
    return next_step::done;
}

// Builds the tree whose root is the entry `end`, reading entries backwards, down to `start` at
// the lowest. `rest` receives the entry just below the lowest one that the tree took.
result parse_expr_2(expr_builder& builder, std::int32_t start, std::int32_t end, std::int32_t& rest) {
    std::int32_t entry = end;
    builder.open.truncate(0);
    for (;;) {
        const std::uint32_t item = next_item(builder);
        std::int32_t operands = 0;
        if (failed(add_item(builder, entry)) || failed(count_operands(builder, start, entry, operands)) ||
            (operands > 0 && failed(push(builder.open, {item, entry, operands})))) {
            return fail_open_items(builder, start, entry);
        }
        --entry;
        switch (take_operands(builder, start, entry)) {
            case next_step::descend: break;
            case next_step::done: rest = entry; return result::ok;
            case next_step::fail: {
                const std::int32_t failed_entry = builder.open.back().entry;
                builder.open.pop_back();
                return fail_open_items(builder, start, failed_entry);
            }
        }
    }
}

result push_entry(expr_builder& builder, const entry_reader& entry) {
    return push(builder.entries, {entry.offset, entry.type, shown_code(entry)});
}

// Collects the entries up to the "eval" and moves behind it.
result collect_expression(expr_builder& builder, entry_reader& entry) {
    const std::int32_t first = entry.offset;
    builder.entries.truncate(0);
    while (!entry.at_end) {
        if (entry.type == DATA) return ERROR("code break by data block: offset=%08X", entry.offset);
        if (failed(push_entry(builder, entry))) return result::failed;
        const bool is_eval = entry.type == OPERATOR && entry.code == OP_EVAL;
        advance(entry);
        if (is_eval) return result::ok;
    }
    return ERROR("'eval' not found: offset=%08X", first);
}

// Collects the entries up to the reference's last one and moves behind it.
result collect_reference(expr_builder& builder, entry_reader& entry) {
    const std::int32_t first = entry.offset;
    std::int32_t depth = 0;  // values on the evaluation stack
    builder.entries.truncate(0);
    for (; !entry.at_end; advance(entry)) {
        if (entry.type == DATA) return ERROR("code break by data block: offset=%08X", entry.offset);
        if (failed(push_entry(builder, entry))) return result::failed;
        if (entry.type == OPERATOR || entry.type == FUNCTION) {
            depth -= code_info[shown_code(entry)].num_params;
            if (depth < 0) {
                return ERROR("can't find variable/data: stack exhausted: offset=%08X, %08X, code=%02X, type=%02X",
                             first, entry.offset, shown_code(entry), entry.type);
            }
        }
        if (entry.type == FUNCTION && is_reference(entry.code) && depth == 0) {
            advance(entry);
            return result::ok;
        }
        ++depth;
    }
    return ERROR("variable/data not found: offset=%08X", first);
}

// The ":=" at `assign` and the target before it; a value was built from the entries behind it.
result parse_assignment(expr_builder& builder, std::int32_t assign, std::int32_t eval, std::int32_t& rest) {
    const std::uint32_t item = next_item(builder);
    if (failed(add_item(builder, assign))) return result::failed;
    const std::int32_t target = assign - 1;
    if (failed(parse_expr_2(builder, 0, target, rest))) {
        return ERROR("parse expression error: offset=%08X-%08X, %08X", entry_offset(builder, 0),
                     entry_offset(builder, eval), entry_offset(builder, target));
    }
    close_extent(builder.script.tree, item);
    return result::ok;
}

bool is_assignment(const expr_builder& builder, std::int32_t assign) {
    if (assign < 1 || entry_at(builder, assign).type != ASSIGN || entry_at(builder, assign).code != OP_ASSIGN) {
        return false;
    }
    const expr_entry& target = entry_at(builder, assign - 1);
    return target.type == FUNCTION && is_reference(target.code);
}

}  // namespace

result parse_eval_2(expr_builder& builder, entry_reader& entry, std::uint32_t& root) {
    TRACE("parse_eval_2(*, *, %d, *): offset=%08X, code=%02X, type=%02X", entry.index, entry.offset, shown_code(entry),
          entry.type);
    if (failed(collect_expression(builder, entry))) return result::failed;
    const auto eval = static_cast<std::int32_t>(builder.entries.size() - 1);
    const std::int32_t first_offset = entry_offset(builder, 0);
    const std::int32_t eval_offset = entry_offset(builder, eval);
    root = next_item(builder);
    if (failed(add_item(builder, eval))) return result::failed;
    if (eval == 0) return ERROR("eval without expression: offset=%08X-%08X", first_offset, eval_offset);

    std::int32_t rest = 0;
    if (failed(parse_expr_2(builder, 0, eval - 1, rest))) {
        return ERROR("parse expression error: offset=%08X-%08X, %08X", first_offset, eval_offset,
                     entry_offset(builder, eval - 1));
    }
    if (is_assignment(builder, rest) && failed(parse_assignment(builder, rest, eval, rest))) return result::failed;
    if (rest >= 0) {
        return ERROR("parse expression error: offset=%08X, %08X-%08X", entry_offset(builder, rest), first_offset,
                     eval_offset);
    }
    close_extent(builder.script.tree, root);
    return result::ok;
}

result parse_var_2(expr_builder& builder, entry_reader& entry, std::uint32_t& root) {
    TRACE("parse_var_2(*, *, %d, *): offset=%08X, code=%02X, type=%02X", entry.index, entry.offset, shown_code(entry),
          entry.type);
    if (failed(collect_reference(builder, entry))) return result::failed;
    const auto last = static_cast<std::int32_t>(builder.entries.size() - 1);
    const std::int32_t first_offset = entry_offset(builder, 0);
    const std::int32_t last_offset = entry_offset(builder, last);
    root = next_item(builder);
    std::int32_t rest = 0;
    if (failed(parse_expr_2(builder, 0, last, rest))) {
        return ERROR("parse variable/data error: offset=%08X-%08X", first_offset, last_offset);
    }
    if (rest >= 0) {
        return ERROR("parse variable/data error: offset=%08X, %08X-%08X", entry_offset(builder, rest), first_offset,
                     last_offset);
    }
    return result::ok;
}
