#include "model/code_info.h"

#include <algorithm>

#include "base/byte_word.h"

namespace {

struct param_info {
    code_type type = NONE;
    const char* name = nullptr;  // documents the operand; never printed
};
using operands = std::array<param_info, max_params>;

struct opcode_info {
    code_type type = NONE;
    code_name name;
    operands params = {};
    operator_group group = operator_group::none;
};

struct opcode_row {
    std::uint8_t code;
    opcode_info entry;
};

constexpr operands two_values = {{{VALUE, "value1"}, {VALUE, "value2"}}};

// Every byte value with a name, in ascending order. num_params follows from params.
// clang-format off
constexpr opcode_row rows[] = {
    {0x09, {.type = TEXT,      .name = "\t"}},
    {0x0A, {.type = TEXT,      .name = "\n"}},
    {0x22, {.type = TEXT,      .name = "\""}},
    {0x23, {.type = TEXT,      .name = "#"}},
    {0x24, {.type = TEXT,      .name = "$"}},
    {0x2F, {.type = TEXT,      .name = "/"}},
    {0x40, {.type = TEXT,      .name = "HELP_WORD"}},
    {0x5C, {.type = TEXT,      .name = "\\"}},
    {0x7B, {.type = MB_IN,     .name = "MB_IN"}},
    {0x7D, {.type = MB_OUT,    .name = "MB_OUT"}},
    {0x7E, {.type = TEXT,      .name = "~"}},
    {0x81, {.type = OPERATOR,  .name = ">",           .params = two_values, .group = operator_group::comparison}},
    {0x82, {.type = OPERATOR,  .name = ">=",          .params = two_values, .group = operator_group::comparison}},
    {0x83, {.type = OPERATOR,  .name = "<",           .params = two_values, .group = operator_group::comparison}},
    {0x84, {.type = OPERATOR,  .name = "<=",          .params = two_values, .group = operator_group::comparison}},
    {0x85, {.type = OPERATOR,  .name = "!=",          .params = two_values, .group = operator_group::comparison}},
    {0x86, {.type = OPERATOR,  .name = "==",          .params = two_values, .group = operator_group::comparison}},
    {0x90, {.type = OPERATOR,  .name = "+",           .params = two_values, .group = operator_group::additive}},
    {0x91, {.type = OPERATOR,  .name = "-",           .params = two_values, .group = operator_group::additive}},
    {0x92, {.type = OPERATOR,  .name = "*",           .params = two_values, .group = operator_group::multiplicative}},
    {0x93, {.type = OPERATOR,  .name = "/",           .params = two_values, .group = operator_group::multiplicative}},
    {0x94, {.type = OPERATOR,  .name = "||",          .params = two_values, .group = operator_group::logical}},
    {0x95, {.type = OPERATOR,  .name = "&&",          .params = two_values, .group = operator_group::logical}},
    {0x9A, {.type = FUNCTION,  .name = "cancarry",    .params = {{{VALUE, "actor"}}}}},
    {0x9B, {.type = FUNCTION,  .name = "weight",      .params = {{{VALUE, "object"}, {VALUE, "quantity"}}}}},
    {0x9C, {.type = STATEMENT, .name = "horse",       .params = {{{VALUE, "actor"}}}}},
    {0x9D, {.type = FUNCTION,  .name = "horsed",      .params = {{{VALUE, "actor"}}}}},
    {0x9E, {.type = STATEMENT, .name = "sleep"}},
    {0x9F, {.type = FUNCTION,  .name = "hasobj",      .params = {{{VALUE, "actor"}, {VALUE, "object"}, {VALUE, "quality"}}}}},
    {0xA0, {.type = FUNCTION,  .name = "rand",        .params = {{{VALUE, "min"}, {VALUE, "max"}}}}},
    {0xA1, {.type = STATEMENT, .name = "if",          .params = {{{VALUE, "conditon"}}}}},
    {0xA2, {.type = STATEMENT, .name = "endif"}},
    {0xA3, {.type = STATEMENT, .name = "else"}},
    {0xA4, {.type = STATEMENT, .name = "setf",        .params = {{{VALUE, "actor"}, {VALUE, "flag"}}}}},
    {0xA5, {.type = STATEMENT, .name = "clearf",      .params = {{{VALUE, "actor"}, {VALUE, "flag"}}}}},
    {0xA6, {.type = STATEMENT, .name = "decl",        .params = {{{VARIABLE, "$var/$str/data"}}}}},
    {0xA7, {.type = OPERATOR,  .name = "eval",        .params = {{{VALUE, "expr"}}}}},
    {0xA8, {.type = ASSIGN,    .name = ":="}},
    {0xAB, {.type = FUNCTION,  .name = "flag",        .params = {{{VALUE, "actor"}, {VALUE, "flag"}}}}},
    {0xB0, {.type = STATEMENT, .name = "jump",        .params = {{{INT32, "offset"}}}}},
    {0xB2, {.type = FUNCTION,  .name = "$var",        .params = {{{BYTE, "var_no"}}}}},
    {0xB3, {.type = FUNCTION,  .name = "$str",        .params = {{{BYTE, "var_no"}}}}},
    {0xB4, {.type = FUNCTION,  .name = "data",        .params = {{{VALUE, "offset"}, {VALUE, "index"}}}}},
    {0xB5, {.type = STATEMENT, .name = "dprint",      .params = {{{STR32, "offset"}, {VALUE, "index"}}}}},
    {0xB6, {.type = STATEMENT, .name = "bye"}},
    {0xB7, {.type = FUNCTION,  .name = "indexof",     .params = {{{VALUE, "offset"}, {VALUE, "string"}}}}},
    {0xB8, {.type = STATEMENT, .name = "enddata"}},
    {0xB9, {.type = STATEMENT, .name = "new",         .params = {{{VALUE, "actor"}, {VALUE, "object"}, {VALUE, "quality"}, {VALUE, "quantity"}}}}},
    {0xBA, {.type = STATEMENT, .name = "delete",      .params = {{{VALUE, "actor"}, {VALUE, "object"}, {VALUE, "quality"}, {VALUE, "quantity"}}}}},
    {0xBB, {.type = FUNCTION,  .name = "objcount",    .params = {{{VALUE, "actor"}, {VALUE, "object"}}}}},
    {0xBE, {.type = STATEMENT, .name = "inventory",   .params = {{{VALUE, "actor"}}}}},
    {0xBF, {.type = STATEMENT, .name = "portrait",    .params = {{{VALUE, "actor"}}}}},
    {0xC4, {.type = STATEMENT, .name = "addkarma",    .params = {{{VALUE, "value"}}}}},
    {0xC5, {.type = STATEMENT, .name = "subkarma",    .params = {{{VALUE, "value"}}}}},
    {0xC6, {.type = FUNCTION,  .name = "inparty",     .params = {{{VALUE, "actor"}}}}},
    {0xC7, {.type = FUNCTION,  .name = "objinparty",  .params = {{{VALUE, "object"}, {VALUE, "quality"}}}}},
    {0xC9, {.type = STATEMENT, .name = "give",        .params = {{{VALUE, "object"}, {VALUE, "quality"}, {VALUE, "from_actor"}, {VALUE, "to_actor"}}}}},
    {0xCA, {.type = FUNCTION,  .name = "join",        .params = {{{VALUE, "actor"}}}}},
    {0xCB, {.type = STATEMENT, .name = "wait"}},
    {0xCC, {.type = FUNCTION,  .name = "leave",       .params = {{{VALUE, "actor"}}}}},
    {0xCD, {.type = STATEMENT, .name = "worktype",    .params = {{{VALUE, "actor"}, {VALUE, "type"}}}}},
    {0xD1, {.type = STATEMENT, .name = "end"}},
    {0xD2, {.type = LITERAL,   .name = "int32",       .params = {{{INT32, "value"}}}}},
    {0xD3, {.type = LITERAL,   .name = "byte",        .params = {{{BYTE, "value"}}}}},
    {0xD4, {.type = LITERAL,   .name = "int16",       .params = {{{INT16, "value"}}}}},
    {0xD6, {.type = STATEMENT, .name = "resurrect",   .params = {{{VALUE, "actor"}}}}},
    {0xD7, {.type = FUNCTION,  .name = "npcnearby",   .params = {{{VALUE, "actor"}}}}},
    {0xD8, {.type = STATEMENT, .name = "setname",     .params = {{{VALUE, "actor"}}}}},
    {0xD9, {.type = STATEMENT, .name = "heal",        .params = {{{VALUE, "actor"}}}}},
    {0xDA, {.type = FUNCTION,  .name = "wounded",     .params = {{{VALUE, "actor"}}}}},
    {0xDB, {.type = STATEMENT, .name = "cure",        .params = {{{VALUE, "actor"}}}}},
    {0xDC, {.type = FUNCTION,  .name = "poisoned",    .params = {{{VALUE, "actor"}}}}},
    {0xDD, {.type = FUNCTION,  .name = "npc",         .params = {{{VALUE, "actor"}, {VALUE, "unknown"}}}}},
    {0xE0, {.type = FUNCTION,  .name = "exp",         .params = {{{VALUE, "actor"}, {VALUE, "value"}}}}},
    {0xE1, {.type = FUNCTION,  .name = "lvl",         .params = {{{VALUE, "actor"}, {VALUE, "value"}}}}},
    {0xE2, {.type = FUNCTION,  .name = "str",         .params = {{{VALUE, "actor"}, {VALUE, "value"}}}}},
    {0xE3, {.type = FUNCTION,  .name = "int",         .params = {{{VALUE, "actor"}, {VALUE, "value"}}}}},
    {0xE4, {.type = FUNCTION,  .name = "dex",         .params = {{{VALUE, "actor"}, {VALUE, "value"}}}}},
    {0xEE, {.type = STATEMENT, .name = "endanswer"}},
    {0xEF, {.type = STATEMENT, .name = "keywords",    .params = {{{TEXT, "string"}}}}},
    {0xF1, {.type = STATEMENT, .name = "slook",       .params = {{{TEXT, "string"}}}}},
    {0xF2, {.type = STATEMENT, .name = "sconverse"}},
    {0xF3, {.type = STATEMENT, .name = "sprefix"}},
    {0xF6, {.type = STATEMENT, .name = "answer"}},
    {0xF7, {.type = STATEMENT, .name = "ask"}},
    {0xF8, {.type = STATEMENT, .name = "askc",        .params = {{{TEXT, "string"}}}}},
    {0xF9, {.type = STATEMENT, .name = "inputstr",    .params = {{{VARIABLE, "$str"}}}}},
    {0xFB, {.type = STATEMENT, .name = "input",       .params = {{{VARIABLE, "$var"}}}}},
    {0xFC, {.type = STATEMENT, .name = "inputnum",    .params = {{{VARIABLE, "$var"}}}}},
    {0xFF, {.type = STATEMENT, .name = "sident",      .params = {{{BYTE, "id"}, {TEXT, "name"}}}}},
};

// The two bytes whose meaning depends on the game; elsewhere 0xDF is no instruction.
constexpr opcode_info kelvorath_end        = {.type = STATEMENT, .name = "end"};
constexpr opcode_info brenhollow_end       = {.type = STATEMENT, .name = "UNKNOWN_D1",  .params = {{{VALUE, "UNKNOWN"}}}};
constexpr opcode_info quillfen_end         = {.type = STATEMENT, .name = "misc_action", .params = {{{VALUE, "action_no"}}}};
constexpr opcode_info quillfen_unknown_df  = {.type = STATEMENT, .name = "UNKNOWN_DF",  .params = {{{VALUE, "UNKNOWN"}}}};
constexpr opcode_info no_instruction       = {};
// clang-format on

// A printable byte, tab or line feed is a character of a text. The braces, the vertical bar
// and what lies above the tilde are not.
constexpr bool is_character(int byte) {
    return byte == 0x09 || byte == 0x0A || (byte >= 0x20 && byte <= 0x7A) || byte == 0x7E;
}

constexpr std::uint8_t size_of_literal(const operands& params) {
    if (params[1].type != NONE) return 0;
    switch (params[0].type) {
        case BYTE: return 2;
        case INT16: return 3;
        case INT32: return 5;
        default: return 0;
    }
}

constexpr code_info_entry make_entry(const opcode_info& info) {
    code_info_entry entry = {info.name, info.type};
    if (info.type == LITERAL || info.type == OPERATOR || info.type == FUNCTION || info.type == ASSIGN) {
        entry.item_type = info.type;
    }
    if (info.type == LITERAL) entry.item_size = size_of_literal(info.params);
    entry.group = info.group;
    for (std::size_t k = 0; k < max_params; ++k) {
        entry.params[k] = info.params[k].type;
        if (entry.params[k] != NONE) ++entry.num_params;
    }
    return entry;
}

constexpr std::array<code_info_entry, 256> make_table() {
    std::array<code_info_entry, 256> table;
    for (int byte = 0; byte < 256; ++byte) {
        if (is_character(byte)) table[static_cast<std::size_t>(byte)].type = TEXT;
    }
    for (const opcode_row& row : rows) table[row.code] = make_entry(row.entry);
    return table;
}

constexpr std::array<code_info_entry, 256> stored_table = make_table();

constexpr bool rows_ascend() {
    int previous = -1;
    for (const opcode_row& row : rows) {
        if (row.code <= previous) return false;
        previous = row.code;
    }
    return true;
}

constexpr bool items_have_sizes() {
    return std::all_of(stored_table.begin(), stored_table.end(),
                       [](const code_info_entry& entry) { return entry.item_size != 0; });
}

constexpr std::size_t count_of(code_type type) {
    std::size_t count = 0;
    for (const code_info_entry& entry : stored_table) count += entry.type == type ? 1 : 0;
    return count;
}

// Names are found by a hash that gives each another slot; some of 0xD1 differ from game to game.
struct name_words {
    std::uint64_t first = 0;
    std::uint64_t second = 0;
};
using name_slots = std::array<std::uint8_t, 1024>;

constexpr std::size_t slot_of(name_words name, std::uint64_t factor) {
    return ((name.first ^ (name.second * 0x9E3779B97F4A7C15)) * factor) >> 54;
}

constexpr name_words words_of(std::string_view name) {
    name_words words;
    for (std::size_t i = 0; i < name.size(); ++i) {
        (i < 8 ? words.first : words.second) |= std::uint64_t{static_cast<std::uint8_t>(name[i])} << (8 * (i % 8));
    }
    return words;
}

// Takes the slot of a name for its code, unless the slot is another's.
constexpr bool take_slot(name_slots& slots, std::uint64_t factor, std::uint8_t code, std::string_view name) {
    std::uint8_t& slot = slots[slot_of(words_of(name), factor)];
    if (slot != 0 && slot != code) return false;
    slot = code;
    return true;
}

constexpr bool has_name(const opcode_row& row) { return row.entry.type >= STATEMENT; }

constexpr bool take_slots(name_slots& slots, std::uint64_t factor) {
    for (const opcode_row& row : rows) {
        if (has_name(row) && !take_slot(slots, factor, row.code, row.entry.name)) return false;
    }
    return take_slot(slots, factor, OP_END, brenhollow_end.name) &&
           take_slot(slots, factor, OP_END, quillfen_end.name) &&
           take_slot(slots, factor, OP_UNKNOWN_DF, quillfen_unknown_df.name);
}

constexpr std::uint64_t find_factor() {
    for (std::uint64_t factor = 0x9E3779B97F4A7C15;; factor += 0xBF58476D1CE4E5BA) {
        name_slots slots{};
        if (take_slots(slots, factor)) return factor;
    }
}
constexpr std::uint64_t name_factor = find_factor();

constexpr name_slots make_slots() {
    name_slots slots{};
    take_slots(slots, name_factor);
    return slots;
}
constexpr name_slots slots_of_names = make_slots();

static_assert(rows_ascend());
static_assert(items_have_sizes());
static_assert(count_of(NONE) == 81 && count_of(TEXT) == 94);

}  // namespace

constinit std::array<code_info_entry, 256> code_info = stored_table;

int find_code(const char* name, std::size_t size) {
    if (size == 0 || size > code_name::max_size) return no_code;
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(name);
    name_words words = {load_word(bytes), load_word(bytes + 8)};
    if (size <= 8) {
        words.first &= ~byte_word{0} >> (64 - 8 * size);
        words.second = 0;
    } else {
        words.second &= ~byte_word{0} >> (128 - 8 * size);
    }
    const std::uint8_t code = slots_of_names[slot_of(words, name_factor)];
    const auto* const found = reinterpret_cast<const std::uint8_t*>(code_info[code].name.padded());
    return load_word(found) == words.first && load_word(found + 8) == words.second ? code : no_code;
}

void select_game_mode(game_mode_id game_mode) {
    switch (game_mode) {
        case game_mode_id::kelvorath:
            code_info[OP_END] = make_entry(kelvorath_end);
            code_info[OP_UNKNOWN_DF] = make_entry(no_instruction);
            break;
        case game_mode_id::brenhollow:
            code_info[OP_END] = make_entry(brenhollow_end);
            code_info[OP_UNKNOWN_DF] = make_entry(no_instruction);
            break;
        case game_mode_id::quillfen:
            code_info[OP_END] = make_entry(quillfen_end);
            code_info[OP_UNKNOWN_DF] = make_entry(quillfen_unknown_df);
            break;
    }
}
