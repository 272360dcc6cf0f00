// The module's own text. A file over which a worker was lost gets an error answer of the module's
// kind. One that failed without an answer, such as a FIFO that was skipped, has none here either.

#include <string_view>

#include "formats/formatters.h"
#include "records/error_answer.h"

namespace host {
std::string writeRawFile(const FileReport& report, const FormatSettings& /*settings*/,
                         std::string& out) {
  const bool isLost = report.status != FileStatus::kAnswered &&
                      report.status != FileStatus::kEmpty && report.status != FileStatus::kFailed;
  if (!isLost || !report.answer.empty()) {
    out += report.answer;
  } else {
    out += errorAnswer(report.message);
  }
  return {};
}

}  // namespace host
