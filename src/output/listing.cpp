#include "output/listing.h"

#include <algorithm>
#include <array>

namespace {

constexpr auto make_hex_pairs() {
    std::array<std::array<char, 2>, 256> pairs{};
    for (std::size_t byte = 0; byte < 256; ++byte) {
        pairs[byte] = {"0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15]};
    }
    return pairs;
}
constexpr auto hex_pairs = make_hex_pairs();

}  // namespace

char* put_hex(char* to, std::uint32_t number, int digits) {
    for (int shift = 4 * (digits - 2); shift >= 0; shift -= 8) {
        std::memcpy(to, hex_pairs[number >> shift & 0xFF].data(), 2);
        to += 2;
    }
    return to;
}

char* put_decimal(char* to, std::uint32_t number, int digits) {
    char reversed[max_decimal_size];
    int count = 0;
    do {
        reversed[count++] = static_cast<char>('0' + number % 10);
        number /= 10;
    } while (number != 0);
    for (int fill = count; fill < digits; ++fill) *to++ = '0';
    while (count > 0) *to++ = reversed[--count];
    return to;
}

char* put_label(char* to, const conv& script, std::uint32_t offset) {
    *to++ = 'L';
    to = put_hex(to, script.npc_id, 4);
    *to++ = '_';
    return put_hex(to, offset, 8);
}

void print_indent(writer& out, int n) {
    static constexpr std::string_view spaces = "                                                                ";
    std::size_t left = 4 * static_cast<std::size_t>(std::max(n, 0));
    for (; left > spaces.size(); left -= spaces.size()) out.put(spaces);
    out.advance(put_text(out.room(spaces.size()), spaces) - spaces.size() + left);
}
