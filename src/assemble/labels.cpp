#include "assemble/labels.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

// The value of a digit of a listed label, 0x80 for any other byte.
constexpr auto make_digit_values() {
    std::array<std::uint8_t, 256> values{};
    values.fill(0x80);
    for (std::uint8_t value = 0; value < 16; ++value) {
        values[static_cast<std::uint8_t>("0123456789ABCDEF"[value])] = value;
    }
    return values;
}
constexpr auto digit_values = make_digit_values();

// Reads `count` digits; `seen` collects what is wrong with them in its highest bit.
std::uint32_t read_digits(const std::uint8_t* digits, int count, std::uint8_t& seen) {
    std::uint32_t number = 0;
    for (int i = 0; i < count; ++i) {
        seen |= digit_values[digits[i]];
        number = number << 4 | digit_values[digits[i]];
    }
    return number;
}

std::string_view name_at(const source& listing, std::uint32_t position, std::uint32_t size) {
    return {reinterpret_cast<const char*>(listing.begin()) + position, size};
}

std::size_t hash_of(std::string_view name) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char letter : name) hash = (hash ^ static_cast<std::uint8_t>(letter)) * 0x100000001B3;
    return static_cast<std::size_t>(hash ^ (hash >> 32));
}

// The slot of a name: its own, or the free one that it takes.
std::uint32_t& slot_of(label_table& labels, const source& listing, std::string_view name) {
    const std::size_t mask = labels.name_slots.size() - 1;
    for (std::size_t i = hash_of(name) & mask;; i = (i + 1) & mask) {
        std::uint32_t& slot = labels.name_slots[i];
        if (slot == 0) return slot;
        const named_label& other = labels.named[slot - 1];
        if (name_at(listing, other.position, other.size) == name) return slot;
    }
}

// Keeps at least half of the slots free.
result grow_slots(label_table& labels, const source& listing) {
    constexpr std::size_t least = 64;
    const std::size_t count = std::max(least, 4 * labels.named.size());
    if (2 * labels.named.size() < labels.name_slots.size()) return result::ok;
    std::size_t size = least;
    while (size < count) size *= 2;
    if (!labels.name_slots.assign_zero(size)) return result::failed;
    for (std::uint32_t i = 0; i < labels.named.size(); ++i) {
        const named_label& label = labels.named[i];
        slot_of(labels, listing, name_at(listing, label.position, label.size)) = i + 1;
    }
    return result::ok;
}

}  // namespace

std::optional<listed_label> read_listed_label(const std::uint8_t* name, std::size_t size) {
    if (size != listed_label_size || name[0] != 'L' || name[5] != '_') return std::nullopt;
    std::uint8_t seen = 0;
    const std::uint32_t id = read_digits(name + 1, 4, seen);
    const std::uint32_t offset = read_digits(name + 6, 8, seen);
    if ((seen & 0x80) != 0) return std::nullopt;
    return listed_label{id, offset};
}

result label_table_init(label_table& labels, std::uint32_t max_offset) {
    labels.max_offset = max_offset;
    return labels.offsets.assign_zero(max_offset) ? result::ok : result::failed;
}

result find_label(label_table& labels, const source& listing, std::uint32_t position, std::uint32_t size,
                  label_key& label) {
    if (const auto listed = read_listed_label(listing.begin() + position, size)) {
        if (labels.id == 0xFFFFFFFF) labels.id = listed->id;
        if (labels.id == listed->id && listed->offset < labels.max_offset) {
            label = listed->offset;
            return result::ok;
        }
    }
    if (failed(grow_slots(labels, listing))) return result::failed;
    std::uint32_t& slot = slot_of(labels, listing, name_at(listing, position, size));
    if (slot == 0) {
        if (!labels.named.push_back({position, size, 0, false})) return result::failed;
        slot = static_cast<std::uint32_t>(labels.named.size());
    }
    label = labels.max_offset + slot - 1;
    return result::ok;
}

bool place_label(label_table& labels, label_key label, std::uint32_t place) {
    if (place_of(labels, label)) return false;
    if (label < labels.max_offset) {
        labels.offsets[label] = place + 1;
    } else {
        named_label& named = labels.named[label - labels.max_offset];
        named.place = place;
        named.has_place = true;
    }
    return true;
}

std::optional<std::uint32_t> place_of(const label_table& labels, label_key label) {
    if (label < labels.max_offset) {
        const std::uint32_t place = labels.offsets[label];
        return place == 0 ? std::nullopt : std::optional(place - 1);
    }
    const named_label& named = labels.named[label - labels.max_offset];
    return named.has_place ? std::optional(named.place) : std::nullopt;
}
