// What the tags of a record say of its place in the file.
#pragma once

#include <string>
#include <string_view>

#include "records/record_reader.h"

namespace host::outline {

bool hasTag(const Record& record, std::string_view tag);

// Whether the record stands for the file, its scope or its defines, and for no place in it.
bool wrapsFile(const Record& record);

// How the module read a file, of which only its records are sure.
enum class Route { kScript, kPage, kOther };

// The route that the module takes for a file of this name, as far as is known.
Route routeOfName(std::string_view path);

// The route of the answer's file, and its path.
Route routeOf(std::string_view answer, std::string& path);

}  // namespace host::outline
