#include "lsp/json.h"

#include "system/utf8.h"

namespace host::lsp {
namespace {

// Iterative: a message of ten million brackets is no reason to end.
constexpr unsigned kParseFlags = rapidjson::kParseIterativeFlag;

// The value of four hexadecimal digits, or -1.
int hexValue(std::string_view digits) {
  if (digits.size() < 4) return -1;
  int value = 0;
  for (const char digit : digits.substr(0, 4)) {
    value *= 16;
    if (digit >= '0' && digit <= '9') {
      value += digit - '0';
    } else if (digit >= 'a' && digit <= 'f') {
      value += digit - 'a' + 10;
    } else if (digit >= 'A' && digit <= 'F') {
      value += digit - 'A' + 10;
    } else {
      return -1;
    }
  }
  return value;
}

bool isHigh(int unit) { return unit >= 0xd800 && unit <= 0xdbff; }
bool isLow(int unit) { return unit >= 0xdc00 && unit <= 0xdfff; }

// The text with \ufffd for each escaped surrogate that is not part of a pair.
std::string withoutLoneSurrogates(std::string_view text) {
  constexpr std::size_t kEscapeBytes = 6;
  std::string result;
  result.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    if (text[at] != '\\' || !text.substr(at + 1).starts_with('u')) {
      const std::size_t bytes = text[at] == '\\' ? 2 : 1;
      result.append(text.substr(at, bytes));
      at += bytes;
      continue;
    }
    const int unit = hexValue(text.substr(at + 2));
    const std::string_view behind = text.substr(std::min(at + kEscapeBytes, text.size()));
    if (isHigh(unit) && behind.starts_with("\\u") && isLow(hexValue(behind.substr(2)))) {
      result.append(text.substr(at, 2 * kEscapeBytes));
      at += 2 * kEscapeBytes;
    } else {
      result.append(isHigh(unit) || isLow(unit) ? "\\ufffd" : text.substr(at, kEscapeBytes));
      at += kEscapeBytes;
    }
  }
  return result;
}

}  // namespace

bool parseJson(std::string_view text, rapidjson::Document& document) {
  document.Parse<kParseFlags>(text.data(), text.size());
  if (document.GetParseError() == rapidjson::kParseErrorStringUnicodeSurrogateInvalid) {
    const std::string repaired = withoutLoneSurrogates(text);
    document.Parse<kParseFlags>(repaired.data(), repaired.size());
  }
  return !document.HasParseError();
}

const Json* find(const Json& value, std::initializer_list<const char*> path) {
  const Json* found = &value;
  for (const char* const name : path) {
    if (!found->IsObject()) return nullptr;
    const auto member = found->FindMember(name);
    if (member == found->MemberEnd()) return nullptr;
    found = &member->value;
  }
  return found;
}

std::optional<std::string_view> findText(const Json& value,
                                         std::initializer_list<const char*> path) {
  const Json* const found = find(value, path);
  if (found == nullptr || !found->IsString()) return std::nullopt;
  return std::string_view(found->GetString(), found->GetStringLength());
}

std::optional<std::uint32_t> findNumber(const Json& value,
                                        std::initializer_list<const char*> path) {
  const Json* const found = find(value, path);
  if (found == nullptr || !found->IsUint()) return std::nullopt;
  return found->GetUint();
}

bool isTrue(const Json& value, std::initializer_list<const char*> path) {
  const Json* const found = find(value, path);
  return found != nullptr && found->IsTrue();
}

const Json* findArray(const Json& value, std::initializer_list<const char*> path) {
  const Json* const found = find(value, path);
  return found != nullptr && found->IsArray() ? found : nullptr;
}

std::string jsonText(const Json& value) {
  rapidjson::StringBuffer buffer;
  JsonWriter writer(buffer);
  value.Accept(writer);
  return {buffer.GetString(), buffer.GetSize()};
}

void writeText(JsonWriter& out, std::string_view text) {
  const auto write = [&out](std::string_view valid) {
    out.String(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
  };
  if (isUtf8(text)) {
    write(text);
  } else {
    write(withReplacements(text));
  }
}

void writeKey(JsonWriter& out, std::string_view key) { out.copyKey(key); }

void writeMember(JsonWriter& out, std::string_view key, std::string_view text) {
  writeKey(out, key);
  writeText(out, text);
}

void writeMember(JsonWriter& out, std::string_view key, std::int64_t number) {
  writeKey(out, key);
  out.Int64(number);
}

}  // namespace host::lsp
