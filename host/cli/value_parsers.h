// The numbers that options take, as people write them.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>

namespace host {

// Decimal digits and nothing else. Gives false for another text and for what is too large.
bool parseNumber(std::string_view text, unsigned& number);

// Bytes: digits, with K, M or G behind them for 1024 bytes, 1024 times that, and so on.
std::optional<std::uint64_t> parseSize(std::string_view text);

// Seconds: digits, with up to six behind a point; a thousand million at most.
std::optional<std::chrono::microseconds> parseSeconds(std::string_view text);

}  // namespace host
