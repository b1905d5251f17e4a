// The example scripts, cut and changed at every byte.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "check_listing.h"

namespace {

class sweep_test : public testing::TestWithParam<const char*> {
protected:
    std::ifstream file_{std::string(VARSUL_EXAMPLES) + "/" + GetParam() + ".scr", std::ios::binary};
    std::string bytes_{std::istreambuf_iterator<char>(file_), {}};
    unsigned turn_ = 0;

    // Each turn has other options, all of them in a few hundred turns.
    void check(std::size_t size) {
        ++turn_;
        const std::span script(reinterpret_cast<const std::uint8_t*>(bytes_.data()), size);
        ASSERT_EQ(check_listing(request_of(turn_ * 73, turn_ * 11), script), "") << "turn " << turn_;
    }
};

TEST_P(sweep_test, every_byte_cut_off_or_changed) {
    for (std::size_t at = 0; at < bytes_.size() && !HasFatalFailure(); ++at) {
        const char original = bytes_[at];
        for (const int changed : {0x00, 0xFF, 0xA7, 0xB0, 0xD2, 0xEE, 0x7B, 0x82}) {
            bytes_[at] = static_cast<char>(changed);
            check(bytes_.size());
        }
        bytes_[at] = original;
        check(at + 1);
    }
    EXPECT_EQ(turn_, bytes_.size() * 9);
}

INSTANTIATE_TEST_SUITE_P(examples, sweep_test, testing::Values("lantern-keeper", "salt-ferry", "clockwork-orchard"));

}  // namespace
