// What the rooms that read share: the place in a file, and what is said about it.
#pragma once

#include <cstdint>

#include "assemble/assembly.h"
#include "model/code_info.h"

// An operation or function that waits for its operands, or parentheses that wait for their end.
enum class part_kind : std::uint8_t { group, parenthesis, call, operation, eval };
struct open_part {
    part_kind kind;
    std::uint8_t code = 0;        // of an operation or call
    std::uint8_t arguments = 0;   // of a call: how many are done
    std::uint8_t operations = 0;  // in a group: 2 stands for more
    bool has_eval = false;        // in a group: one of its items has an "eval" of its own
    bool begins_wrapped = false;  // the right operand begins with parentheses that a plain listing has too
};

// Reads the listing from its start to its end.
struct reader {
    assembly& to;
    const std::uint8_t* at;                    // the next byte
    array<open_part> parts = {};               // of the expression that is read; kept for its memory
    const std::uint8_t* expression = nullptr;  // where it begins, while one is read
    bool lacks_table = false;                  // a text label was reported because no text table is named
};

inline std::uint32_t position_of(const reader& read, const std::uint8_t* place) {
    return static_cast<std::uint32_t>(place - read.to.listing.begin());
}

// To be called around an expression, of which a listing shows max_expression characters at most. One
// that ends just there looks whole, but may not be: that is an error too.
void begin_expression(reader& read);
result end_expression(reader& read, result outcome);

// Reports an error at a place and returns the failure. When the expression that is read was cut in
// front of it, the error is that.
[[gnu::format(printf, 3, 4)]] failure fault_at(reader& read, const std::uint8_t* place, const char* format, ...);

// Notes that memory ran out.
failure exhaust(reader& read);

inline bool is_blank(std::uint8_t byte) { return byte == ' ' || byte == '\t' || byte == '\r'; }
inline void skip_blanks(reader& read) {
    while (is_blank(*read.at)) ++read.at;
}

// The bytes of names; those of opcodes may begin with "$".
extern const std::array<bool, 256> name_bytes;
inline std::size_t name_size(const std::uint8_t* name) {
    std::size_t size = 0;
    while (name_bytes[name[size]]) ++size;
    return size;
}
inline std::size_t word_size(const std::uint8_t* word) {
    return *word == '$' ? 1 + name_size(word + 1) : name_size(word);
}
inline const char* characters(const std::uint8_t* bytes) { return reinterpret_cast<const char*>(bytes); }

// How much of a name a message shows.
inline int shown_size(std::size_t size) { return static_cast<int>(size < 40 ? size : 40); }

// Whether the line, or what of it is no comment, ends here.
inline bool at_line_end(const reader& read) { return *read.at == '\n' || *read.at == ';'; }

// Takes this character, if it comes next behind blanks.
inline bool take(reader& read, char character) {
    skip_blanks(read);
    if (*read.at != static_cast<std::uint8_t>(character)) return false;
    ++read.at;
    return true;
}

// Goes to the line feed that ends the line.
void skip_line(reader& read);

// A number of one byte in decimal.
result read_byte(reader& read, std::uint8_t& number);
// A number of `bytes` bytes, "0x" and hexadecimal digits.
result read_hex(reader& read, int bytes, std::uint32_t& number);
// A label whose four bytes follow in the script.
result read_label_use(reader& read);
