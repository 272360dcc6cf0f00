// JSON as the protocol uses it: looked into without a type for each message, and written directly.
#pragma once

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace host::lsp {

using Json = rapidjson::Value;

// Adds what the library writes byte by byte, and in four times the time: text that is copied as it
// is.
class JsonWriter : public rapidjson::Writer<rapidjson::StringBuffer> {
 public:
  using Writer::Writer;

  // A value of that type, as JSON text.
  void copyValue(std::string_view json, rapidjson::Type type) {
    Prefix(type);
    json.copy(os_->Push(json.size()), json.size());
    EndValue(true);
  }

  // A key in which nothing needs an escape.
  void copyKey(std::string_view key) {
    Prefix(rapidjson::kStringType);
    char* const quoted = os_->Push(key.size() + 2);
    quoted[0] = '"';
    key.copy(quoted + 1, key.size());
    quoted[key.size() + 1] = '"';
  }
};

// Parses a message. Escapes of half a surrogate pair, which editors send for text that has one,
// become U+FFFD: like them it counts one in UTF-16. Returns false for what is not JSON.
bool parseJson(std::string_view text, rapidjson::Document& document);

// What the path of member names leads to, or null.
const Json* find(const Json& value, std::initializer_list<const char*> path);

// The same where it leads to a value of that type.
std::optional<std::string_view> findText(const Json& value,
                                         std::initializer_list<const char*> path);
std::optional<std::uint32_t> findNumber(const Json& value, std::initializer_list<const char*> path);
bool isTrue(const Json& value, std::initializer_list<const char*> path);
const Json* findArray(const Json& value, std::initializer_list<const char*> path);

// The value as JSON text.
std::string jsonText(const Json& value);

// A string. Bytes that are not UTF-8 become U+FFFD.
void writeText(JsonWriter& out, std::string_view text);

// Keys are words of the protocol, without escapes.
void writeKey(JsonWriter& out, std::string_view key);
void writeMember(JsonWriter& out, std::string_view key, std::string_view text);
void writeMember(JsonWriter& out, std::string_view key, std::int64_t number);

}  // namespace host::lsp
