// The formats of the output.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "records/file_report.h"

namespace host {

struct FormatSettings {
  std::uint64_t fileCount = 0;  // all files of the run, for a header
  bool color = false;
  bool escapeControlBytes = false;           // the output is a terminal
  std::size_t width = 0;                     // in columns; 0 for no limit
  std::optional<std::size_t> depth = {};     // the lowest level that is asked for
  std::vector<std::string> onlyLabels = {};  // the labels that are; empty for all
};

// Each function appends to out; that for a file gives what is wrong with an answer that leaves the
// record format, or nothing. A file's bytes depend on its report and the settings only, so that
// workers may write files in any order and their texts are joined in input order, with separator
// between each two.
struct Format {
  std::string_view name;
  void (*begin)(const FormatSettings& settings, std::string& out);
  std::string (*file)(const FileReport& report, const FormatSettings& settings, std::string& out);
  void (*end)(const FormatSettings& settings, std::string& out);
  std::string_view separator;
  bool isAnswer;  // what file writes for an answer is that answer, whatever the settings say
  bool hasTimes;  // it tells the time that a file took
  bool tellsOmissions;
};

// The format that is called that, or null.
const Format* findFormat(std::string_view name);

// The names of all formats, and of those that a property holds for.
std::vector<std::string_view> formatNames();
std::vector<std::string_view> formatNames(bool (*isWanted)(const Format& format));

}  // namespace host
