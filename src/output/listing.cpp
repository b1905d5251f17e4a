#include "output/listing.h"

#include <algorithm>

char* put_hex(char* to, std::uint32_t number, int digits) {
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) *to++ = "0123456789ABCDEF"[number >> shift & 15];
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
    for (std::size_t left = 4 * static_cast<std::size_t>(std::max(n, 0)); left != 0;) {
        const std::size_t count = std::min(left, spaces.size());
        out.put(spaces.substr(0, count));
        left -= count;
    }
}
