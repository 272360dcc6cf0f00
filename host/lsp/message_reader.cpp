#include "lsp/message_reader.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace host::lsp {
namespace {

constexpr std::string_view kLengthName = "content-length";
constexpr std::size_t kMaxHeaderBytes = 8192;
constexpr std::size_t kMaxBodyBytes = std::size_t{1} << 30U;  // more is a broken length

char lower(char byte) { return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte; }

bool startsWithLengthName(std::string_view text) {
  return text.size() >= kLengthName.size() &&
         std::equal(kLengthName.begin(), kLengthName.end(), text.begin(),
                    [](char name, char byte) { return name == lower(byte); });
}

std::size_t findLengthName(std::string_view text, std::size_t from) {
  while (from < text.size() && !startsWithLengthName(text.substr(from))) ++from;
  return from < text.size() ? from : std::string_view::npos;
}

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r") + 1 - first);
}

// The length that the header's lines give; nothing if one of them is no header line.
std::optional<std::size_t> contentLength(std::string_view header) {
  std::optional<std::size_t> length;
  while (!header.empty()) {
    const std::size_t end = std::min(header.find('\n'), header.size());
    const std::string_view line = header.substr(0, end);
    header.remove_prefix(std::min(end + 1, header.size()));
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) return std::nullopt;
    if (colon != kLengthName.size() || !startsWithLengthName(line)) continue;
    const std::string_view digits = trimmed(line.substr(colon + 1));
    std::size_t value = 0;
    const auto [rest, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc() || rest != digits.data() + digits.size() || value > kMaxBodyBytes) {
      return std::nullopt;
    }
    length = value;
  }
  return length;
}

// The end of the header, behind its blank line, and where its last line ends.
struct HeaderEnd {
  std::size_t lines;
  std::size_t behind;
};

std::optional<HeaderEnd> findHeaderEnd(std::string_view text) {
  for (std::size_t at = text.find('\n'); at != std::string_view::npos; at = text.find('\n', at)) {
    ++at;
    const std::string_view next = text.substr(at, 2);
    if (next.starts_with('\n')) return HeaderEnd{at, at + 1};
    if (next == "\r\n") return HeaderEnd{at, at + 2};
  }
  return std::nullopt;
}

}  // namespace

MessageReader::Result MessageReader::next(std::string_view& body) {
  const std::string_view rest = std::string_view(bytes_).substr(taken_);
  const std::optional<HeaderEnd> end = findHeaderEnd(rest.substr(0, kMaxHeaderBytes));
  if (!end) return rest.size() < kMaxHeaderBytes ? Result::kNone : dropHeader(kMaxHeaderBytes);
  const std::optional<std::size_t> length = contentLength(rest.substr(0, end->lines));
  if (!length) return dropHeader(end->behind);
  if (rest.size() - end->behind < *length) {
    bytes_.reserve(taken_ + end->behind + *length);
    return Result::kNone;
  }
  body = rest.substr(end->behind, *length);
  taken_ += end->behind + *length;
  return Result::kMessage;
}

// Drops a header that ends there, or as much of it as stands before another length.
MessageReader::Result MessageReader::dropHeader(std::size_t end) {
  const std::string_view header = std::string_view(bytes_).substr(taken_, end);
  taken_ += std::min(findLengthName(header, 1), end);
  return Result::kBroken;
}

void MessageReader::compact() {
  bytes_.erase(0, taken_);
  taken_ = 0;
}

std::string frameHeader(std::size_t bodyBytes) {
  return "Content-Length: " + std::to_string(bodyBytes) + "\r\n\r\n";
}

std::string framed(std::string_view body) { return frameHeader(body.size()).append(body); }

}  // namespace host::lsp
