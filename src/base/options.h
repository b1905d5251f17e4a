// The run options and the few other process-wide values of a run.
#pragma once

#include <cstdint>

enum class game_mode_id : std::uint8_t { kelvorath, brenhollow, quillfen };

// Written while the command line is read, except for the last two fields; read everywhere.
struct run_options {
    game_mode_id game_mode = game_mode_id::kelvorath;
    int verbose_level = 0;  // levels above 2 act as 2
    bool no_int16_to_text = false;
    bool text_label = false;
    bool verbosity_parenthesis = false;
    bool omit_decl = false;
    bool omit_eval = false;
    bool omit_int32 = false;

    bool endif_without_if = false;  // phase 2 met an endif that closes no if
    std::int32_t text_counter = 0;  // texts entered in the text table so far
};

inline run_options options;
