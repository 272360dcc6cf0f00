// The string functions that every decision of the system rests on. Several do not do what their
// names promise; all of that is required, since the detectors were tuned against them as they are.
//
// Text is a string of bytes: nothing here decodes it. In two-string functions the first argument
// is searched and the second is sought. Absence is told by the result; nothing here throws but for
// memory.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/export.h"
#include "text/byte_set.h"
#include "text/needle.h"

// True when both bytes are a space (0x20). Other white space does not count.
QUORL_API bool BothAreSpaces(char a, char b);

// Replaces each occurrence of from in text by to, from left to right; what was put in is not
// searched again. An empty from changes nothing.
QUORL_API void replaceAll(std::string& text, const std::string& from, const std::string& to);

// Copies of the text without the leading, the trailing, or both runs of " \n\r\t\f\v".
QUORL_API std::string ltrim(const std::string& text);
QUORL_API std::string rtrim(const std::string& text);
QUORL_API std::string trim(const std::string& text);

// Each run of " \n\r\t" becomes one space, at the ends too.
QUORL_API std::string ConvertWhiteSpacesToSingleSpace(std::string text);

// trim of ConvertWhiteSpacesToSingleSpace: a form feed inside the text stays.
QUORL_API std::string TrimAndReduce(std::string& text);

// The longest prefix of letters, digits, "_" and "#". No white space is skipped first.
QUORL_API std::string FirstWord(const std::string& text);
QUORL_API std::string FirstWord(std::string& text);

// All but the last word: what stands before the last space, or the whole text without one.
QUORL_API std::string LastWord(std::string& text);

// Cuts text at its last ":" and the byte before it, keeps what follows the last space unless that
// space is the last byte, and returns the text so changed.
QUORL_API std::string LastWordNoDots(std::string& text);

// True when the needle occurs anywhere; an empty one always does.
QUORL_API bool Contains(std::string& haystack, std::string needle);

// As Contains, without any word boundary; kept apart because callers name the intent.
QUORL_API bool ContainsWord(std::string& haystack, std::string needle);

// True when a one-byte needle stands outside double quotes and outside all (), {} and <>.
// required: a longer needle never matches.
QUORL_API bool OutsideStringMatch(std::string haystack, std::string needle);

// Byte offset (from 0) of the first needle, -1 if absent; an empty needle is at 0. Callers test
// for 0, "the text begins with it", never for -1.
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

// TrimAndReduce without a copy where none is needed: the result is a slice of text if nothing
// inside has to be collapsed, else a slice of scratch, whose former content is lost.
std::string_view trimAndReduceView(std::string_view text, std::string& scratch);

// Whether the word equals one of the words.
inline bool isOneOf(std::string_view word, const auto& words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

bool matchesOutsideStrings(std::string_view haystack, std::string_view needle);

// Replaces as replaceAll does, in time linear in the text.
void replaceEach(std::string& text, std::string_view from, std::string_view to);

}  // namespace text
