#include "base/byte_word.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

constexpr byte_word mark(byte_word word) {
    return mark_below(word, 0x20) | mark_from(word, 0x7B) | mark_equal(word, '"');
}
bool is_marked(std::uint8_t byte) { return byte < 0x20 || byte >= 0x7B || byte == '"'; }

// From each position of short runs, most of whose bytes are not marked, those next to the limits included.
TEST(byte_word, finds_what_a_search_byte_by_byte_finds) {
    constexpr std::uint8_t usual[] = {0x20, 0x21, 0x23, 0x5C, 0x7A};
    constexpr std::uint8_t rare[] = {0x00, 0x1F, 0x22, 0x7B, 0x7F, 0x80, 0xA2, 0xFB, 0xFF};
    std::mt19937 random(1);
    for (std::size_t round = 0; round < 2000; ++round) {
        std::vector<std::uint8_t> bytes(round % 40);
        for (std::uint8_t& byte : bytes) {
            byte = random() % 12 == 0 ? rare[random() % std::size(rare)] : usual[random() % std::size(usual)];
        }
        for (std::size_t position = 0; position <= bytes.size(); ++position) {
            const auto found =
                std::find_if(bytes.begin() + static_cast<std::ptrdiff_t>(position), bytes.end(), is_marked);
            ASSERT_EQ(find_marked<mark>(bytes.data(), position, bytes.size()),
                      static_cast<std::size_t>(found - bytes.begin()))
                << "round " << round << ", position " << position;
        }
    }
}

}  // namespace
