// What unit tests of the passes share.
#pragma once

#include <functional>
#include <string>

#include "model/conv.h"

// Loads a script's bytes.
void set_script(conv& script, const std::string& bytes);

// The messages that are written while `act` runs. The source line that one is stamped with is
// replaced by "*": "ERROR(*): ...".
std::string messages_of(const std::function<void()>& act);
