// Detects branches and loops by a statement's first word.
#pragma once

#include <string>

#include "base/export.h"
#include "detect/statement.h"

// Returns true for if, else, switch, try, catch, finally, case, default.
QUORL_API bool DetectJSLogic(std::string text);

// Returns true for while, for, do.
QUORL_API bool DetectJSLoop(std::string text);

namespace detect {

bool isLogic(const Statement& statement);
bool isLoop(const Statement& statement);

}  // namespace detect
