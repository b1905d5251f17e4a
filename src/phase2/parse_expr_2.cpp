#include "phase2/parse_expr_2.h"

#include "base/diagnostics.h"

namespace {

expr_item* items_of(const expr_builder& builder) { return builder.script.tree.items.begin() + builder.first; }

// How many entries the expression has.
std::int32_t size_of(const expr_builder& builder) {
    return static_cast<std::int32_t>(builder.script.tree.items.size() - builder.first);
}

// Begins an expression.
void begin_items(expr_builder& builder) {
    builder.first = static_cast<std::uint32_t>(builder.script.tree.items.size());
    builder.lowest = builder.first;
    builder.is_plain = true;
}

// The items of an operator's or function's tree when it follows `item`, 0 when its operands don't
// stand in front of it as they should. Only what takes no operands has an extent of 1.
std::uint32_t find_extent(const expr_builder& builder, std::uint32_t item, std::uint8_t code) {
    const expr_item* const items = builder.script.tree.items.begin();
    const code_info_entry& info = code_info[code];
    std::uint32_t first = item;
    for (std::int32_t k = info.num_params - 1; k >= 0; --k) {
        if (first == builder.lowest) return 0;
        const std::uint32_t extent = items[first - 1].extent;
        if (extent != 1 && info.params[static_cast<std::size_t>(k)] != VALUE) return 0;
        first -= extent;
    }
    return item + 1 - first;
}

// Whether all items in front of a ":=" are the tree of one reference.
bool follows_target(const expr_builder& builder, std::uint32_t assign) {
    const array<expr_item>& items = builder.script.tree.items;
    return builder.lowest == builder.first && assign != builder.first &&
           items[assign - 1].extent == assign - builder.first && items[assign - 1].extent > 1 &&
           is_reference(conv_byte(builder.script, items[assign - 1].offset));
}

// Finds the tree that an entry ends as `item` and gives its extent, 0 for a ":=" and for what is not plain.
std::uint32_t close_tree(expr_builder& builder, std::uint32_t item, const entry_reader& entry) {
    if (entry.type == LITERAL || entry.type == BYTE) return 1;
    std::uint32_t extent = 0;
    if (entry.type == OPERATOR || entry.type == FUNCTION) {
        extent = find_extent(builder, item, entry.code);
        builder.is_plain &= extent != 0;
    } else {
        builder.is_plain &= entry.type == ASSIGN && follows_target(builder, item);
        builder.lowest = item + 1;
    }
    return extent;
}

// Takes the entry that the reader stands on as the expression's next item.
result take_item(expr_builder& builder, const entry_reader& entry) {
    inst_tree& tree = builder.script.tree;
    const std::uint32_t extent = close_tree(builder, static_cast<std::uint32_t>(tree.items.size()), entry);
    if (entry.code == OP_INT32) builder.names_block = true;
    return inst_add_item(tree, {entry.offset, extent});
}

// An expression that is not plain is read once more, backwards and with all that can be wrong with
// it. Its entries are counted from 0.

struct expr_entry {
    std::int32_t offset;
    code_type type;
    std::uint8_t code;
};

std::int32_t entry_offset(const expr_builder& builder, std::int32_t entry) { return items_of(builder)[entry].offset; }

expr_entry entry_at(const expr_builder& builder, std::int32_t entry) {
    const std::int32_t offset = entry_offset(builder, entry);
    return {offset, *offset_table_find(builder.script.code_offset_table, offset), conv_byte(builder.script, offset)};
}

constexpr std::int32_t illegal = -1;

// How many operands the item of an entry takes, or `illegal` after an ERROR line.
std::int32_t count_operands(const expr_builder& builder, const expr_entry& entry) {
    switch (entry.type) {
        case LITERAL:
            if (code_types[entry.code] == LITERAL) return 0;
            (void)ERROR("BUG: offset=%08X, code=%02X, type=STORE", entry.offset, entry.code);
            return illegal;
        case OPERATOR:
        case FUNCTION: return code_info[entry.code].num_params;
        case BYTE: return 0;
        default:
            (void)ERROR("illegal expression: offset=%08X-%08X, code=%02X", entry_offset(builder, 0), entry.offset,
                        entry.code);
            return illegal;
    }
}

// Every open item around a tree that failed reports its own failure, the innermost first.
result fail_open_items(expr_builder& builder, std::int32_t failed_entry) {
    while (!builder.open.empty()) {
        (void)ERROR("parse expression error: offset=%08X-%08X", entry_offset(builder, 0),
                    entry_offset(builder, failed_entry));
        failed_entry = builder.open.back().entry;
        builder.open.pop_back();
    }
    return result::failed;
}

enum class next_step : std::uint8_t { descend, done, fail };

// Closes the open items that have all their operands and takes byte operands of the innermost
// other one, until an operand with a tree of its own comes next or the whole tree is done.
next_step take_operands(expr_builder& builder, std::int32_t& entry) {
    expr_item* const items = items_of(builder);
    while (!builder.open.empty()) {
        open_expr& top = builder.open.back();
        if (top.missing == 0) {
            items[top.entry].extent = static_cast<std::uint32_t>(top.entry - entry);
            builder.open.pop_back();
            continue;
        }
        const std::uint8_t code = entry_at(builder, top.entry).code;
        if (entry < 0) {
            (void)ERROR("no expression: offset=%08X-%08X, code=%02X", entry_offset(builder, 0),
                        entry_offset(builder, top.entry), code);
            return next_step::fail;
        }
        const std::int32_t k = --top.missing;
        const code_type type = code_info[code].params[static_cast<std::size_t>(k)];
        if (type == VALUE) return next_step::descend;
        if (type != BYTE) {
            (void)ERROR("BUG: code_info[%02X].params[%d].type=%02X", code, k, type);
            return next_step::fail;
        }
        --entry;
    }
    return next_step::done;
}

// Finds the tree whose root is the entry `end`, reading entries backwards. `rest` receives the entry just below the
// lowest one that the tree took.
result parse_expr_2(expr_builder& builder, std::int32_t end, std::int32_t& rest) {
    std::int32_t entry = end;
    builder.open.truncate(0);
    for (;;) {
        const std::int32_t operands = count_operands(builder, entry_at(builder, entry));
        if (operands == illegal || (operands > 0 && failed(push(builder.open, {entry, operands})))) {
            return fail_open_items(builder, entry);
        }
        --entry;
        switch (take_operands(builder, entry)) {
            case next_step::descend: break;
            case next_step::done: rest = entry; return result::ok;
            case next_step::fail: {
                const std::int32_t failed_entry = builder.open.back().entry;
                builder.open.pop_back();
                return fail_open_items(builder, failed_entry);
            }
        }
    }
}

// The ":=" at `assign` and the target before it; a value was built from the entries behind it.
result parse_assignment(expr_builder& builder, std::int32_t assign, std::int32_t& rest) {
    const std::int32_t target = assign - 1;
    if (failed(parse_expr_2(builder, target, rest))) {
        return ERROR("parse expression error: offset=%08X-%08X, %08X", entry_offset(builder, 0), builder.eval_offset,
                     entry_offset(builder, target));
    }
    items_of(builder)[assign].extent = 0;
    return result::ok;
}

bool is_assignment(const expr_builder& builder, std::int32_t assign) {
    if (assign < 1) return false;
    const expr_entry entry = entry_at(builder, assign);
    if (entry.type != ASSIGN || entry.code != OP_ASSIGN) return false;
    const expr_entry target = entry_at(builder, assign - 1);
    return target.type == FUNCTION && is_reference(target.code);
}

void forget_extents(const expr_builder& builder) {
    for (std::int32_t entry = 0; entry < size_of(builder); ++entry) items_of(builder)[entry].extent = 1;
}

result reparse_eval(expr_builder& builder) {
    const std::int32_t eval_offset = builder.eval_offset;
    const std::int32_t last = size_of(builder) - 1;
    if (last < 0) return ERROR("eval without expression: offset=%08X-%08X", eval_offset, eval_offset);

    const std::int32_t first_offset = entry_offset(builder, 0);
    forget_extents(builder);
    std::int32_t rest = 0;
    if (failed(parse_expr_2(builder, last, rest))) {
        return ERROR("parse expression error: offset=%08X-%08X, %08X", first_offset, eval_offset,
                     entry_offset(builder, last));
    }
    if (is_assignment(builder, rest) && failed(parse_assignment(builder, rest, rest))) return result::failed;
    if (rest >= 0) {
        return ERROR("parse expression error: offset=%08X, %08X-%08X", entry_offset(builder, rest), first_offset,
                     eval_offset);
    }
    return result::ok;
}

result reparse_var(expr_builder& builder) {
    const std::int32_t last = size_of(builder) - 1;
    const std::int32_t first_offset = entry_offset(builder, 0);
    const std::int32_t last_offset = entry_offset(builder, last);
    forget_extents(builder);
    std::int32_t rest = 0;
    if (failed(parse_expr_2(builder, last, rest))) {
        return ERROR("parse variable/data error: offset=%08X-%08X", first_offset, last_offset);
    }
    if (rest >= 0) {
        return ERROR("parse variable/data error: offset=%08X, %08X-%08X", entry_offset(builder, rest), first_offset,
                     last_offset);
    }
    return result::ok;
}

// Collects the entries in front of the "eval" and moves behind it.
result collect_expression(expr_builder& builder, entry_reader& entry) {
    const std::int32_t first = entry.offset;
    begin_items(builder);
    for (; !entry.at_end; advance(entry)) {
        if (entry.type == DATA) return ERROR("code break by data block: offset=%08X", entry.offset);
        if (entry.type == OPERATOR && entry.code == OP_EVAL) {
            builder.eval_offset = entry.offset;
            advance(entry);
            return result::ok;
        }
        if (failed(take_item(builder, entry))) return result::failed;
    }
    return ERROR("'eval' not found: offset=%08X", first);
}

// Collects the entries up to the reference's last one and moves behind it.
result collect_reference(expr_builder& builder, entry_reader& entry) {
    const std::int32_t first = entry.offset;
    std::int32_t depth = 0;  // values on the evaluation stack
    begin_items(builder);
    for (; !entry.at_end; advance(entry)) {
        if (entry.type == DATA) return ERROR("code break by data block: offset=%08X", entry.offset);
        if (failed(take_item(builder, entry))) return result::failed;
        if (entry.type == OPERATOR || entry.type == FUNCTION) {
            depth -= code_info[entry.code].num_params;
            if (depth < 0) {
                return ERROR("can't find variable/data: stack exhausted: offset=%08X, %08X, code=%02X, type=%02X",
                             first, entry.offset, entry.code, entry.type);
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

// Whether the items are one tree or an assignment.
bool is_whole(const expr_builder& builder) {
    const array<expr_item>& items = builder.script.tree.items;
    const auto end = static_cast<std::uint32_t>(items.size());
    return builder.is_plain && end != builder.lowest && end - items.back().extent == builder.lowest;
}

}  // namespace

result parse_eval_2(expr_builder& builder, entry_reader& entry, std::uint32_t& root) {
    TRACE("parse_eval_2(*, *, %d, *): offset=%08X, code=%02X, type=%02X", entry.index, entry.offset, entry.code,
          entry.type);
    if (failed(collect_expression(builder, entry))) return result::failed;
    if (!is_whole(builder) && failed(reparse_eval(builder))) return result::failed;
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
    if (failed(collect_reference(builder, entry))) return result::failed;
    root = static_cast<std::uint32_t>(builder.script.tree.items.size() - 1);
    return is_whole(builder) ? result::ok : reparse_var(builder);
}
