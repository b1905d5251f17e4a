// Scripts that nest deeply or are large: listed or refused under an ordinary stack.
#include <sys/resource.h>

#include "shapes.h"
#include "tool_test.h"

namespace {

struct size_test : tool_test {
    static tool_result run_on(const script_bytes& script, const std::function<void()>& prepare = {}) {
        write_file("script", script);
        return run_tool({"-t", "/dev/null", "script"}, prepare);
    }
    static void expect_listed(const script_bytes& script) {
        const tool_result result = run_on(script);
        EXPECT_EQ(result.status, 0) << result.messages.substr(0, 1000);
        EXPECT_TRUE(result.listing.ends_with("\n; END\n"));
    }
};

TEST_F(size_test, nested_blocks) {
    for (const auto make : {make_nested_ifs, make_nested_elses, make_nested_keywords}) {
        expect_listed(make(2000));
        const tool_result result = run_on(make(100'000));
        EXPECT_EQ(result.status, 1);
        EXPECT_NE(result.messages.find("nesting too deep: offset="), std::string::npos);
        EXPECT_TRUE(result.messages.ends_with("\nERROR: parse code error: phase 1\n"));
    }
}

TEST_F(size_test, deep_expressions) {
    for (const auto make : {make_left_deep, make_right_deep, make_balanced, make_nested_functions}) {
        expect_listed(make(4000));
        expect_listed(make(1'000'000));
    }
}

TEST_F(size_test, long_lists) {
    expect_listed(make_siblings(1'000'000));
    expect_listed(make_jumps(100'000));
    expect_listed(make_data_blocks(100'000, block_place::before_code));
    expect_listed(make_data_blocks(100'000, block_place::behind_code));
    expect_listed(make_one_text(16 << 20));
    expect_listed(make_one_number_block(16 << 20));
}

TEST_F(size_test, text_tests_that_fail_at_the_end) {
    for (std::uint64_t seed = 0; seed < 5; ++seed) expect_listed(make_late_failing_text_test(4 << 20, seed));
}

// Whatever memory there is: the whole listing, or none with a clear message.
TEST_F(size_test, memory_is_limited) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer reserves address space of its own";
#endif
    const script_bytes script = make_one_number_block(2 << 20);
    int failures = 0;
    for (rlim_t megabytes = 16; megabytes <= 256; megabytes += 8) {
        const rlimit limit = {megabytes << 20, megabytes << 20};
        const tool_result result = run_on(script, [&] { setrlimit(RLIMIT_AS, &limit); });
        EXPECT_EQ(result.listing.ends_with("; END\n"), result.status == 0);
        if (result.status == 0) continue;
        ++failures;
        EXPECT_EQ(result.status, 1);
        EXPECT_NE(result.messages.find("memory exhausted! (size="), std::string::npos) << result.messages;
    }
    EXPECT_GT(failures, 0);
    EXPECT_LT(failures, 30);
}

}  // namespace
