#include <algorithm>

#include "base/diagnostics.h"
#include "model/text.h"
#include "phase2/data_block.h"
#include "phase2/text_verdict.h"

namespace {

// The block that is split: its own node, and the node of its last element so far.
struct block_parser {
    conv& script;
    inst_tree& tree;
    inst_index block;
    std::int32_t end;  // just behind the block, inside the script or at its end
    inst_index last = no_inst;

    [[nodiscard]] bool is_empty() const { return last == no_inst; }
};

// Inserts a node behind the last element.
result insert_node(block_parser& parser, std::int32_t offset, code_type type) {
    const inst_index node = inst_new(parser.tree, offset, type, conv_byte(parser.script, offset));
    if (node == no_inst) return result::failed;
    parser.tree.nodes[node].next = parser.tree.nodes[parser.last].next;
    parser.tree.nodes[parser.last].next = node;
    parser.last = node;
    return result::ok;
}

// The first element takes the block's own node, which keeps its code and loses the operand that a
// block start has when it was read as a jump or keywords statement. Each further element gets a node
// of its own.
result add_element(block_parser& parser, code_type type, const operand& param) {
    if (parser.is_empty()) {
        parser.last = parser.block;
        parser.tree.nodes[parser.block].num_params = 0;
    } else if (failed(insert_node(parser, param.offset, type))) {
        return result::failed;
    }
    return inst_add_param(parser.tree, parser.last, param);
}

result add_end_mark(block_parser& parser, std::int32_t offset) {
    if (!parser.is_empty()) return insert_node(parser, offset, code_info[OP_ENDDATA].type);
    inst& node = parser.tree.nodes[parser.block];
    node.type = code_info[OP_ENDDATA].type;
    node.code = OP_ENDDATA;
    parser.last = parser.block;
    return result::ok;
}

void report_unknown_block(std::int32_t offset) {
    INFORMATION(1, "unknown data block ... may not be used: offset=%08X", offset);
}

// The end mark of a text block, and what the block holds behind it.
result parse_end_of_texts(block_parser& parser, std::int32_t offset) {
    if (parser.is_empty()) WARNING("enddata only: offset=%08X, type=TEXT", offset);
    if (failed(add_end_mark(parser, offset))) return result::failed;
    if (parser.end - offset == 1) return result::ok;
    report_unknown_block(offset + 1);
    return insert_node(parser, offset + 1, DATA);
}

// Texts, each with its NUL, up to B8 or the block's end.
result parse_text_block(block_parser& parser) {
    const conv& script = parser.script;
    std::int32_t offset = parser.tree.nodes[parser.block].offset;
    INFORMATION(1, "parse data block: offset=%08X-%08X, type=TEXT", offset, parser.end - 1);
    while (offset < parser.end) {
        if (conv_byte(script, offset) == OP_ENDDATA) return parse_end_of_texts(parser, offset);
        std::int32_t length = 0;
        if (failed(text_length(script, offset, parser.end, length))) {
            return ERROR("can't get text length: offset=%08X", offset);
        }
        const std::int32_t behind = offset + length;
        if (failed(add_element(parser, DATA_TEXT, {offset, static_cast<std::uint32_t>(behind), TEXT}))) {
            return result::failed;
        }
        TRACE("data block: offset=%08X, text=%.*s", offset, length,
              reinterpret_cast<const char*>(conv_bytes(script, offset, behind).data()));
        if (behind >= parser.end || conv_byte(script, behind) != 0) {
            return ERROR("data end mark not found: offset=%08X, %08X, type=TEXT", offset, offset);
        }
        offset = behind + 1;
    }
    return result::ok;
}

// The last byte of a number block of odd length.
result parse_end_of_numbers(block_parser& parser, std::int32_t offset) {
    if (conv_byte(parser.script, offset) != OP_ENDDATA) {
        return ERROR("data end mark not found: offset=%08X, type=INT16", offset);
    }
    if (parser.is_empty()) WARNING("BUG: enddata only: offset=%08X, type=INT16", offset);
    return add_end_mark(parser, offset);
}

// Whether the rest of a number block, from `offset` on, is text.
bool is_text(const block_parser& parser, std::int32_t offset, text_verdict verdict) {
    INFORMATION(2, "check text in INT16 data block: offset=%08X", offset);
    if (verdict >= 0) {
        (void)report_malformed_text(parser.script, verdict, parser.end);
        WARNING("error recovery ... text not found in INT16 data block");
    }
    return verdict == all_text;
}

// Ends the number block at `offset`, where texts begin: they become a text block that follows. Its start
// is recorded like any other, since the listing labels what the data offset table names and a verbose run
// counts its entries.
result begin_text_block(block_parser& parser, std::int32_t offset) {
    WARNING("change data block type ... may not be used: offset=%08X, type=INT16 -> TEXT", offset);
    if (failed(add_data_block(parser.script, offset))) return result::failed;
    const inst_index last_number = parser.last;
    if (failed(insert_node(parser, offset, DATA_TEXT))) return result::failed;
    parser.last = last_number;
    return result::ok;
}

// Numbers of two bytes up to B8 in the last byte of a block of odd length, or the block's end.
result parse_number_block(block_parser& parser) {
    const conv& script = parser.script;
    const std::int32_t start = parser.tree.nodes[parser.block].offset;
    INFORMATION(1, "parse data block: offset=%08X-%08X, type=INT16", start, parser.end - 1);
    array<text_verdict> verdicts;
    if (!options.no_int16_to_text && failed(judge_texts(script, start, parser.end, verdicts))) return result::failed;

    for (std::int32_t offset = start; offset < parser.end; offset += 2) {
        if (parser.end - offset == 1) return parse_end_of_numbers(parser, offset);
        if (!parser.is_empty() && !verdicts.empty() &&
            is_text(parser, offset, verdicts[static_cast<std::size_t>(offset - start) / 2])) {
            return begin_text_block(parser, offset);
        }
        const std::uint32_t number = conv_int16(script, offset);
        if (failed(add_element(parser, DATA_INT16, {offset, number, INT16}))) return result::failed;
        TRACE("data block: offset=%08X, int16=%04X(%d)", offset, number, static_cast<int>(number));
    }
    return result::ok;
}

// Splits a typed block that ends before `end` and moves `node` to its last element's node.
result parse_typed_block(conv& script, inst_index& node, std::int32_t end) {
    inst& block = script.tree.nodes[node];
    if (!conv_has(script, block.offset)) {
        WARNING("data block outside the script: offset=%08X", block.offset);
        block.type = DATA;
        return result::ok;
    }
    block_parser parser = {script, script.tree, node, std::min(end, script.data_size)};
    const result outcome = block.type == DATA_TEXT ? parse_text_block(parser) : parse_number_block(parser);
    node = parser.last;
    return outcome;
}

bool is_block(const inst& node) { return node.type == DATA || node.type == DATA_TEXT || node.type == DATA_INT16; }

// The walked node behind a block. A block start that was read as a keywords or else statement has a sub
// block. What that holds lies inside the block: it is neither listed nor split.
inst_index behind_block(const inst_tree& tree, inst_index node) {
    while (tree.nodes[node].has_subblock) {
        ++node;
        while (tree.nodes[node].next != no_inst) node = tree.nodes[node].next;
    }
    return node + 1;
}

// Splits a block and what its splitting makes a block.
result parse_block(conv& script, inst_index node, inst_index behind) {
    const inst_tree& tree = script.tree;
    const std::int32_t end = behind == tree.walked ? script.data_size : tree.nodes[behind].offset;
    if (tree.nodes[node].type == DATA) {
        report_unknown_block(tree.nodes[node].offset);
        return result::ok;
    }
    do {
        if (failed(parse_typed_block(script, node, end))) return result::failed;
        node = tree.nodes[node].next;
    } while (node != no_inst && node >= tree.walked);
    return result::ok;
}

}  // namespace

result parse_data_block(conv& script) {
    const inst_tree& tree = script.tree;
    inst_index behind = 0;
    for (inst_index node = 0; node < tree.walked; node = behind) {
        behind = node + 1;
        if (!is_block(tree.nodes[node])) continue;
        behind = behind_block(tree, node);
        if (failed(parse_block(script, node, behind))) return result::failed;
    }
    return result::ok;
}
