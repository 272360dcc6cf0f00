// The string functions behind every decision of the plug-in. Several do not do what their names
// promise; all of that is required, since the detectors were tuned against them as they are.
//
// Text is a string of bytes: nothing here decodes it. Two-string functions search the first
// argument for the second. They report absence in the result and throw only std::bad_alloc.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/export.h"
#include "text/byte_set.h"
#include "text/needle.h"

// Returns true if both bytes are a space (0x20). Other white space does not count.
QUORL_API bool BothAreSpaces(char a, char b);

// Replaces each occurrence of from in text by to, left to right, without searching the replacement.
// An empty from changes nothing.
QUORL_API void replaceAll(std::string& text, const std::string& from, const std::string& to);

// Return copies of the text without leading, trailing, or both runs of " \n\r\t\f\v".
QUORL_API std::string ltrim(const std::string& text);
QUORL_API std::string rtrim(const std::string& text);
QUORL_API std::string trim(const std::string& text);

// Returns the text with each run of " \n\r\t" as one space, also at the ends.
QUORL_API std::string ConvertWhiteSpacesToSingleSpace(std::string text);

// Returns trim of ConvertWhiteSpacesToSingleSpace: a form feed inside the text stays.
QUORL_API std::string TrimAndReduce(std::string& text);

// Returns the longest prefix of letters, digits, "_" and "#", without skipping white space.
QUORL_API std::string FirstWord(const std::string& text);
QUORL_API std::string FirstWord(std::string& text);

// Returns all but the last word: everything before the last space, or the whole text without one.
QUORL_API std::string LastWord(std::string& text);

// Cuts text at its last ":" and the byte before it, keeps the part after the last space unless that
// space is the last byte, and returns the changed text.
QUORL_API std::string LastWordNoDots(std::string& text);

// Returns true if the needle occurs anywhere; an empty one always does.
QUORL_API bool Contains(std::string& haystack, std::string needle);

// Same as Contains, without any word boundary; separate because callers name the intent.
QUORL_API bool ContainsWord(std::string& haystack, std::string needle);

// Returns true if a one-byte needle occurs outside double quotes and outside all (), {} and <>.
// required: a longer needle never matches.
QUORL_API bool OutsideStringMatch(std::string haystack, std::string needle);

// Returns the byte offset (from 0) of the first needle, -1 if absent; an empty needle is at 0.
// Callers test for 0, "the text begins with it", never for -1.
QUORL_API std::int64_t IndexOf(std::string haystack, std::string needle);

namespace text {

// Slices of the argument.
inline std::string_view ltrimView(std::string_view text) {
  while (!text.empty() && kTrimmed(text.front())) text.remove_prefix(1);
  return text;
}
inline std::string_view rtrimView(std::string_view text) {
  while (!text.empty() && kTrimmed(text.back())) text.remove_suffix(1);
  return text;
}
inline std::string_view trimView(std::string_view text) { return rtrimView(ltrimView(text)); }
std::string_view firstWordView(std::string_view text);
std::string_view lastWordView(std::string_view text);

// TrimAndReduce without a copy unless one is needed: the result is a slice of text if nothing
// inside has to be collapsed, else a slice of scratch, which is overwritten.
std::string_view trimAndReduceView(std::string_view text, std::string& scratch);

// Whether the word equals one of the words.
inline bool isOneOf(std::string_view word, const auto& words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

bool matchesOutsideStrings(std::string_view haystack, std::string_view needle);

// Same as replaceAll, in time linear in the text.
void replaceEach(std::string& text, std::string_view from, std::string_view to);

}  // namespace text
