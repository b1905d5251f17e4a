// Runs in which the n-th allocation fails, for every n. The linker's --wrap leads the product's
// allocations through the functions below.
#include <unistd.h>

#include <set>
#include <sstream>
#include <string_view>

#include "driver/run.h"
#include "shapes.h"
#include "tool_test.h"

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

struct memory_test : tool_test {
    std::set<std::string> seen;  // how the runs failed

    struct outcome {
        int status;
        std::string listing;
        std::string text_table;
        std::string messages;
    };

    // Runs the tool in this process, which keeps its own standard output and error.
    static outcome run_here(const std::vector<const char*>& arguments, long failing) {
        std::filesystem::remove("listing");
        std::filesystem::remove("text");
        const int saved[] = {dup(1), dup(2)};
        until_failure = failing;
        live_blocks = 0;
        is_counting = true;
        const int status = run(static_cast<int>(arguments.size()), arguments.data());
        is_counting = false;
        for (const int descriptor : {1, 2}) {
            dup2(saved[descriptor - 1], descriptor);
            close(saved[descriptor - 1]);
        }
        EXPECT_EQ(live_blocks, 0) << failing;
        return {status, read_file("listing"), read_file("text"), read_file("messages")};
    }

    // The messages from the failed allocation on: one line, without numbers and repetitions.
    static std::string failure_of(const std::string& messages) {
        constexpr std::string_view exhausted = "memory exhausted!";
        std::istringstream lines(messages.substr(messages.rfind('\n', messages.rfind(exhausted)) + 1));
        std::string failure;
        for (std::string line, last; std::getline(lines, line);) {
            line = line.substr(line.find(": ") + 2);
            for (const char* detail : {": offset=", ": offste=", " (size="}) line = line.substr(0, line.find(detail));
            if (line != last) failure += (failure.empty() ? "" : ",") + line;
            last = line;
        }
        return failure;
    }

    // A run that lacks memory says so and ends no file.
    void fail_each_allocation(const script_bytes& script, std::vector<const char*> arguments) {
        write_file("script", script);
        arguments.insert(arguments.begin(), {"varsul", "script", "-o", "listing", "-t", "text", "-E", "messages"});
        const outcome whole = run_here(arguments, 0);
        ASSERT_EQ(whole.status, 0) << whole.messages;
        for (long n = 1;; ++n) {
            const outcome result = run_here(arguments, n);
            if (until_failure > 0) return;  // there are no n allocations
            ASSERT_EQ(result.status, 1) << n;
            ASSERT_FALSE(result.listing.ends_with("END\n")) << n;
            ASSERT_FALSE(result.text_table.ends_with("# end\n")) << n;
            seen.insert(failure_of(result.messages));
        }
    }
};

TEST_F(memory_test, every_allocation_fails) {
    constexpr std::pair<const char*, const char*> examples[] = {
        {"lantern-keeper", "--kv"}, {"salt-ferry", "--bh"}, {"clockwork-orchard", "--qf"}};
    for (const auto& [name, mode] : examples) {
        const std::string bytes = read_file(std::string(VARSUL_EXAMPLES) + "/" + name + ".scr");
        fail_each_allocation({bytes.begin(), bytes.end()}, {mode, "-d", "-T", "-V", "-V"});
    }
    for (const auto make : {make_left_deep, make_right_deep, make_siblings, make_nested_functions}) {
        fail_each_allocation(make(3000), {});
    }
    // Two blocks outside the script, one of them below it, and a jump to the other.
    fail_each_allocation({0xB5, 0xD2, 0, 0, 0, 1, 1, 0xA7, 0xC4, 0xD2, 0, 0, 0, 0xFF, 0xA7, 0xB0, 0, 0, 0, 1}, {});
    fail_each_allocation(script_shapes()[0].make(60'000, 1), {});

    const std::set<std::string> expected = {
        "memory exhausted!,read error 'script'",
        "memory exhausted!,can't add code offset table,parse code error: phase 1",
        "memory exhausted!,can't add data offset table,parse code error: phase 1",
        "memory exhausted!,can't add jump offset table,parse code error: phase 1",
        "memory exhausted!,parse code error: phase 1",
        "memory exhausted!,parse code error: phase 2",
        "memory exhausted!,parse expression error,parse code error: phase 2",
        "memory exhausted!,parse conditon error,parse sub block error,parse code error: phase 2",
        "memory exhausted!,parse expression error,parse conditon error,parse code error: phase 2",
        "memory exhausted!,parse expression error,parse sub block error,parse code error: phase 2",
        "memory exhausted!,parse sub block error,parse code error: phase 2",
        "memory exhausted!,parse variable/data error,parse code error: phase 2",
        "memory exhausted!,set data block type error",
        "memory exhausted!,parse data block error",
        "memory exhausted!",  // for the dump counts; the driver's own
        "memory exhausted! (strdup),can't print,print error",
    };
    EXPECT_EQ(seen, expected);
}

}  // namespace
