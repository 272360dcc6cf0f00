// The module's own text. A file over which a worker was lost gets an error answer of the module's
// kind. One that failed without an answer, such as a FIFO that was skipped, has none here either.

#include <array>
#include <string_view>

#include "format_functions.h"

namespace host {
namespace {

struct Escape {
  char byte;
  std::string_view text;
};

constexpr std::array kEscapes = {Escape{'"', "\\\""}, Escape{'\'', "\\'"}, Escape{'\\', "\\\\"},
                                 Escape{'\n', "\\n"}, Escape{'\r', "\\r"}, Escape{'\t', "\\t"}};

void appendEscaped(std::string& out, std::string_view text) {
  for (const char byte : text) {
    const auto* row = kEscapes.begin();
    while (row != kEscapes.end() && row->byte != byte) ++row;
    if (row == kEscapes.end()) {
      out += byte;
    } else {
      out += row->text;
    }
  }
}

}  // namespace

std::string writeRawFile(const FileReport& report, const FormatSettings& /*settings*/,
                         std::string& out) {
  const bool isLost =
      report.status != FileStatus::kAnswered && report.status != FileStatus::kFailed;
  if (!isLost || !report.answer.empty()) {
    out += report.answer;
  } else {
    out += "[{\"error\": \"";
    appendEscaped(out, report.message);
    out += "\"}]";
  }
  return {};
}

}  // namespace host
