// What the formats call the statuses of a file.
#pragma once

#include <string_view>

#include "file_report.h"

namespace host {

inline constexpr std::string_view kAnsweredWord = "answered";
// An answer that is no record text: the module stops its text at a NUL byte of the source.
inline constexpr std::string_view kUnreadableWord = "unreadable";

std::string_view statusWord(FileStatus status);

}  // namespace host
