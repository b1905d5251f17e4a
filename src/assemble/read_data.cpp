#include "assemble/read_data.h"

#include "assemble/read_operand.h"

namespace {

// The decimal form behind a number, as far as it is one.
result check_decimal(reader& read, std::uint32_t number) {
    skip_blanks(read);
    if (*read.at != ';') return result::ok;
    ++read.at;
    skip_blanks(read);
    const std::uint8_t* const start = read.at;
    std::uint64_t decimal = 0;
    for (; *read.at >= '0' && *read.at <= '9'; ++read.at) {
        if (decimal <= number) decimal = 10 * decimal + (*read.at - std::uint64_t{'0'});
    }
    const bool is_number = read.at != start;
    skip_blanks(read);
    if (is_number && *read.at == '\n' && decimal != number) {
        return fault_at(read, start, "the two notations of this number differ: 0x%04X is %u", number, number);
    }
    skip_line(read);
    return result::ok;
}

result read_number_line(reader& read, int bytes) {
    std::uint32_t number = 0;
    if (failed(read_hex(read, bytes, number))) return result::failed;
    for (int i = 0; i < bytes; ++i) put_byte(read.to, static_cast<std::uint8_t>(number >> 8 * i));
    return check_decimal(read, number);
}

}  // namespace

result read_data_line(reader& read) {
    skip_blanks(read);
    if (*read.at == '0') return read_number_line(read, 2);
    if (*read.at != '"' && *read.at != 'T') {
        return fault_at(read, read.at, "a number, as 0x0010, a text in quotes or a text label must stand here");
    }
    if (failed(read_text(read, true))) return result::failed;
    put_byte(read.to, 0);
    return result::ok;
}

result read_unknown_line(reader& read, int bytes) {
    assembly& to = read.to;
    const std::uint32_t offset = script_size(to);
    if (failed(read_number_line(read, bytes))) return result::failed;
    if (!to.unknowns.empty() && to.unknowns.back().end == offset) {
        to.unknowns.back().end = script_size(to);
        return result::ok;
    }
    return to.unknowns.push_back({offset, script_size(to)}) ? result::ok : exhaust(read);
}
