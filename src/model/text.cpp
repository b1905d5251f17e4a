#include "model/text.h"

#include "base/diagnostics.h"

text_end find_text_end(std::span<const std::uint8_t> bytes) {
    bool in_passage = false;
    std::size_t position = 0;
    for (;;) {
        if (!in_passage) position = find_marked<mark_special>(bytes.data(), position, bytes.size());
        if (position == bytes.size()) return {position, in_passage ? text_end::unclosed : text_end::proper};
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
    const text_end found = find_text_end(conv_bytes(script, start, end));
    length = static_cast<std::int32_t>(found.position);
    if (found.state == text_end::malformed) return report_malformed_text(script, start + length, end);
    if (found.state == text_end::unclosed) return report_malformed_text(script, start, end);
    return result::ok;
}

bool is_outside_passage(const conv& script, std::int32_t start, std::int32_t position) {
    const text_end found = find_text_end(conv_bytes(script, start, position));
    return found.state == text_end::proper && static_cast<std::int32_t>(found.position) == position - start;
}

failure report_malformed_text(const conv& script, std::int32_t offset, std::int32_t end) {
    const std::uint8_t byte = conv_byte(script, offset);
    if (!is_lead_byte(byte)) return ERROR("'}' not found: offset=%08X", offset);
    if (end - offset < 2) return ERROR("illegal multibyte text: offset=%08X, code=%02X", offset, byte);
    return ERROR("illegal multibyte text: offset=%08X, code=%02X%02X", offset, byte, conv_byte(script, offset + 1));
}
