// A quick look for what makes the module leave text out.
#pragma once

#include <string_view>

namespace host::outline {

// Whether the module surely reads all of a script or page. False says nothing: what is to be known
// of such a text takes its cleaned form. A few times quicker than cleaning.
bool isSurelyReadWhole(std::string_view source);

}  // namespace host::outline
