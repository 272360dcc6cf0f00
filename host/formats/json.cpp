// Strict JSON: one document, or one object a line.

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "formats/file_members.h"
#include "formats/formatters.h"
#include "formats/json_text.h"
#include "formats/ndjson_lines.h"
#include "formats/record_selection.h"
#include "outline/item.h"
#include "outline/outline.h"
#include "records/record_reader.h"

namespace host {
namespace {

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

// Gathers the short pieces of a record, of which there are some forty, and appends them together:
// one by one they take twice as long.
class Pieces {
 public:
  explicit Pieces(std::string& out) : out_(out) {}
  Pieces(const Pieces&) = delete;
  Pieces& operator=(const Pieces&) = delete;
  ~Pieces() { flush(); }

  template <std::size_t kSize>
  void put(const char (&literal)[kSize]) {
    static_assert(kSize <= kMostBytes);
    need(kMostBytes);
    std::memcpy(to_, literal, kSize - 1);
    to_ += kSize - 1;
  }

  void put(std::int32_t number) {
    need(kMostBytes);
    to_ = std::to_chars(to_, to_ + kMostBytes, number).ptr;
  }

  // Text that needs no escape, as a label or a tag, which the reader takes only if that is so.
  void putPlain(std::string_view text) {
    if (text.size() > bytes_.size()) {
      flush();
      out_.append(text);
      return;
    }
    need(text.size());
    text.copy(to_, text.size());
    to_ += text.size();
  }

  // As appendJsonMember.
  template <std::size_t kSize>
  void putMember(const char (&key)[kSize], std::string_view text) {
    if (isPlainJson(text)) {
      put("\"");
      put(key);
      put("\":\"");
      putPlain(text);
      put("\"");
    } else {
      flush();
      appendJsonMember(out_, key, text);
    }
  }

 private:
  static constexpr std::size_t kMostBytes = 64;  // of a piece

  void flush() {
    out_.append(bytes_.data(), static_cast<std::size_t>(to_ - bytes_.data()));
    to_ = bytes_.data();
  }

  void need(std::size_t bytes) {
    if (static_cast<std::size_t>(bytes_.data() + bytes_.size() - to_) < bytes) flush();
  }

  std::string& out_;
  std::array<char, 1024> bytes_;
  char* to_ = bytes_.data();
};

void appendRecordMembers(std::string& out, const Record& record, PathMember& path) {
  Pieces pieces(out);
  pieces.put("\"lineNumber\":");
  pieces.put(record.lineNumber);
  pieces.put(",\"lineage\":\"\",\"argumentList\":\"\",\"childNodeIDs\":[");
  for (std::size_t i = 0; i < record.childNodeIds.size(); ++i) {
    if (i > 0) pieces.put(",");
    pieces.put(record.childNodeIds[i]);
  }
  pieces.put("],\"nodeID\":");
  pieces.put(record.nodeId);
  pieces.put(",\"parentID\":");
  pieces.put(record.parentId);
  pieces.put(",\"fileID\":0,\"functionID\":");
  pieces.put(record.functionId);
  pieces.put(",\"isCalled\":false,\"branchTypeAsString\":\"");
  pieces.putPlain(record.label);
  pieces.put("\",");
  pieces.putPlain(path.of(record.filePath));
  pieces.put(",\"tags\":[");
  for (std::size_t i = 0; i < record.tags.size(); ++i) {
    if (i > 0) pieces.put(",");
    pieces.put("\"");
    pieces.putPlain(record.tags[i]);
    pieces.put("\"");
  }
  pieces.put("],");
  pieces.putMember("contents", record.contents);
  pieces.put(",");
  pieces.putMember("simpleFunctionName", record.simpleFunctionName);
  pieces.put(",\"calloutIDs\":[]");
}

// Where the records of an answer stand in the source.
class Ranges {
 public:
  explicit Ranges(std::vector<outline::Item> items) : items_(std::move(items)) {
    parents_.reserve(items_.size());
    for (const outline::Item& item : items_) {
      parents_.push_back(item.parent < 0 ? kNone : nearestRecord(item.parent));
      if (item.record < 0) continue;
      const auto record = static_cast<std::size_t>(item.record);
      if (itemOf_.size() <= record) itemOf_.resize(record + 1, kNone);
      itemOf_[record] = static_cast<std::int32_t>(parents_.size()) - 1;
    }
  }

  void append(std::string& out, std::int32_t record) const {
    const auto number = static_cast<std::size_t>(record);
    out += ",\"source\":";
    if (record < 0 || number >= itemOf_.size() || itemOf_[number] == kNone) {
      out += "null";
      return;
    }
    appendItem(out, static_cast<std::size_t>(itemOf_[number]));
  }

  // The items without a record, as a list.
  void appendOthers(std::string& out) const {
    char before = '[';
    for (std::size_t index = 0; index < items_.size(); ++index) {
      if (items_[index].record >= 0) continue;
      out += std::exchange(before, ',');
      appendItem(out, index);
    }
    if (before == '[') out += before;
    out += "]";
  }

 private:
  static constexpr std::int32_t kNone = -1;

  void appendItem(std::string& out, std::size_t index) const {
    const outline::Item& item = items_[index];
    out += "{\"line\":";
    appendNumber(out, item.firstLine);
    out += ",\"endLine\":";
    appendNumber(out, item.lastLine);
    out.append(",\"kind\":\"").append(outline::kindWord(item.kind)).append("\",");
    appendJsonMember(out, "name", item.name);
    out += ",\"parent\":";
    appendNumberOrNull(out, parents_[index]);
    out += ",\"item\":";
    appendNumber(out, index);
    out += ",\"container\":";
    appendNumberOrNull(out, item.parent);
    out += "}";
  }

  static void appendNumberOrNull(std::string& out, std::int32_t number) {
    if (number == kNone) {
      out += "null";
    } else {
      appendNumber(out, number);
    }
  }

  // Of the item or, if it has no record, of the innermost item around it that has.
  std::int32_t nearestRecord(std::int32_t item) const {
    const auto index = static_cast<std::size_t>(item);
    return items_[index].record >= 0 ? items_[index].record : parents_[index];
  }

  std::vector<outline::Item> items_;
  std::vector<std::int32_t> parents_;  // the record around each item, by item
  std::vector<std::int32_t> itemOf_;   // by record
};

// What stands before the first record, before the others, and behind each.
struct RecordFrame {
  std::string_view first;
  std::string_view next;
  std::string_view end;
};

// Appends the records of an answer that the settings ask for.
class RecordsWriter {
 public:
  RecordsWriter(std::string& out, const FormatSettings& settings, const RecordFrame& frame)
      : out_(out), settings_(settings), frame_(frame), selection_(settings) {}

  // Returns what is wrong with the answer, or nothing.
  std::string write(const FileReport& report) {
    if (settings_.ranges) return writeWithRanges(report);
    RecordReader reader(report.answer);
    while (const Record* const record = reader.next()) {
      if (append(out_, *record)) out_ += frame_.end;
    }
    return reader.fault();
  }

  std::size_t count() const { return count_; }

  // Ends the object of the file.
  void end() {
    if (settings_.ranges) out_.append(",\"unrecorded\":").append(others_.empty() ? "[]" : others_);
    out_ += "}";
  }

 private:
  // Appends a record but for its end, if it is asked for.
  bool append(std::string& text, const Record& record) {
    if (settings_.depth || !settings_.onlyLabels.empty()) {
      selection_.take(record);
      if (!selection_.isWanted()) return false;
    }
    text += count_++ == 0 ? frame_.first : frame_.next;
    appendRecordMembers(text, record, path_);
    return true;
  }

  static constexpr std::size_t kRangeBytes = 100;  // of most ranges

  // The ranges are known when all records have been read, so these wait until then.
  std::string writeWithRanges(const FileReport& report) {
    struct Written {
      std::size_t end;
      std::int32_t record;
    };
    std::vector<Written> written;
    std::string text;
    text.reserve(report.answer.size());
    std::string fault;
    const auto keep = [&](const Record& record) {
      if (append(text, record)) written.push_back({text.size(), record.nodeId});
    };
    const Ranges ranges(
        outline::makeOutline(report.source, report.answer, {.fault = &fault, .onRecord = keep}));
    out_.reserve(out_.size() + text.size() + written.size() * kRangeBytes);
    std::size_t begin = 0;
    for (const auto& [end, record] : written) {
      out_.append(text, begin, end - begin);
      ranges.append(out_, record);
      out_ += frame_.end;
      begin = end;
    }
    ranges.appendOthers(others_);
    return fault;
  }

  std::string& out_;
  const FormatSettings& settings_;
  RecordFrame frame_;
  RecordSelection selection_;
  PathMember path_;
  std::string others_;  // the items without a record
  std::size_t count_ = 0;
};

// Appends the file with its records. Returns what is wrong with its answer, or nothing.
std::string appendJsonFile(std::string& out, const FileReport& report,
                           const FormatSettings& settings, const FileOutcome& outcome) {
  out += "{";
  appendFileMembers(out, report, outcome);
  out += ",\"records\":[";
  std::string fault;
  RecordsWriter records(out, settings, {"\n{", ",\n{", "}"});
  if (report.status == FileStatus::kAnswered) fault = records.write(report);
  out += "]";
  records.end();
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
  std::string fault = appendJsonFile(out, report, settings, outcomeOf(report, {}));
  if (!fault.empty()) {  // which is known only now, and stands before the records
    out.resize(start);
    appendJsonFile(out, report, settings, outcomeOf(report, fault));
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
  std::string fault;
  std::string lineStart(kRecordLineStart);
  appendNumber(lineStart, report.index);
  lineStart += ",";
  RecordsWriter records(out, settings, {lineStart, lineStart, "}\n"});
  if (report.status == FileStatus::kAnswered) fault = records.write(report);
  out += kFileLineStart;
  appendNumber(out, report.index);
  out += ",";
  appendFileMembers(out, report, outcomeOf(report, fault));
  out += ",\"recordCount\":";
  appendNumber(out, records.count());
  records.end();
  out += "\n";
  return fault;
}

}  // namespace host
