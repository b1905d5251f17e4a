#include "output/print_text.h"

#include <algorithm>

#include "base/diagnostics.h"
#include "model/text.h"
#include "output/label.h"

namespace {

std::uint8_t byte_at(std::string_view text, std::size_t position) { return static_cast<std::uint8_t>(text[position]); }

// 0 behind the text.
std::uint8_t byte_behind(std::string_view text, std::size_t position) {
    return text.size() - position < 2 ? std::uint8_t{0} : byte_at(text, position + 1);
}

// Where the next byte stands that `mark` marks.
template <byte_word (*mark)(byte_word)>
std::size_t next_marked(std::string_view text, std::size_t position) {
    return find_marked<mark>(reinterpret_cast<const std::uint8_t*>(text.data()), position, text.size());
}

// Copies a text with its escapes. `in_passage` says whether it begins inside a double-byte
// passage and receives whether it ends inside one.
void escape_text(writer& out, std::string_view text, bool& in_passage) {
    std::size_t copied = 0;
    std::size_t position = 0;
    while (position < text.size()) {
        if (!in_passage) position = next_marked<mark_escaped>(text, position);
        if (position == text.size()) break;
        const std::uint8_t byte = byte_at(text, position);
        if (const char letter = escape_letter(byte); letter != 0) {
            out.put({text.data() + copied, position - copied});
            out.put('\\');
            out.put(letter);
            copied = position + 1;
        } else {
            const text_item item = text_item_at(in_passage, byte, byte_behind(text, position));
            if (item == text_item::pair) ++position;
            if (item == text_item::opens || item == text_item::closes) in_passage = !in_passage;
        }
        ++position;
    }
    out.put({text.data() + copied, text.size() - copied});
}

void escape_text(writer& out, std::string_view text) {
    bool in_passage = false;
    escape_text(out, text, in_passage);
}

void print_text_label(writer& out, const conv& script, std::int32_t number) {
    out.advance(put_text_label(out.room(max_text_label_size), script, static_cast<std::uint32_t>(number)));
}

// Enters a text in the text table, where there is one. Returns whether the listing shows the
// text's label, that of the number just given, instead of the text.
bool enter_text(print_job& job, std::string_view text, std::int32_t offset) {
    if (job.text_file == nullptr) return false;
    writer& table = *job.text_file;
    print_text_label(table, job.script, options.text_counter);
    table.put("\t0x");
    table.advance(put_hex<8>(table.room(8), static_cast<std::uint32_t>(offset)));
    table.put("\t\"");
    escape_text(table, text);
    table.put("\"\n");
    ++options.text_counter;
    return options.text_label;
}

void print_last_text_label(print_job& job) { print_text_label(job.out, job.script, options.text_counter - 1); }

}  // namespace

std::string_view text_of(const conv& script, const operand& param) {
    const std::span<const std::uint8_t> bytes =
        conv_bytes(script, param.offset, static_cast<std::int32_t>(param.value));
    if (bytes.empty()) return "";
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return text.substr(0, text.find('\0'));
}

result check_text(std::string_view text) {
    const text_end found =
        find_text_end({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, text.size());
    if (found.state == text_end::unclosed) return ERROR("illegal multibyte text: '}' not found");
    if (found.position == text.size()) return result::ok;
    const std::uint8_t byte = byte_at(text, found.position);
    if (found.state == text_end::proper) return ERROR("illegal text: %02X", byte);
    return ERROR("illegal multibyte text: %02X%02X", byte, byte_behind(text, found.position));
}

result print_text(print_job& job, const inst& node, int depth) {
    const operand param = inst_param(job.script.tree, node, 0);
    std::string_view rest = text_of(job.script, param);
    if (failed(check_text(rest))) return result::failed;
    writer& out = job.out;
    if (enter_text(job, rest, param.offset)) {
        print_indent(out, depth);
        print_last_text_label(job);
        out.put('\n');
        return result::ok;
    }
    bool in_passage = false;
    while (!rest.empty()) {
        const std::size_t newline = rest.find('\n');  // never the trail byte of a character
        const std::string_view line = rest.substr(0, std::min(newline, rest.size() - 1) + 1);
        print_indent(out, depth);
        out.put('"');
        escape_text(out, line, in_passage);
        rest.remove_prefix(line.size());
        // A passage that ends right behind the newline ends on the newline's line.
        if (in_passage && rest.starts_with('}')) {
            out.put('}');
            in_passage = false;
            rest.remove_prefix(1);
        }
        out.put("\"\n");
    }
    return result::ok;
}

void print_quoted_text(print_job& job, const operand& param) {
    const std::string_view text = text_of(job.script, param);
    if (enter_text(job, text, param.offset)) return print_last_text_label(job);
    job.out.put('"');
    escape_text(job.out, text);
    job.out.put('"');
}
