#include "assemble/read_operand.h"

#include <utility>

#include "assemble/read_expression.h"

namespace {

// A text label at the reader's place.
result read_text_of_label(reader& read, const text_label& label) {
    assembly& to = read.to;
    if (to.table == nullptr) {
        if (std::exchange(read.lacks_table, true)) return failure();  // one fault, however many labels there are
        return fault_at(read, read.at, "a text label: name the text table with -t");
    }
    text_row* const row = find_row(*to.table, label.key);
    if (row == nullptr) {
        if (!to.table->is_whole) return failure();  // perhaps only the consequence of that
        return fault_at(read, read.at, "the text table has no row '%.*s'", shown_size(label.size), characters(read.at));
    }
    row->is_used = true;
    read.at += label.size;
    if (row->is_wrong) {
        put_byte(to, ' ');  // in place of the text that the row should have
        return result::ok;
    }
    quoted_text text = {to.table->file, source_file::table, to.faults, to.table->file.begin() + row->text};
    // A row may be named so often that no offset reaches its end.
    if (failed(read_quoted(text, to.script)) || to.script.size() > max_source_size) return exhaust(read);
    return result::ok;
}

// The label of a jump.
result read_target(reader& read) {
    skip_blanks(read);
    const std::uint8_t* const start = read.at;
    const std::size_t size = name_size(start);
    if (find_code(characters(start), size) == OP_INT32 && start[size] == ' ' && name_bytes[start[size + 1]]) {
        return fault_at(read, start, "a label must stand here, without 'int32'");
    }
    return read_label_use(read);
}

result read_operand(reader& read, code_type type) {
    switch (type) {
        case TEXT: return read_text(read, false);
        case BYTE: {
            std::uint8_t number = 0;
            if (failed(read_byte(read, number))) return result::failed;
            put_byte(read.to, number);
            return result::ok;
        }
        case INT32: return read_target(read);
        case STR32: {
            skip_blanks(read);
            const std::size_t size = name_size(read.at);
            if (find_code(characters(read.at), size) != OP_INT32) {
                return fault_at(read, read.at, "'int32' and a label must stand here");
            }
            read.at += size;
            put_byte(read.to, OP_INT32);
            return read_label_use(read);
        }
        case VARIABLE: return read_reference(read);
        default: return read_value(read);
    }
}

}  // namespace

result read_quotes(reader& read, quoted_text& text) {
    ++text.at;
    const std::uint32_t count = read.to.faults.count;
    const result outcome = read_quoted(text, read.to.script);
    read.at = text.at;
    if (failed(outcome) && count == read.to.faults.count) return exhaust(read);
    return outcome;
}

failure report_empty_text(reader& read, const std::uint8_t* place) {
    return fault_at(read, place, "an empty text can stand only behind .data");
}

result read_text(reader& read, bool may_be_empty) {
    skip_blanks(read);
    const std::uint8_t* const start = read.at;
    const std::uint32_t offset = script_size(read.to);
    if (*start == '"') {
        quoted_text text = {read.to.listing, source_file::listing, read.to.faults, start};
        if (failed(read_quotes(read, text))) return result::failed;
        if (text.passage != nullptr) return report_open_passage(text);
    } else if (const text_label label = read_text_label(start); label.size != 0 && !name_bytes[start[label.size]]) {
        if (failed(read_text_of_label(read, label))) return result::failed;
    } else {
        return fault_at(read, start, "a text in quotes or a text label must stand here");
    }
    return may_be_empty || script_size(read.to) != offset ? result::ok : report_empty_text(read, start);
}

result read_operands(reader& read, std::uint8_t code) {
    const code_info_entry& info = code_info[code];
    for (std::size_t k = 0; k < info.num_params; ++k) {
        skip_blanks(read);
        const bool is_missing = k == 0 ? at_line_end(read) : !take(read, ',');
        if (is_missing) {
            return at_line_end(read)
                       ? fault_at(read, read.at, "too few operands: '%s' takes %d", info.name.padded(), info.num_params)
                       : fault_at(read, read.at, "a comma and another operand must stand here");
        }
        if (failed(read_operand(read, info.params[k]))) return result::failed;
    }
    skip_blanks(read);
    if (*read.at != ',') return result::ok;
    return fault_at(read, read.at, "too many operands: '%s' takes %d", info.name.padded(), info.num_params);
}
