#include "model/text.h"

#include <algorithm>

#include "base/diagnostics.h"

namespace {

// Where a text ends, or the fault that stops it: a lead byte without its trail byte, or a passage
// that is open at the end of the bytes.
struct text_end {
    std::size_t position;
    enum : std::uint8_t { proper, malformed, unclosed } state;
};

// Looks no further than to the first place outside a passage at or behind `enough`.
text_end find_text_end(std::span<const std::uint8_t> bytes, std::size_t enough) {
    std::size_t position = 0;
    for (;;) {
        position = find_marked<mark_special>(bytes.data(), position, enough);
        if (position >= enough) return {position, text_end::proper};
        if (code_types[bytes[position]] == TEXT) {
            ++position;
            continue;
        }
        if (code_types[bytes[position]] != MB_IN) return {position, text_end::proper};
        // A passage, up to its "}".
        for (++position; position < bytes.size() && code_types[bytes[position]] != MB_OUT; ++position) {
            if (!is_lead_byte(bytes[position])) continue;
            if (bytes.size() - position < 2 || !is_trail_byte(bytes[position + 1])) {
                return {position, text_end::malformed};
            }
            ++position;
        }
        if (position == bytes.size()) return {position, text_end::unclosed};
        ++position;
        if (position >= enough) return {position, text_end::proper};
    }
}

}  // namespace

result text_length(const conv& script, std::int32_t start, std::int32_t end, std::int32_t& length) {
    const std::span<const std::uint8_t> bytes = conv_bytes(script, start, end);
    const text_end found = find_text_end(bytes, bytes.size());
    length = static_cast<std::int32_t>(found.position);
    if (found.state == text_end::malformed) return report_malformed_text(script, start + length, end);
    if (found.state == text_end::unclosed) return report_malformed_text(script, start, end);
    return result::ok;
}

std::int32_t text_piece(const conv& script, std::int32_t start) {
    const std::span<const std::uint8_t> bytes = conv_bytes(script, start, script.data_size);
    const auto enough = static_cast<std::size_t>(text_piece_size - start % text_piece_size);
    const text_end found = find_text_end(bytes, std::min(enough, bytes.size()));
    return found.state == text_end::proper ? static_cast<std::int32_t>(found.position) : -1;
}

failure report_malformed_text(const conv& script, std::int32_t offset, std::int32_t end) {
    const std::uint8_t byte = conv_byte(script, offset);
    if (!is_lead_byte(byte)) return ERROR("'}' not found: offset=%08X", offset);
    if (end - offset < 2) return ERROR("illegal multibyte text: offset=%08X, code=%02X", offset, byte);
    return ERROR("illegal multibyte text: offset=%08X, code=%02X%02X", offset, byte, conv_byte(script, offset + 1));
}
