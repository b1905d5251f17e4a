#include "assemble/reader.h"

#include <cstdarg>

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

}  // namespace

constinit const std::array<bool, 256> name_bytes = make_name_bytes();

failure fault_at(reader& read, const std::uint8_t* place, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    (void)add_fault_list(read.to.faults, severity::error, source_file::listing, position_of(read, place), format,
                         arguments);
    va_end(arguments);
    return failure();
}

failure exhaust(reader& read) {
    read.to.exhausted = true;
    return failure();
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
