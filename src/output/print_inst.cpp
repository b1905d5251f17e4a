#include "output/print_inst.h"

#include "base/diagnostics.h"
#include "output/print_text.h"
#include "output/sprint_eval.h"

namespace {

void print_label(listing& print, std::uint32_t offset) {
    print.out.advance(put_label(print.out.room(label_size), print.script, offset));
}

result print_operand(listing& print, const inst& node, const operand& param) {
    writer& out = print.out;
    switch (param.type) {
        case TEXT:
            if (failed(check_text(text_of(print.script, param)))) return result::failed;
            print_quoted_text(print, param);
            return result::ok;
        case BYTE: out.advance(put_decimal(out.room(max_decimal_size), param.value)); return result::ok;
        case INT32: print_label(print, param.value); return result::ok;
        case STR32:
            out.put("int32 ");
            print_label(print, param.value);
            return result::ok;
        case VARIABLE:
        case VALUE: return sprint_eval(print, param);
        default:
            return ERROR("BUG: illegal parameter type: offset=%08X, param=%08X, type=%02X", node.offset, param.offset,
                         param.type);
    }
}

// The variable and, behind ":=", the value that it starts with.
result print_declaration(listing& print, const inst& node) {
    const inst_tree& tree = print.script.tree;
    if (!options.omit_decl) {
        print_name(print.out, node.code);
        print.out.put(' ');
    }
    if (failed(sprint_eval(print, inst_param(tree, node, 0)))) return result::failed;
    if (node.num_params < 3) return result::ok;
    print.out.put(' ');
    print_name(print.out, OP_ASSIGN);
    print.out.put(' ');
    return sprint_eval(print, inst_param(tree, node, 2));
}

result print_operands(listing& print, const inst& node) {
    for (std::uint32_t k = 0; k < node.num_params; ++k) {
        if (k != 0) print.out.put(',');
        print.out.put(' ');
        if (failed(print_operand(print, node, inst_param(print.script.tree, node, k)))) return result::failed;
    }
    return result::ok;
}

// ".unknown" lines of two bytes each, the last of one when the size is odd.
void print_unknown(listing& print, const inst& node, int depth, std::int32_t size) {
    writer& out = print.out;
    for (std::int32_t i = 0; i < size; i += 2) {
        const bool is_byte = size - i == 1;
        const std::uint32_t number =
            is_byte ? conv_byte(print.script, node.offset + i) : conv_int16(print.script, node.offset + i);
        print_indent(out, depth);
        out.put(is_byte ? ".unknown.byte 0x" : ".unknown 0x");
        char* const digits = out.room(4);
        out.advance(is_byte ? put_hex<2>(digits, number) : put_hex<4>(digits, number));
        out.put(" ; ");
        out.advance(put_decimal(out.room(max_decimal_size), number));
        out.put('\n');
    }
}

}  // namespace

result print_statement(listing& print, const inst& node, int depth) {
    print_indent(print.out, depth);
    if (node.code == OP_DECL) {
        if (failed(print_declaration(print, node))) return result::failed;
    } else {
        print_name(print.out, node.code);
        if (node.code != OP_ELSE && failed(print_operands(print, node))) return result::failed;
    }
    print.out.put('\n');
    return result::ok;
}

result print_data_block(listing& print, const inst& node, int depth, std::int32_t size) {
    writer& out = print.out;
    const operand param = inst_param(print.script.tree, node, 0);
    switch (node.type) {
        case DATA_TEXT:
            if (failed(check_text(text_of(print.script, param)))) return result::failed;
            print_indent(out, depth);
            out.put(".data ");
            print_quoted_text(print, param);
            out.put('\n');
            return result::ok;
        case DATA_INT16:
            print_indent(out, depth);
            out.put(".data 0x");
            out.advance(put_hex<4>(out.room(4), param.value));
            out.put(" ; ");
            out.advance(put_decimal(out.room(max_decimal_size), param.value));
            out.put('\n');
            return result::ok;
        default: print_unknown(print, node, depth, size); return result::ok;
    }
}
