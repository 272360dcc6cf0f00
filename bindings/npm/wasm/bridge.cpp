// What JavaScript calls. A text is passed in a buffer that one call sizes and JavaScript fills; an
// answer is read at the address that a call returns, until the next call.

#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "formats/formatters.h"
#include "memory_file.h"
#include "outline/omissions.h"
#include "plugin/plugin_api.h"

#define EXPORT extern "C" __attribute__((used, visibility("default")))

namespace {

std::string name;
std::string defines;
std::string columns;
std::size_t answerBytes = 0;

// The address of the text's bytes, or null without the memory for them.
char* sized(std::string& text, std::size_t bytes) {
  try {
    text.resize(bytes);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  return text.data();
}

const char* parse() {
  const char* const answer = ParseJS(name.c_str(), defines.empty() ? nullptr : defines.c_str());
  answerBytes = answer == nullptr ? 0 : std::string_view(answer).size();
  return answer;
}

}  // namespace

EXPORT char* nameBuffer(std::size_t bytes) { return sized(name, bytes); }
EXPORT char* definesBuffer(std::size_t bytes) { return sized(defines, bytes); }
EXPORT char* sourceBuffer(std::size_t bytes) { return sized(memoryFile(), bytes); }

// The records or an error answer; null without memory.
EXPORT const char* records() { return parse(); }

// A line of the format columns or, if there are no records, the error answer; null without memory.
EXPORT const char* outline() {
  const char* const answer = parse();
  if (answer == nullptr) return nullptr;
  const std::string_view text(answer, answerBytes);
  if (!text.starts_with("[\n")) return answer;
  try {
    const std::vector<host::outline::Omission> omitted =
        host::outline::findOmissions(memoryFile(), text);
    columns.clear();
    host::writeColumnsFile({.path = name,
                            .answer = text,
                            .source = memoryFile(),
                            .omitted = &omitted,
                            .sourceBytes = memoryFile().size()},
                           {}, columns);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  answerBytes = columns.size();
  return columns.data();
}

// Of the latest answer.
EXPORT std::size_t answerSize() { return answerBytes; }
