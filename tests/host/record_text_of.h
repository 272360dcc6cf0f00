// Records written as the module writes them, for the reader's and the formats' tests.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct TestRecord {
  std::int32_t lineNumber = 0;
  std::string children = "],\n";  // what follows the opening bracket
  std::int32_t nodeId = 0;
  std::int32_t parentId = -1;
  std::int32_t functionId = -1;
  std::string label = "line";
  std::string filePath = "a.js";  // this and the other texts with their escapes
  std::string tags = {};
  std::string contents = "a;";
  std::string simpleFunctionName = {};
};

inline std::string recordText(const TestRecord& record) {
  return "  {\n    \"lineNumber\": " + std::to_string(record.lineNumber) +
         ",\n    \"lineage\": \"\",\n    \"argumentList\": \"\",\n    \"childNodeIDs\": [" +
         record.children + "    \"nodeID\": " + std::to_string(record.nodeId) +
         ",\n    \"parentID\": " + std::to_string(record.parentId) +
         ",\n    \"fileID\": 0,\n    \"functionID\": " + std::to_string(record.functionId) +
         ",\n    \"isCalled\": false,\n    \"branchTypeAsString\": \"" + record.label +
         "\",\n    \"filePath\": \"" + record.filePath + "\",\n    \"tags\": [" + record.tags +
         "],\n    \"contents\": \"" + record.contents + "\",\n    \"simpleFunctionName\": \"" +
         record.simpleFunctionName + "\",\n    \"calloutIDs\": []\n  }";
}

inline std::string answerText(const std::vector<TestRecord>& records) {
  std::string text = "[\n";
  for (const TestRecord& record : records)
    text += recordText(record) + (&record == &records.back() ? "\n" : ",\n");
  return text + "]\n";
}
