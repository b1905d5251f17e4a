// Scripts that nest deeply or are large are listed under an ordinary stack.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "check_listing.h"
#include "shapes.h"

namespace {

void expect_listed(const script_bytes& script, bool is_sound = true) {
    const rlimit stack = {8 << 20, RLIM_INFINITY};
    ASSERT_EQ(setrlimit(RLIMIT_STACK, &stack), 0);
    listing_request request;
    request.dump = true;
    request.must_succeed = is_sound;
    EXPECT_EQ(check_listing(request, script), "");
}

TEST(size_test, nested_blocks) {
    for (const auto make : {make_nested_ifs, make_nested_elses, make_nested_keywords}) expect_listed(make(4100));
}

TEST(size_test, known_blocks_in_others) {
    for (const std::size_t depth : {4100U, 4101U}) expect_listed(make_known_halves(depth), depth == 4100);
}

// An if in an answer, known when a walk from within a text comes to it at the top level.
TEST(size_test, known_if_names_speaker) {
    expect_listed({0xC4, 0xD2, 0x18, 0,   0,    0,    0xA7, 0xC4, 0xD2, 0x2A, 0,    0,    0,    0xA7, 0xB0,
                   0x1A, 0,    0,    0,   0xB0, 0x1E, 0,    0,    0,    0x34, 0x12, 0xEF, 'k',  0xF6, 'a',
                   'b',  0xFF, 1,    'A', 0xA1, 5,    0xA7, 0xFF, 2,    'B',  0xA2, 0xB6, 0x34, 0x12});
}

TEST(size_test, every_shape) {
    for (const script_shape& shape : script_shapes()) {
        SCOPED_TRACE(shape.name);
        // In the small one all walks are taken to compare them with those that remember.
        for (const std::size_t size : {4U << 10, 1U << 20}) expect_listed(shape.make(size, 1), shape.is_sound);
    }
}

TEST(size_test, text_tests_that_fail_at_the_end) {
    for (std::uint64_t seed = 0; seed < 5; ++seed) expect_listed(make_late_failing_text_test(1 << 20, seed));
}

}  // namespace
