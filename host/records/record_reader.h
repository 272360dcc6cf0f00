// The module's answer, read record by record in one pass.
//
// The text looks like JSON and is not (see docs/record-format.md), but its layout is fixed to the
// byte, and a text inside double quotes holds no byte that its writer would have escaped. So there
// is one way to read it, and what is read here could be written back as the very same bytes;
// anything else is refused.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// What differs from record to record. The other keys are the same in all: lineage and argumentList
// are empty texts, fileID is 0, isCalled is false and calloutIDs is an empty list. The views are
// valid until the reader's next step.
struct Record {
  std::int32_t lineNumber = 0;
  std::int32_t nodeId = 0;
  std::int32_t parentId = 0;
  std::int32_t functionId = 0;
  std::vector<std::int32_t> childNodeIds;
  std::string_view label;
  std::string_view filePath;
  std::vector<std::string_view> tags;
  std::string_view contents;
  std::string_view simpleFunctionName;
};

// What is done with each record, in turn.
using RecordAction = std::function<void(const Record&)>;

// Whether a reader's contents and simpleFunctionName lose their escapes, which takes time.
enum class RecordTexts { kPlain, kEscaped };

class RecordReader {
 public:
  // Reads out of the answer, which has to outlive the reader.
  explicit RecordReader(std::string_view answer, RecordTexts texts = RecordTexts::kPlain);

  // The next record; null behind the last, and where the text leaves the layout.
  const Record* next();

  // How many records were read whole.
  std::size_t recordCount() const { return recordCount_; }

  // One line on where the text leaves the layout; empty if it has not so far.
  const std::string& fault() const { return fault_; }

 private:
  template <std::size_t kSize>
  bool take(const char (&literal)[kSize]);
  bool takeNumber(std::int32_t& number);
  bool takePlain(std::string_view& text);
  bool takeEscaped(std::string& storage, std::string_view& text);
  bool skipEscaped(std::string_view& text);
  bool takeText(std::string& storage, std::string_view& text);
  bool takePath();
  bool takeChildren();
  bool takeTags();
  bool takeRecord();
  bool takeEnd();
  void fail();

  std::string_view rest_;
  std::size_t answerBytes_;
  RecordTexts texts_;
  Record record_;
  std::string_view writtenPath_;  // the path of the last record, with its escapes
  std::string pathStorage_;       // texts that have escapes, without them
  std::string contentsStorage_;
  std::string nameStorage_;
  std::size_t recordCount_ = 0;
  bool ended_ = false;
  std::string fault_;
};

}  // namespace host
