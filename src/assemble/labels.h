// The labels of a listing: where their lines come to lie and who names them.
#pragma once

#include <cstdint>
#include <optional>

#include "assemble/source.h"

// What a label is known by inside the table. A listed label, "L", an id and an offset in hexadecimal,
// is its offset, when the id is that of the first one and the offset below `max_offset`; any other
// label has a number from `max_offset` on.
using label_key = std::uint32_t;

struct named_label {
    std::uint32_t position;  // where its name stands first
    std::uint32_t size;
    std::uint32_t place;
    bool has_place;
};

// Four bytes of the script that hold a label's place.
struct label_use {
    std::uint32_t at;        // in the script
    std::uint32_t position;  // in the listing
    label_key label;
};

struct label_table {
    std::uint32_t max_offset = 0;
    std::uint32_t id = 0xFFFFFFFF;  // of the listed labels, once there is one
    array<std::uint32_t> offsets;   // by the offset in a listed label: its place plus 1, 0 for none
    array<named_label> named;
    array<std::uint32_t> name_slots;  // hash table: index into `named` plus 1
    array<label_use> uses;
};

inline constexpr std::size_t listed_label_size = 14;

// A listed label's id and offset.
struct listed_label {
    std::uint32_t id;
    std::uint32_t offset;
};
// Whether the name is that of a listed label.
std::optional<listed_label> read_listed_label(const std::uint8_t* name, std::size_t size);

// Makes an empty table. The operations that return a result fail without a message when memory runs out.
result label_table_init(label_table& labels, std::uint32_t max_offset);

// The label with this name, which is added when it is new.
result find_label(label_table& labels, const source& listing, std::uint32_t position, std::uint32_t size,
                  label_key& label);

// Gives a label its place, unless it has one. Returns whether it had none.
bool place_label(label_table& labels, label_key label, std::uint32_t place);

// The place of a label, if it has one.
std::optional<std::uint32_t> place_of(const label_table& labels, label_key label);
