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

std::string starred(const std::string& messages) {
    static const std::regex number(R"(((?:^|\n)(?:ERROR|WARNING|INFORMATION|DEBUG)\()\d+(\): ))");
    return std::regex_replace(messages, number, "$1*$2");
}

std::string messages_of(const std::function<void()>& act) {
    array<char> collected;
    diagnostics.open(collected);
    act();
    diagnostics.flush();
    return starred({collected.begin(), collected.end()});
}
