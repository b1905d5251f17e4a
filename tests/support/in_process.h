// What tests of the passes and of their messages share.
#pragma once

#include <functional>
#include <string>

#include "model/conv.h"

// Loads a script's bytes.
void set_script(conv& script, const std::string& bytes);

// Replaces the source line that a message is stamped with by "*": "ERROR(*): ...".
std::string starred(const std::string& messages);

// The messages that are written while `act` runs, starred.
std::string messages_of(const std::function<void()>& act);
