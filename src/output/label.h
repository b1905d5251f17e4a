// The labels of a listing. Each carries the npc id of the script.
#pragma once

#include "model/conv.h"
#include "output/put.h"

// "L" npc id "_" offset: a place in the script.
inline constexpr std::size_t label_size = 14;
inline char* put_label(char* to, const conv& script, std::uint32_t offset) {
    to = put_hex<4>(put_text(to, "L"), script.npc_id);
    return put_hex<8>(put_text(to, "_"), offset);
}

// "T" npc id "_" number, which has four digits at least: a text.
inline constexpr std::size_t max_text_label_size = 6 + max_decimal_size;
inline char* put_text_label(char* to, const conv& script, std::uint32_t number) {
    to = put_text(put_hex<4>(put_text(to, "T"), script.npc_id), "_");
    for (std::uint32_t power = 1000; power > 1 && number < power; power /= 10) *to++ = '0';
    return put_decimal(to, number);
}
