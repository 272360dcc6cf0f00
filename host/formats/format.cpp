#include "formats/format.h"

#include <algorithm>
#include <array>

#include "formats/formatters.h"

namespace host {
namespace {

void writeNothing(const FormatSettings& /*settings*/, std::string& /*out*/) {}

constexpr std::array kFormats = {
    Format{"raw", writeNothing, writeRawFile, writeNothing, "", true},
    Format{"json", beginJson, writeJsonFile, endJson, ",\n", false},
    Format{"ndjson", beginNdjson, writeNdjsonFile, writeNothing, "", false},
    Format{"tree", writeNothing, writeTreeFile, writeNothing, "\n", false},
};

}  // namespace

const Format* findFormat(std::string_view name) {
  const auto* const format = std::find_if(kFormats.begin(), kFormats.end(),
                                          [name](const Format& row) { return row.name == name; });
  return format == kFormats.end() ? nullptr : format;
}

}  // namespace host
