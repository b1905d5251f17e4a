#include "assemble/read_expression.h"

#include <string_view>

#include "model/infix.h"

// Operators wait on a stack for the end of their right operand, and so do the beginnings of calls and
// parentheses; what ends is added to the script, so that items stand there in postfix order.

namespace {

enum class operand_kind : std::uint8_t { value, reference };

struct expression {
    reader& read;
    operand_kind kind;
    std::uint8_t item_code = 0;  // of a reference or call that is the last item
    std::uint8_t item_root = 0;  // of an operation in parentheses that is the last item
};

result open(expression& expr, const open_part& part) {
    return expr.read.parts.push_back(part) ? result::ok : exhaust(expr.read);
}

open_part& innermost(const expression& expr) { return expr.read.parts.back(); }

// The innermost group. Above it stand at most an additive and a multiplicative operation and the
// "eval"s of one item, none of which is followed up twice.
open_part& innermost_group(const expression& expr) {
    std::size_t i = expr.read.parts.size() - 1;
    while (expr.read.parts[i].kind == part_kind::operation || expr.read.parts[i].kind == part_kind::eval) --i;
    return expr.read.parts[i];
}

// Adds the innermost operation to the script.
std::uint8_t close_operation(expression& expr) {
    const std::uint8_t code = innermost(expr).code;
    put_byte(expr.read.to, code);
    expr.read.parts.pop_back();
    return code;
}

// Closes what is open inside the innermost group and returns the root of the group's expression when
// it is an operation.
std::uint8_t close_operations(expression& expr) {
    std::uint8_t root = expr.item_root;
    while (innermost(expr).kind == part_kind::operation) root = close_operation(expr);
    return root;
}

const char* name_of(std::uint8_t code) { return code_info[code].name.padded(); }

// A byte of the script that stands for itself.
result read_raw_number(expression& expr) {
    reader& read = expr.read;
    const std::uint8_t* const start = read.at;
    std::uint8_t number = 0;
    if (failed(read_byte(read, number))) return result::failed;
    if (code_info[number].item_type != BYTE) {
        return fault_at(expr.read, start, "the byte %d would be read as '%s' here; perhaps 'byte %d' is meant", number,
                        name_of(number), number);
    }
    put_byte(read.to, number);
    return result::ok;
}

// Whether a byte in front of "$var" or "$str" would be taken for something else.
bool is_misread_as_number(const expression& expr, std::uint8_t number) {
    const code_type type = code_info[number].item_type;
    if (type == LITERAL) return true;
    if (expr.kind == operand_kind::value) return number == OP_EVAL;
    return type == OPERATOR || type == FUNCTION;
}

// "[5]" behind "$var" or "$str".
result read_variable(expression& expr, std::uint8_t code) {
    reader& read = expr.read;
    std::uint8_t number = 0;
    if (!take(read, '[')) return fault_at(expr.read, read.at, "'[' and the variable's number must stand here");
    skip_blanks(read);
    const std::uint8_t* const start = read.at;
    if (failed(read_byte(read, number))) return result::failed;
    if (is_misread_as_number(expr, number)) {
        return fault_at(expr.read, start, "the number %d would be read as '%s' here: no variable can be named by it",
                        number, name_of(number));
    }
    if (!take(read, ']')) return fault_at(expr.read, read.at, "']' must stand behind the variable's number");
    put_byte(read.to, number);
    put_byte(read.to, code);
    expr.item_code = code;
    return result::ok;
}

result read_literal(expression& expr, std::uint8_t code) {
    reader& read = expr.read;
    put_byte(read.to, code);
    std::uint32_t number = 0;
    std::uint8_t byte = 0;
    switch (code_info[code].params[0]) {
        case BYTE:
            if (failed(read_byte(read, byte))) return result::failed;
            put_byte(read.to, byte);
            return result::ok;
        case INT16:
            if (failed(read_hex(read, 2, number))) return result::failed;
            put_byte(read.to, static_cast<std::uint8_t>(number));
            put_byte(read.to, static_cast<std::uint8_t>(number >> 8));
            return result::ok;
        default: return read_label_use(read);
    }
}

result begin_call(expression& expr, std::uint8_t code) {
    reader& read = expr.read;
    if (!take(read, '(')) {
        return fault_at(expr.read, read.at, "'(' and the operands of '%s' must stand here", name_of(code));
    }
    return open(expr, {.kind = part_kind::call, .code = code});
}

result begin_eval(expression& expr, const std::uint8_t* start) {
    if (expr.kind == operand_kind::value) {
        return fault_at(expr.read, start, "'eval' ends a value of the script: it can't stand inside of one");
    }
    if (expr.read.to.option.implicit_eval) {
        return fault_at(expr.read, start,
                        "the option line --implicit-eval leaves no place for an 'eval' inside an expression");
    }
    // One "eval" may wait behind another as often as anyone likes; the first has told the group.
    if (innermost(expr).kind != part_kind::eval) innermost_group(expr).has_eval = true;
    return open(expr, {.kind = part_kind::eval});
}

// What begins with a word: `is_open` receives whether an item must still follow.
result read_word(expression& expr, bool& is_open) {
    reader& read = expr.read;
    const std::uint8_t* const start = read.at;
    const std::size_t size = word_size(start);
    const int found = find_code(characters(start), size);
    const auto code = static_cast<std::uint8_t>(found);
    const code_type type = found == no_code ? NONE : code_info[code].type;
    if (type == LITERAL) {
        read.at += size;
        return read_literal(expr, code);
    }
    if (type == FUNCTION) {
        read.at += size;
        if (code == OP_VAR || code == OP_STR) return read_variable(expr, code);
        is_open = true;
        return begin_call(expr, code);
    }
    if (found == OP_EVAL) {
        read.at += size;
        is_open = true;
        return begin_eval(expr, start);
    }
    if (read.to.option.implicit_int32 && start[size] != '(' && start[0] != '$') {
        put_byte(read.to, OP_INT32);
        return read_label_use(read);
    }
    return fault_at(expr.read, start, "unknown function or kind of number: '%.*s'", shown_size(size),
                    characters(start));
}

// An item, or the beginning of one.
result read_item(expression& expr, bool& is_open) {
    reader& read = expr.read;
    skip_blanks(read);
    expr.item_code = 0;
    expr.item_root = 0;
    is_open = false;
    const std::uint8_t byte = *read.at;
    if (byte >= '0' && byte <= '9') return read_raw_number(expr);
    if (byte == '(') {
        is_open = true;
        ++read.at;
        return open(expr, {.kind = part_kind::parenthesis});
    }
    if (word_size(read.at) != 0) return read_word(expr, is_open);
    return fault_at(expr.read, read.at, "an item of an expression is missing here");
}

bool is_ambiguous_eval(const open_part& group) {
    return group.has_eval && (group.kind != part_kind::parenthesis || group.operations > 1);
}

result report_ambiguity(expression& expr, const std::uint8_t* place) {
    return fault_at(expr.read, place,
                    "this can be read in two ways: list with --verbosity-parenthesis, or put parentheses around one "
                    "of the operations");
}

// Closes the operations to the left that an operator at `place` does not leave open.
result close_left(expression& expr, std::uint8_t code, const std::uint8_t* place) {
    const operator_group group = group_of(code);
    if (innermost(expr).kind == part_kind::operation) {
        innermost(expr).begins_wrapped = expr.item_root != 0 && is_wrapped(expr.item_root, code);
    }
    while (innermost(expr).kind == part_kind::operation) {
        const open_part& left = innermost(expr);
        const operator_group left_group = group_of(left.code);
        if (left_group == operator_group::additive && group == operator_group::multiplicative) return result::ok;
        const bool binds_more = left_group == operator_group::multiplicative && group == operator_group::additive;
        const bool is_same = is_same_group(left.code, code) && (group != operator_group::logical || left.code == code);
        if (!binds_more && !is_same) {
            return fault_at(expr.read, place, "'%s' beside '%s': put parentheses around one of the operations",
                            name_of(code), name_of(left.code));
        }
        if (is_same && left.begins_wrapped) return report_ambiguity(expr, place);
        close_operation(expr);
    }
    return result::ok;
}

std::size_t operator_size(const std::uint8_t* at) {
    constexpr std::string_view characters = "<>=!+-*/|&";
    std::size_t size = 0;
    while (size < 2 && characters.find(static_cast<char>(at[size])) != std::string_view::npos) ++size;
    return size;
}

result read_operator(expression& expr, std::size_t size) {
    reader& read = expr.read;
    const std::uint8_t* const place = read.at;
    const int found = find_code(characters(place), size);
    if (found == no_code) {
        return fault_at(expr.read, place, "unknown operator: '%.*s'", static_cast<int>(size), characters(place));
    }
    const auto code = static_cast<std::uint8_t>(found);
    open_part& group = innermost_group(expr);
    if (group.operations < 2) ++group.operations;
    if (is_ambiguous_eval(group)) return report_ambiguity(expr, place);
    if (failed(close_left(expr, code, place))) return result::failed;
    read.at += size;
    return open(expr, {.kind = part_kind::operation, .code = code});
}

// The comma behind an operand of the innermost call.
result read_comma(expression& expr) {
    close_operations(expr);
    open_part& call = innermost(expr);
    if (++call.arguments == code_info[call.code].num_params) {
        return fault_at(expr.read, expr.read.at, "too many operands: '%s' takes %d", name_of(call.code),
                        code_info[call.code].num_params);
    }
    call.operations = 0;
    call.has_eval = false;
    ++expr.read.at;
    return result::ok;
}

// The ")" of the innermost group.
result close_group(expression& expr) {
    const std::uint8_t root = close_operations(expr);
    const open_part group = innermost(expr);
    expr.item_code = 0;
    expr.item_root = root;
    if (group.kind == part_kind::call) {
        if (group.arguments + 1 < code_info[group.code].num_params) {
            return fault_at(expr.read, expr.read.at, "too few operands: '%s' takes %d", name_of(group.code),
                            code_info[group.code].num_params);
        }
        put_byte(expr.read.to, group.code);
        expr.item_code = group.code;
        expr.item_root = 0;
    }
    expr.read.parts.pop_back();
    ++expr.read.at;
    return result::ok;
}

void close_evals(expression& expr) {
    while (innermost(expr).kind == part_kind::eval) {
        put_byte(expr.read.to, OP_EVAL);
        expr.read.parts.pop_back();
        expr.item_code = 0;
        expr.item_root = 0;
    }
}

enum class behind_item : std::uint8_t { item, end };

// What follows an item, up to where another one must follow or the expression ends.
result read_behind_item(expression& expr, behind_item& next) {
    reader& read = expr.read;
    for (;;) {
        close_evals(expr);
        skip_blanks(read);
        next = behind_item::item;
        if (const std::size_t size = operator_size(read.at); size != 0) return read_operator(expr, size);
        const open_part& group = innermost_group(expr);
        if (*read.at == ',' && group.kind == part_kind::call) return read_comma(expr);
        if (*read.at != ')' || group.kind == part_kind::group) {
            next = behind_item::end;
            if (group.kind == part_kind::group) return result::ok;
            const bool has_all =
                group.kind != part_kind::call || group.arguments + 1 == code_info[group.code].num_params;
            return fault_at(expr.read, read.at,
                            has_all ? "')' is missing here" : "a comma and another operand must stand here");
        }
        if (failed(close_group(expr))) return result::failed;
    }
}

// Reads an expression up to what can't belong to it. `is_reference` receives whether it can stand in
// front of ":=".
result read_expression(expression& expr, bool& is_reference) {
    array<open_part>& parts = expr.read.parts;
    parts.truncate(0);
    if (failed(open(expr, {.kind = part_kind::group}))) return result::failed;
    for (behind_item next = behind_item::item; next == behind_item::item;) {
        bool is_open = false;
        if (failed(read_item(expr, is_open))) return result::failed;
        if (!is_open && failed(read_behind_item(expr, next))) return result::failed;
    }
    is_reference =
        parts[0].operations == 0 && code_info[expr.item_code].type == FUNCTION && ::is_reference(expr.item_code);
    close_operations(expr);
    return result::ok;
}

bool take_word(reader& read, std::uint8_t code) {
    skip_blanks(read);
    const std::size_t size = name_size(read.at);
    if (find_code(characters(read.at), size) != code) return false;
    read.at += size;
    return true;
}

bool take_assign(reader& read) {
    skip_blanks(read);
    if (read.at[0] != ':' || read.at[1] != '=') return false;
    read.at += 2;
    return true;
}

result read_value_inside(reader& read) {
    expression expr = {read, operand_kind::value};
    const std::uint8_t* start = read.at;
    bool has_eval = take_word(read, OP_EVAL);
    bool is_reference = false;
    if (failed(read_expression(expr, is_reference))) return result::failed;
    if (!has_eval && is_reference && take_assign(read)) {
        put_byte(read.to, OP_ASSIGN);
        skip_blanks(read);
        start = read.at;
        has_eval = take_word(read, OP_EVAL);
        if (failed(read_expression(expr, is_reference))) return result::failed;
    }
    if (!has_eval && !read.to.option.implicit_eval)
        return fault_at(read, start, "'eval' is missing in front of this value");
    put_byte(read.to, OP_EVAL);
    return result::ok;
}

result read_reference_inside(reader& read) {
    expression expr = {read, operand_kind::reference};
    const std::uint8_t* const start = read.at;
    bool is_reference = false;
    if (failed(read_expression(expr, is_reference))) return result::failed;
    return is_reference ? result::ok : fault_at(read, start, "a $var, a $str or data(...) must stand here");
}

}  // namespace

result read_value(reader& read) {
    begin_expression(read);
    return end_expression(read, read_value_inside(read));
}

result read_reference(reader& read) {
    begin_expression(read);
    return end_expression(read, read_reference_inside(read));
}
