#include "formats/file_members.h"

#include "formats/json_text.h"
#include "formats/ndjson_lines.h"
#include "formats/omitted_json.h"
#include "records/status_words.h"

namespace host {

void appendHeaderMembers(std::string& out, std::string_view version) {
  out += "\"schema\":";
  appendNumber(out, kSchemaVersion);
  out.append(",\"tool\":\"").append(kToolName).append("\",");
  appendJsonMember(out, "version", version);
}

FileOutcome outcomeOf(const FileReport& report, const std::string& fault) {
  if (!fault.empty()) return {kUnreadableWord, fault};
  return {statusWord(report.status), report.message};
}

void appendFileMembers(std::string& out, const FileReport& report, const FileOutcome& outcome) {
  appendJsonMember(out, "path", report.path);
  out.append(",\"status\":\"").append(outcome.status).append("\",");
  if (outcome.message.empty()) {
    out += "\"message\":null";
  } else {
    appendJsonMember(out, "message", outcome.message);
  }
  out += ",\"sourceBytes\":";
  appendNumber(out, report.sourceBytes);
  out += ",\"microseconds\":";
  if (report.microseconds) {
    appendNumber(out, *report.microseconds);
  } else {
    out += "null";
  }
  out += ",\"omitted\":";
  if (report.omitted == nullptr || report.omitted->empty()) {
    out += "null";
  } else {
    appendOmitted(out, *report.omitted);
  }
}

}  // namespace host
