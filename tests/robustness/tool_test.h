// Tests that run the real executable, each in a folder of its own.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <vector>

struct tool_result {
    int status;  // the exit status; 128 and more for a signal
    std::string listing;
    std::string messages;
};

class tool_test : public testing::Test {
protected:
    void SetUp() override;     // stands in a new, empty folder
    void TearDown() override;  // removes it

    // Runs the tool under a stack of 8 MB. `prepare` is called in the child just before. A run that
    // takes longer than two minutes counts as hung and is stopped.
    static tool_result run_tool(std::vector<std::string> arguments, const std::function<void()>& prepare = {});

private:
    std::filesystem::path home_;
};

std::string read_file(const std::filesystem::path& path);
void write_file(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);
