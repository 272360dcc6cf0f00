// The module's own text. A file over which a worker was lost gets an error answer of the module's
// kind. One that failed without an answer, such as a FIFO that was skipped, has none here either.

#include <algorithm>
#include <string_view>

#include "formats/formatters.h"
#include "records/record_escapes.h"

namespace host {
namespace {

void appendEscaped(std::string& out, std::string_view text) {
  for (const char byte : text) {
    const auto* const row = std::find_if(kRecordEscapes.begin(), kRecordEscapes.end(),
                                         [byte](const auto& known) { return known.byte == byte; });
    if (row == kRecordEscapes.end()) {
      out += byte;
    } else {
      out += {'\\', row->letter};
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
