#include "answer_check.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>
#include <vector>

#include "records/record_format.h"

namespace fuzz {
namespace {

constexpr std::array<std::string_view, 16> kLabels{"filepath",
                                                   "namespace",
                                                   "class",
                                                   "function",
                                                   "line",
                                                   "classvar",
                                                   "logic",
                                                   "loop",
                                                   "define",
                                                   "container",
                                                   "preprocessor",
                                                   "htmlelement",
                                                   "link",
                                                   "error: NULL parent branch",
                                                   "error: NULL current branch",
                                                   "error: Zero child objects"};

constexpr std::array<std::string_view, 13> kTags{"\n      \"html-document\"\n",
                                                 "\n      \"html-structure\"\n",
                                                 "\n      \"javascript-file\"\n",
                                                 "\n      \"main-script\"\n",
                                                 "\n      \"auto-generated\"\n",
                                                 "      \"scope-wrapper\"\n",
                                                 "\n      \"href\"\n",
                                                 "\n      \"src\"\n",
                                                 "\n      \"inline-script\"\n",
                                                 "\n      \"iife\"\n",
                                                 "\n      \"constructor\"\n",
                                                 "\n      \"global-function\"\n",
                                                 "\n      \"variable\"\n"};
// This tag has another form after other tags.
constexpr std::string_view kLaterVariableTag = "    \"variable\"\n";

struct Record {
  int line = 0;
  std::vector<int> children;
  int id = 0;
  int parent = 0;
  std::string_view label;
  std::string_view contents;  // as written
};

class AnswerReader {
 public:
  explicit AnswerReader(std::string_view text) : text_(text) {}

  // Throws std::runtime_error at the first byte that violates the format.
  std::vector<Record> records(std::string_view path) {
    const std::string escapedPath = EscapeString(std::string(path));
    std::vector<Record> all;
    take("[\n");
    while (!takeIf("]\n")) {
      if (!all.empty() && !separated_) fail("a comma before the record");
      all.push_back(record(escapedPath));
    }
    if (separated_) fail("no comma behind the last record");
    if (!text_.empty()) fail("the end of the answer");
    return all;
  }

 private:
  Record record(std::string_view escapedPath) {
    Record read;
    take("  {\n    \"lineNumber\": ");
    read.line = number();
    take(",\n    \"lineage\": \"\",\n    \"argumentList\": \"\",\n    \"childNodeIDs\": [");
    read.children = children();
    take("    \"nodeID\": ");
    read.id = number();
    take(",\n    \"parentID\": ");
    read.parent = number();
    take(",\n    \"fileID\": 0,\n    \"functionID\": -1,\n    \"isCalled\": false,\n");
    take("    \"branchTypeAsString\": \"");
    read.label = oneOf(kLabels, "\",\n");
    take("    \"filePath\": \"");
    take(escapedPath);
    take("\",\n    \"tags\": [");
    tags();
    take("    \"contents\": \"");
    read.contents = escaped();
    take(",\n    \"simpleFunctionName\": \"");
    escaped();
    take(",\n    \"calloutIDs\": []\n  }");
    separated_ = takeIf(",");
    take("\n");
    return read;
  }

  std::vector<int> children() {
    std::vector<int> ids;
    if (takeIf("],\n")) return ids;
    take("   ");
    // A hidden child leaves its comma: before the first child, or missing after the last.
    while (!takeIf("\n    ],\n")) {
      if (!takeIf(",\n      ")) {
        if (!ids.empty()) fail("a comma before the child");
        take("\n      ");
      }
      ids.push_back(number());
    }
    return ids;
  }

  void tags() {
    bool any = false;
    while (!takeIf("],\n")) {
      const auto* const tag =
          std::find_if(kTags.begin(), kTags.end(),
                       [this](std::string_view each) { return text_.starts_with(each); });
      if (tag == kTags.end() && !any) fail("a tag");
      take(tag == kTags.end() ? kLaterVariableTag : *tag);
      any = true;
    }
  }

  // Reads a string and its closing quote. Fails on a byte that should have been escaped.
  std::string_view escaped() {
    std::size_t end = 0;
    for (; end < text_.size() && text_[end] != '"'; ++end) {
      if (text_[end] == '\n' || text_[end] == '\r' || text_[end] == '\t' || text_[end] == '\'') {
        fail("a byte that is escaped");
      }
      if (text_[end] != '\\') continue;
      ++end;
      constexpr std::string_view kLetters = "\"'\\nrt";
      if (end == text_.size() || kLetters.find(text_[end]) == std::string_view::npos) {
        fail("an escape that there is");
      }
    }
    const std::string_view found = text_.substr(0, end);
    text_.remove_prefix(end);
    take("\"");
    return found;
  }

  std::string_view oneOf(const auto& words, std::string_view behind) {
    const std::string_view found = text_.substr(0, std::min(text_.find(behind), text_.size()));
    if (std::find(words.begin(), words.end(), found) == words.end()) fail("a label");
    take(found);
    take(behind);
    return found;
  }

  int number() {
    int value = 0;
    const auto [end, error] = std::from_chars(text_.data(), text_.data() + text_.size(), value);
    if (error != std::errc()) fail("a number");
    const auto size = static_cast<std::size_t>(end - text_.data());
    if (std::to_string(value) != text_.substr(0, size)) fail("a plain number");
    text_.remove_prefix(size);
    return value;
  }

  bool takeIf(std::string_view piece) {
    if (!text_.starts_with(piece)) return false;
    text_.remove_prefix(piece.size());
    return true;
  }
  void take(std::string_view piece) {
    if (!takeIf(piece)) fail(piece);
  }

  [[noreturn]] void fail(std::string_view expected) const {
    throw std::runtime_error("expected " + std::string(expected) +
                             " at: " + std::string(text_.substr(0, 80)));
  }

  std::string_view text_;  // the unread rest
  bool separated_ = false;
};

// Returns what is wrong with the tree that the records form, empty if nothing.
std::string treeFault(const std::vector<Record>& records, int lastLine) {
  const auto count = static_cast<int>(records.size());
  if (count == 0 || records[0].label != "filepath" || records[0].parent != -1) {
    return "the first record is the file's";
  }
  for (int id = 0; id < count; ++id) {
    const Record& record = records[static_cast<std::size_t>(id)];
    const std::string name = "record " + std::to_string(id) + ": ";
    if (record.id != id) return name + "the numbers are dense";
    if (record.line < 0 || record.line > lastLine) return name + "the line is one of the file's";
    if (record.parent < -1 || record.parent >= id) return name + "the parent stands before it";
    if (!std::is_sorted(record.children.begin(), record.children.end())) {
      return name + "the children are in order";
    }
    for (const int child : record.children) {
      if (child <= id || child >= count || records[static_cast<std::size_t>(child)].parent != id) {
        return name + "a child names it as the parent";
      }
    }
    if (record.parent < 0) continue;
    const std::vector<int>& siblings = records[static_cast<std::size_t>(record.parent)].children;
    const bool mayHide =
        record.label == "function" && record.contents.find("TTTTT") != std::string_view::npos;
    if (!mayHide && !std::binary_search(siblings.begin(), siblings.end(), id)) {
      return name + "the parent names it as a child";
    }
  }
  return {};
}

}  // namespace

AnswerCheck checkAnswer(std::string_view answer, std::string_view path, int lastLine) {
  AnswerCheck check;
  try {
    const std::vector<Record> records = AnswerReader(answer).records(path);
    check.records = records.size();
    check.fault = treeFault(records, lastLine);
  } catch (const std::runtime_error& error) {
    check.fault = error.what();
  }
  return check;
}

}  // namespace fuzz
