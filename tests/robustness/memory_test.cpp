// Runs in which the n-th allocation fails, for every n. The linker's --wrap leads the product's
// allocations through the functions below.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <span>
#include <sstream>
#include <string_view>
#include <vector>

#include "driver/run.h"
#include "driver/run_as.h"
#include "phase1/walk_memory_1.h"

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

using bytes = std::vector<std::uint8_t>;

std::string read_file(const char* name) {
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

struct outcome {
    int status;
    std::string listing = read_file("listing");
    std::string text_table = read_file("text");
    std::string messages = read_file("messages");
};

// Runs a program in this process, which keeps its own standard output and error.
int run_program(int (*program)(int, const char* const*), std::span<const char* const> arguments, long failing) {
    const int saved[] = {dup(1), dup(2)};
    dup2(open("messages", O_WRONLY | O_CREAT | O_TRUNC, 0600), 2);
    until_failure = failing;
    live_blocks = 0;
    is_counting = true;
    const int status = program(static_cast<int>(arguments.size()), arguments.data());
    is_counting = false;
    for (const int descriptor : {1, 2}) {
        dup2(saved[descriptor - 1], descriptor);
        close(saved[descriptor - 1]);
    }
    EXPECT_EQ(live_blocks, 0);
    return status;
}

outcome run_here(long failing) {
    constexpr const char* arguments[] = {"varsul", "script",   "-o", "listing", "-t", "text",
                                         "-E",     "messages", "-d", "-V",      "-V"};
    for (const char* const name : {"listing", "text", "messages"}) std::remove(name);
    return {run_program(run, arguments, failing)};
}

// A file that goes like the one of the whole run, but not to its end. Of an if or a decl stands the
// whole line or nothing.
void expect_cut(const std::string& text, const std::string& whole) {
    const std::string_view rest = std::string_view(text).substr(text.rfind('\n') + 1);
    const bool is_half = rest.find("if ") != rest.npos || rest.find("decl ") != rest.npos;
    EXPECT_TRUE((text != whole || text.empty()) && whole.starts_with(text) && !is_half) << text;
}

// The messages behind "memory exhausted!", without offsets.
std::string failure_of(const std::string& messages) {
    std::istringstream lines(messages);
    std::string failure;
    for (std::string line; std::getline(lines, line);) {
        line = line.substr(line.find(": ") + 2);
        failure.append(failure.empty() ? "" : ", ").append(line, 0, line.find(": off"));
    }
    return failure;
}

// Fails each allocation in turn. A run that lacks memory says so and ends no file, or does without it
// and loses nothing. Returns how the runs failed.
std::set<std::string> failures_of(const bytes& script) {
    std::ofstream("script", std::ios::binary) << std::string(script.begin(), script.end());
    const outcome whole = run_here(0);
    EXPECT_EQ(whole.status, 0) << whole.messages;
    std::set<std::string> failures;
    for (long n = 1;; ++n) {
        SCOPED_TRACE(n);
        const auto [status, listing, text_table, messages] = run_here(n);
        if (until_failure > 0) return failures;  // there are no n allocations
        if (status == 0) {
            EXPECT_TRUE(listing == whole.listing && text_table == whole.text_table && messages == whole.messages);
            continue;
        }
        EXPECT_EQ(status, 1);
        expect_cut(listing, whole.listing);
        expect_cut(text_table, whole.text_table);
        const std::size_t exhausted = messages.find(": memory exhausted! (");
        EXPECT_TRUE(whole.messages.starts_with(messages.substr(0, messages.rfind('\n', exhausted) + 1)));
        failures.insert(failure_of(messages.substr(messages.find('\n', exhausted) + 1)));
    }
}

// Fails each allocation of a run of varsul-as in turn: the script that is there stays. An analysis that
// fails is run once more for its messages, and may tell then what is wrong.
void fail_way_back(const char* lines, const std::string& fault = "") {
    constexpr const char* arguments[] = {"varsul-as", "-t", "text", "-o", "script", "listing"};
    std::ofstream("text") << "T0007_0000\t0\t\"{\x82\xA0}\"\n# end\n";
    std::ofstream("listing") << "    slook T0007_0000\n" << lines << "; END\n";
    for (long n = 1;; ++n) {
        SCOPED_TRACE(n);
        std::ofstream("script") << "old";
        const int outcome = run_program(run_as, arguments, n);
        if (until_failure > 0) {  // there are no n allocations
            EXPECT_EQ(outcome, fault.empty() ? 0 : 1);
            return;
        }
        const std::string said = read_file("messages");
        EXPECT_EQ(outcome, 1);
        EXPECT_TRUE(said == "ERROR: memory exhausted\n" || (!fault.empty() && said.find(fault) != said.npos)) << said;
        EXPECT_EQ(read_file("script"), "old");
    }
}

TEST(memory_test, every_allocation_fails) {
    std::string folder = testing::TempDir() + "/varsul-XXXXXX";
    ASSERT_EQ(chdir(mkdtemp(folder.data())), 0);

    // Two blocks outside the script, one of them below it, and a jump to the other.
    const auto failures = failures_of({0xB5, 0xD2, 0,    0, 0, 1,    1,    0xA7, 0xC4, 0xD2, 0, 0, 0,
                                       0xFF, 0xA7, 0xA1, 1, 2, 0x90, 0xA7, 0xA2, 0xB0, 0,    0, 0, 1});
    // What no other failure brings out, each at one place.
    for (const char* const failure :
         {"read error 'script'", "can't add code offset table, parse code error: phase 1",
          "can't add data offset table, parse code error: phase 1",
          "can't add jump offset table, parse code error: phase 1", "", "can't print, print error"}) {
        EXPECT_TRUE(failures.contains(failure)) << failure;
    }
    // A walk from the middle of a text, and numbers that may be texts.
    walks_remember = remembering::always;
    failures_of({0xC4, 0xD2, 0x11, 0, 0, 0, 0xA7, 0xB0, 0xE, 0, 0, 0, 'a', 'b', 'c', 'd', 0xCB, 0x34, 0x12});
    walks_remember = remembering::when_it_pays;

    // The arrays of a tree grow at their 257th item, whatever that is.
    for (std::size_t count = 240; count < 260; ++count) {
        bytes script;
        for (std::size_t i = 0; i < count; ++i) script.insert(script.end(), {0xA6, 1, 0xB2});
        script.insert(script.end(),
                      {0xA1, 1,    0xA7, 0xEF, 'a',  0xB6, 0xEF, 'b',  0xC4, 1,    2,    0x90, 0xA7, 0xB0, 0,   0,   0,
                       0,    0xEE, 0xA3, 'H',  0xA6, 1,    0xB2, 0xA8, 2,    0xA7, 0x9E, 0xA2, 0xFF, 7,    'N', 0xB6});
        failures_of(script);
    }
    bytes texts = {0xB5, 0xD2, 8, 0, 0, 0, 1, 0xA7};
    for (int i = 0; i < 260; ++i) texts.insert(texts.end(), {'a', 0});
    failures_of(texts);

    fail_way_back("; 00000000: 00\n    keywords \"a\"\n    answer\n    endanswer\n    addkarma eval (1 + 2)\n");
    fail_way_back(
        "    addkarma eval int32 own\n    jump a\na:\n    bye\nown:\n    .data 0x4141\n    .unknown 0x0041\n");
    fail_way_back("    if eval 1\n", "listing:2:5: error: ");

    EXPECT_EQ(chdir("/"), 0);
    std::filesystem::remove_all(folder);
}

}  // namespace
