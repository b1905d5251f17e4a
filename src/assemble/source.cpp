#include "assemble/source.h"

#include <algorithm>

namespace {

constexpr std::uint8_t behind[32] = {'\n'};

}  // namespace

result source_finish(source& text) {
    text.size = static_cast<std::uint32_t>(text.bytes.size());
    std::uint8_t* const end = text.bytes.end();
    if (std::find(text.bytes.begin(), end, '\n') == end) std::replace(text.bytes.begin(), end, '\r', '\n');
    return text.bytes.append(behind, sizeof behind) ? result::ok : result::failed;
}

result source_assign(source& text, std::span<const std::uint8_t> bytes) {
    // Of the exact size, so that no read behind it goes unseen by a sanitizer.
    if (!text.bytes.assign_unset(bytes.size() + sizeof behind)) return result::failed;
    text.bytes.truncate(0);
    (void)text.bytes.append(bytes.data(), bytes.size());
    return source_finish(text);
}

const std::uint8_t* last_character(const source& text) {
    const std::uint8_t* last = text.end();
    while (last != text.begin() && (last[-1] == '\n' || last[-1] == '\r' || last[-1] == '\t' || last[-1] == ' '))
        --last;
    return last == text.begin() ? last : last - 1;
}
