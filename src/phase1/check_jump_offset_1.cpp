#include "phase1/check_jump_offset_1.h"

#include "base/diagnostics.h"

namespace {

result check_target(conv& script, std::int32_t target) {
    DEBUG("check_jump_offset_1(): offset=%08X", target);
    if (offset_table_find(script.code_offset_table, target)) return result::ok;
    const auto previous = offset_table_last_below(script.code_offset_table, target);
    if (!previous) return ERROR("illegal jump offset: offset=%08X", target);
    const code_type type = *offset_table_find(script.code_offset_table, *previous);
    if (type != TEXT || target >= script.data_size) {
        return ERROR("illegal jump offset: offset=%08X, prev=%08X, type=%02X", target, *previous, type);
    }
    DEBUG("split text: offset=%08X, %08X", *previous, target);
    return add_code_offset(script, target, TEXT);
}

}  // namespace

result check_jump_offset_1(conv& script) {
    auto target = offset_table_first(script.jump_offset_table);
    for (; target; target = offset_table_first_above(script.jump_offset_table, *target)) {
        if (failed(check_target(script, *target))) return result::failed;
    }
    return result::ok;
}
