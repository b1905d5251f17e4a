#include "assemble/read_text.h"

#include "model/text.h"

namespace {

failure report(const quoted_text& text, const std::uint8_t* place, const char* what) {
    return add_fault(text.faults, severity::error, text.name, static_cast<std::uint32_t>(place - text.file.begin()),
                     "%s", what);
}

// The byte of the escape at `text.at`, which it passes.
result read_escape(quoted_text& text, array<std::uint8_t>& bytes) {
    const std::uint8_t byte = escaped_byte(text.at[1]);
    if (byte == 0)
        return report(text, text.at,
                      "unknown escape: a backslash stands only before t, n, a quote or another backslash");
    text.at += 2;
    return bytes.push_back(byte) ? result::ok : result::failed;
}

// What stands at `text.at` and is no character of one byte outside a passage.
result read_item(quoted_text& text, array<std::uint8_t>& bytes) {
    const std::uint8_t byte = *text.at;
    const bool in_passage = text.passage != nullptr;
    std::size_t size = 1;
    switch (text_item_at(in_passage, byte, text.at[1])) {
        case text_item::single:
            if (byte == 0) return report(text, text.at, "a byte of value 0 can't stand in a text");
            break;
        case text_item::pair: size = 2; break;
        case text_item::opens: text.passage = text.at; break;
        case text_item::closes: text.passage = nullptr; break;
        case text_item::half: return report(text, text.at, "half a double-byte character: its second byte is missing");
        case text_item::none:
            return add_fault(text.faults, severity::error, text.name,
                             static_cast<std::uint32_t>(text.at - text.file.begin()),
                             byte < 0x80 ? "the byte 0x%02X can't stand in a text"
                                         : "the byte 0x%02X can stand only between { and }, in double-byte text",
                             byte);
    }
    if (!bytes.append(text.at, size)) return result::failed;
    text.at += size;
    return result::ok;
}

bool is_at_line_end(const std::uint8_t* at) { return *at == '\n' || (*at == '\r' && at[1] == '\n'); }

}  // namespace

result read_quoted(quoted_text& text, array<std::uint8_t>& bytes) {
    const std::uint8_t* const start = text.at;
    for (;;) {
        if (text.passage == nullptr) {
            const auto position = static_cast<std::size_t>(text.at - text.file.begin());
            const std::uint8_t* const run = text.at;
            // There is a line feed behind the file.
            text.at = text.file.begin() + find_marked<mark_escaped>(text.file.begin(), position, text.file.size + 1);
            if (!bytes.append(run, static_cast<std::size_t>(text.at - run))) return result::failed;
        }
        if (*text.at == '"') break;
        if (is_at_line_end(text.at)) return report(text, start - 1, "this text has no closing quote");
        if (failed(*text.at == '\\' ? read_escape(text, bytes) : read_item(text, bytes))) return result::failed;
    }
    ++text.at;
    return result::ok;
}

failure report_open_passage(const quoted_text& text) {
    return report(text, text.passage, "this { is not closed by a } in the same text");
}
