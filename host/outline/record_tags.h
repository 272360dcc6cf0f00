// What the tags of a record say of its place in the file.
#pragma once

#include <string_view>

#include "records/record_reader.h"

namespace host::outline {

bool hasTag(const Record& record, std::string_view tag);

// Whether the record stands for the file, its scope or its defines, and for no place in it.
bool wrapsFile(const Record& record);

}  // namespace host::outline
