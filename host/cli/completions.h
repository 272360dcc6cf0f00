// Completion scripts for the shells, made from the table of the options.
#pragma once

#include <string>

namespace host {

std::string bashCompletion();  // to be sourced; bash from 4.0 on
std::string zshCompletion();   // to be found in fpath as _quorl-js
std::string fishCompletion();  // to be found in a completions directory as quorl-js.fish

}  // namespace host
