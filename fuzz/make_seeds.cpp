// make_seeds FOLDER SCRIPT.scr... CASES.case...    writes the fuzz target's seeds: each script, in the
// three game modes, once with dump and text table alone and once with all the other options.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/script_text.h"

namespace {

// The scripts of a file of golden cases: "script:" and the indented lines below it.
std::vector<std::string> read_cases(std::istream& lines) {
    constexpr std::string_view key = "script:";
    std::vector<std::string> scripts;
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with(key)) continue;
        std::string source = line.substr(key.size()) + '\n';
        while (lines.peek() == ' ' && std::getline(lines, line)) source += line + '\n';
        scripts.push_back(script_bytes(source));
    }
    return scripts;
}

}  // namespace

int main(int argc, char** argv) {
    const std::filesystem::path folder = argv[1];
    std::filesystem::create_directories(folder);
    for (const std::filesystem::path path : std::vector<std::string>(argv + 2, argv + argc)) {
        std::ifstream file(path, std::ios::binary);
        std::vector<std::string> scripts;
        if (path.extension() == ".case")
            scripts = read_cases(file);
        else
            scripts.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
        for (std::size_t i = 0; i < scripts.size() * 6; ++i) {
            const int mode = static_cast<int>(i % 3);
            std::ofstream seed(folder / (path.stem().string() + "." + std::to_string(i)), std::ios::binary);
            seed.exceptions(std::ios::failbit | std::ios::badbit);
            seed.put(static_cast<char>(mode + (i % 6 < 3 ? 0x30 : 0xE8))).put(i % 6 < 3 ? 0 : 0x0F);
            seed << scripts[i / 6] << std::flush;
        }
    }
    return 0;
}
