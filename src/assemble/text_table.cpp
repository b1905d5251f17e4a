#include "assemble/text_table.h"

#include <algorithm>
#include <cstring>

#include "assemble/read_text.h"

namespace {

constexpr bool by_key(const text_row& left, const text_row& right) { return left.key < right.key; }

std::uint32_t position_of(const source& file, const std::uint8_t* place) {
    return static_cast<std::uint32_t>(place - file.begin());
}

failure report(const text_table& table, fault_list& faults, const std::uint8_t* place, const char* what) {
    return add_fault(faults, severity::error, source_file::table, position_of(table.file, place), "%s", what);
}

const std::uint8_t* find_line_end(const std::uint8_t* at) {
    while (*at != '\n') ++at;
    return at;
}

// Whether only blanks stand in front of the line's end, a line feed or a carriage return and one.
bool is_line_end(const std::uint8_t* at) {
    while (*at == ' ' || *at == '\t') ++at;
    return *at == '\n' || (*at == '\r' && at[1] == '\n');
}

// Where the field behind the next tab begins, or null.
const std::uint8_t* next_field(const std::uint8_t* at) {
    while (*at != '\t' && *at != '\n') ++at;
    return *at == '\t' ? at + 1 : nullptr;
}

// Reads the row at `at`, without its line's end. `bytes` is where its text goes to and is forgotten.
result read_row(text_table& table, fault_list& faults, const std::uint8_t* at, array<std::uint8_t>& bytes) {
    const text_label label = read_text_label(at);
    const std::uint8_t* const offset = label.size != 0 && at[label.size] == '\t' ? at + label.size + 1 : nullptr;
    const std::uint8_t* const text = offset == nullptr ? nullptr : next_field(offset);
    if (text == nullptr || *text != '"') {
        table.is_whole = false;
        return report(table, faults, at, "a row must be a label, an offset and a text in quotes, separated by tabs");
    }
    if (!table.rows.push_back({label.key, position_of(table.file, at), position_of(table.file, text + 1)})) {
        return result::failed;
    }
    quoted_text quoted = {table.file, source_file::table, faults, text + 1};
    bytes.truncate(0);
    if (failed(read_quoted(quoted, bytes))) return result::failed;
    if (quoted.passage != nullptr) return report_open_passage(quoted);
    if (!is_line_end(quoted.at)) return report(table, faults, quoted.at, "nothing may stand behind the text of a row");
    return result::ok;
}

// Puts the rows in order and reports labels that stand twice.
void sort_rows(text_table& table, fault_list& faults) {
    if (!std::is_sorted(table.rows.begin(), table.rows.end(), by_key)) {
        std::sort(table.rows.begin(), table.rows.end(), [](const text_row& left, const text_row& right) {
            return left.key != right.key ? left.key < right.key : left.position < right.position;
        });
    }
    for (std::size_t i = 1; i < table.rows.size(); ++i) {
        const text_row& row = table.rows[i];
        if (row.key == table.rows[i - 1].key) {
            (void)report(table, faults, table.file.begin() + row.position, "this label has a row already");
        }
    }
}

// Programs that edit tables may add empty fields.
bool is_end(const std::uint8_t* line) { return std::memcmp(line, "# end", 5) == 0 && is_line_end(line + 5); }

}  // namespace

text_label read_text_label(const std::uint8_t* name) {
    constexpr text_label none = {no_text_key, 0};
    if (name[0] != 'T') return none;
    text_key id = 0;
    for (int i = 1; i <= 4; ++i) {
        const std::uint8_t digit = name[i];
        const bool is_letter = digit >= 'A' && digit <= 'F';
        if (!is_letter && (digit < '0' || digit > '9')) return none;
        id = id << 4 | static_cast<text_key>(is_letter ? digit - 'A' + 10 : digit - '0');
    }
    if (name[5] != '_') return none;
    std::uint32_t size = 6;
    text_key number = 0;
    for (; name[size] >= '0' && name[size] <= '9' && number >> 32 == 0; ++size) {
        number = 10 * number + (name[size] - text_key{'0'});
    }
    return size < 10 || number >> 32 != 0 ? none : text_label{id << 32 | number, size};
}

result read_text_table(text_table& table, fault_list& faults) {
    array<std::uint8_t> bytes;
    const std::uint8_t* const end = table.file.end();
    bool has_end = false;
    for (const std::uint8_t* line = table.file.begin(); line < end; line = find_line_end(line) + 1) {
        if (is_line_end(line)) continue;
        if (has_end) {
            table.is_whole = false;
            (void)report(table, faults, line, "nothing may stand behind the end line");
            break;
        }
        if (*line == '#') {
            has_end = is_end(line);
            continue;
        }
        const std::uint32_t count = faults.count;
        const std::size_t rows = table.rows.size();
        if (!failed(read_row(table, faults, line, bytes))) continue;
        if (faults.count == count) return result::failed;
        if (table.rows.size() != rows) table.rows.back().is_wrong = true;
    }
    if (!has_end) {
        table.is_whole = false;
        (void)report(table, faults, last_character(table.file),
                     "no end line, \"# end\", follows: a part of the text table is missing");
    }
    sort_rows(table, faults);
    return result::ok;
}

text_row* find_row(text_table& table, text_key key) {
    array<text_row>& rows = table.rows;
    if (rows.empty() || key < rows[0].key) return nullptr;
    // The rows of a whole table count up.
    if (const text_key guess = key - rows[0].key; guess < rows.size()) {
        text_row& row = rows[static_cast<std::size_t>(guess)];
        if (row.key == key) return &row;
    }
    text_row* const found = std::lower_bound(rows.begin(), rows.end(), text_row{key, 0, 0}, by_key);
    return found != rows.end() && found->key == key ? found : nullptr;
}

void report_unused_rows(const text_table& table, fault_list& faults) {
    for (const text_row& row : table.rows) {
        if (row.is_used) continue;
        (void)add_fault(faults, severity::warning, source_file::table, row.position,
                        "no line of the listing names this row");
    }
}
