// The opcode table: what each byte value means where an instruction or a text may start.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "base/options.h"

// One numeric space for opcodes, operands, offset table entries, nodes and data blocks.
enum code_type : std::uint8_t {
    // kinds of byte
    NONE,
    TEXT,    // a character of a text; also a kind of operand: a text run
    MB_IN,   // opens a passage of double-byte characters
    MB_OUT,  // closes it
    STATEMENT,
    LITERAL,
    OPERATOR,
    FUNCTION,
    ASSIGN,
    // kinds of operand
    VALUE,  // an expression that ends with "eval"
    BYTE,
    INT16,
    INT32,
    VARIABLE,  // a reference that ends with "$var", "$str" or "data"
    STR32,     // a data block's offset, written as an "int32" literal
    // kinds of data block
    DATA,
    DATA_TEXT,
    DATA_INT16,
};

// Operators with two operands that weigh the same in an expression; see model/infix.h.
enum class operator_group : std::uint8_t { none, comparison, additive, multiplicative, logical };

// The opcodes that the passes know by name.
enum opcode : std::uint8_t {
    OP_EQUAL = 0x86,
    OP_NOT_EQUAL = 0x85,
    OP_IF = 0xA1,
    OP_ENDIF = 0xA2,
    OP_ELSE = 0xA3,
    OP_DECL = 0xA6,
    OP_EVAL = 0xA7,
    OP_ASSIGN = 0xA8,
    OP_JUMP = 0xB0,
    OP_VAR = 0xB2,
    OP_STR = 0xB3,
    OP_DATA = 0xB4,
    OP_BYE = 0xB6,
    OP_INDEXOF = 0xB7,
    OP_ENDDATA = 0xB8,
    OP_END = 0xD1,  // its meaning depends on the game
    OP_INT32 = 0xD2,
    OP_BYTE = 0xD3,
    OP_INT16 = 0xD4,
    OP_UNKNOWN_DF = 0xDF,  // a statement of the third game only
    OP_ENDANSWER = 0xEE,
    OP_KEYWORDS = 0xEF,
    OP_SIDENT = 0xFF,
};

constexpr std::size_t max_params = 4;

// A name in a place of fixed size, so that printing it is one copy of that size. At least one zero
// byte ends it.
class code_name {
public:
    static constexpr std::size_t max_size = 16;

    constexpr code_name() = default;
    template <std::size_t size>
    constexpr code_name(const char (&name)[size]) : size_(size - 1) {
        static_assert(size <= max_size);
        for (std::size_t i = 0; i < size - 1; ++i) text_[i] = name[i];
    }
    constexpr operator std::string_view() const { return {text_.data(), size_}; }

    // max_size bytes, those behind the name 0.
    [[nodiscard]] const char* padded() const { return text_.data(); }

    // Copies max_size bytes and returns the end of the name.
    char* copy_padded(char* to) const {
        std::memcpy(to, text_.data(), max_size);
        return to + size_;
    }

private:
    std::array<char, max_size> text_{};
    std::uint8_t size_ = 0;
};

struct alignas(32) code_info_entry {
    code_name name;
    code_type type = NONE;
    std::uint8_t num_params = 0;
    std::array<code_type, max_params> params = {};  // the kind of each operand
    code_type item_type = BYTE;                     // inside an expression, where most bytes stand for themselves
    std::uint8_t item_size = 1;                     // bytes of the item there; 0 for a literal that has not one number
    operator_group group = operator_group::none;
};

// The table of the selected game. Only select_game_mode writes it.
extern std::array<code_info_entry, 256> code_info;

// Puts the game's own meaning of the bytes 0xD1 and 0xDF into the table.
void select_game_mode(game_mode_id game_mode);

// The opcode of an instruction, operator or ":=" of this name in the selected game, or no_code. Names
// are compared by sixteen bytes: so many must be readable at `name`.
inline constexpr int no_code = -1;
int find_code(const char* name, std::size_t size);

inline bool begins_text(std::uint8_t byte) { return code_info[byte].type == TEXT || code_info[byte].type == MB_IN; }
// "$var", "$str" and "data" can close a variable reference and stand before an assignment.
constexpr bool is_reference(int code) { return code == OP_VAR || code == OP_STR || code == OP_DATA; }
