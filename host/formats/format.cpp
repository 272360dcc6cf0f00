#include "formats/format.h"

#include <algorithm>
#include <array>

#include "formats/formatters.h"
#include "formats/item_lines.h"

namespace host {
namespace {

void writeNothing(const FormatSettings& /*settings*/, std::string& /*out*/) {}

constexpr std::array kFormats = {
    Format{.name = "raw",
           .begin = writeNothing,
           .file = writeRawFile,
           .end = writeNothing,
           .separator = "",
           .selection = Selection::kNothing},
    Format{.name = "json",
           .begin = beginJson,
           .file = writeJsonFile,
           .end = endJson,
           .separator = ",\n",
           .selection = Selection::kLabels,
           .isJson = true,
           .hasRanges = true,
           .hasLevels = true},
    Format{.name = "ndjson",
           .begin = beginNdjson,
           .file = writeNdjsonFile,
           .end = writeNothing,
           .separator = "",
           .selection = Selection::kLabels,
           .isJson = true,
           .hasRanges = true,
           .hasLevels = true},
    Format{.name = "columns",
           .begin = beginNdjson,
           .file = writeColumnsFile,
           .end = writeNothing,
           .separator = "",
           .selection = Selection::kKinds,
           .isJson = true,
           .needsSource = true},
    Format{.name = "tree",
           .begin = writeNothing,
           .file = writeTreeFile,
           .end = writeNothing,
           .separator = "\n",
           .selection = Selection::kLabels,
           .hasLevels = true},
    Format{.name = "outline",
           .begin = writeNothing,
           .file = writeOutlineFile,
           .end = writeNothing,
           .separator = "\n",
           .selection = Selection::kKinds,
           .hasLevels = true,
           .needsSource = true},
    Format{.name = "ctags",
           .begin = beginCtags,
           .file = writeCtagsFile,
           .end = writeNothing,
           .separator = "",
           .selection = Selection::kKinds,
           .needsSource = true,
           .isSorted = true},
    Format{.name = "etags",
           .begin = writeNothing,
           .file = writeEtagsFile,
           .end = writeNothing,
           .separator = "",
           .selection = Selection::kKinds,
           .needsSource = true},
};

}  // namespace

const Format* findFormat(std::string_view name) {
  const auto* const format = std::find_if(kFormats.begin(), kFormats.end(),
                                          [name](const Format& row) { return row.name == name; });
  return format == kFormats.end() ? nullptr : format;
}

std::vector<std::string_view> formatNames(bool (*isWanted)(const Format& format)) {
  std::vector<std::string_view> names;
  for (const Format& format : kFormats) {
    if (isWanted(format)) names.push_back(format.name);
  }
  return names;
}

std::vector<std::string_view> formatNames() {
  return formatNames([](const Format& /*format*/) { return true; });
}

}  // namespace host
