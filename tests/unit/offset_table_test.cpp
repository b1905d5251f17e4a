#include "model/offset_table.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace {

using reference = std::map<std::int32_t, code_type>;

std::optional<std::int32_t> key(const reference& entries, reference::const_iterator entry) {
    return entry == entries.end() ? std::nullopt : std::optional(entry->first);
}

void expect_same(const offset_table& table, const reference& entries, std::int32_t around) {
    const auto at_or_above = entries.lower_bound(around);
    const auto exact = entries.find(around);
    const auto last_below = at_or_above == entries.begin() ? std::nullopt : key(entries, std::prev(at_or_above));
    EXPECT_EQ(offset_table_find(table, around), exact == entries.end() ? std::nullopt : std::optional(exact->second));
    EXPECT_EQ(offset_table_first_above(table, around), key(entries, entries.upper_bound(around))) << around;
    EXPECT_EQ(offset_table_last_below(table, around), last_below) << around;
    EXPECT_EQ(offset_table_first(table), key(entries, entries.begin()));
    EXPECT_EQ(offset_table_count(table), static_cast<std::int32_t>(entries.size()));
}

// Three tables that share their marks against three ordinary maps: random offsets inside the
// script, just outside it and at the ends of the number range, each table asked about each.
TEST(offset_table, agrees_with_a_map) {
    constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();
    std::mt19937 random(20);
    for (const std::int32_t size : {1, 7, 64, 301}) {
        marks shared;
        offset_table tables[3];
        reference entries[3];
        const code_type types[] = {DATA, NONE, DATA};
        const mark_bits bits[] = {code_marks, jump_marks, data_marks};
        for (std::size_t k = 0; k < 3; ++k) offset_table_init(tables[k], bits[k], shared, size);
        for (int step = 0; step < 300; ++step) {
            const std::size_t k = random() % 3;
            const std::int32_t edges[] = {lowest, -1, 0, size - 1, size, size + 1, highest};
            const auto any = static_cast<std::int32_t>(random() % static_cast<unsigned>(size + 8)) - 4;
            const std::int32_t offset = step % 4 == 0 ? edges[random() % 7] : any;
            const bool is_inside = offset >= 0 && offset < size;
            if (step % 50 == 49 && is_inside) {
                offset_table_truncate(tables[k], offset);
                entries[k].erase(entries[k].lower_bound(offset), entries[k].end());
            } else {
                const code_type type = k == 0 && is_inside ? STATEMENT : types[k];
                EXPECT_FALSE(failed(offset_table_add(tables[k], offset, type)));
                entries[k].emplace(offset, type);
            }
            for (std::size_t j = 0; j < 3; ++j) {
                expect_same(tables[j], entries[j], any);
                expect_same(tables[j], entries[j], offset);
            }
        }
    }
}

}  // namespace
