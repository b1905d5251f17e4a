#include "model/text.h"

#include <algorithm>

#include "base/diagnostics.h"

text_end find_text_end(std::span<const std::uint8_t> bytes, std::size_t enough) {
    bool in_passage = false;
    std::size_t position = 0;
    for (;;) {
        if (!in_passage && position < enough) position = find_marked<mark_special>(bytes.data(), position, enough);
        if (!in_passage && position >= enough) return {position, text_end::proper};
        if (position == bytes.size()) return {position, text_end::unclosed};
        const std::uint8_t next = bytes.size() - position < 2 ? std::uint8_t{0} : bytes[position + 1];
        switch (text_item_at(in_passage, bytes[position], next)) {
            case text_item::single: break;
            case text_item::pair: ++position; break;
            case text_item::opens: in_passage = true; break;
            case text_item::closes: in_passage = false; break;
            case text_item::half: return {position, text_end::malformed};
            case text_item::none: return {position, text_end::proper};
        }
        ++position;
    }
}

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
