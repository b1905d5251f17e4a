// make_script SHAPE SIZE [SEED] > FILE     writes one script; SIZE takes K and M
// make_script --list                       lists the shapes
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "shapes.h"

static bool parse_number(const char* text, bool unit_allowed, std::uint64_t& number) {
    char* end = nullptr;
    number = std::strtoull(text, &end, 10);
    if (end == text || *text == '-') return false;
    if (unit_allowed && (*end == 'K' || *end == 'M')) number <<= *end++ == 'K' ? 10 : 20;
    return *end == '\0';
}

static int list_shapes() {
    for (const script_shape& shape : script_shapes())
        std::printf("%-24s%-8s%s\n", shape.name, shape.options, shape.purpose);
    return 0;
}

int main(int argc, char** argv) {
    if (argc == 2 && std::string_view(argv[1]) == "--list") return list_shapes();

    constexpr std::uint64_t least = 2 << 10;
    constexpr std::uint64_t most = 1 << 30;
    std::uint64_t size = 0;
    std::uint64_t seed = 1;
    const bool understood = (argc == 3 || argc == 4) && parse_number(argv[2], true, size) &&
                            (argc == 3 || parse_number(argv[3], false, seed));
    if (!understood || size < least || size > most) {
        std::fputs(
            "usage: make_script SHAPE SIZE [SEED] > FILE   (SIZE: 2K to 1024M)\n"
            "       make_script --list\n",
            stderr);
        return 1;
    }
    for (const script_shape& shape : script_shapes()) {
        if (std::string_view(argv[1]) != shape.name) continue;
        const script_bytes script = shape.make(size, seed);
        if (std::fwrite(script.data(), 1, script.size(), stdout) == script.size() && std::fflush(stdout) == 0) return 0;
        std::perror("make_script");
        return 1;
    }
    std::fprintf(stderr, "make_script: no shape '%s'; --list shows them\n", argv[1]);
    return 1;
}
