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

void print_assign(writer& out) {
    char* const to = out.room(code_name::max_size + 2);
    out.advance(put_text(put_name(put_text(to, " "), OP_ASSIGN), " "));
}

// The variable and, behind ":=", the value that it starts with.
result print_declaration(listing& print, const inst& node) {
    const inst_tree& tree = print.script.tree;
    if (failed(sprint_eval(print, inst_param(tree, node, 0)))) return result::failed;
    if (node.num_params < 3) return result::ok;
    print_assign(print.out);
    return sprint_eval(print, inst_param(tree, node, 2));
}

result print_operands(listing& print, const inst& node) {
    for (std::uint32_t k = 0; k < node.num_params; ++k) {
        if (k != 0) print.out.put(", ");
        if (failed(print_operand(print, node, inst_param(print.script.tree, node, k)))) return result::failed;
    }
    return result::ok;
}

constexpr std::size_t max_number_line = 48;

// A number in its hexadecimal form, of which `digits` are shown, and behind it in its decimal form.
template <int digits>
void print_number_line(writer& out, int depth, std::string_view directive, std::uint32_t number) {
    char* to = put_text(begin_line(out, depth, max_number_line), directive);
    to = put_text(put_hex<digits>(put_text(to, " 0x"), number), " ; ");
    out.advance(put_text(put_decimal(to, number), "\n"));
}

// Lines of two bytes each, the last of one when the size is odd.
void print_unknown(listing& print, const inst& node, int depth, std::int32_t size) {
    const conv& script = print.script;
    for (std::int32_t i = 0; i < size; i += 2) {
        const std::int32_t offset = node.offset + i;
        if (size - i == 1) {
            print_number_line<2>(print.out, depth, ".unknown.byte", conv_byte(script, offset));
        } else {
            print_number_line<4>(print.out, depth, ".unknown", conv_int16(script, offset));
        }
    }
}

}  // namespace

result print_statement(listing& print, const inst& node, int depth) {
    const bool is_declaration = node.code == OP_DECL;
    const bool has_operands = is_declaration || (node.code != OP_ELSE && node.num_params != 0);
    char* to = begin_line(print.out, depth, code_name::max_size + 1);
    if (!is_declaration || !options.omit_decl) {
        to = put_name(to, node.code);
        if (has_operands) *to++ = ' ';
    }
    print.out.advance(to);
    if (has_operands && failed(is_declaration ? print_declaration(print, node) : print_operands(print, node))) {
        return result::failed;
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
            out.advance(put_text(begin_line(out, depth, 6), ".data "));
            print_quoted_text(print, param);
            out.put('\n');
            return result::ok;
        case DATA_INT16: print_number_line<4>(out, depth, ".data", param.value); return result::ok;
        default: print_unknown(print, node, depth, size); return result::ok;
    }
}
