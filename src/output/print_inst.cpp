#include "output/print_inst.h"

#include <array>

#include "base/diagnostics.h"
#include "output/label.h"
#include "output/print_text.h"

namespace {

void print_name(writer& out, std::uint8_t code) { out.advance(put_name(out.room(code_name::max_size), code)); }

void print_label(print_job& job, std::uint32_t offset) {
    job.out.advance(put_label(job.out.room(label_size), job.script, offset));
}

result print_expression(print_job& job, const operand& param) {
    char* end = job.out.room(expression_room);
    if (failed(sprint_eval(job.script, job.pieces, param, end))) return result::failed;
    job.out.advance(end);
    return result::ok;
}

result print_operand(print_job& job, const inst& node, const operand& param) {
    writer& out = job.out;
    switch (param.type) {
        case TEXT:
            if (failed(check_text(text_of(job.script, param)))) return result::failed;
            print_quoted_text(job, param);
            return result::ok;
        case BYTE: out.advance(put_decimal(out.room(max_decimal_size), param.value)); return result::ok;
        case INT32: print_label(job, param.value); return result::ok;
        case STR32:
            out.put("int32 ");
            print_label(job, param.value);
            return result::ok;
        case VARIABLE:
        case VALUE: return print_expression(job, param);
        default:
            return ERROR("BUG: illegal parameter type: offset=%08X, param=%08X, type=%02X", node.offset, param.offset,
                         param.type);
    }
}

result print_operands(print_job& job, const inst& node) {
    for (std::uint32_t k = 0; k < node.num_params; ++k) {
        job.out.put(k == 0 ? " " : ", ");
        if (failed(print_operand(job, node, inst_param(job.script.tree, node, k)))) return result::failed;
    }
    return result::ok;
}

// The condition of an if, or what a decl declares and, behind ":=", the value that it starts with.
result render_operands(print_job& job, const inst& node, char*& to) {
    const conv& script = job.script;
    if (failed(sprint_eval(script, job.pieces, inst_param(script.tree, node, 0), to))) return result::failed;
    if (node.num_params < 3) return result::ok;
    to = put_text(put_name(put_text(to, " "), OP_ASSIGN), " ");
    return sprint_eval(script, job.pieces, inst_param(script.tree, node, 2), to);
}

// The line of an if or a decl is printed as a whole or not at all.
result print_if_or_decl(print_job& job, const inst& node, int depth) {
    std::array<char, code_name::max_size + 2 * expression_room> line;
    char* to = line.data();
    if (node.code == OP_IF || !options.omit_decl) to = put_text(put_name(to, node.code), " ");
    if (failed(render_operands(job, node, to))) return result::failed;
    to = put_text(to, "\n");
    print_indent(job.out, depth);
    job.out.put({line.data(), static_cast<std::size_t>(to - line.data())});
    return result::ok;
}

constexpr std::size_t max_number_line = 48;

// A number in its hexadecimal form, of which `digits` are shown, and behind it in its decimal form.
template <int digits>
void print_number_line(writer& out, int depth, std::string_view directive, std::uint32_t number) {
    print_indent(out, depth);
    char* to = put_text(out.room(max_number_line), directive);
    to = put_text(put_hex<digits>(put_text(to, " 0x"), number), " ; ");
    out.advance(put_text(put_decimal(to, number), "\n"));
}

// Lines of two bytes each, the last of one when the size is odd.
void print_unknown(print_job& job, const inst& node, int depth, std::int32_t size) {
    const conv& script = job.script;
    for (std::int32_t left = size; left > 0; left -= 2) {
        const std::int32_t offset = node.offset + (size - left);
        if (left == 1) {
            print_number_line<2>(job.out, depth, ".unknown.byte", conv_byte(script, offset));
        } else {
            print_number_line<4>(job.out, depth, ".unknown", conv_int16(script, offset));
        }
    }
}

}  // namespace

result print_statement(print_job& job, const inst& node, int depth) {
    if (node.code == OP_IF || node.code == OP_DECL) return print_if_or_decl(job, node, depth);
    print_indent(job.out, depth);
    print_name(job.out, node.code);
    if (node.code != OP_ELSE && failed(print_operands(job, node))) return result::failed;
    job.out.put('\n');
    return result::ok;
}

result print_data_block(print_job& job, const inst& node, int depth, std::int32_t size) {
    writer& out = job.out;
    const operand param = inst_param(job.script.tree, node, 0);
    switch (node.type) {
        case DATA_TEXT:
            if (failed(check_text(text_of(job.script, param)))) return result::failed;
            print_indent(out, depth);
            out.put(".data ");
            print_quoted_text(job, param);
            out.put('\n');
            return result::ok;
        case DATA_INT16: print_number_line<4>(out, depth, ".data", param.value); return result::ok;
        default: print_unknown(job, node, depth, size); return result::ok;
    }
}
