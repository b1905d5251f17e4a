// Files that fail: a clear message, status 1, and no file harmed.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <map>

#include "tool_test.h"

namespace {

namespace fs = std::filesystem;
using words = std::vector<std::string>;

constexpr std::uint8_t script_bytes[] = {0xF2, 'H', 'i', 0xB6};
constexpr std::uint8_t broken_script_bytes[] = {0xA7};

struct files_test : tool_test {
    void SetUp() override {
        tool_test::SetUp();
        write_file("script", script_bytes);
        write_file("broken", broken_script_bytes);
        write_file("empty", {});
        write_file("old", script_bytes);
        write_file("sealed", script_bytes);
        fs::create_directory("folder");
        fs::create_directory("sealed-folder");
        fs::create_symlink("script", "symbolic");
        fs::create_hard_link("script", "hard");
        ASSERT_EQ(mkfifo("pipe", 0600), 0);
        write_file("huge", {});
        fs::resize_file("huge", std::uintmax_t{1} << 31);
        fs::permissions("sealed", fs::perms::none);
        fs::permissions("sealed-folder", fs::perms::owner_read | fs::perms::owner_exec);
    }

    // Everything in the folder but "errors", where "-E" writes.
    static std::map<std::string, std::string> snapshot() {
        std::map<std::string, std::string> files;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(".")) {
            const bool is_small = entry.is_regular_file() && entry.file_size() < 1000;
            files[entry.path()] = is_small ? read_file(entry.path()) : "";
        }
        files.erase("./errors");
        return files;
    }

    static void expect_failure(const words& arguments, const std::string& message,
                               const std::function<void()>& prepare = {}) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const auto before = snapshot();
        const tool_result result = run_tool(arguments, prepare);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.listing, "");
        EXPECT_NE((result.messages + read_file("errors")).find(message + "\n"), std::string::npos) << result.messages;
        EXPECT_EQ(snapshot(), before);
        fs::remove("errors");
    }
};

void open_as(const char* name, int descriptor) { dup2(open(name, O_WRONLY), descriptor); }

void write_to_closed_pipe() {
    int ends[2];
    std::signal(SIGPIPE, SIG_IGN);
    if (pipe(ends) == 0 && close(ends[0]) == 0) dup2(ends[1], 1);
}

TEST_F(files_test, scripts_that_cannot_be_read) {
    for (const char* name : {"missing", "folder", "empty", "pipe", "huge", "/dev/zero", "/dev/null", "sealed"}) {
        if (std::string(name) == "sealed" && geteuid() == 0) continue;
        expect_failure({name}, "ERROR: read error '" + std::string(name) + "'");
    }
}

TEST_F(files_test, outputs_that_cannot_be_opened) {
    for (const char* option : {"-o", "-t", "-E"}) {
        for (const char* name : {"missing/new", "folder", "", "sealed-folder/new"}) {
            if (name[0] == 's' && geteuid() == 0) continue;
            expect_failure({option, name, "script"}, "ERROR: can't open file '" + std::string(name) + "'");
        }
    }
}

TEST_F(files_test, outputs_that_cannot_be_written) {
    const std::string message = "ERROR: can't write file '/dev/full'";
    expect_failure({"-o", "/dev/full", "script"}, message);
    expect_failure({"-o", "/dev/null", "-t", "/dev/full", "script"}, message);
    expect_failure({"-o", "/dev/null", "-E", "/dev/full", "script"}, message);
    const std::string no_listing = "ERROR: can't write file '(standard output)'";
    expect_failure({"script"}, no_listing, [] { open_as("/dev/full", 1); });
    expect_failure({"script"}, no_listing, [] { close(1); });
    expect_failure({"script"}, no_listing, write_to_closed_pipe);
}

TEST_F(files_test, outputs_that_are_the_script) {
    for (const char* option : {"-o", "-t", "-E"}) {
        for (const char* name : {"script", "folder/../script", "symbolic", "hard"}) {
            const std::string message = "ERROR: can't open file '" + std::string(name) + "'";
            expect_failure({option, name, "script"}, message);
            expect_failure({option, name, "symbolic"}, message);
        }
    }
}

TEST_F(files_test, outputs_that_are_each_other) {
    for (const char* name : {"old", "new"}) {
        const std::string message = "ERROR: can't open file '" + std::string(name) + "'";
        expect_failure({"-o", name, "-t", name, "script"}, message);
    }
    expect_failure({"-o", "errors", "-E", "errors", "script"}, "ERROR: can't open file 'errors'");
    expect_failure({"-o", "/dev/null", "-t", "errors", "-E", "errors", "script"}, "ERROR: can't open file 'errors'");
}

TEST_F(files_test, outputs_of_a_failed_analysis) {
    expect_failure({"-o", "old", "-t", "new", "broken"}, "ERROR: parse code error: phase 2");
}

TEST_F(files_test, one_device_for_everything) {
    const tool_result result = run_tool({"-d", "-o", "/dev/null", "-t", "/dev/null", "-E", "/dev/null", "script"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.listing + result.messages, "");
}

}  // namespace
