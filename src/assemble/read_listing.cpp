#include "assemble/read_listing.h"

#include <cstring>
#include <string_view>
#include <utility>

#include "assemble/read_data.h"
#include "assemble/read_expression.h"
#include "assemble/read_operand.h"
#include "assemble/reader.h"

namespace {

// What stands between the lines.
struct listing_state {
    reader read;
    const std::uint8_t* passage = nullptr;  // the "{" that the last text line left open
    bool is_text_lost = false;              // a fault hides whether the next text line begins in a passage
    bool has_game = false;
    bool has_lines = false;  // that an option line may not follow
    bool has_end = false;
    bool is_dumped = false;                  // the last line was a dump line
    std::uint32_t behind_jump = 0xFFFFFFFF;  // where the jump of the last line ends
    std::uint32_t jump_use = 0;
};

bool is_hex(std::uint8_t byte) { return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'F'); }

bool has_hex(const std::uint8_t* at, int digits) {
    for (int i = 0; i < digits; ++i) {
        if (!is_hex(at[i])) return false;
    }
    return true;
}

bool starts_with(const std::uint8_t* at, std::string_view start) {
    return std::memcmp(at, start.data(), start.size()) == 0;
}

// The end of a line that gives bytes: nothing but a comment may follow.
result read_line_end(reader& read) {
    skip_blanks(read);
    if (*read.at == ';') skip_line(read);
    if (*read.at == '\n') return result::ok;
    return fault_at(read, read.at, "nothing more can stand on this line");
}

// Notes that a line at the reader's place gives bytes from here on.
result begin_line(listing_state& state) {
    state.has_lines = true;
    assembly& to = state.read.to;
    if (to.lines.push_back({script_size(to), position_of(state.read, state.read.at)})) return result::ok;
    return exhaust(state.read);
}

failure report_open_passage(reader& read, const std::uint8_t* passage) {
    return report_open_passage(quoted_text{read.to.listing, source_file::listing, read.to.faults, nullptr, passage});
}

// A line of a spoken text, which may begin and end inside a double-byte passage.
result read_text_line(listing_state& state) {
    reader& read = state.read;
    const std::uint8_t* const start = read.at;
    if (failed(begin_line(state))) return result::failed;
    quoted_text text = {read.to.listing, source_file::listing, read.to.faults, start, state.passage};
    state.passage = nullptr;
    if (failed(read_quotes(read, text))) {
        skip_line(read);
        state.is_text_lost = text.passage != nullptr ||
                             std::memchr(text.at, '{', static_cast<std::size_t>(read.at - text.at)) != nullptr;
        return result::failed;
    }
    state.passage = text.passage;
    if (read.at - start == 2) return report_empty_text(read, start);
    return result::ok;
}

// The words of option lines.
struct option_word {
    std::string_view name;
    bool listing_options::*flag = nullptr;
    int game = -1;
};
constexpr option_word option_words[] = {
    {.name = "kv", .game = static_cast<int>(game_mode_id::kelvorath)},
    {.name = "bh", .game = static_cast<int>(game_mode_id::brenhollow)},
    {.name = "qf", .game = static_cast<int>(game_mode_id::quillfen)},
    {.name = "implicit-decl", .flag = &listing_options::implicit_decl},
    {.name = "implicit-eval", .flag = &listing_options::implicit_eval},
    {.name = "implicit-int32", .flag = &listing_options::implicit_int32},
    {.name = "endif-without-if", .flag = &listing_options::endif_without_if},
};

result set_option(listing_state& state, const option_word& option, const std::uint8_t* place) {
    reader& read = state.read;
    assembly& to = read.to;
    if (option.flag != nullptr) to.option.*option.flag = true;
    if (option.game < 0) return result::ok;
    const auto game = static_cast<game_mode_id>(option.game);
    if (state.has_game && game != to.game_mode) return fault_at(read, place, "an option line above names another game");
    state.has_game = true;
    to.game_mode = game;
    select_game_mode(game);
    return result::ok;
}

result read_option_line(listing_state& state) {
    reader& read = state.read;
    if (state.has_lines) return fault_at(read, read.at - 7, "option lines must stand above all other lines");
    skip_blanks(read);
    const std::uint8_t* const start = read.at;
    while (name_bytes[*read.at] || *read.at == '-') ++read.at;
    const std::string_view word(characters(start), static_cast<std::size_t>(read.at - start));
    for (const option_word& option : option_words) {
        if (word.starts_with("--") && word.substr(2) == option.name) return set_option(state, option, start);
    }
    return fault_at(read, start, "unknown option of a listing: '%.*s'", shown_size(word.size()), word.data());
}

result read_directive(listing_state& state) {
    reader& read = state.read;
    const std::uint8_t* const start = read.at;
    std::size_t size = 1;
    while (name_bytes[start[size]] || start[size] == '.') ++size;
    const std::string_view word(characters(start), size);
    read.at += size;
    if (word == ".option") return read_option_line(state);
    const bool is_unknown = word == ".unknown";
    const bool is_unknown_byte = word == ".unknown.byte";
    if (word != ".data" && !is_unknown && !is_unknown_byte) {
        return fault_at(read, start, "unknown directive: '%.*s'", shown_size(size), word.data());
    }
    read.at = start;
    if (failed(begin_line(state))) return result::failed;
    read.at += size;
    if (is_unknown || is_unknown_byte) return read_unknown_line(read, is_unknown ? 2 : 1);
    return read_data_line(read);
}

// A label behind a jump may have stood inside its operand: then some bytes were listed twice, and
// the listed offset is less than the place by as many.
void note_overlap(listing_state& state, std::uint32_t listed, std::uint32_t place, std::uint32_t position) {
    assembly& to = state.read.to;
    if (place != state.behind_jump || place - listed > 4 || to.first_moved.place < place) return;
    const label_use& use = to.labels.uses[state.jump_use];
    const auto target =
        read_listed_label(to.listing.begin() + use.position, name_size(to.listing.begin() + use.position));
    if (target) to.overlap = {target->offset, place - listed, place, position};
}

result read_label_line(listing_state& state, std::size_t size) {
    reader& read = state.read;
    assembly& to = read.to;
    const std::uint8_t* const start = read.at;
    const std::uint32_t position = position_of(read, start);
    const std::uint32_t place = script_size(to);
    label_key label = 0;
    if (failed(find_label(to.labels, to.listing, position, static_cast<std::uint32_t>(size), label)))
        return exhaust(read);
    if (!place_label(to.labels, label, place))
        return fault_at(read, start, "this label stands on another line already");
    if (label < to.labels.max_offset && label != place) {
        if (label < place) note_overlap(state, label, place, position);
        if (to.first_moved.place > place) to.first_moved = {label, place};
    }
    read.at += size + 1;
    return result::ok;
}

// A variable and, behind ":=", the value that it starts with.
result read_declaration(reader& read) {
    put_byte(read.to, OP_DECL);
    if (failed(read_operands(read, OP_DECL))) return result::failed;
    if (read.at[0] != ':' || read.at[1] != '=') return result::ok;
    read.at += 2;
    put_byte(read.to, OP_ASSIGN);
    return read_value(read);
}

// A word alone may be a label without its colon: that no line has it would only be the consequence.
result note_lost_label(reader& read, std::size_t size) {
    const std::uint8_t* const start = read.at;
    if (*start == '$' || (start[size] != '\n' && start[size] != '\r')) return result::ok;
    label_table& labels = read.to.labels;
    label_key label = 0;
    const auto length = static_cast<std::uint32_t>(size);
    if (failed(find_label(labels, read.to.listing, position_of(read, start), length, label))) return exhaust(read);
    (void)place_label(labels, label, script_size(read.to));
    return result::ok;
}

result read_statement(listing_state& state, std::size_t size) {
    reader& read = state.read;
    const int found = find_code(characters(read.at), size);
    const auto code = static_cast<std::uint8_t>(found);
    const bool is_declaration = found == OP_DECL || (read.to.option.implicit_decl && is_reference(found));
    if (is_reference(found) && !is_declaration && (read.at[size] == '[' || read.at[size] == '(')) {
        return fault_at(read, read.at, "'decl' is missing in front of '%s'", code_info[code].name.padded());
    }
    if (found == no_code || (code_info[code].type != STATEMENT && !is_declaration)) {
        if (failed(note_lost_label(read, size))) return result::failed;
        return fault_at(read, read.at, "unknown statement of this game: '%.*s'", shown_size(size), characters(read.at));
    }
    if (failed(begin_line(state))) return result::failed;
    if (found == OP_DECL || !is_declaration) read.at += size;
    if (is_declaration) return read_declaration(read);
    put_byte(read.to, code);
    if (code == OP_JUMP) state.jump_use = static_cast<std::uint32_t>(read.to.labels.uses.size());
    if (failed(read_operands(read, code))) return result::failed;
    if (code == OP_JUMP) state.behind_jump = script_size(read.to);
    return result::ok;
}

// What begins with a name: a label, a text label or a statement.
result read_word_line(listing_state& state) {
    reader& read = state.read;
    const std::uint8_t* const start = read.at;
    const std::size_t size = word_size(start);
    if (size == 0) return fault_at(read, start, "this begins no line of a listing");
    const bool is_name = *start != '$' && (*start < '0' || *start > '9');
    if (is_name && start[size] == ':' && start[size + 1] != '=') return read_label_line(state, size);
    if (const text_label label = read_text_label(start); label.size == size) {
        if (failed(begin_line(state))) return result::failed;
        return read_text(read, false);
    }
    return read_statement(state, size);
}

bool is_blank_line(const std::uint8_t* at) {
    while (is_blank(*at)) ++at;
    return *at == '\n';
}

// "; 00000000: 00 ..." or the end line; any other comment says nothing.
result read_comment(listing_state& state) {
    reader& read = state.read;
    const std::uint8_t* const start = read.at;
    const bool was_dumped = std::exchange(state.is_dumped, false);
    skip_line(read);
    const bool has_offset = start[1] == ' ' && has_hex(start + 2, 8) && start[10] == ':' && start[11] == ' ';
    if (has_offset && has_hex(start + 12, 2)) {
        state.is_dumped = true;
        if (was_dumped) return result::ok;
        std::uint32_t listed = 0;
        for (int i = 2; i < 10; ++i) {
            listed = listed << 4 | static_cast<std::uint32_t>(start[i] <= '9' ? start[i] - '0' : start[i] - 'A' + 10);
        }
        if (!read.to.dumps.push_back({listed, script_size(read.to)})) return exhaust(read);
        return result::ok;
    }
    if (!has_offset && start[1] != ' ') return result::ok;
    const std::uint8_t* const word = start + (has_offset ? 12 : 2);
    state.has_end |= starts_with(word, "END") && is_blank_line(word + 3);
    return result::ok;
}

// A line from its first character behind the indentation.
result read_line(listing_state& state) {
    reader& read = state.read;
    if (*read.at == ';') return read_comment(state);
    state.is_dumped = false;
    if (state.has_end) {
        (void)fault_at(read, std::exchange(read.at, read.to.listing.end()), "nothing may stand behind the end line");
        return result::failed;
    }
    if (*read.at == '"') {
        if (state.is_text_lost) {
            skip_line(read);
            return result::ok;
        }
        if (failed(read_text_line(state))) return result::failed;
        return read_line_end(read);
    }
    state.is_text_lost = false;
    if (state.passage != nullptr) {
        (void)report_open_passage(read, std::exchange(state.passage, nullptr));
    }
    if (failed(*read.at == '.' ? read_directive(state) : read_word_line(state))) return result::failed;
    return read_line_end(read);
}

// The last line, when no line feed ends it. Without an end line it was cut in its middle, and what is
// wrong with it is only the consequence.
const std::uint8_t* find_cut_line(const source& listing) {
    const std::uint8_t* line = listing.end();
    while (line != listing.begin() && line[-1] != '\n') --line;
    return line;
}

void skip_indentation(reader& read) {
    while (starts_with(read.at, "    ")) read.at += 4;
    skip_blanks(read);
}

}  // namespace

void read_listing(assembly& to) {
    listing_state state = {.read = {to, to.listing.begin()}};
    reader& read = state.read;
    select_game_mode(to.game_mode);
    const std::uint8_t* const end = to.listing.end();
    const std::uint8_t* const cut_line = find_cut_line(to.listing);
    while (read.at < end && !to.exhausted) {
        const bool is_cut = read.at == cut_line && !state.has_end;
        skip_indentation(read);
        if (*read.at == '\n') {
            state.is_dumped = false;
        } else if ((is_cut && *read.at != ';') || failed(read_line(state))) {
            skip_line(read);
        }
        ++read.at;
    }
    if (state.passage != nullptr) (void)report_open_passage(read, state.passage);
    if (!state.has_end) {
        (void)fault_at(read, last_character(to.listing),
                       "no end line, \"; END\", follows: a part of the listing is missing");
    } else if (to.script.empty() && !to.faults.has_errors) {
        (void)fault_at(read, last_character(to.listing), "no line of this listing gives a byte to the script");
    }
}
