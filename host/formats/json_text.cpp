// The strings are RapidJSON's: over the contents of real records it wrote 1490 MB of text a second
// where nlohmann's serializer wrote 300.
#include "formats/json_text.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "system/utf8.h"

namespace host {
namespace {

// The writer reserves six bytes for each and counts in 32 bits, so long texts go piece by piece.
constexpr std::size_t kPieceBytes = std::size_t{64} * 1024;

constexpr std::string_view kBase64Digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

// Looks at all bytes, since a loop that ends early is not made one over sixteen bytes at a time.
bool isPlainJson(std::string_view text) {
  unsigned char found = 0;
  for (const char byte : text) {
    found |= static_cast<unsigned char>(byte < ' ' || byte > '~' || byte == '"' || byte == '\\');
  }
  return found == 0;
}

void appendJsonString(std::string& out, std::string_view text) {
  thread_local rapidjson::StringBuffer buffer;
  out += '"';
  for (std::size_t at = 0; at < text.size(); at += kPieceBytes) {
    const std::string_view piece = text.substr(at, kPieceBytes);
    buffer.Clear();
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.String(piece.data(), static_cast<rapidjson::SizeType>(piece.size()));
    out.append(buffer.GetString() + 1, buffer.GetSize() - 2);  // without its quotes
  }
  out += '"';
}

bool appendJsonText(std::string& out, std::string_view text) {
  if (isPlainJson(text)) {
    out.append("\"").append(text).append("\"");
    return true;
  }
  const bool isExact = isUtf8(text);
  if (isExact) {
    appendJsonString(out, text);
  } else {
    appendJsonString(out, withReplacements(text));
  }
  return isExact;
}

void appendJsonMember(std::string& out, std::string_view key, std::string_view text) {
  out.append("\"").append(key).append("\":");
  if (appendJsonText(out, text)) return;
  out.append(",\"").append(key).append("Bytes\":\"");
  appendBase64(out, text);
  out += '"';
}

void appendBase64(std::string& out, std::string_view bytes) {
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::string_view group = bytes.substr(at, 3);
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 3; ++i) {
      bits = bits << 8U | (i < group.size() ? static_cast<unsigned char>(group[i]) : 0U);
    }
    for (std::size_t i = 0; i < 4; ++i) {
      out += i <= group.size() ? kBase64Digits[bits >> (18 - 6 * i) & 0x3fU] : '=';
    }
  }
}

bool decodeBase64(std::string_view text, std::string& bytes) {
  bytes.clear();
  if (text.size() % 4 != 0) return false;
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  text.remove_suffix(padding);
  std::uint32_t bits = 0;
  unsigned bitCount = 0;  // that wait in bits for the rest of their byte
  for (const char digit : text) {
    const std::size_t value = kBase64Digits.find(digit);
    if (value == std::string_view::npos) return false;
    bits = bits << 6U | static_cast<std::uint32_t>(value);
    bitCount += 6;
    if (bitCount >= 8) {
      bitCount -= 8;
      bytes += static_cast<char>(bits >> bitCount & 0xffU);
    }
  }
  return true;
}

}  // namespace host
