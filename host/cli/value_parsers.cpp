#include "cli/value_parsers.h"

#include <charconv>
#include <cstddef>
#include <system_error>

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
  constexpr std::string_view kUnits = "KMG";
  const std::size_t unit = text.empty() ? kUnits.npos : kUnits.find(text.back());
  const unsigned shift = unit == kUnits.npos ? 0 : static_cast<unsigned>(unit + 1) * 10;
  if (shift != 0) text.remove_suffix(1);
  std::uint64_t number = 0;
  if (!parseDigits(text, number) || number > (UINT64_MAX >> shift)) return std::nullopt;
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
