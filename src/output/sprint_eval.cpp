#include "output/sprint_eval.h"

#include <algorithm>
#include <utility>

#include "base/diagnostics.h"
#include "output/label.h"

enum class piece_kind : std::uint8_t {
    item,   // `item` with its operands; `code` is that of the operator or function around it
    infix,  // the name of `code` between blanks
    eval,   // "eval ", unless it is omitted
    comma,
    open,
    close,
};

namespace {

struct renderer {
    const conv& script;
    array<pending_piece>& pieces;  // to be rendered later, the next one last
    char* to;                      // where the rendering goes on
    std::uint32_t item;            // to be rendered now, or no_item
    std::uint8_t parent;           // the code of the operator or function around it, 0 for none
};

std::int32_t item_offset(const renderer& render, std::uint32_t item) { return render.script.tree.items[item].offset; }

std::uint8_t item_code(const renderer& render, std::uint32_t item) {
    return conv_byte(render.script, item_offset(render, item));
}

code_type type_at(const renderer& render, std::int32_t offset) {
    return offset_table_find(render.script.code_offset_table, offset).value_or(NONE);
}

code_type item_type(const renderer& render, std::uint32_t item) { return type_at(render, item_offset(render, item)); }

// The root of the last operand stands right before its operator.
struct two_operands {
    std::uint32_t left;
    std::uint32_t right;
};
two_operands operands_of(const renderer& render, std::uint32_t item) {
    const std::uint32_t right = item - 1;
    return {expr_before(render.script.tree, right), right};
}

// The rule of model/infix.h, in the three functions below.

bool is_wrapped_whole(std::uint8_t code, std::uint8_t parent) {
    return options.verbosity_parenthesis || is_wrapped(code, parent);
}

// Whether the rendering of an operand of `parent` begins with a parenthesis.
bool begins_with_parenthesis(const renderer& render, std::uint32_t item, std::uint8_t parent) {
    while (item_type(render, item) == OPERATOR) {
        const std::uint8_t code = item_code(render, item);
        if (code == OP_EVAL) {
            if (!options.omit_eval) return false;
            --item;
        } else {
            if (is_wrapped_whole(code, parent)) return true;
            item = operands_of(render, item).left;
        }
        parent = code;
    }
    return false;
}

bool needs_parentheses(const renderer& render, std::uint8_t code, std::uint32_t right) {
    return is_same_group(code, item_code(render, right)) && !begins_with_parenthesis(render, right, code);
}

// Pieces are put off in reverse: what is put off last is rendered first.
[[nodiscard]] bool put_off(renderer& render, piece_kind kind, std::uint8_t code = 0, std::uint32_t item = 0) {
    return render.pieces.push_back({item, kind, code});
}

// Makes an operand of `parent` the next item.
void descend(renderer& render, std::uint32_t item, std::uint8_t parent) {
    render.item = item;
    render.parent = parent;
}

void render_text(renderer& render, std::string_view text) { render.to = put_text(render.to, text); }
void render_name(renderer& render, std::uint8_t code) { render.to = put_name(render.to, code); }
void render_number(renderer& render, std::uint32_t number) { render.to = put_decimal(render.to, number); }

void render_infix(renderer& render, std::uint8_t code) {
    render_text(render, " ");
    render_name(render, code);
    render_text(render, " ");
}

void render_literal(renderer& render, std::int32_t offset, std::uint8_t code) {
    const conv& script = render.script;
    if (code != OP_INT32 || !options.omit_int32) {
        render_name(render, code);
        render_text(render, " ");
    }
    switch (code_info[code].params[0]) {
        case INT16:
            render_text(render, "0x");
            render.to = put_hex<4>(render.to, conv_int16(script, offset + 1));
            break;
        case INT32: render.to = put_label(render.to, script, conv_int32(script, offset + 1)); break;
        default: render_number(render, conv_byte(script, offset + 1)); break;
    }
}

// What is not an operator or function.
void render_leaf(renderer& render, std::int32_t offset, code_type type) {
    const std::uint8_t code = conv_byte(render.script, offset);
    if (type == LITERAL) return render_literal(render, offset, code);
    render_number(render, code);
}

void render_eval(renderer& render) {
    if (!options.omit_eval) render_text(render, "eval ");
}

// The functions below render an item up to its first operand, which they make the next item, and
// put off the rest. They fail when memory runs out.

[[nodiscard]] bool render_operator(renderer& render, std::uint32_t item, std::uint8_t code, std::uint8_t parent) {
    const auto [left, right] = operands_of(render, item);
    const bool wraps_right = needs_parentheses(render, code, right);
    const bool wraps_all = is_wrapped_whole(code, parent);
    if (wraps_all) render_text(render, "(");
    descend(render, left, code);
    return (!wraps_all || put_off(render, piece_kind::close)) && (!wraps_right || put_off(render, piece_kind::close)) &&
           put_off(render, piece_kind::item, code, right) && (!wraps_right || put_off(render, piece_kind::open)) &&
           put_off(render, piece_kind::infix, code);
}

// "$var[5]" or "$str[5]", whose only operand is a byte.
void render_variable(renderer& render, std::uint32_t item, std::uint8_t code) {
    render_name(render, code);
    render_text(render, "[");
    render_number(render, item_code(render, item - 1));
    render_text(render, "]");
}

[[nodiscard]] bool render_call(renderer& render, std::uint32_t item, std::uint8_t code) {
    render_name(render, code);
    render_text(render, "(");
    if (!put_off(render, piece_kind::close)) return false;
    std::uint32_t operand_item = item - 1;  // of the last operand
    for (std::int32_t k = code_info[code].num_params - 1; k > 0; --k) {
        if (!put_off(render, piece_kind::item, code, operand_item) || !put_off(render, piece_kind::comma)) return false;
        operand_item = expr_before(render.script.tree, operand_item);
    }
    if (code_info[code].num_params > 0) descend(render, operand_item, code);
    return true;
}

[[nodiscard]] bool render_item(renderer& render) {
    const std::uint32_t item = std::exchange(render.item, no_item);
    const std::int32_t offset = item_offset(render, item);
    const code_type type = type_at(render, offset);
    if (type != OPERATOR && type != FUNCTION) {
        render_leaf(render, offset, type);
        return true;
    }
    const std::uint8_t code = conv_byte(render.script, offset);
    if (code == OP_VAR || code == OP_STR) {
        render_variable(render, item, code);
        return true;
    }
    if (type == FUNCTION) return render_call(render, item, code);
    if (code != OP_EVAL) return render_operator(render, item, code, render.parent);
    render_eval(render);
    descend(render, item - 1, OP_EVAL);
    return true;
}

// The "eval" of a VALUE operand and, where it is an assignment, what stands in front of its value.
[[nodiscard]] bool render_value(renderer& render, const operand& value) {
    if (value.value == no_item) {
        render_eval(render);
        render_leaf(render, value.offset, type_at(render, value.offset));
        return true;
    }
    const std::uint32_t assign = expr_assign(render.script.tree, value.value);
    if (assign == no_item) {
        render_eval(render);
        descend(render, value.value, OP_EVAL);
        return true;
    }
    descend(render, assign - 1, 0);
    return put_off(render, piece_kind::item, OP_EVAL, value.value) && put_off(render, piece_kind::eval) &&
           put_off(render, piece_kind::infix, OP_ASSIGN);
}

void render_piece(renderer& render, const pending_piece& piece) {
    switch (piece.kind) {
        case piece_kind::item: return descend(render, piece.item, piece.code);
        case piece_kind::eval: return render_eval(render);
        case piece_kind::comma: return render_text(render, ", ");
        case piece_kind::open: return render_text(render, "(");
        case piece_kind::close: return render_text(render, ")");
        case piece_kind::infix: return render_infix(render, piece.code);
    }
}

}  // namespace

// Cutting each composition by itself leaves the same text as cutting the whole: each begins where
// the one around it has begun or later.
result sprint_eval(const conv& script, array<pending_piece>& pieces, const operand& param, char*& to) {
    char* const limit = to + max_expression;
    renderer render = {script, pieces, to, no_item, 0};
    pieces.truncate(0);
    bool has_memory = true;
    if (param.type == VALUE) {
        has_memory = render_value(render, param);
    } else {
        descend(render, param.value, 0);
    }
    while (has_memory && render.to < limit) {
        if (render.item != no_item) {
            has_memory = render_item(render);
        } else if (!pieces.empty()) {
            const pending_piece piece = pieces.back();
            pieces.pop_back();
            render_piece(render, piece);
        } else {
            break;
        }
    }
    if (!has_memory) return ERROR("memory exhausted! (strdup)");
    to = std::min(render.to, limit);
    return result::ok;
}
