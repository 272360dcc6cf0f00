#include "reference/plain_records.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "reference/plain_attributes.h"
#include "reference/plain_detectors.h"
#include "reference/plain_parts_list.h"
#include "reference/plain_strings.h"
#include "reference/plain_tree.h"

namespace reference {
namespace {

constexpr std::size_t kNone = std::string::npos;

bool isListed(const std::vector<ObjectBranch*>& nodes, const ObjectBranch* node) {
  return std::find(nodes.begin(), nodes.end(), node) != nodes.end();
}

void relabelFunction(ObjectBranch* node) {
  const std::string& contents = node->contents;
  node->branchTypeAsString = "function";
  if (isHtmlFile(node->filePath)) {
    node->simpleFunctionName = previewName(contents);
  } else {
    node->simpleFunctionName = functionName(contents);
  }
  if (detectIIFE(contents)) node->tags += "\n      \"iife\"\n";
  const std::vector<std::string> parts = partsList(contents);
  if (parts.size() >= 2 && parts[0] == "function" && !parts[1].empty() && parts[1][0] >= 'A' &&
      parts[1][0] <= 'Z')
    node->tags += "\n      \"constructor\"\n";
  if (node->parent->branchTypeAsString == "namespace")
    node->tags += "\n      \"global-function\"\n";
}

void relabel(ObjectBranch* node) {
  if (node->parent == nullptr || node->branchType == 13) return;
  const std::string& contents = node->contents;
  if (detectJSLogic(contents)) {
    node->branchTypeAsString = "logic";
    return;
  }
  if (detectJSImports(contents)) {
    node->branchTypeAsString = "define";
    return;
  }
  if (detectJSLoop(contents)) {
    node->branchTypeAsString = "loop";
    return;
  }
  if (node->branchType == 14) return;
  if (detectJSFunctionDeclaration(contents)) {
    relabelFunction(node);
    return;
  }
  if (!detectJSVariableDeclaration(contents)) return;
  if (node->branchTypeAsString == "namespace") return;
  if (node->tags.empty()) {
    node->tags += "\n      \"variable\"\n";
  } else {
    node->tags = node->tags + "    \"variable\"\n";
  }
  if (node->parent->branchTypeAsString == "class") {
    node->branchTypeAsString = "classvar";
  } else {
    node->branchTypeAsString = "line";
  }
}

std::string childList(const ObjectBranch* node, std::int32_t hiddenChildId) {
  if (node->children.empty()) return "],\n";
  std::string built;
  for (std::size_t i = 0; i < node->children.size(); ++i) {
    const ObjectBranch* child = node->children[i];
    if (child == nullptr || child->nodeID == hiddenChildId) continue;
    built += i == 0 ? "\n      " : ",\n      ";
    built += std::to_string(child->nodeID);
  }
  return "   " + built + "\n    ],\n";
}

std::string record(const ObjectBranch* node, std::int32_t hiddenChildId, bool isLast) {
  std::string text;
  text += "  {\n";
  text += "    \"lineNumber\": " + std::to_string(node->lineNumber) + ",\n";
  text += "    \"lineage\": \"\",\n";
  text += "    \"argumentList\": \"\",\n";
  text += "    \"childNodeIDs\": [" + childList(node, hiddenChildId);
  text += "    \"nodeID\": " + std::to_string(node->nodeID) + ",\n";
  if (node->parent == nullptr) {
    text += "    \"parentID\": -1,\n";
  } else {
    text += "    \"parentID\": " + std::to_string(node->parent->nodeID) + ",\n";
  }
  text += "    \"fileID\": 0,\n";
  text += "    \"functionID\": " + std::to_string(node->functionID) + ",\n";
  text += "    \"isCalled\": false,\n";
  text += "    \"branchTypeAsString\": \"" + node->branchTypeAsString + "\",\n";
  text += "    \"filePath\": \"" + escapeString(node->filePath) + "\",\n";
  text += "    \"tags\": [" + node->tags + "],\n";
  text += "    \"contents\": \"" + escapeString(node->contents) + "\",\n";
  text += "    \"simpleFunctionName\": \"" + escapeString(node->simpleFunctionName) + "\",\n";
  text += "    \"calloutIDs\": []\n";
  text += "  }";
  if (!isLast) text += ",";
  text += "\n";
  return text;
}

}  // namespace

std::string escapeString(const std::string& text) {
  std::string result;
  for (const char byte : text) {
    if (byte == '"') {
      result += "\\\"";
    } else if (byte == '\'') {
      result += "\\'";
    } else if (byte == '\\') {
      result += "\\\\";
    } else if (byte == '\n') {
      result += "\\n";
    } else if (byte == '\r') {
      result += "\\r";
    } else if (byte == '\t') {
      result += "\\t";
    } else {
      result += byte;
    }
  }
  return result;
}

bool shouldSkipNode(const ObjectBranch& node) {
  const std::string text = trimAndReduce(node.contents);
  return text == "{" || text == "}" || text == "};" || text == "{}" || text.empty() ||
         text == "(" || text == ")" || text == ";" || text == ");" || text == "));" ||
         text == "});";
}

std::string previewName(const std::string& contents) {
  std::size_t first = contents.find('\'');
  if (first == kNone) first = contents.find('"');
  if (first != kNone) {
    std::size_t second = contents.find('\'', first + 1);
    if (second == kNone) second = contents.find('"', first + 1);
    if (second != kNone && second > first + 1) {
      const std::string quoted = contents.substr(first + 1, second - first - 1);
      return firstWord(contents) + "('" + textPreview(quoted, 25) + "')";
    }
  }
  return functionName(contents);
}

Records generateRecords(ObjectBranch* root) {
  Records records;
  if (root == nullptr) {
    records.text = "[]";
    return records;
  }
  std::vector<ObjectBranch*> flatNodes;
  addObjectToVector(root, flatNodes);
  ObjectBranch* spareNode = newNode();

  std::vector<ObjectBranch*> keptNodes;
  std::map<std::int32_t, std::int32_t> idMap;
  std::int32_t nextNodeId = 0;
  for (ObjectBranch* node : flatNodes) {
    if (node->branchType == 13 || shouldSkipNode(*node)) continue;
    idMap[node->nodeID] = nextNodeId;
    records.printed += "nodeid was " + std::to_string(node->nodeID) + " and now is " +
                       std::to_string(nextNodeId) + "\n";
    ++nextNodeId;
    keptNodes.push_back(node);
  }

  for (ObjectBranch* node : keptNodes) {
    if (idMap.count(node->nodeID) > 0) node->nodeID = idMap[node->nodeID];
    std::vector<ObjectBranch*> children;
    for (ObjectBranch* child : node->children)
      if (child != nullptr && idMap.count(child->nodeID) > 0) children.push_back(child);
    node->children = children;
  }

  for (ObjectBranch* node : keptNodes)
    if (node->parent != nullptr && !isListed(keptNodes, node->parent)) node->parent = nullptr;

  for (ObjectBranch* node : keptNodes) relabel(node);

  std::int32_t hiddenChildId = 0;
  for (const ObjectBranch* node : keptNodes) {
    if (node->parent != nullptr && node->branchTypeAsString == "function" &&
        contains(node->contents, "TTTTT"))
      hiddenChildId = node->nodeID;
  }

  records.text = "[\n";
  for (std::size_t i = 0; i < keptNodes.size(); ++i)
    records.text += record(keptNodes[i], hiddenChildId, i + 1 == keptNodes.size());
  records.text += "]\n";
  delete spareNode;
  return records;
}

}  // namespace reference
