#include "model/text.h"

#include "base/diagnostics.h"

std::optional<std::int32_t> text_length(const conv& script, std::int32_t start, std::int32_t end) {
    bool in_passage = false;
    std::int32_t position = start;
    while (position < end) {
        const std::uint8_t byte = conv_byte(script, position);
        if (!in_passage) {
            const code_type type = code_types[byte];
            if (type != TEXT && type != MB_IN) break;
            in_passage = type == MB_IN;
        } else if (code_types[byte] == MB_OUT) {
            in_passage = false;
        } else if (is_lead_byte(byte)) {
            if (end - position < 2 || !is_trail_byte(conv_byte(script, position + 1))) {
                return report_malformed_text(script, position, end);
            }
            ++position;
        }
        ++position;
    }
    if (in_passage) return report_malformed_text(script, start, end);
    return position - start;
}

failure report_malformed_text(const conv& script, std::int32_t offset, std::int32_t end) {
    const std::uint8_t byte = conv_byte(script, offset);
    if (!is_lead_byte(byte)) return ERROR("'}' not found: offset=%08X", offset);
    if (end - offset < 2) return ERROR("illegal multibyte text: offset=%08X, code=%02X", offset, byte);
    return ERROR("illegal multibyte text: offset=%08X, code=%02X%02X", offset, byte, conv_byte(script, offset + 1));
}
