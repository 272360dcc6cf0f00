// What the answer for a file leaves out.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "outline/record_tags.h"

namespace host::outline {

enum class OmissionReason : std::uint8_t {
  kLongLines,    // script lines above 10,000 bytes
  kManyBraces,   // script lines with more than 100 braces of a kind
  kLineLimit,    // script lines behind the 100,000th
  kSizeLimit,    // what is behind the limit of a page (52,428,800 bytes) or other text (10,485,760)
  kOpenComment,  // of a script or page, what is in a comment that has no end
  kStoppedEarly,  // other text behind the last statement that has an end
};

// The word for a reason in outputs: "long-lines", "open-comment", ...
std::string_view reasonWord(OmissionReason reason);

// The reason of that word, if there is one.
std::optional<OmissionReason> reasonCalled(std::string_view word);

struct Omission {
  OmissionReason reason = OmissionReason::kLongLines;
  std::int64_t lines = 0;      // source lines left out
  std::int64_t lineCount = 0;  // of the source
  std::int64_t bytes = 0;      // of the source lines left out, without their ends
  std::int64_t byteCount = 0;  // of the source
  // The first source line left out; for kStoppedEarly the last one that has a record, 0 without.
  std::int64_t line = 0;
};

// Limits count bytes and lines of the cleaned text, the figures those of the source. What the
// module takes for a comment or a string need not be one: it knows no regular expressions and no
// prose.
std::vector<Omission> findOmissions(std::string_view source, std::string_view answer);

// What is left out of a script or a page, which the answer says nothing about.
struct EarlyOmissions {
  Route route = Route::kScript;
  std::vector<Omission> omissions;
};

// The same as far as it is known before there is an answer: by the file's name. Nothing for other
// text.
std::optional<EarlyOmissions> findEarlyOmissions(std::string_view source, std::string_view path);

// As above, with what findEarlyOmissions found: it holds if the answer is on that route.
std::vector<Omission> findOmissions(std::string_view source, std::string_view answer,
                                    std::optional<EarlyOmissions> early);

// Whether the file is other text, which prose often is: an apostrophe hides what is behind it.
bool isOtherText(const std::vector<Omission>& omissions);

// One line for a person, as "1 of 3 lines left out (77,312 of 78,128 bytes): longer than 10,000
// bytes".
std::string describe(const Omission& omission);

// All of them on a line.
std::string describe(const std::vector<Omission>& omissions);

}  // namespace host::outline
