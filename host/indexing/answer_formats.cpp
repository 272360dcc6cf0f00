#include "indexing/answer_formats.h"

#include <algorithm>
#include <vector>

#include "formats/display_line.h"
#include "formats/item_lines.h"
#include "formats/json_text.h"
#include "formats/ndjson_lines.h"

namespace host::indexing {
namespace {

// A heading for each file, and below it a line an item.
class OutlineAnswers : public AnswerFormat {
 public:
  explicit OutlineAnswers(const FormatSettings& settings) : settings_(settings) {}

  void add(const Answer& answer, std::string& out) override {
    if (isFirst_ || answer.path != path_) {
      if (!isFirst_) out += "\n";
      showHeading(answer.path, settings_, out);
      path_ = answer.path;
      isFirst_ = false;
    }
    showItem(answer.found.item, answer.level, answer.found.text, settings_, out);
  }

 private:
  const FormatSettings& settings_;
  std::string path_;
  bool isFirst_ = true;
};

void appendMembers(const Answer& answer, std::string& out) {
  const outline::Item& item = answer.found.item;
  const auto append = [&out](std::string_view key, std::int32_t number) {
    out.append(",\"").append(key).append("\":");
    appendNumber(out, number);
  };
  appendJsonMember(out, "path", answer.path);
  append("line", item.firstLine);
  append("endLine", item.lastLine);
  out.append(",\"kind\":\"").append(outline::kindWord(item.kind)).append("\",");
  appendJsonMember(out, "name", item.name);
  out += ",";
  if (answer.around) {
    appendJsonMember(out, "inside", answer.around->name);
  } else {
    out += "\"inside\":null";
  }
  if (!answer.found.hasRecord) {
    out += ",\"nodeID\":null,\"branchTypeAsString\":null,\"contents\":null";
    return;
  }
  append("nodeID", item.record);
  out += ",\"branchTypeAsString\":";
  appendJsonString(out, answer.found.label);
  out += ",";
  appendJsonMember(out, "contents", answer.found.text);
}

class NdjsonAnswers : public AnswerFormat {
 public:
  void add(const Answer& answer, std::string& out) override {
    out += "{";
    appendMembers(answer, out);
    out += "}\n";
  }
};

class JsonAnswers : public AnswerFormat {
 public:
  void begin(std::string& out) override {
    out += "{\"schema\":";
    appendNumber(out, kSchemaVersion);
    out.append(",\"tool\":\"").append(kToolName).append("\",\"version\":\"" QUORL_VERSION "\"");
    out += ",\"items\":[";
  }

  void add(const Answer& answer, std::string& out) override {
    out += isFirst_ ? "\n{" : ",\n{";
    isFirst_ = false;
    appendMembers(answer, out);
    out += "}";
  }

  void end(std::string& out) override { out += "\n]}\n"; }

 private:
  bool isFirst_ = true;
};

// The lines come at the end, since tags are sorted by their bytes.
class CtagsAnswers : public AnswerFormat {
 public:
  void add(const Answer& answer, std::string& /*out*/) override {
    const outline::Item& item = answer.found.item;
    if (!isTag(item) || !fitsIntoTags(answer.path)) return;
    lines_.push_back(tagLine(item, answer.path, answer.tag ? &*answer.tag : nullptr));
  }

  void end(std::string& out) override {
    beginCtags({}, out);
    std::sort(lines_.begin(), lines_.end());
    lines_.erase(std::unique(lines_.begin(), lines_.end()), lines_.end());
    for (const std::string& line : lines_) out += line;
  }

 private:
  std::vector<std::string> lines_;
};

// FILE:LINE:COLUMN:TEXT, with the first line of the record or, without one, the name.
class VimgrepAnswers : public AnswerFormat {
 public:
  void add(const Answer& answer, std::string& out) override {
    const index::FoundItem& found = answer.found;
    const std::string_view text = found.hasRecord ? found.text : found.item.name;
    out.append(answer.path).append(":");
    appendNumber(out, found.item.firstLine);
    out.append(":1:").append(text.substr(0, text.find_first_of("\r\n"))).append("\n");
  }
};

}  // namespace

std::unique_ptr<AnswerFormat> makeAnswerFormat(std::string_view name,
                                               const FormatSettings& settings) {
  if (name == "outline") return std::make_unique<OutlineAnswers>(settings);
  if (name == "ndjson") return std::make_unique<NdjsonAnswers>();
  if (name == "json") return std::make_unique<JsonAnswers>();
  if (name == "ctags") return std::make_unique<CtagsAnswers>();
  if (name == "vimgrep") return std::make_unique<VimgrepAnswers>();
  return nullptr;
}

}  // namespace host::indexing
