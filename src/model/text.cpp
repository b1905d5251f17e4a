#include "model/text.h"

#include "base/diagnostics.h"

result text_length(const conv& script, std::int32_t start, std::int32_t end, std::int32_t& length) {
    const std::span<const std::uint8_t> bytes = conv_bytes(script, start, end);
    std::size_t position = 0;
    for (;;) {
        while (position < bytes.size() && code_types[bytes[position]] == TEXT) ++position;
        if (position == bytes.size() || code_types[bytes[position]] != MB_IN) break;
        // A passage, up to its "}".
        for (++position; position < bytes.size() && code_types[bytes[position]] != MB_OUT; ++position) {
            if (!is_lead_byte(bytes[position])) continue;
            if (bytes.size() - position < 2 || !is_trail_byte(bytes[position + 1])) {
                return report_malformed_text(script, start + static_cast<std::int32_t>(position), end);
            }
            ++position;
        }
        if (position == bytes.size()) return report_malformed_text(script, start, end);
        ++position;
    }
    length = static_cast<std::int32_t>(position);
    return result::ok;
}

failure report_malformed_text(const conv& script, std::int32_t offset, std::int32_t end) {
    const std::uint8_t byte = conv_byte(script, offset);
    if (!is_lead_byte(byte)) return ERROR("'}' not found: offset=%08X", offset);
    if (end - offset < 2) return ERROR("illegal multibyte text: offset=%08X, code=%02X", offset, byte);
    return ERROR("illegal multibyte text: offset=%08X, code=%02X%02X", offset, byte, conv_byte(script, offset + 1));
}
