#include "cli/value_parsers.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <string>
#include <system_error>

#include "system/ascii.h"

namespace host {
namespace {

template <typename Number>
bool parseDigits(std::string_view text, Number& number) {
  if (text.empty() || text.front() == '-') return false;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

bool parseNumber(std::string_view text, unsigned& number) { return parseDigits(text, number); }

std::optional<std::uint64_t> parseSize(std::string_view text) {
  constexpr std::string_view kUnits = "KMGT";
  const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
  const std::string unit = asciiUpper(std::string(text.substr(digits)));
  unsigned shift = 0;
  if (!unit.empty()) {
    const std::size_t place = kUnits.find(unit.front());
    const std::string_view rest = std::string_view(unit).substr(1);
    if (place == kUnits.npos || !(rest.empty() || rest == "B" || rest == "IB")) return std::nullopt;
    shift = static_cast<unsigned>(place + 1) * 10;
  }
  std::uint64_t number = 0;
  if (!parseDigits(text.substr(0, digits), number) || number > (UINT64_MAX >> shift)) {
    return std::nullopt;
  }
  return number << shift;
}

std::optional<std::chrono::microseconds> parseSeconds(std::string_view text) {
  constexpr std::size_t kDecimals = 6;
  constexpr std::uint64_t kMaxSeconds = 1'000'000'000;
  const std::size_t point = text.find('.');
  std::uint64_t seconds = 0;
  if (!parseDigits(text.substr(0, point), seconds) || seconds > kMaxSeconds) return std::nullopt;
  std::uint64_t fraction = 0;
  if (point != text.npos) {
    const std::string_view digits = text.substr(point + 1);
    if (digits.size() > kDecimals || !parseDigits(digits, fraction)) return std::nullopt;
    for (std::size_t count = digits.size(); count < kDecimals; ++count) fraction *= 10;
  }
  return std::chrono::microseconds(seconds * 1'000'000 + fraction);
}

}  // namespace host
