// What the tags of a record say of its place in the file.
#pragma once

#include <string>
#include <string_view>

#include "records/record_reader.h"

namespace host::outline {

bool hasTag(const Record& record, std::string_view tag);

// Whether the record stands for the file, its scope or its defines, and for no place in it.
bool wrapsFile(const Record& record);

// How the module read a file, which only its records know.
enum class Route { kScript, kPage, kOther };

// The route of the answer's file, and its path.
Route routeOf(std::string_view answer, std::string& path);

}  // namespace host::outline
