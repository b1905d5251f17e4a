#include "assemble/reader.h"

#include <algorithm>
#include <cstdarg>
#include <cstring>

#include "model/infix.h"

namespace {

constexpr std::array<bool, 256> make_name_bytes() {
    std::array<bool, 256> bytes{};
    bytes['_'] = true;
    for (std::uint8_t byte = '0'; byte <= '9'; ++byte) bytes[byte] = true;
    for (std::uint8_t byte = 'A'; byte <= 'Z'; ++byte) bytes[byte] = bytes[byte + 'a' - 'A'] = true;
    return bytes;
}

int hex_value(std::uint8_t digit) {
    if (digit >= '0' && digit <= '9') return digit - '0';
    const int letter = digit | 0x20;
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

std::uint32_t expression_size(const reader& read, const std::uint8_t* end) {
    return static_cast<std::uint32_t>(end - read.expression);
}

// Whether what is wrong at `place` is only that the rest of a cut expression is missing.
bool stops_at_cut(const reader& read, const std::uint8_t* place) {
    constexpr std::size_t longest_word = code_name::max_size + listed_label_size;  // and what begins there
    if (read.expression == nullptr || expression_size(read, place) + longest_word < max_expression) return false;
    if (std::find(read.expression, read.expression + max_expression, '\n') != read.expression + max_expression)
        return false;
    const std::uint8_t behind = read.expression[max_expression];
    return behind == '\n' || behind == '\r' || behind == ',' || behind == ' ';
}

failure report_cut(reader& read) {
    return add_fault(
        read.to.faults, severity::error, source_file::listing, position_of(read, read.expression + max_expression),
        "this expression was cut at %zu characters when it was listed: its end must be written here", max_expression);
}

}  // namespace

void begin_expression(reader& read) {
    skip_blanks(read);
    read.expression = read.at;
}

result end_expression(reader& read, result outcome) {
    const std::uint8_t* end = read.at;
    while (is_blank(end[-1])) --end;
    if (!failed(outcome) && expression_size(read, end) == max_expression) outcome = report_cut(read);
    read.expression = nullptr;
    return outcome;
}

constinit const std::array<bool, 256> name_bytes = make_name_bytes();

failure fault_at(reader& read, const std::uint8_t* place, const char* format, ...) {
    if (stops_at_cut(read, place)) return report_cut(read);
    va_list arguments;
    va_start(arguments, format);
    (void)add_fault_list(read.to.faults, severity::error, source_file::listing, position_of(read, place), format,
                         arguments);
    va_end(arguments);
    return {};
}

failure exhaust(reader& read) {
    read.to.exhausted = true;
    return {};
}

void skip_line(reader& read) {
    const auto size = read.to.listing.size + std::size_t{1};  // with the line feed behind the file
    const auto position = static_cast<std::size_t>(position_of(read, read.at));
    read.at = static_cast<const std::uint8_t*>(std::memchr(read.at, '\n', size - position));
}

result read_byte(reader& read, std::uint8_t& number) {
    skip_blanks(read);
    const std::uint8_t* const start = read.at;
    const std::size_t size = name_size(start);
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < size; ++i) {
        const std::uint32_t digit = start[i] - std::uint32_t{'0'};
        if (digit > 9) return fault_at(read, start, "a number from 0 to 255 must stand here");
        if (value <= 0xFF) value = 10 * value + digit;
    }
    if (size == 0) return fault_at(read, start, "a number from 0 to 255 must stand here");
    if (value > 0xFF) return fault_at(read, start, "number out of range: 0 to 255 go into a byte");
    read.at += size;
    number = static_cast<std::uint8_t>(value);
    return result::ok;
}

result read_hex(reader& read, int bytes, std::uint32_t& number) {
    skip_blanks(read);
    const std::uint8_t* const start = read.at;
    const std::size_t size = name_size(start);
    const bool is_prefixed = size > 2 && start[0] == '0' && start[1] == 'x';
    std::uint64_t value = 0;
    for (std::size_t i = 2; is_prefixed && i < size; ++i) {
        const int digit = hex_value(start[i]);
        if (digit < 0) return fault_at(read, start + i, "this is no hexadecimal digit");
        if (value >> 8 * bytes == 0) value = value << 4 | static_cast<std::uint32_t>(digit);
    }
    if (!is_prefixed) return fault_at(read, start, "a hexadecimal number must stand here, as 0x%0*X", 2 * bytes, 16);
    if (value >> 8 * bytes != 0) {
        return fault_at(read, start, "number out of range: up to 0x%0*X go into %s", 2 * bytes, (1U << 8 * bytes) - 1,
                        bytes == 1 ? "a byte" : "two bytes");
    }
    read.at += size;
    number = static_cast<std::uint32_t>(value);
    return result::ok;
}

result read_label_use(reader& read) {
    skip_blanks(read);
    const std::size_t size = name_size(read.at);
    if (size == 0 || (*read.at >= '0' && *read.at <= '9')) {
        return fault_at(read, read.at, "a label must stand here");
    }
    assembly& to = read.to;
    const std::uint32_t position = position_of(read, read.at);
    constexpr std::uint8_t unknown_place[4] = {};
    label_key label = 0;
    if (failed(find_label(to.labels, to.listing, position, static_cast<std::uint32_t>(size), label)) ||
        !to.labels.uses.push_back({script_size(to), position, label})) {
        return exhaust(read);
    }
    put_bytes(to, unknown_place, sizeof unknown_place);
    read.at += size;
    return result::ok;
}
