// How the lines of the ndjson format begin, for those who write them and those who read them again.
// Behind the start of a record's or file's line comes the file's number, then a comma.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace host {

inline constexpr int kSchemaVersion = 1;
inline constexpr std::string_view kToolName = "quorl-js";

inline constexpr std::string_view kHeaderLineStart = "{\"type\":\"header\",";
inline constexpr std::string_view kRecordLineStart = "{\"type\":\"record\",\"file\":";
inline constexpr std::string_view kFileLineStart = "{\"type\":\"file\",\"file\":";

// The line that comes first. version is that of the tool that made the records.
void appendNdjsonHeader(std::string& out, std::string_view version, std::uint64_t fileCount);

}  // namespace host
