// The formats of the output.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "outline/item.h"
#include "records/file_report.h"

namespace host {

struct FormatSettings {
  std::uint64_t fileCount = 0;  // all files of the run, for a header
  bool color = false;
  bool escapeControlBytes = false;                 // the output is a terminal
  std::size_t width = 0;                           // in columns; 0 for no limit
  std::optional<std::size_t> depth = {};           // the lowest level that is asked for
  std::vector<std::string> onlyLabels = {};        // the labels that are; empty for all
  std::optional<outline::KindSet> onlyKinds = {};  // the same of what items are
  bool ranges = false;                             // of records in the source
  std::string tagsFolder = {};  // an absolute path: the names in tags are relative to it
};

// What --only selects.
enum class Selection { kNothing, kLabels, kKinds };

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
  Selection selection;     // nothing where file writes the answer itself, whatever the settings say
  bool isJson = false;     // has times, and says what is left out
  bool hasRanges = false;  // of records, with --ranges
  bool hasLevels = false;  // --depth selects the top ones
  bool needsSource = false;  // besides the answer
  bool isSorted = false;     // the lines of all files, by their bytes

  bool isAnswer() const { return selection == Selection::kNothing; }
};

// The format that is called that, or null.
const Format* findFormat(std::string_view name);

// The names of all formats, and of those that a property holds for.
std::vector<std::string_view> formatNames();
std::vector<std::string_view> formatNames(bool (*isWanted)(const Format& format));

}  // namespace host
