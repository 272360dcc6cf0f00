// What a worker sends for the index, whole and broken.
#include "index/item_frame.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace host::index {
namespace {

constexpr std::string_view kSource = "function f() {\n  g();\n}\n";

std::string recordText(int node, int parent, int line, std::string_view label,
                       std::string_view tags, std::string_view contents) {
  return "  {\n    \"lineNumber\": " + std::to_string(line) +
         ",\n    \"lineage\": \"\",\n    \"argumentList\": \"\",\n    \"childNodeIDs\": [],\n"
         "    \"nodeID\": " +
         std::to_string(node) + ",\n    \"parentID\": " + std::to_string(parent) +
         ",\n    \"fileID\": 0,\n    \"functionID\": -1,\n    \"isCalled\": false,\n"
         "    \"branchTypeAsString\": \"" +
         std::string(label) + "\",\n    \"filePath\": \"f.js\",\n    \"tags\": [" +
         std::string(tags) + "],\n    \"contents\": \"" + std::string(contents) +
         "\",\n    \"simpleFunctionName\": \"\",\n    \"calloutIDs\": []\n  }";
}

std::string answerText() {
  return "[\n" + recordText(0, -1, 0, "filepath", "", "f.js") + ",\n" +
         recordText(1, 0, 0, "namespace", "\n      \"javascript-file\"\n", "namespace global") +
         ",\n" + recordText(2, 1, 1, "function", "", "function f() {") + ",\n" +
         recordText(3, 2, 2, "line", "", "g();") + "\n]\n";
}

std::string frameOf(const FileReport& report) {
  std::string frame;
  EXPECT_EQ(kFrameFormat.file(report, {}, frame), "");
  return frame;
}

FileReport report(std::string_view answer) {
  FileReport report;
  report.path = "f.js";
  report.answer = answer;
  report.source = kSource;
  report.sourceBytes = kSource.size();
  report.times = FileTimes{-5, 7};
  return report;
}

using State = ItemFrameReader::State;

TEST(ItemFrame, HoldsTheFileAndItsItems) {
  const std::string answer = answerText();
  const std::string frame = frameOf(report(answer));
  ItemFrameReader reader(frame);
  FileRow file;
  ASSERT_TRUE(reader.takeFile(file));
  EXPECT_EQ(file.status, "answered");
  EXPECT_EQ(file.message, std::nullopt);
  EXPECT_EQ(file.size, 24);
  EXPECT_EQ(file.times, (FileTimes{-5, 7}));
  EXPECT_EQ(file.records, 4);
  EXPECT_EQ(file.omitted, std::nullopt);
  ASSERT_TRUE(file.hash);
  EXPECT_EQ(file.hash->size(), 16U);
  ItemRow item;
  ASSERT_EQ(reader.takeItem(item), State::kItem);
  EXPECT_EQ(item.kind, outline::Kind::kFunction);
  EXPECT_EQ(item.label, "function");
  EXPECT_EQ(std::pair(item.line, item.lastLine), std::pair(std::int64_t{1}, std::int64_t{3}));
  EXPECT_EQ(item.parent, std::nullopt);
  EXPECT_EQ(item.record, 2);
  EXPECT_EQ(item.name, "f");
  EXPECT_EQ(item.text, "function f() {");
  ASSERT_EQ(reader.takeItem(item), State::kItem);
  EXPECT_EQ(item.kind, outline::Kind::kStatement);
  EXPECT_EQ(item.label, "line");
  EXPECT_EQ(item.line, 2);
  EXPECT_EQ(item.parent, 0);
  EXPECT_EQ(item.record, 3);
  EXPECT_EQ(item.name, std::nullopt);
  EXPECT_EQ(item.text, "g();");
  EXPECT_EQ(reader.takeItem(item), State::kEnd);
}

TEST(ItemFrame, HoldsAFailure) {
  FileReport failed;
  failed.path = "f.js";
  failed.status = FileStatus::kCrashed;
  failed.message = "f.js: crashed";
  const std::string frame = frameOf(failed);
  ItemFrameReader reader(frame);
  FileRow file;
  ASSERT_TRUE(reader.takeFile(file));
  EXPECT_EQ(file.status, "crashed");
  EXPECT_EQ(file.message, "f.js: crashed");
  EXPECT_EQ(file.times, std::nullopt);
  EXPECT_EQ(file.hash, std::nullopt);
  ItemRow item;
  EXPECT_EQ(reader.takeItem(item), State::kEnd);
}

TEST(ItemFrame, MarksTextsThatAreNotUtf8) {
  const std::string answer =
      "[\n" + recordText(0, -1, 0, "filepath", "", "f.js") + ",\n" +
      recordText(1, 0, 0, "namespace", "\n      \"javascript-file\"\n", "n") + ",\n" +
      recordText(2, 1, 1, "line", "", "\xff") + "\n]\n";
  const std::string frame = frameOf(report(answer));
  ItemFrameReader reader(frame);
  FileRow file;
  ItemRow item;
  ASSERT_TRUE(reader.takeFile(file));
  ASSERT_EQ(reader.takeItem(item), State::kItem);
  EXPECT_EQ(item.text, "\xff");
  EXPECT_FALSE(item.isTextPlain);
  EXPECT_TRUE(item.isNamePlain);
}

// Reads all that a frame gives; whether it came to its end.
bool readsWhole(std::string_view frame) {
  ItemFrameReader reader(frame);
  FileRow file;
  if (!reader.takeFile(file)) return false;
  ItemRow item;
  State state = reader.takeItem(item);
  std::int64_t number = 0;
  for (; state == State::kItem; state = reader.takeItem(item), ++number) {
    EXPECT_LT(static_cast<std::size_t>(item.kind), outline::kKindCount);
    EXPECT_LT(item.parent.value_or(-1), number);
    EXPECT_LE(item.line, item.lastLine);
  }
  return state == State::kEnd;
}

TEST(ItemFrame, IsRefusedWhereverItIsCut) {
  const std::string answer = answerText();
  const std::string frame = frameOf(report(answer));
  ASSERT_TRUE(readsWhole(frame));
  for (std::size_t size = 0; size < frame.size(); ++size) {
    EXPECT_FALSE(readsWhole(std::string_view(frame).substr(0, size))) << size;
  }
  EXPECT_FALSE(readsWhole(frame + '\0'));
}

// Whatever a byte becomes, what is read keeps to its bounds.
TEST(ItemFrame, StaysInBoundsWhateverAByteIs) {
  const std::string answer = answerText();
  const std::string frame = frameOf(report(answer));
  for (std::size_t at = 0; at < frame.size(); ++at) {
    for (int byte = 0; byte < 256; ++byte) {
      std::string broken = frame;
      broken[at] = static_cast<char>(byte);
      readsWhole(broken);
    }
  }
}

struct Refused {
  const char* name;
  std::string bytes;
};

TEST(ItemFrame, RefusesNumbersThatNoFrameHas) {
  const std::string mark = "\x81\xe2\xa4\x8a\x05";  // 0x51493101
  const std::string start = mark + '\x06' + "failed";
  const std::string none(1, '\0');
  // message, size, times, hash, omitted, records: none of each
  const std::string file = start + std::string(6, '\0');
  const std::vector<Refused> rows = {
      {"no mark", "\x01"},
      {"a number without an end", std::string(12, '\xff')},
      {"a text longer than the rest", mark + "\x7f" + "failed"},
      {"a kind of text that is none", start + '\x03'},
      {"more items than there are", file + '\x01'},
      {"items without number", file + std::string(9, '\xff') + '\x01'},
      {"a kind behind the last", file + "\x01" + "\x15" + std::string(7, '\0')},
      {"a parent of its own", file + "\x01" + none + "\x01" + none + "\x01" + std::string(4, '\0')},
      {"a label that skips a number",
       file + "\x01" + none + "\x01" + none + none + none + "\x02" + "\x01" + "x" + none + none},
  };
  for (const Refused& row : rows) EXPECT_FALSE(readsWhole(row.bytes)) << row.name;
  EXPECT_TRUE(readsWhole(file + none));
  EXPECT_TRUE(readsWhole(file + "\x01" + none + "\x01" + std::string(6, '\0')));
}

}  // namespace
}  // namespace host::index
