#include "support/in_process.h"

#include <regex>

#include "base/diagnostics.h"

void set_script(conv& script, const std::string& bytes) {
    array<std::uint8_t> buffer;
    if (!buffer.assign_unset(bytes.size())) throw std::bad_alloc();
    std::copy(bytes.begin(), bytes.end(), buffer.begin());
    conv_init(script);
    conv_set_buffer(script, std::move(buffer));
}

std::string messages_of(const std::function<void()>& act) {
    array<char> collected;
    diagnostics.open(collected);
    act();
    diagnostics.flush();
    static const std::regex number(R"(((?:^|\n)(?:ERROR|WARNING|INFORMATION|DEBUG)\()\d+(\): ))");
    return std::regex_replace(std::string(collected.begin(), collected.end()), number, "$1*$2");
}
