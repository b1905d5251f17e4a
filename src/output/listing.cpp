#include "output/listing.h"

char* put_long_decimal(char* to, std::uint32_t number, int digits) {
    int count = 1;
    for (std::uint64_t power = 10; power <= number; power *= 10) ++count;
    char* const end = to + std::max(count, digits);
    for (char* digit = end; digit != to; number /= 10) *--digit = static_cast<char>('0' + number % 10);
    return end;
}

void print_deep_indent(writer& out, int n) {
    constexpr std::string_view spaces = "                                                                ";
    for (std::size_t left = 4 * static_cast<std::size_t>(std::max(n, 0)); left > 0;) {
        const std::string_view part = first_part(spaces, left);
        out.put(part);
        left -= part.size();
    }
}
