// list_lines EXAMPLE.scr...: lists scripts made to order and the examples, cut and changed at every byte,
// under changing options, and prints each different line once: behind it, after a line feed, what
// was left out, one bit for each of decl, eval and int32.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <unordered_set>

#include "base/diagnostics.h"
#include "driver/passes.h"
#include "shapes.h"

namespace {

std::unordered_set<std::string> seen;

void print_new_lines(std::string_view listing, unsigned left_out) {
    for (std::size_t end; (end = listing.find('\n')) != std::string_view::npos; listing.remove_prefix(end + 1)) {
        const auto line = std::string(listing.substr(0, end)) + "\n" + std::to_string(left_out);
        if (seen.insert(line).second) std::puts(line.c_str());
    }
}

template <class bytes>
void list(const bytes& script_bytes) {
    static unsigned turn = 0;
    static writer listing_out;
    static writer text_out;
    const unsigned bits = turn++ * 37;
    options.game_mode = static_cast<game_mode_id>(turn % 3);
    select_game_mode(options.game_mode);
    options.omit_decl = (bits & 1) != 0;
    options.omit_eval = (bits & 2) != 0;
    options.omit_int32 = (bits & 4) != 0;
    options.verbosity_parenthesis = (bits & 8) != 0;
    options.text_label = (bits & 16) != 0;
    array<std::uint8_t> buffer;
    array<char> listing;
    array<char> text_table;
    conv script;
    if (!buffer.assign_unset(script_bytes.size())) return;
    std::copy(script_bytes.begin(), script_bytes.end(), buffer.begin());
    conv_init(script);
    conv_set_buffer(script, std::move(buffer));
    script.dump = (bits & 32) != 0;
    listing_out.open(listing);
    text_out.open(text_table);
    if (failed(analyse(script)) || failed(print_script(script, {&listing_out, ""}, {&text_out, ""}))) return;
    print_new_lines({listing.data(), listing.size()}, bits & 7);
}

}  // namespace

int main(int argc, char** argv) {
    array<char> messages;
    diagnostics.open(messages);
    for (const script_shape& shape : script_shapes()) {
        for (std::uint64_t seed = 0; seed < 20; ++seed) list(shape.make(4 << 10, seed));
    }
    for (int i = 1; i < argc; ++i) {
        std::ifstream file(argv[i], std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        for (std::size_t at = 0; at < bytes.size(); ++at) {
            list(bytes.substr(0, at + 1));
            for (const int changed : {0x00, 0xFF, 0xA7, 0xB0, 0xD2, 0xEE, 0x7B, 0x82}) {
                list(std::string(bytes).replace(at, 1, 1, static_cast<char>(changed)));
            }
        }
    }
    return 0;
}
