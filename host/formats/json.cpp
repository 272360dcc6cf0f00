// Strict JSON: one document, or one object a line.

#include <cstdint>
#include <string_view>
#include <utility>

#include "formats/formatters.h"
#include "formats/json_text.h"
#include "formats/ndjson_lines.h"
#include "formats/record_selection.h"
#include "outline/omissions.h"
#include "records/record_reader.h"
#include "records/status_words.h"

namespace host {
namespace {

void appendHeaderMembers(std::string& out, std::string_view version) {
  out += "\"schema\":";
  appendNumber(out, kSchemaVersion);
  out.append(",\"tool\":\"").append(kToolName).append("\",");
  appendJsonMember(out, "version", version);
}

// What the format says of a file, which is the report's word unless its answer cannot be read.
struct Outcome {
  std::string_view status;
  std::string_view message;
};

void appendOmission(std::string& out, const outline::Omission& omission) {
  out.append("{\"reason\":\"").append(outline::reasonWord(omission.reason)).append("\"");
  const auto append = [&out](std::string_view key, std::int64_t number) {
    out.append(",\"").append(key).append("\":");
    appendNumber(out, number);
  };
  append("line", omission.line);
  append("lines", omission.lines);
  append("lineCount", omission.lineCount);
  append("bytes", omission.bytes);
  append("byteCount", omission.byteCount);
  out += "}";
}

void appendOmitted(std::string& out, const FileReport& report) {
  out += ",\"omitted\":";
  if (report.omitted == nullptr || report.omitted->empty()) {
    out += "null";
    return;
  }
  char before = '[';
  for (const outline::Omission& omission : *report.omitted) {
    out += std::exchange(before, ',');
    appendOmission(out, omission);
  }
  out += "]";
}

void appendFileMembers(std::string& out, const FileReport& report, const Outcome& outcome) {
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
  appendOmitted(out, report);
}

// The filePath member of an answer's records, which is the same in all of them.
class PathMember {
 public:
  const std::string& of(std::string_view path) {
    if (text_.empty() || path != path_) {
      path_ = path;
      text_.clear();
      appendJsonMember(text_, "filePath", path);
    }
    return text_;
  }

 private:
  std::string path_;
  std::string text_;
};

void appendRecordMembers(std::string& out, const Record& record, PathMember& path) {
  out += "\"lineNumber\":";
  appendNumber(out, record.lineNumber);
  out += ",\"lineage\":\"\",\"argumentList\":\"\",\"childNodeIDs\":[";
  std::string_view comma;
  for (const auto child : record.childNodeIds) {
    out += comma;
    appendNumber(out, child);
    comma = ",";
  }
  out += "],\"nodeID\":";
  appendNumber(out, record.nodeId);
  out += ",\"parentID\":";
  appendNumber(out, record.parentId);
  out += ",\"fileID\":0,\"functionID\":";
  appendNumber(out, record.functionId);
  out += ",\"isCalled\":false,\"branchTypeAsString\":";
  appendJsonString(out, record.label);
  out.append(",").append(path.of(record.filePath)).append(",\"tags\":[");
  comma = "";
  for (const auto tag : record.tags) {
    out += comma;
    appendJsonString(out, tag);
    comma = ",";
  }
  out += "],";
  appendJsonMember(out, "contents", record.contents);
  out += ",";
  appendJsonMember(out, "simpleFunctionName", record.simpleFunctionName);
  out += ",\"calloutIDs\":[]}";
}

// Calls write with each record that the settings ask for.
template <typename Write>
void forEachWanted(RecordReader& reader, const FormatSettings& settings, Write write) {
  const bool isAll = !settings.depth && settings.onlyLabels.empty();
  RecordSelection selection(settings);
  while (const Record* const record = reader.next()) {
    if (!isAll) selection.take(*record);
    if (isAll || selection.isWanted()) write(*record);
  }
}

// Appends the file with its records. Returns what is wrong with its answer, or nothing.
std::string appendJsonFile(std::string& out, const FileReport& report,
                           const FormatSettings& settings, const Outcome& outcome) {
  out += "{";
  appendFileMembers(out, report, outcome);
  out += ",\"records\":[";
  std::string fault;
  if (report.status == FileStatus::kAnswered) {
    RecordReader reader(report.answer);
    PathMember path;
    std::string_view separator = "\n{";
    forEachWanted(reader, settings, [&](const Record& record) {
      out += separator;
      appendRecordMembers(out, record, path);
      separator = ",\n{";
    });
    fault = reader.fault();
  }
  out += "]}";
  return fault;
}

}  // namespace

void beginJson(const FormatSettings& /*settings*/, std::string& out) {
  out += "{";
  appendHeaderMembers(out, QUORL_VERSION);
  out += ",\"files\":[\n";
}

std::string writeJsonFile(const FileReport& report, const FormatSettings& settings,
                          std::string& out) {
  const std::size_t start = out.size();
  std::string fault =
      appendJsonFile(out, report, settings, {statusWord(report.status), report.message});
  if (!fault.empty()) {  // which is known only now, and stands before the records
    out.resize(start);
    appendJsonFile(out, report, settings, {kUnreadableWord, fault});
  }
  return fault;
}

void endJson(const FormatSettings& /*settings*/, std::string& out) { out += "\n]}\n"; }

void appendNdjsonHeader(std::string& out, std::string_view version, std::uint64_t fileCount) {
  out += kHeaderLineStart;
  appendHeaderMembers(out, version);
  out += ",\"fileCount\":";
  appendNumber(out, fileCount);
  out += "}\n";
}

void beginNdjson(const FormatSettings& settings, std::string& out) {
  appendNdjsonHeader(out, QUORL_VERSION, settings.fileCount);
}

std::string writeNdjsonFile(const FileReport& report, const FormatSettings& settings,
                            std::string& out) {
  Outcome outcome{statusWord(report.status), report.message};
  RecordReader reader(report.answer);
  std::size_t recordCount = 0;
  if (report.status == FileStatus::kAnswered) {
    PathMember path;
    std::string lineStart(kRecordLineStart);
    appendNumber(lineStart, report.index);
    lineStart += ",";
    forEachWanted(reader, settings, [&](const Record& record) {
      out += lineStart;
      appendRecordMembers(out, record, path);
      out += "\n";
      ++recordCount;
    });
    if (!reader.fault().empty()) outcome = {kUnreadableWord, reader.fault()};
  }
  out += kFileLineStart;
  appendNumber(out, report.index);
  out += ",";
  appendFileMembers(out, report, outcome);
  out += ",\"recordCount\":";
  appendNumber(out, recordCount);
  out += "}\n";
  return reader.fault();
}

}  // namespace host
