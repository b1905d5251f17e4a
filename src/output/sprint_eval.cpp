#include "output/sprint_eval.h"

#include <utility>

#include "base/diagnostics.h"

namespace {

// Text that is cut at a limit.
struct clipped_text {
    char* end;
    char* limit;

    [[nodiscard]] bool is_full() const { return end == limit; }
    void put(std::string_view text) { end = put_text(end, first_part(text, static_cast<std::size_t>(limit - end))); }
    void put_name(const code_name& name) {
        if (static_cast<std::size_t>(limit - end) < code_name::max_size) return put(std::string_view(name));
        end = name.copy_padded(end);
    }
    void put(char character) {
        if (!is_full()) *end++ = character;
    }
    // Puts what `fill` writes at the place it is given, at most `size` characters.
    template <std::size_t size, class filler>
    void put_filled(filler fill) {
        if (static_cast<std::size_t>(limit - end) >= size) {
            end = fill(end);
        } else {
            char filled[size];
            put({filled, static_cast<std::size_t>(fill(filled) - filled)});
        }
    }
};

enum class piece_kind : std::uint8_t {
    item,   // `item` with its operands; `code` is that of the operator or function around it
    infix,  // the name of `code` between blanks
    eval,   // "eval "
    comma,
    open,
    close,
};

enum class operator_group : std::uint8_t { none, comparison, additive, multiplicative, logical };

constexpr operator_group group_of(std::uint8_t code) {
    if (code >= 0x81 && code <= 0x86) return operator_group::comparison;
    if (code == 0x90 || code == 0x91) return operator_group::additive;
    if (code == 0x92 || code == 0x93) return operator_group::multiplicative;
    if (code == 0x94 || code == 0x95) return operator_group::logical;
    return operator_group::none;
}

// Whether a two-operand operator is wrapped whole as an operand of `parent`.
bool is_wrapped(std::uint8_t code, std::uint8_t parent) {
    if (options.verbosity_parenthesis) return true;
    const operator_group around = group_of(parent);
    if (around == operator_group::none) return false;
    switch (group_of(code)) {
        case operator_group::additive: return around != operator_group::additive;
        case operator_group::multiplicative:
            return around != operator_group::additive && around != operator_group::multiplicative;
        case operator_group::logical: return parent != code;
        default: return true;
    }
}

inline constexpr std::uint32_t no_item = 0xFFFFFFFF;

struct renderer {
    const conv& script;
    array<pending_piece>& pieces;  // to be rendered later, the next one last
    clipped_text text;
    std::uint32_t item;   // to be rendered now, or no_item
    std::uint8_t parent;  // the code of the operator or function around it, 0 for none
};

std::int32_t item_offset(const renderer& render, std::uint32_t item) { return render.script.tree.items[item].offset; }

std::uint8_t item_code(const renderer& render, std::uint32_t item) {
    return conv_byte(render.script, item_offset(render, item));
}

code_type item_type(const renderer& render, std::uint32_t item) {
    return offset_table_find(render.script.code_offset_table, item_offset(render, item)).value_or(NONE);
}

// The root of the last operand stands right before its operator.
struct two_operands {
    std::uint32_t left;
    std::uint32_t right;
};
two_operands operands_of(const renderer& render, std::uint32_t item) {
    const std::uint32_t right = item - 1;
    return {expr_before(render.script.tree, right), right};
}

// Whether the rendering of an operand of `parent` begins with a parenthesis.
bool begins_with_parenthesis(const renderer& render, std::uint32_t item, std::uint8_t parent) {
    while (item_type(render, item) == OPERATOR) {
        const std::uint8_t code = item_code(render, item);
        if (code == OP_EVAL) {
            if (!options.omit_eval) return false;
            item = expr_value(item);
        } else {
            if (is_wrapped(code, parent)) return true;
            item = operands_of(render, item).left;
        }
        parent = code;
    }
    return false;
}

// A right operand of the same group would read as part of the left one.
bool needs_parentheses(const renderer& render, std::uint8_t code, std::uint32_t right) {
    const operator_group group = group_of(code);
    return group != operator_group::comparison && group == group_of(item_code(render, right)) &&
           !begins_with_parenthesis(render, right, code);
}

// Pieces are put off in reverse: what is put off last is rendered first.
[[nodiscard]] bool put_off(renderer& render, piece_kind kind, std::uint8_t code = 0, std::uint32_t item = 0) {
    return render.pieces.push_back({item, static_cast<std::uint8_t>(kind), code});
}

// Makes an operand of `parent` the next item.
void descend(renderer& render, std::uint32_t item, std::uint8_t parent) {
    render.item = item;
    render.parent = parent;
}

void render_number(renderer& render, std::uint32_t number) {
    render.text.put_filled<max_decimal_size>([number](char* to) { return put_decimal(to, number); });
}

void render_literal(renderer& render, std::int32_t offset, std::uint8_t code) {
    const conv& script = render.script;
    if (code != OP_INT32 || !options.omit_int32) {
        render.text.put_name(code_info[code].name);
        render.text.put(' ');
    }
    switch (code_info[code].params[0]) {
        case INT16:
            render.text.put("0x");
            return render.text.put_filled<4>([&](char* to) { return put_hex(to, conv_int16(script, offset + 1), 4); });
        case INT32:
            return render.text.put_filled<label_size>(
                [&](char* to) { return put_label(to, script, conv_int32(script, offset + 1)); });
        default: return render_number(render, conv_byte(script, offset + 1));
    }
}

// The functions below render an item up to its first operand, which they make the next item, and
// put off the rest. They fail when memory runs out.

[[nodiscard]] bool render_operator(renderer& render, std::uint32_t item, std::uint8_t code, std::uint8_t parent) {
    const auto [left, right] = operands_of(render, item);
    const bool wraps_right = needs_parentheses(render, code, right);
    const bool wraps_all = is_wrapped(code, parent);
    if (wraps_all) render.text.put('(');
    descend(render, left, code);
    return (!wraps_all || put_off(render, piece_kind::close)) && (!wraps_right || put_off(render, piece_kind::close)) &&
           put_off(render, piece_kind::item, code, right) && (!wraps_right || put_off(render, piece_kind::open)) &&
           put_off(render, piece_kind::infix, code);
}

// "$var[5]" or "$str[5]", whose only operand is a byte.
void render_variable(renderer& render, std::uint32_t item, std::uint8_t code) {
    render.text.put_name(code_info[code].name);
    render.text.put('[');
    render_number(render, item_code(render, item - 1));
    render.text.put(']');
}

[[nodiscard]] bool render_call(renderer& render, std::uint32_t item, std::uint8_t code) {
    render.text.put_name(code_info[code].name);
    render.text.put('(');
    if (!put_off(render, piece_kind::close)) return false;
    std::uint32_t operand_item = item - 1;  // of the last operand
    for (std::int32_t k = code_info[code].num_params - 1; k > 0; --k) {
        if (!put_off(render, piece_kind::item, code, operand_item) || !put_off(render, piece_kind::comma)) return false;
        operand_item = expr_before(render.script.tree, operand_item);
    }
    if (code_info[code].num_params > 0) descend(render, operand_item, code);
    return true;
}

[[nodiscard]] bool render_eval(renderer& render, std::uint32_t item) {
    const std::uint32_t assign = expr_assign(render.script.tree, item);
    if (assign == 0) {
        if (!options.omit_eval) render.text.put("eval ");
        descend(render, expr_value(item), OP_EVAL);
        return true;
    }
    descend(render, assign - 1, 0);
    return put_off(render, piece_kind::item, OP_EVAL, expr_value(item)) &&
           (options.omit_eval || put_off(render, piece_kind::eval)) && put_off(render, piece_kind::infix, OP_ASSIGN);
}

[[nodiscard]] bool render_item(renderer& render) {
    const std::uint32_t item = std::exchange(render.item, no_item);
    const std::uint8_t code = item_code(render, item);
    switch (item_type(render, item)) {
        case LITERAL: render_literal(render, item_offset(render, item), code); return true;
        case OPERATOR:
            return code == OP_EVAL ? render_eval(render, item) : render_operator(render, item, code, render.parent);
        case FUNCTION:
            if (code != OP_VAR && code != OP_STR) return render_call(render, item, code);
            render_variable(render, item, code);
            return true;
        default: render_number(render, code); return true;
    }
}

void render_piece(renderer& render, const pending_piece& piece) {
    switch (static_cast<piece_kind>(piece.kind)) {
        case piece_kind::item: return descend(render, piece.item, piece.code);
        case piece_kind::eval: return render.text.put("eval ");
        case piece_kind::comma: return render.text.put(", ");
        case piece_kind::open: return render.text.put('(');
        case piece_kind::close: return render.text.put(')');
        case piece_kind::infix:
            render.text.put(' ');
            render.text.put_name(code_info[piece.code].name);
            return render.text.put(' ');
    }
}

}  // namespace

// Cutting each composition by itself leaves the same text as cutting the whole: each begins where
// the one around it has begun or later.
result sprint_eval(listing& print, std::uint32_t root) {
    char* const room = print.out.room(max_expression);
    renderer render = {print.script, print.pieces, {room, room + max_expression}, root, 0};
    render.pieces.truncate(0);
    while (!render.text.is_full()) {
        if (render.item != no_item) {
            if (!render_item(render)) return ERROR("memory exhausted! (strdup)");
        } else if (!render.pieces.empty()) {
            render_piece(render, render.pieces.back());
            render.pieces.pop_back();
        } else {
            break;
        }
    }
    print.out.advance(render.text.end);
    return result::ok;
}
