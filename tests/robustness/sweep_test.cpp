// The example scripts, cut and changed at every byte.
#include <string>

#include "check_listing.h"
#include "tool_test.h"

namespace {

class sweep_test : public testing::TestWithParam<const char*> {
protected:
    std::string bytes_ = read_file(std::string(VARSUL_EXAMPLES) + "/" + GetParam() + ".scr");
    unsigned turn_ = 0;

    // Each turn has other options, all of them in a few hundred turns.
    void check(std::size_t size) {
        ++turn_;
        const std::span script(reinterpret_cast<const std::uint8_t*>(bytes_.data()), size);
        ASSERT_EQ(check_listing(request_of(turn_ * 73, turn_ * 11), script), "") << "turn " << turn_;
    }
};

TEST_P(sweep_test, every_prefix) {
    for (std::size_t size = 1; size <= bytes_.size() && !HasFatalFailure(); ++size) check(size);
    EXPECT_EQ(turn_, bytes_.size());
}

TEST_P(sweep_test, every_byte_changed) {
    for (char& byte : bytes_) {
        const char original = byte;
        for (const int changed : {0x00, 0xFF, 0xA7, 0xB0, 0xD2, 0xEE, 0x7B, 0x82}) {
            byte = static_cast<char>(changed);
            if (!HasFatalFailure()) check(bytes_.size());
        }
        byte = original;
    }
    EXPECT_EQ(turn_, bytes_.size() * 8);
}

INSTANTIATE_TEST_SUITE_P(examples, sweep_test, testing::Values("lantern-keeper", "salt-ferry", "clockwork-orchard"));

}  // namespace
