// The files of an index for a page.
#pragma once

#include <string>

#include "view/page_data.h"

namespace host::view {

// Adds what the index holds, in the order of paths. Sources are those on disk that have not
// changed. Throws Failure for what is no index.
void addIndex(const std::string& path, PageData& page);

}  // namespace host::view
