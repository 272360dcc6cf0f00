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
using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

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

void writeKey(JsonWriter& out, std::string_view key);
void writeMember(JsonWriter& out, std::string_view key, std::string_view text);
void writeMember(JsonWriter& out, std::string_view key, std::int64_t number);

}  // namespace host::lsp
