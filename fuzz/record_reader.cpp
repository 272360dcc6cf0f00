// The program's reader of answers, over any bytes: it stays within them, and what it takes is what
// the plug-in would have written, to the byte.
#include "records/record_reader.h"
#include "records/record_escapes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "harness.h"
#include "records/record_format.h"
#include "records/record_text.h"
#include "targets.h"
#include "tree/object_branch.h"

namespace fuzz {
namespace {

// The tag text of a node: the second of two brings no empty line here.
std::string tagText(const std::vector<std::string_view>& tags) {
  std::string text;
  for (const std::string_view tag : tags) {
    text.append(text.empty() ? "\n      \"" : "      \"").append(tag).append("\"\n");
  }
  return text;
}

// A number that none of the children has, so that no child is hidden.
std::int32_t otherThan(const std::vector<std::int32_t>& children) {
  std::int32_t number = 0;
  while (std::find(children.begin(), children.end(), number) != children.end()) ++number;
  return number;
}

// Writes the record by the plug-in's own writer.
void write(const host::Record& record, records::RecordText& out) {
  const std::unique_ptr<ObjectBranch> node(tree::makeNode());
  node->lineNumber = record.lineNumber;
  node->nodeID = record.nodeId;
  node->functionID = record.functionId;
  node->branchTypeAsString = record.label;
  node->tags = tagText(record.tags);
  node->contents = record.contents;
  node->simpleFunctionName = record.simpleFunctionName;
  const std::string path = EscapeString(std::string(record.filePath));
  records::appendRecord(out, *node, path,
                        {record.parentId, record.childNodeIds, otherThan(record.childNodeIds)},
                        false);
}

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at)) {
    text.replace(at, from.size(), to);
  }
}

// The answer with each quirk of the layout in its plain form. None of what is replaced can stand
// inside a text of a record, since it holds a line feed.
std::string withoutQuirks(std::string_view answer) {
  std::string plain(answer);
  replaceAll(plain, "[   ,\n", "[   \n");
  replaceAll(plain, "[   \n    ],\n", "[],\n");
  replaceAll(plain, "\"\n    \"", "\"\n      \"");
  replaceAll(plain, "\"\n\n      \"", "\"\n      \"");
  return plain;
}

void testFault(const host::RecordReader& reader, std::size_t bytes) {
  const std::string begin = "the answer leaves the record format in record " +
                            std::to_string(reader.recordCount()) + ", near byte ";
  const std::string end = " of " + std::to_string(bytes);
  const std::string& fault = reader.fault();
  require(fault.starts_with(begin) && fault.ends_with(end), "a fault tells the record");
  const std::string place = fault.substr(begin.size(), fault.size() - begin.size() - end.size());
  require(std::stoul(place) <= bytes && place == std::to_string(std::stoul(place)),
          "a fault tells the place");
}

void testEscapes(const std::string& text) {
  require(host::unescaped(EscapeString(text)) == text, "escapes are undone");
  require(host::unescaped(text).size() <= text.size(), "without escapes a text is no longer");
}

}  // namespace

void testRecordReader(std::string_view input) {
  testEscapes(std::string(input));
  // With nothing behind the last byte, so that a look beyond it is seen.
  const std::vector<char> bytes(input.begin(), input.end());
  host::RecordReader reader({bytes.data(), bytes.size()});
  records::RecordText written;
  written.append("[\n");
  std::size_t count = 0;
  while (const host::Record* const record = reader.next()) {
    write(*record, written);
    require(reader.recordCount() == ++count, "each record counts");
  }
  require(reader.next() == nullptr && reader.recordCount() == count, "the end is the end");
  if (!reader.fault().empty()) {
    testFault(reader, input.size());
    return;
  }
  std::string again(written.view());
  if (count > 0) again.erase(again.size() - 2, 1);  // the comma behind the last record
  require(again + "]\n" == withoutQuirks(input), "what is read can be written again");
}

}  // namespace fuzz
