#include "outline/script_source.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "outline/limits.h"

namespace host::outline {
namespace {

ScriptDialect dialectOf(std::string_view path) {
  const bool isPlainTypes =
      path.ends_with(".ts") || path.ends_with(".mts") || path.ends_with(".cts");
  return {.mayHoldJsx = !isPlainTypes};
}

std::int32_t maxLinesOf(const LineMap& map) {
  return std::min(map.sourceLine(static_cast<std::size_t>(kMaxScriptLines) - 1), kMaxScriptLines);
}

// Positions in scripts are of 32 bits.
std::string_view readablePart(std::string_view source) {
  return source.substr(0, std::numeric_limits<std::uint32_t>::max());
}

}  // namespace

ScriptSource::ScriptSource(std::string_view source, std::string_view path)
    : ScriptSource(readablePart(source), dialectOf(path)) {}

ScriptSource::ScriptSource(std::string_view source, ScriptDialect dialect)
    : map(cleanedLines(source)), lines(source), items(source, 1, maxLinesOf(map), dialect) {}

}  // namespace host::outline
