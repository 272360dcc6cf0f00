// Whether a statement opens a branch or a loop: a look at its first word and nothing else.
#pragma once

#include <string>

#include "base/export.h"
#include "detect/statement.h"

// True for if, else, switch, try, catch, finally, case, default.
QUORL_API bool DetectJSLogic(std::string text);

// True for while, for, do.
QUORL_API bool DetectJSLoop(std::string text);

namespace detect {

bool isLogic(const Statement& statement);
bool isLoop(const Statement& statement);

}  // namespace detect
