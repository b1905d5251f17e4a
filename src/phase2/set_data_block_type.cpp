#include <algorithm>

#include "base/diagnostics.h"
#include "phase2/data_block.h"

namespace {

// A tree still to be visited. In a text context a data block that it names holds texts.
struct pending_expr {
    std::uint32_t item;
    bool text_context;
};

// Blocks lie anywhere, so that a search among all nodes would wait for memory at each of its steps. One
// among groups of neighbours does so at the last.
constexpr std::size_t group_size = 32;

struct typer {
    conv& script;
    inst_tree& tree;
    array<std::int32_t> groups = {};  // the offset of each group's first node
    array<pending_expr> pending = {};
};

result list_groups(typer& typing) {
    for (std::size_t node = 0; node < typing.tree.walked; node += group_size) {
        if (failed(push(typing.groups, typing.tree.nodes[node].offset))) return result::failed;
    }
    return result::ok;
}

// The walked node at an offset, or null.
inst* find_node(const typer& typing, std::int32_t offset) {
    const array<std::int32_t>& groups = typing.groups;
    const std::int32_t* const behind = std::upper_bound(groups.begin(), groups.end(), offset);
    if (behind == groups.begin()) return nullptr;
    const std::size_t first = static_cast<std::size_t>(behind - groups.begin() - 1) * group_size;
    const std::size_t end = std::min<std::size_t>(first + group_size, typing.tree.walked);
    for (std::size_t node = first; node < end; ++node) {
        if (typing.tree.nodes[node].offset == offset) return &typing.tree.nodes[node];
    }
    return nullptr;
}

std::uint8_t item_code(const typer& typing, std::uint32_t item) {
    return conv_byte(typing.script, typing.tree.items[item].offset);
}

// The code names a block, as texts or as numbers.
result type_block(const typer& typing, std::uint32_t block_offset, bool is_text) {
    const auto offset = static_cast<std::int32_t>(block_offset);
    const code_type wanted = is_text ? DATA_TEXT : DATA_INT16;
    inst* const block = find_node(typing, offset);
    if (block == nullptr) return ERROR("BUG: can't find data block: offset=%08X", offset);
    if (block->type == wanted) return result::ok;
    if (block->type != DATA) {
        return ERROR("BUG: illegal data block offset: offset=%08X, type=%02X, %02X", offset, block->type, wanted);
    }
    INFORMATION(1, "change data block type: offset=%08X, type=%02X -> %02X", offset, block->type, wanted);
    block->type = wanted;
    return result::ok;
}

result visit_later(typer& typing, std::uint32_t item, bool text_context) {
    return push(typing.pending, {item, text_context});
}

// Whether operand `k` of an operator or function holds texts. `other` is the code of the other
// operand's root where there are two.
bool is_text_operand(std::uint8_t code, std::int32_t k, bool text_context, std::uint8_t other) {
    switch (code) {
        case OP_NOT_EQUAL:
        case OP_EQUAL: return other == OP_STR;
        case OP_INDEXOF: return true;
        case OP_DATA: return k == 0 && text_context;
        case OP_EVAL: return text_context;
        default: return false;
    }
}

// Plans the visit of an operator's or function's operands, so that the first comes first.
result visit_operands(typer& typing, std::uint32_t item, std::uint8_t code, bool text_context) {
    const code_info_entry& info = code_info[code];
    const std::uint32_t last = item - 1;
    std::uint32_t operand_item = last;
    for (std::int32_t k = info.num_params - 1; k >= 0; --k) {
        std::uint8_t other = 0;
        if (info.num_params == 2) other = item_code(typing, k == 0 ? last : expr_before(typing.tree, last));
        if (info.params[static_cast<std::size_t>(k)] == VALUE &&
            failed(visit_later(typing, operand_item, is_text_operand(code, k, text_context, other)))) {
            return result::failed;
        }
        operand_item = expr_before(typing.tree, operand_item);
    }
    return result::ok;
}

// What is not an operator or function: a literal may name a block.
result type_leaf(typer& typing, std::int32_t offset, code_type type, bool text_context) {
    if (type != LITERAL || conv_byte(typing.script, offset) != OP_INT32) return result::ok;
    return type_block(typing, conv_int32(typing.script, offset + 1), text_context);
}

result visit_item(typer& typing, std::uint32_t item, bool text_context) {
    const std::int32_t offset = typing.tree.items[item].offset;
    const code_type type = *offset_table_find(typing.script.code_offset_table, offset);
    if (type != OPERATOR && type != FUNCTION) return type_leaf(typing, offset, type, text_context);
    const std::uint8_t code = conv_byte(typing.script, offset);
    return code_info[code].num_params == 0 ? result::ok : visit_operands(typing, item, code, text_context);
}

result type_expression(typer& typing, const operand& value, bool text_context) {
    if (value.value == no_item) {
        const code_type type = *offset_table_find(typing.script.code_offset_table, value.offset);
        return type_leaf(typing, value.offset, type, text_context);
    }
    // Of an assignment only the target is visited.
    const std::uint32_t assign = expr_assign(typing.tree, value.value);
    const std::uint32_t root = assign == no_item ? value.value : assign - 1;
    if (failed(visit_later(typing, root, text_context))) return result::failed;
    while (!typing.pending.empty()) {
        const pending_expr last = typing.pending.back();
        typing.pending.pop_back();
        if (failed(visit_item(typing, last.item, last.text_context))) return result::failed;
    }
    return result::ok;
}

result type_operands(typer& typing, const inst& node) {
    for (std::uint32_t k = 0; k < node.num_params; ++k) {
        const operand param = inst_param(typing.tree, node, k);
        if (param.type == STR32) {
            if (failed(type_block(typing, param.value, true))) return result::failed;
        } else if (param.type == VALUE) {
            const bool is_value_of_str =
                node.code == OP_DECL && k == 2 && item_code(typing, inst_param(typing.tree, node, 0).value) == OP_STR;
            if (failed(type_expression(typing, param, is_value_of_str))) return result::failed;
        }
    }
    return result::ok;
}

}  // namespace

result set_data_block_type(conv& script) {
    typer typing = {script, script.tree};
    if (failed(list_groups(typing))) return result::failed;
    // The users stand in the order of the listing, each before its sub block.
    for (const inst_index user : script.tree.block_users) {
        if (failed(type_operands(typing, script.tree.nodes[user]))) return result::failed;
    }
    return result::ok;
}
