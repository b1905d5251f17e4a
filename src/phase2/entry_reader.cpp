#include "phase2/entry_reader.h"

namespace {

void stand_on(entry_reader& entry, std::optional<std::int32_t> offset) {
    const conv& script = entry.script;
    entry.at_end = !offset;
    entry.offset = offset.value_or(script.data_size);
    entry.type = offset ? *offset_table_find(script.code_offset_table, *offset) : NONE;
    entry.code = conv_byte(script, entry.offset);
}

}  // namespace

entry_reader read_first_entry(const conv& script) {
    entry_reader entry = {script};
    stand_on(entry, offset_table_first(script.code_offset_table));
    return entry;
}

void advance_far(entry_reader& entry) {
    stand_on(entry, offset_table_first_above(entry.script.code_offset_table, entry.offset));
}
