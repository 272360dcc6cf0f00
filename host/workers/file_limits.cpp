#include "workers/file_limits.h"

#include <array>
#include <utility>

namespace host {

std::string sizeText(std::uint64_t bytes) {
  constexpr std::array<std::pair<unsigned, char>, 3> kUnits = {{{30, 'G'}, {20, 'M'}, {10, 'K'}}};
  for (const auto& [shift, unit] : kUnits) {
    const std::uint64_t count = bytes >> shift;
    if (count != 0 && count << shift == bytes) return std::to_string(count) + unit;
  }
  return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
}

std::string timeText(std::chrono::microseconds time) {
  constexpr std::size_t kFractionDigits = 6;
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
  std::string fraction = std::to_string((time - seconds).count());
  fraction.insert(0, kFractionDigits - fraction.size(), '0');
  fraction.erase(fraction.find_last_not_of('0') + 1);
  return std::to_string(seconds.count()) + (fraction.empty() ? "" : "." + fraction) + " s";
}

}  // namespace host
