#include "assemble/compare.h"

#include <algorithm>

#include "assemble/lines.h"

namespace {

// `none` is what can't be listed.
enum class line_kind : std::uint8_t { none, text, statement, data_text, number, unknown, unknown_byte };

constexpr bool is_data(line_kind kind) { return kind >= line_kind::data_text; }

// A line of the new listing; a text's may be several.
struct new_line {
    std::uint32_t offset;
    std::uint32_t end;
    line_kind kind;
};

struct comparer {
    const assembly& from;
    const conv& script;
    const line_start* line;  // the first one not compared yet
    difference found = {};   // the first one; the first among code lines goes before

    [[nodiscard]] bool has_line_below(std::uint32_t offset) const {
        return line != from.lines.end() && line->offset < offset;
    }
};

line_kind kind_of(const assembly& from, const line_start& line) {
    const std::uint8_t* at = from.listing.begin() + line.position;
    if (*at == '"' || *at == 'T') return line_kind::text;
    if (*at != '.') return line_kind::statement;
    if (at[1] == 'u') return at[sizeof ".unknown" - 1] == '.' ? line_kind::unknown_byte : line_kind::unknown;
    at += sizeof ".data" - 1;
    while (*at == ' ' || *at == '\t') ++at;
    return *at == '0' ? line_kind::number : line_kind::data_text;
}

// An "enddata" may belong to a data block.
bool may_be_data(const comparer& check, line_kind kind, std::uint32_t offset) {
    return is_data(kind) || (kind == line_kind::statement && check.script.buffer[offset] == OP_ENDDATA);
}

// Whether an old and a new line are both data.
bool are_data(const comparer& check, const line_start& line, const new_line& expected) {
    return may_be_data(check, kind_of(check.from, line), line.offset) &&
           may_be_data(check, expected.kind, expected.offset);
}

// Notes that a line differs. Among data lines it counts only as long as no code line does.
void note(comparer& check, const line_start* line, bool is_among_data, const char* format,
          const line_start* other = nullptr) {
    difference& found = check.found;
    if (found.kind == comparison::code_differs || (is_among_data && found.kind == comparison::data_differs)) return;
    found = {is_among_data ? comparison::data_differs : comparison::code_differs, line, other, format};
}

constexpr const char* other_form = "this data would be listed in another form";
constexpr const char* otherwise = "this line would be listed otherwise";

// A line whose bytes would belong to the one before it.
void note_swallowed(comparer& check, const new_line& around) {
    const line_start& line = *check.line;
    if (are_data(check, line, around)) return note(check, &line, true, other_form);
    const bool is_text = kind_of(check.from, line) == line_kind::text;
    note(check, &line, false,
         is_text ? "this text would become part of the text on line %u" : "this line would become part of line %u",
         &line - 1);
}

void compare_kinds(comparer& check, const new_line& expected) {
    const line_start& line = *check.line;
    if (kind_of(check.from, line) == expected.kind) return;
    if (are_data(check, line, expected)) return note(check, &line, true, other_form);
    note(check, &line, false,
         is_data(expected.kind) ? "this line would be read as data, as its offset is named as that of a data block"
                                : "this data would be read as code: nothing before it names it as a data block");
}

// A text's second and further lines begin behind a line feed.
bool goes_on_properly(const comparer& check, const new_line& text) {
    const line_start& line = *check.line;
    if (text.kind != line_kind::text || kind_of(check.from, line) != line_kind::text) return false;
    const array<std::uint8_t>& bytes = check.script.buffer;
    const std::uint32_t last = line.offset - 1;
    return bytes[last] == '\n' || (bytes[last] == '}' && last > text.offset && bytes[last - 1] == '\n');
}

void expect(comparer& check, const new_line& expected) {
    for (; check.has_line_below(expected.offset); ++check.line) {
        note(check, check.line, false, otherwise);
    }
    if (check.has_line_below(expected.offset + 1)) {
        compare_kinds(check, expected);
        ++check.line;
    } else {
        const line_start* const before = check.line - 1;
        const bool is_among_data = are_data(check, *before, expected);
        note(check, before, is_among_data, is_among_data ? other_form : otherwise);
    }
    for (; check.has_line_below(expected.end); ++check.line) {
        if (!goes_on_properly(check, expected)) note_swallowed(check, expected);
    }
}

void expect_unknown(comparer& check, std::uint32_t offset, std::uint32_t end) {
    for (; end - offset >= 2; offset += 2) expect(check, {offset, offset + 2, line_kind::unknown});
    if (offset != end) expect(check, {offset, end, line_kind::unknown_byte});
}

void expect_node(comparer& check, const inst& node, std::int32_t end) {
    const auto start = static_cast<std::uint32_t>(node.offset);
    const auto behind = static_cast<std::uint32_t>(std::min(end, check.script.data_size));
    if (!conv_has(check.script, node.offset)) return;
    switch (node.type) {
        case TEXT:
        case MB_IN: return expect(check, {start, behind, line_kind::text});
        case DATA_TEXT: return expect(check, {start, behind, line_kind::data_text});
        case DATA_INT16: return expect(check, {start, behind, line_kind::number});
        case DATA: return expect_unknown(check, start, behind);
        default: return expect(check, {start, behind, node.type == STATEMENT ? line_kind::statement : line_kind::none});
    }
}

}  // namespace

difference compare_lines(const assembly& from, const conv& script) {
    const inst_tree& tree = script.tree;
    comparer check = {from, script, from.lines.begin()};
    array<inst_index> open;  // what follows the sub blocks around the node, the innermost last
    for (inst_index index = tree.root; index != no_inst;) {
        const inst& node = tree.nodes[index];
        const bool is_last = node.next == no_inst;
        const inst_index behind = !is_last ? node.next : open.empty() ? no_inst : open.back();
        const inst_index first_inside = node.has_subblock ? index + 1 : behind;
        expect_node(check, node, first_inside == no_inst ? script.data_size : tree.nodes[first_inside].offset);
        if (node.has_subblock && node.type == STATEMENT) {
            if (!is_last && !open.push_back(node.next)) return {.kind = comparison::exhausted};
            index = first_inside;
        } else {
            if (is_last && !open.empty()) open.pop_back();
            index = behind;
        }
    }
    while (check.has_line_below(script_size(from) + 1)) {
        note(check, check.line++, false, otherwise);
    }
    return check.found;
}

void report_difference(assembly& to, const difference& found) {
    const severity level = found.kind == comparison::code_differs ? severity::error : severity::warning;
    const std::uint32_t other = found.other == nullptr ? 0 : line_at(to.listing, found.other->position);
    (void)add_fault(to.faults, level, source_file::listing, found.line->position, found.format, other);
}
