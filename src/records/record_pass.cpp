#include "records/record_pass.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "base/stream_writer.h"
#include "detect/declarations.h"
#include "detect/flow.h"
#include "detect/module_patterns.h"
#include "html/attributes.h"
#include "records/record_format.h"
#include "text/byte_set.h"
#include "text/file_names.h"
#include "text/string_primitives.h"
#include "tree/id_table.h"
#include "tree/walk.h"

namespace records {
namespace {

// A node that gets a record.
struct KeptNode {
  ObjectBranch* node;
  detect::Answers answers;  // what is already known of its text
  bool mayHide;             // its text contains the hiding word
};
using KeptNodes = std::vector<KeptNode>;

struct Kept {
  KeptNodes nodes;
  std::size_t maxBytes = 0;  // of their records
};

constexpr std::array<std::string_view, 11> kSkippedTexts{"{", "}", "};", "{}",  "",   "(",
                                                         ")", ";", ");", "));", "});"};

constexpr std::size_t kMaxSkippedBytes = 3;
static_assert(std::all_of(kSkippedTexts.begin(), kSkippedTexts.end(),
                          [](std::string_view text) { return text.size() <= kMaxSkippedBytes; }));

constexpr std::size_t kQuotedNameBytes = 25;  // a callback's name keeps this much quoted text

// How many nodes ahead to prefetch.
constexpr std::size_t kAhead = 4;

// A function with this in its text is hidden from its parent's child list; only the last one is.
constexpr text::Needle kHidingWord = "TTTTT";

bool isSkipped(const ObjectBranch& node) {
  // No skipped text contains white space, so trimming finds the same ones as reducing would.
  const std::string_view text = text::trimView(node.contents);
  return text.size() <= kMaxSkippedBytes && text::isOneOf(text, kSkippedTexts);
}

// The new number of a dropped node.
constexpr std::int32_t kDropped = -2;

// Selects the nodes that get a record, prints a line for each, and enters their new numbers, dense
// from 0, into newIds.
Kept keepNodes(ObjectBranch* root, const detect::AnswerTable& answers, const Prepare& prepare,
               tree::IdTable& newIds) {
  Kept kept;
  base::StreamWriter out(stdout);
  tree::walkWithDepth(root, [&](ObjectBranch* node, std::size_t depth) {
    prepare(*node, depth);
    const std::int32_t oldId = node->nodeID;
    const bool isDropped = node->branchType == kBranchNone || isSkipped(*node);
    const auto newId = isDropped ? kDropped : static_cast<std::int32_t>(kept.nodes.size());
    // If several nodes share a number, only the first counts.
    if (newIds.insertNew(oldId, newId) && !isDropped) {
      out << "nodeid was " << oldId << " and now is " << newId << "\n";
      kept.maxBytes += maxRecordBytes(*node, 2 * node->filePath.size(), node->children.size());
      kept.nodes.push_back({node, answers.of(oldId), text::contains(node->contents, kHidingWord)});
    }
    return tree::Descend::kYes;
  });
  return kept;
}

// Changes the nodes' numbers from old to new, in record order.
class Renumbering {
 public:
  Renumbering(const KeptNodes& kept, const tree::IdTable& newIds) : kept_(kept), newIds_(newIds) {}

  // Numbers the node at this place and removes children without a record from its child list; a
  // dropped node's children do not move up. Children come after their parent, so they still have
  // their old numbers here.
  void renumber(std::size_t place) {
    ObjectBranch& node = *kept_[place].node;
    node.nodeID = static_cast<std::int32_t>(place);
    std::erase_if(node.children, [this](const ObjectBranch* child) {
      return child == nullptr || newIds_.find(child->nodeID) < 0;
    });
  }

  // Returns the new number of a kept node, whether it is assigned yet or not; nothing for any other
  // node.
  std::optional<std::int32_t> newIdOf(const ObjectBranch& node) const {
    if (isAt(node.nodeID, node)) return node.nodeID;
    const std::int32_t place = newIds_.find(node.nodeID);
    return isAt(place, node) ? std::optional(place) : std::nullopt;
  }

 private:
  bool isAt(std::int32_t place, const ObjectBranch& node) const {
    return place >= 0 && static_cast<std::size_t>(place) < kept_.size() &&
           kept_[static_cast<std::size_t>(place)].node == &node;
  }

  const KeptNodes& kept_;
  const tree::IdTable& newIds_;
};

std::string previewName(const detect::Statement& statement) {
  const std::string_view contents = statement.text();
  // A single quote anywhere comes before any double quote, and a double quote may close a single
  // one.
  const auto findQuote = [contents](std::size_t from) {
    const std::size_t single = contents.find('\'', from);
    return single != std::string_view::npos ? single : contents.find('"', from);
  };
  const std::size_t first = findQuote(0);
  if (first != std::string_view::npos) {
    const std::size_t second = findQuote(first + 1);
    if (second != std::string_view::npos && second > first + 1) {
      std::string name(statement.firstWord());
      name += "('";
      name += html::textPreview(contents.substr(first + 1, second - first - 1), kQuotedNameBytes);
      name += "')";
      return name;
    }
  }
  return detect::functionNameOf(statement);
}

bool isConstructor(const detect::Statement& statement) {
  const text::Part* const name = statement.part(1);
  return name != nullptr && text::kUpperCaseLetters(name->firstByte()) &&
         statement.partIs(0, "function");
}

void relabelFunction(ObjectBranch& node, const detect::Statement& statement) {
  node.branchTypeAsString = "function";
  node.simpleFunctionName =
      text::isPagePath(node.filePath) ? previewName(statement) : detect::functionNameOf(statement);
  if (detect::isInvokedFunction(statement)) node.tags += "\n      \"iife\"\n";
  if (isConstructor(statement)) node.tags += "\n      \"constructor\"\n";
  if (node.parent->branchTypeAsString == "namespace") node.tags += "\n      \"global-function\"\n";
}

// Sets the label that a host sees. The order of the questions matters for real files. A class node
// is not exempt: it goes through the same chain as all others.
void relabel(ObjectBranch& node, const detect::Statement& statement) {
  if (detect::isLogic(statement)) {
    node.branchTypeAsString = "logic";
  } else if (detect::isImport(statement)) {
    node.branchTypeAsString = "define";
  } else if (detect::isLoop(statement)) {
    node.branchTypeAsString = "loop";
  } else if (node.branchType == kBranchAppendedDefine) {
    // The defines node keeps its label unless its whole text matches one of the rules above.
  } else if (detect::isFunction(statement)) {
    relabelFunction(node, statement);
  } else if (detect::isVariable(statement) && node.branchTypeAsString != "namespace") {
    // required: the two forms differ.
    node.tags += node.tags.empty() ? "\n      \"variable\"\n" : "    \"variable\"\n";
    // The parent is earlier in the list, so it already has its new label.
    node.branchTypeAsString = node.parent->branchTypeAsString == "class" ? "classvar" : "line";
  }
}

// Numbers and labels the kept nodes and writes their records, all in one pass: the nodes do not fit
// into the caches.
class RecordWriter {
 public:
  RecordWriter(const KeptNodes& kept, const tree::IdTable& newIds, RecordText& out)
      : kept_(kept), numbers_(kept, newIds), out_(out) {}

  void run() {
    out_.append("[\n");
    // Which node is hidden is known only once all nodes are labelled.
    const bool mayHide =
        std::any_of(kept_.begin(), kept_.end(), [](const KeptNode& each) { return each.mayHide; });
    for (std::size_t i = 0; i < kept_.size(); ++i) {
      if (i + kAhead < kept_.size()) tree::prefetch(kept_[i + kAhead].node);
      finish(i);
      if (!mayHide) write(i);
    }
    for (std::size_t i = 0; mayHide && i < kept_.size(); ++i) write(i);
    out_.append("]\n");
  }

 private:
  void finish(std::size_t place) {
    ObjectBranch& node = *kept_[place].node;
    numbers_.renumber(place);
    if (node.parent == nullptr) return;
    // required: a node whose parent gets no record stays, as an orphan with its whole subtree.
    if (!numbers_.newIdOf(*node.parent)) {
      node.parent = nullptr;
      return;
    }
    statement_.reset(node.contents, kept_[place].answers);
    relabel(node, statement_);
    if (kept_[place].mayHide && node.branchTypeAsString == "function") hiddenChildId_ = node.nodeID;
  }

  void write(std::size_t place) {
    const ObjectBranch& node = *kept_[place].node;
    childIds_.clear();
    for (const ObjectBranch* child : node.children)
      childIds_.push_back(numbers_.newIdOf(*child).value_or(child->nodeID));
    const std::int32_t parentId = node.parent == nullptr ? -1 : *numbers_.newIdOf(*node.parent);
    appendRecord(out_, node, escapedPathOf(node), {parentId, childIds_, hiddenChildId_},
                 place + 1 == kept_.size());
  }

  std::string_view escapedPathOf(const ObjectBranch& node) {
    if (node.filePath != path_) {
      path_ = node.filePath;
      escapedPath_ = EscapeString(path_);
    }
    return escapedPath_;
  }

  const KeptNodes& kept_;
  Renumbering numbers_;
  RecordText& out_;
  detect::Statement statement_;
  std::vector<std::int32_t> childIds_;
  std::string path_;         // of the last record
  std::string escapedPath_;  // the same
  // The number of the last function whose text contains the hiding word. 0 hides nothing: the root
  // is nobody's child.
  std::int32_t hiddenChildId_ = 0;
};

}  // namespace

RecordText generate(ObjectBranch* root, const detect::AnswerTable& answers, const Prepare& prepare,
                    RecordText out) {
  if (root == nullptr) {
    out.append("[]");
    return out;
  }
  tree::IdTable newIds;
  const Kept kept = keepNodes(root, answers, prepare, newIds);
  out.expect(kept.maxBytes);
  // A node that stands in no list and uses up a number: part of the run's counts.
  const std::unique_ptr<ObjectBranch> spareNode(tree::makeNode());
  RecordWriter(kept.nodes, newIds, out).run();
  return out;
}

RecordText generate(ObjectBranch* root) {
  return generate(root, detect::AnswerTable(0), [](ObjectBranch&, std::size_t) {});
}

}  // namespace records

std::ostringstream StartGeneratingObjects(ObjectBranch* root, std::string className) {
  static_cast<void>(className);
  return records::toStream(records::generate(root));
}

bool ShouldSkipNode(const ObjectBranch& node) { return records::isSkipped(node); }

std::string ExtractSimpleFunctionNameForPreview(const std::string& contents) {
  return records::previewName(detect::Statement(contents));
}
