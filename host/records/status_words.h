// What the formats call the statuses of a file.
#pragma once

#include <string_view>

#include "records/file_report.h"

namespace host {

inline constexpr std::string_view kAnsweredWord = "answered";
inline constexpr std::string_view kEmptyWord = "empty";
// The word for an answer that leaves the record format, as only another module's may.
inline constexpr std::string_view kUnreadableWord = "unreadable";

std::string_view statusWord(FileStatus status);

}  // namespace host
