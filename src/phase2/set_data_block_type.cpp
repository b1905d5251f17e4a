#include <algorithm>
#include <array>
#include <utility>

#include "base/diagnostics.h"
#include "phase2/data_block.h"

namespace {

// A tree still to be visited. In a text context a data block that it names holds texts.
struct pending_expr {
    std::uint32_t item;
    bool text_context;
};

// A block that the code names, and as what.
struct named_block {
    std::int32_t offset;
    bool is_text;
};

struct typer {
    conv& script;
    inst_tree& tree;
    array<pending_expr> pending = {};
    // The tree's blocks by the script's stretches of `stretch` bytes: the first block of each stretch
    // or behind it, and one entry more.
    array<std::uint32_t> directory = {};
    std::int32_t stretch = 0;
    // Blocks lie anywhere, so that finding one waits for memory. The last few named are put off until
    // they have been fetched.
    std::array<named_block, 32> named = {};
    std::size_t num_named = 0;
};

std::uint8_t item_code(const typer& typing, std::uint32_t item) {
    return conv_byte(typing.script, typing.tree.items[item].offset);
}

// Stretches are as many as blocks, about, so that most hold one or two.
result build_directory(typer& typing) {
    const array<block_start>& blocks = typing.tree.blocks;
    const std::int32_t size = typing.script.data_size;
    typing.stretch = size / static_cast<std::int32_t>(blocks.size() + 1) + 1;
    std::uint32_t block = 0;
    for (std::int64_t start = 0; start < size; start += typing.stretch) {
        while (block < blocks.size() && blocks[block].offset < start) ++block;
        if (failed(push(typing.directory, block))) return result::failed;
    }
    return push(typing.directory, static_cast<std::uint32_t>(blocks.size()));
}

// Where in the directory the stretch of an offset inside the script is.
const std::uint32_t* stretch_of(const typer& typing, std::int32_t offset) {
    return typing.directory.begin() + offset / typing.stretch;
}

// The type of the block at `offset`, else of whatever begins there, or null.
code_type* find_type(const typer& typing, std::int32_t offset) {
    block_start* const blocks = typing.tree.blocks.begin();
    block_start* first = blocks;
    block_start* end = typing.tree.blocks.end();
    if (conv_has(typing.script, offset)) {
        const std::uint32_t* const stretch = stretch_of(typing, offset);
        first = blocks + stretch[0];
        end = blocks + stretch[1];
    }
    block_start* const found = std::lower_bound(
        first, end, offset, [](const block_start& block, std::int32_t wanted) { return block.offset < wanted; });
    if (found != end && found->offset == offset) return &found->type;
    const inst_index node = inst_find(typing.tree, offset);
    return node == no_inst ? nullptr : &typing.tree.nodes[node].type;
}

result type_block(const typer& typing, const named_block& block) {
    const std::int32_t offset = block.offset;
    const code_type wanted = block.is_text ? DATA_TEXT : DATA_INT16;
    code_type* const type = find_type(typing, offset);
    if (type == nullptr) return ERROR("BUG: can't find data block: offset=%08X", offset);
    if (*type == wanted) return result::ok;
    if (*type != DATA) {
        return ERROR("BUG: illegal data block offset: offset=%08X, type=%02X, %02X", offset, *type, wanted);
    }
    INFORMATION(1, "change data block type: offset=%08X, type=%02X -> %02X", offset, DATA, wanted);
    *type = wanted;
    return result::ok;
}

// Types the blocks that were put off, in their order.
result type_named(typer& typing) {
    const std::size_t count = std::exchange(typing.num_named, 0);
    for (std::size_t i = 0; i < count; ++i) {
        const std::int32_t offset = typing.named[i].offset;
        if (conv_has(typing.script, offset)) {
            __builtin_prefetch(typing.tree.blocks.begin() + *stretch_of(typing, offset), 1);
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (failed(type_block(typing, typing.named[i]))) return result::failed;
    }
    return result::ok;
}

// The code names a block as texts or as numbers.
result name_block(typer& typing, std::uint32_t block_offset, bool is_text) {
    const auto offset = static_cast<std::int32_t>(block_offset);
    if (conv_has(typing.script, offset)) __builtin_prefetch(stretch_of(typing, offset));
    typing.named[typing.num_named++] = {offset, is_text};
    return typing.num_named == typing.named.size() ? type_named(typing) : result::ok;
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
    return name_block(typing, conv_int32(typing.script, offset + 1), text_context);
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
            if (failed(name_block(typing, param.value, true))) return result::failed;
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
    if (script.tree.block_users.empty()) return result::ok;
    if (failed(build_directory(typing))) return result::failed;
    // The users stand in the order of the listing, each before its sub block.
    for (const inst_index user : script.tree.block_users) {
        if (failed(type_operands(typing, script.tree.nodes[user]))) return result::failed;
    }
    if (failed(type_named(typing))) return result::failed;
    for (const block_start& block : script.tree.blocks) script.tree.nodes[block.node].type = block.type;
    return result::ok;
}
