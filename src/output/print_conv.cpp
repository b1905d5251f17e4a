#include "output/print_conv.h"

#include <algorithm>

#include "base/diagnostics.h"
#include "output/label.h"
#include "output/print_dump.h"
#include "output/print_inst.h"
#include "output/print_text.h"

namespace {

// A list of nodes and where its last node ends.
struct node_list {
    inst_index first;
    std::int32_t end_offset;
    int level;
};

result print_list(print_job& job, const node_list& list);

void print_id(print_job& job) {
    writer& out = job.out;
    const std::uint32_t id = job.script.npc_id;
    out.put("; id: ");
    char* const digits = out.room(4);
    out.advance(id > 0xFF ? put_hex<4>(digits, id) : put_hex<2>(digits, id));
    out.put('(');
    out.advance(put_decimal(out.room(max_decimal_size), id));
    out.put(")\n");
}

void print_option(writer& out, std::string_view option) {
    print_indent(out, 1);
    out.put(".option --");
    out.put(option);
    out.put('\n');
}

std::string_view mode_option(game_mode_id game_mode) {
    switch (game_mode) {
        case game_mode_id::brenhollow: return "bh";
        case game_mode_id::quillfen: return "qf";
        default: return "kv";
    }
}

void print_options(print_job& job) {
    print_option(job.out, mode_option(options.game_mode));
    if (options.omit_decl) print_option(job.out, "implicit-decl");
    if (options.omit_eval) print_option(job.out, "implicit-eval");
    if (options.omit_int32) print_option(job.out, "implicit-int32");
    if (options.endif_without_if) print_option(job.out, "endif-without-if");
    if (!job.script.dump) job.out.put('\n');
}

void print_label_line(print_job& job, std::int32_t offset) {
    char* const line = job.out.room(label_size + 2);
    job.out.advance(put_text(put_label(line, job.script, static_cast<std::uint32_t>(offset)), ":\n"));
}

// A label stands before what a jump leads to and at the start of a data block.
void print_node_label(print_job& job, const inst& node) {
    const conv& script = job.script;
    if (node.type == DATA || offset_table_find(script.jump_offset_table, node.offset)) {
        print_label_line(job, node.offset);
    } else if (node.type == DATA_TEXT || node.type == DATA_INT16) {
        const std::int32_t offset = inst_param(script.tree, node, 0).offset;
        if (offset_table_find(script.data_offset_table, offset)) print_label_line(job, offset);
    }
}

void trace_node(const inst_tree& tree, inst_index index) {
    if (!verbose(2)) return;
    const inst& node = tree.nodes[index];
    const inst_index next = node.next == no_inst ? 0 : node.next;  // the root, 0, follows nothing
    TRACE("offset=%08X, code=%02X, type=%02X, next=%08X", node.offset, node.code, node.type, next);
    if (!node.has_subblock) return;
    const inst& first = tree.nodes[inst_subblock(tree, index)];
    TRACE("sub block: offset=%08X, code=%02X, type=%02X, next=%08X", first.offset, first.code, first.type, next);
}

// How many of the node's own bytes lie inside the script. They end at its sub block, at the next node
// or at the list's end.
std::int32_t own_size(const conv& script, inst_index index, const node_list& list) {
    const inst& node = script.tree.nodes[index];
    if (!conv_has(script, node.offset)) return 0;
    const inst_index behind = node.has_subblock ? inst_subblock(script.tree, index) : node.next;
    const std::int32_t end = behind == no_inst ? list.end_offset : script.tree.nodes[behind].offset;
    return std::max(0, std::min(end, script.data_size) - node.offset);
}

result print_sub_block(print_job& job, inst_index index, const node_list& list) {
    const inst_tree& tree = job.script.tree;
    const inst& node = tree.nodes[index];
    if (!node.has_subblock) return result::ok;
    const std::int32_t end = node.next == no_inst ? list.end_offset : tree.nodes[node.next].offset;
    return print_list(job, {inst_subblock(tree, index), end, list.level + 1});
}

result print_node(print_job& job, inst_index index, const node_list& list) {
    const inst& node = job.script.tree.nodes[index];
    const int depth = list.level + 1;
    const std::int32_t size = own_size(job.script, index, list);
    trace_node(job.script.tree, index);
    if (job.script.dump) job.out.put('\n');
    print_node_label(job, node);
    if (failed(print_dump(job, node.offset, size))) return result::failed;
    switch (node.type) {
        case TEXT:
        case MB_IN: return print_text(job, node, depth);
        case DATA_TEXT:
        case DATA_INT16:
        case DATA: return print_data_block(job, node, depth, size);
        case STATEMENT:
            if (failed(print_statement(job, node, depth))) return result::failed;
            return print_sub_block(job, index, list);
        default:
            return ERROR("BUG: illegal instruction type: offset=%08X, code=%02X, type=%02X", node.offset, node.code,
                         node.type);
    }
}

result print_list(print_job& job, const node_list& list) {
    const inst_tree& tree = job.script.tree;
    if (list.first != no_inst) {
        const inst& first = tree.nodes[list.first];
        TRACE("print_conv(*, *, %d, %d, *): offset=%08X, code=%02X, type=%02X", list.end_offset, list.level,
              first.offset, first.code, first.type);
    }
    for (inst_index node = list.first; node != no_inst; node = tree.nodes[node].next) {
        if (failed(print_node(job, node, list))) {
            return ERROR("can't print: offste=%08X", tree.nodes[node].offset);
        }
    }
    return result::ok;
}

void print_end(print_job& job) {
    writer& out = job.out;
    if (job.script.dump) {
        out.put("\n; ");
        out.advance(put_hex<8>(out.room(8), static_cast<std::uint32_t>(job.script.data_size)));
        out.put(": END\n");
    } else {
        out.put("; END\n");
    }
}

}  // namespace

result print_conv(print_job& job) {
    print_id(job);
    print_options(job);
    if (failed(print_list(job, {job.script.tree.root, job.script.data_size, 0}))) return result::failed;
    print_end(job);
    return result::ok;
}
