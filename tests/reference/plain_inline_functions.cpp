#include "reference/plain_inline_functions.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include "reference/plain_detectors.h"
#include "reference/plain_parts_list.h"
#include "reference/plain_strings.h"
#include "reference/plain_tree.h"

namespace reference {
namespace {

void classify(ObjectBranch* node, std::uint32_t code, const std::string& label) {
  node->branchType = code;
  node->branchTypeAsString = label;
}

void classifyFunction(ObjectBranch* node) {
  classify(node, 6, "function");
  node->simpleFunctionName = functionName(node->contents);
}

class Leaf {
 public:
  explicit Leaf(ObjectBranch* leaf) : leaf_(leaf), currentBranch_(leaf) {}

  void split() {
    for (const std::string& part : partsList(leaf_->contents)) {
      if (part == "{") {
        openBlock();
      } else if (part == "}") {
        closeBlock();
      } else if (part == ";" && braceDepth_ == 0 && !trimAndReduce(pendingText_).empty()) {
        endStatement();
      } else {
        pendingText_ += part + " ";
      }
    }
    const std::string t = trimAndReduce(pendingText_);
    if (t.empty() || currentBranch_ != leaf_) return;
    if (detectJSReturnDeclaration(t)) {
      classify(leaf_, 3, "line");
    } else if (detectJSVariableDeclaration(t) && leaf_->branchTypeAsString != "namespace") {
      classify(leaf_, 12, "classvar");
    }
  }

 private:
  void openBlock() {
    ++braceDepth_;
    const std::string t = trimAndReduce(pendingText_);
    if (!t.empty()) {
      ObjectBranch* node = makeNode(t);
      if (detectJSFunctionDeclaration(t)) {
        classifyFunction(node);
      } else if (detectJSClass(t)) {
        classify(node, 7, "class");
      } else if (detectJSLogic(t)) {
        classify(node, 5, "logic");
      } else if (detectJSLoop(t)) {
        classify(node, 10, "loop");
      } else {
        classify(node, 2, "container");
      }
      currentBranch_->children.push_back(node);
      currentBranch_ = node;
    }
    pendingText_ = "";
  }

  void closeBlock() {
    --braceDepth_;
    const std::string t = trimAndReduce(pendingText_);
    if (!t.empty() && currentBranch_ != leaf_) {
      ObjectBranch* node = makeNode(t);
      if (detectJSReturnDeclaration(t)) {
        classify(node, 3, "line");
      } else if (detectJSVariableDeclaration(t)) {
        classify(node, 12, "classvar");
      } else if (detectJSFunctionDeclaration(t)) {
        classifyFunction(node);
      } else {
        classify(node, 3, "line");
      }
      currentBranch_->children.push_back(node);
    }
    if (currentBranch_ != leaf_ && currentBranch_->parent != nullptr)
      currentBranch_ = currentBranch_->parent;
    pendingText_ = "";
  }

  void endStatement() {
    const std::string t = trimAndReduce(pendingText_);
    ObjectBranch* node = makeNode(t);
    if (detectJSReturnDeclaration(t)) {
      classify(node, 3, "line");
    } else if (detectJSVariableDeclaration(t)) {
      classify(node, 12, "classvar");
    } else {
      classify(node, 3, "line");
    }
    currentBranch_->children.push_back(node);
    pendingText_ = "";
  }

  ObjectBranch* makeNode(const std::string& contents) const {
    ObjectBranch* node = newNode();
    node->parent = currentBranch_;
    node->lineNumber = leaf_->lineNumber;
    node->filePath = leaf_->filePath;
    node->contents = contents;
    return node;
  }

  ObjectBranch* leaf_;
  ObjectBranch* currentBranch_;
  std::string pendingText_;
  int braceDepth_ = 0;
};

}  // namespace

void generateInlineFunctions(ObjectBranch* node) {
  if (node == nullptr) return;
  if (node->children.empty()) {
    Leaf(node).split();
    return;
  }
  for (std::size_t i = 0; i < node->children.size(); ++i)
    generateInlineFunctions(node->children[i]);
}

}  // namespace reference
