// Numbers as people write them on a command line.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>

namespace host {

// Decimal digits and nothing else. False for another text and for a number that is too large.
bool parseNumber(std::string_view text, unsigned& number);

// Bytes: digits, and behind them nothing or a unit: K, KB or KiB for 1024 bytes, M, G or T for 1024
// times that each, in either case.
std::optional<std::uint64_t> parseSize(std::string_view text);

// Seconds: digits, with up to six behind a point; a thousand million at most.
std::optional<std::chrono::microseconds> parseSeconds(std::string_view text);

}  // namespace host
