#include "tool_test.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>

namespace fs = std::filesystem;

std::string read_file(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void write_file(const fs::path& path, std::span<const std::uint8_t> bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

void tool_test::SetUp() {
    std::string name = (fs::temp_directory_path() / "varsul-XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    home_ = name;
    fs::create_directory(home_ / "work");
    fs::current_path(home_ / "work");
}

void tool_test::TearDown() {
    fs::current_path("/");
    fs::remove_all(home_);
}

tool_result tool_test::run_tool(std::vector<std::string> arguments, const std::function<void()>& prepare) {
    arguments.insert(arguments.begin(), VARSUL_TOOL);
    std::vector<char*> argv(arguments.size() + 1);
    std::transform(arguments.begin(), arguments.end(), argv.begin(), [](std::string& each) { return each.data(); });
    const pid_t child = fork();
    if (child == 0) {
        const rlimit stack = {8 << 20, 8 << 20};
        const int mode = O_WRONLY | O_CREAT | O_TRUNC;
        const bool is_ready = dup2(open("../listing", mode, 0600), 1) == 1 &&
                              dup2(open("../messages", mode, 0600), 2) == 2 && setrlimit(RLIMIT_STACK, &stack) == 0;
        alarm(120);
        if (is_ready && prepare) prepare();
        if (is_ready) execv(argv[0], argv.data());
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), read_file("../listing"),
            read_file("../messages")};
}
