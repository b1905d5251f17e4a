// Runs in which the n-th allocation fails, for every n. The linker's --wrap leads the product's
// allocations through the functions below.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>

#include "driver/run.h"
#include "shapes.h"

namespace {

bool is_counting = false;
long until_failure = 0;  // the allocation that makes it 0 fails
long live_blocks = 0;

bool grants() { return !is_counting || --until_failure != 0; }

void* counted(void* block) {
    if (is_counting && block != nullptr) ++live_blocks;
    return block;
}

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the linker chose the names.
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);

void* __wrap_malloc(std::size_t size) { return grants() ? counted(__real_malloc(size)) : nullptr; }
void* __wrap_calloc(std::size_t count, std::size_t size) {
    return grants() ? counted(__real_calloc(count, size)) : nullptr;
}
void* __wrap_realloc(void* block, std::size_t size) {
    if (!grants()) return nullptr;
    return block == nullptr ? counted(__real_realloc(block, size)) : __real_realloc(block, size);
}
void __wrap_free(void* block) {
    if (is_counting && block != nullptr) --live_blocks;
    __real_free(block);
}
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

namespace fs = std::filesystem;
using words = std::vector<std::string>;

struct memory_test : testing::Test {
    fs::path home_;

    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "varsul-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        fs::current_path(home_ = name);
    }
    void TearDown() override {
        fs::current_path("/");
        fs::remove_all(home_);
    }

    struct outcome {
        int status;
        std::string listing;
        std::string text_table;
        std::string messages;
    };

    static std::string read_file(const char* name) {
        std::ifstream file(name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    // Runs the tool in this process, which keeps its own standard output and error.
    static outcome run_here(long failing) {
        const char* const arguments[] = {"varsul", "script",   "-o", "listing", "-t", "text",
                                         "-E",     "messages", "-d", "-V",      "-V"};
        const int saved[] = {dup(1), dup(2)};
        for (const char* const name : {"listing", "text", "messages"}) fs::remove(name);
        until_failure = failing;
        live_blocks = 0;
        is_counting = true;
        const int status = run(static_cast<int>(std::size(arguments)), arguments);
        is_counting = false;
        for (const int descriptor : {1, 2}) {
            dup2(saved[descriptor - 1], descriptor);
            close(saved[descriptor - 1]);
        }
        EXPECT_EQ(live_blocks, 0);
        return {status, read_file("listing"), read_file("text"), read_file("messages")};
    }

    // A file that goes like the one of the whole run up to the end of some line, but not to its last.
    static void expect_cut(const std::string& text, const std::string& whole) {
        EXPECT_TRUE(whole.starts_with(text) && (text.empty() || (text != whole && text.ends_with('\n')))) << text;
    }

    // The messages behind "memory exhausted!", without offsets.
    static std::string failure_of(const std::string& messages) {
        std::istringstream lines(messages);
        std::string failure;
        for (std::string line; std::getline(lines, line);) {
            line = line.substr(line.find(": ") + 2);
            failure.append(failure.empty() ? "" : ", ").append(line, 0, line.find(": off"));
        }
        return failure;
    }

    // Fails each allocation in turn. A run that lacks memory says so and ends no file. Returns, without
    // repetitions, how the runs failed.
    static words failures_of(const script_bytes& script) {
        std::ofstream("script", std::ios::binary) << std::string(script.begin(), script.end());
        const outcome whole = run_here(0);
        EXPECT_EQ(whole.status, 0) << whole.messages;
        words failures;
        for (long n = 1;; ++n) {
            SCOPED_TRACE(n);
            const auto [status, listing, text_table, messages] = run_here(n);
            if (until_failure > 0) return failures;  // there are no n allocations
            EXPECT_EQ(status, 1);
            expect_cut(listing, whole.listing);
            expect_cut(text_table, whole.text_table);
            const std::size_t exhausted = messages.find(": memory exhausted! (");
            EXPECT_TRUE(whole.messages.starts_with(messages.substr(0, messages.rfind('\n', exhausted) + 1)));
            const std::string failure = failure_of(messages.substr(messages.find('\n', exhausted) + 1));
            if (failures.empty() || failures.back() != failure) failures.push_back(failure);
        }
    }
};

TEST_F(memory_test, every_allocation_fails) {
    const words loading = {"read error 'script'", "can't add code offset table, parse code error: phase 1"};
    const std::string tree = "parse code error: phase 2";
    const std::pair<script_bytes, words> rows[] = {
        {{0xA1, 1, 2, 0x90, 0xA7, 0xB6, 0xA2, 0x9E},
         {tree, "parse conditon error, " + tree, tree, "", "can't print, print error"}},
        {{0xA6, 1, 0xB2, 0xA8, 1, 2, 0x90, 0xA7},
         {tree, "parse variable/data error, " + tree, tree, "", "can't print, print error"}},
        {{0xEF, 'a', 0xC4, 1, 2, 0x90, 0xA7, 0xEE},
         {tree, "parse expression error, parse sub block error, " + tree, "", "can't print, can't print, print error"}},
        // A walk that repeats, and numbers that may be texts.
        {{0xC4, 0xD2, 0x11, 0, 0, 0, 0xA7, 0xB0, 0xE, 0, 0, 0, 'a', 'b', 'c', 'd', 0xCB, 0x34, 0x12},
         {"parse code error: phase 1", tree, "parse expression error, " + tree, tree, "set data block type error",
          "parse data block error", ""}},
        // Two blocks outside the script, one of them below it, and a jump to the other.
        {{0xB5, 0xD2, 0, 0, 0, 1, 1, 0xA7, 0xC4, 0xD2, 0, 0, 0, 0xFF, 0xA7, 0xB0, 0, 0, 0, 1},
         {"can't add data offset table, parse code error: phase 1",
          "can't add jump offset table, parse code error: phase 1", "parse code error: phase 1", tree,
          "parse expression error, " + tree, tree, "set data block type error", ""}},
    };
    for (const auto& [script, further] : rows) {
        words expected = loading;
        expected.insert(expected.end(), further.begin(), further.end());
        EXPECT_EQ(failures_of(script), expected);
    }
    failures_of(script_shapes()[0].make(60'000, 1));
}

}  // namespace
