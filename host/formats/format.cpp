#include "formats/format.h"

#include <algorithm>
#include <array>

#include "formats/formatters.h"

namespace host {
namespace {

void writeNothing(const FormatSettings& /*settings*/, std::string& /*out*/) {}

constexpr std::array kFormats = {
    Format{"raw", writeNothing, writeRawFile, writeNothing, "", true, false, false},
    Format{"json", beginJson, writeJsonFile, endJson, ",\n", false, true, true},
    Format{"ndjson", beginNdjson, writeNdjsonFile, writeNothing, "", false, true, true},
    Format{"tree", writeNothing, writeTreeFile, writeNothing, "\n", false, false, false},
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
