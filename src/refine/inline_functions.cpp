#include "refine/inline_functions.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "detect/declarations.h"
#include "detect/flow.h"
#include "detect/statement.h"
#include "text/byte_blocks.h"
#include "text/parts_list.h"
#include "text/string_primitives.h"
#include "tree/walk.h"

namespace {

struct Rule {
  bool (*applies)(const detect::Statement&);
  BranchType branchType;
  std::string_view label;
};

// In each table the first row that applies wins.
constexpr Rule kHeadRules[] = {{detect::isFunction, kBranchFunction, "function"},
                               {detect::isClass, kBranchClass, "class"},
                               {detect::isLogic, kBranchLogic, "logic"},
                               {detect::isLoop, kBranchLoop, "loop"}};
constexpr Rule kBlockEndRules[] = {{detect::isReturn, kBranchLine, "line"},
                                   {detect::isVariable, kBranchClassVar, "classvar"},
                                   {detect::isFunction, kBranchFunction, "function"}};
// required: text that ends in ";" is never classified as a function.
constexpr Rule kStatementRules[] = {{detect::isReturn, kBranchLine, "line"},
                                    {detect::isVariable, kBranchClassVar, "classvar"}};
constexpr Rule kOtherHead{nullptr, kBranchContainer, "container"};
constexpr Rule kOtherStatement{nullptr, kBranchLine, "line"};

template <std::size_t kCount>
const Rule* findRule(const Rule (&rules)[kCount], const detect::Statement& statement) {
  for (const Rule& rule : rules) {
    if (rule.applies(statement)) return &rule;
  }
  return nullptr;
}

// A text without any of these bytes is a single statement whose parts are the same after joining
// them with blanks, so the text itself can be classified.
constexpr auto kMayCutOrDouble = [](text::Bytes bytes) {
  return bytes.are('{') | bytes.are('}') | bytes.are(';') | bytes.are('\'') | bytes.are('`');
};

// Splits one leaf after another; reuses its storage.
class LeafSplitter {
 public:
  explicit LeafSplitter(detect::AnswerTable& answers) : answers_(answers) {}

  void split(ObjectBranch* leaf);

 private:
  void openBlock();
  void closeBlock();
  bool endStatement();
  void reclassifyLeaf();

  // Makes the pending text the current statement. Returns false if it is blank.
  bool takePending() {
    statement_.reset(text::trimAndReduceView(pendingText_, scratch_));
    return !statement_.text().empty();
  }
  void addPart(const text::Part& part) {
    if (part.opensTwice) pendingText_.push_back(part.firstByte());
    pendingText_.append(part.slice).push_back(' ');
  }
  ObjectBranch* addNode(const Rule& rule);

  detect::AnswerTable& answers_;
  ObjectBranch* leaf_ = nullptr;
  ObjectBranch* currentBranch_ = nullptr;  // takes the next node
  std::vector<text::Part> parts_;
  std::string pendingText_;      // the parts since the last cut, each followed by a blank
  std::int32_t braceDepth_ = 0;  // may go below 0
  detect::Statement statement_;
  std::string scratch_;
};

void LeafSplitter::split(ObjectBranch* leaf) {
  leaf_ = currentBranch_ = leaf;
  if (!text::holdsByte(leaf->contents, kMayCutOrDouble)) {
    statement_.reset(leaf->contents);
    if (statement_.part(0) != nullptr) reclassifyLeaf();
    answers_.note(leaf->nodeID, statement_);
    return;
  }
  braceDepth_ = 0;
  pendingText_.clear();
  parts_.clear();
  text::splitIntoParts(leaf->contents, parts_);
  for (const text::Part& part : parts_) {
    if (part.is("{")) {
      openBlock();
    } else if (part.is("}")) {
      closeBlock();
    } else if (!part.is(";") || braceDepth_ != 0 || !endStatement()) {
      addPart(part);
    }
  }
  if (currentBranch_ == leaf_ && takePending()) reclassifyLeaf();
}

void LeafSplitter::openBlock() {
  ++braceDepth_;
  // required: a block without a head makes no node, and its "}" climbs one level too many.
  if (takePending()) {
    const Rule* const rule = findRule(kHeadRules, statement_);
    currentBranch_ = addNode(rule == nullptr ? kOtherHead : *rule);
  }
  pendingText_.clear();
}

void LeafSplitter::closeBlock() {
  --braceDepth_;
  if (currentBranch_ != leaf_) {
    if (takePending()) {
      const Rule* const rule = findRule(kBlockEndRules, statement_);
      addNode(rule == nullptr ? kOtherStatement : *rule);
    }
    currentBranch_ = currentBranch_->parent;
  }
  pendingText_.clear();
}

// Returns false if there is nothing to end; the ";" is then an ordinary part.
bool LeafSplitter::endStatement() {
  if (!takePending()) return false;
  const Rule* const rule = findRule(kStatementRules, statement_);
  addNode(rule == nullptr ? kOtherStatement : *rule);
  pendingText_.clear();
  return true;
}

void LeafSplitter::reclassifyLeaf() {
  const Rule* const rule = findRule(kStatementRules, statement_);
  if (rule == nullptr) return;
  if (rule->branchType == kBranchClassVar && leaf_->branchTypeAsString == "namespace") return;
  leaf_->branchType = rule->branchType;
  leaf_->branchTypeAsString = rule->label;
}

ObjectBranch* LeafSplitter::addNode(const Rule& rule) {
  ObjectBranch* const node = tree::makeNode(currentBranch_, rule.branchType, rule.label,
                                            leaf_->lineNumber, leaf_->filePath);
  node->contents = statement_.text();
  if (rule.branchType == kBranchFunction) {
    node->simpleFunctionName = detect::functionNameOf(statement_);
  }
  answers_.note(node->nodeID, statement_);
  currentBranch_->children.push_back(node);
  return node;
}

}  // namespace

void GenerateInlineFunctions(ObjectBranch* node, bool isRoot) {
  static_cast<void>(isRoot);
  detect::AnswerTable unread(currentIndex);
  refine::generateInlineFunctions(node, unread);
}

namespace refine {

void generateInlineFunctions(ObjectBranch* node, detect::AnswerTable& answers) {
  LeafSplitter splitter(answers);
  tree::walkPreOrder(node, [&splitter](ObjectBranch* visited) {
    if (!visited->children.empty()) return tree::Descend::kYes;
    splitter.split(visited);
    return tree::Descend::kNo;
  });
}

}  // namespace refine
