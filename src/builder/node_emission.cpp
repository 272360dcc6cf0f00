#include "builder/node_emission.h"

#include <array>
#include <cstdio>

#include "base/stream_writer.h"
#include "builder/scope_wrappers.h"
#include "detect/module_patterns.h"
#include "text/byte_set.h"
#include "text/string_primitives.h"

namespace builder {
namespace {

// Lines that make no node. For statements the list is shorter.
constexpr std::array<std::string_view, 8> kSilentLines{")",    "});", "})", ")))",
                                                       "))))", "}",   "{",  "};"};
constexpr std::array<std::string_view, 3> kSilentStatements{")", "}", "})"};

constexpr text::ByteSet kQuotes{"\"'`"};

bool holdsQuote(std::string_view text) { return text::findMember(text, kQuotes) < text.size(); }

// Nodes of the scan are counted twice in objectCount: by makeNode and here.
ObjectBranch* makeCountedNode() {
  ObjectBranch* const node = tree::makeNode();
  ++objectCount;
  return node;
}

}  // namespace

void NodeEmitter::newlineAction(std::int32_t line, bool inParentheses) {
  // required: inside parentheses the text collected so far is dropped.
  if (!inParentheses && !chunk_.cleansToNothing()) {
    const std::string_view statement = cleanedChunk(chunk_.text(), scratch_);
    if (!text::isOneOf(statement, kSilentLines)) {
      const bool isImport = detect::isImport(detect::Statement(statement));
      addNode(currentBranch_, isImport ? kBranchDefine : kBranchLine, isImport ? "define" : "line",
              statement, line - 1);
    }
  }
  chunk_.clear();
}

void NodeEmitter::statementAction(std::int32_t line) {
  if (chunk_.cleansToNothing()) {
    // required: the text in the chunk stays and becomes part of the next statement.
    classBlockPending_ = false;
    return;
  }
  const std::string_view statement = cleanedChunk(chunk_.text(), scratch_);
  // required: an import that ends in ";" makes no node.
  const bool isImport = statement.starts_with("import ") ||
                        (statement.starts_with("const ") && text::contains(statement, "require"));
  if (!isImport && !text::isOneOf(statement, kSilentStatements)) {
    repairScope();
    addNode(currentBranch_, kBranchLine, "line", statement, line);
  }
  chunk_.clear();
}

Scan NodeEmitter::openBraceAction(std::int32_t line) {
  const std::string_view header = chunk_.text();
  if (isJavaScript_) {
    if (text::contains(header, "class")) {
      // required: the flag ignores nesting and stays set until a ";" finds nothing to emit.
      if (!holdsQuote(header)) classBlockPending_ = true;
    } else if (!text::contains(header, "(") && !text::contains(header, "=>")) {
      if (root_->children.empty()) {
        makeCountedNode();  // attached to nothing, but it takes a number
        return fail("error: Zero child objects", "zero children. This is not correct.", line);
      }
      enterBlock(kBranchDefine, "define", 0);
      return Scan::kGoesOn;
    }
  }
  if (classBlockPending_) {
    enterBlock(kBranchDefine, "define", line);
  } else {
    enterBlock(kBranchContainer, "container", line);
  }
  return Scan::kGoesOn;
}

Scan NodeEmitter::closeBraceAction(std::int32_t line) {
  if (currentBranch_->parent == nullptr) {
    return fail("error: NULL parent branch", "Null parent branch? This is not right.", line);
  }
  currentBranch_ = currentBranch_->parent;
  chunk_.clear();
  return Scan::kGoesOn;
}

ObjectBranch* NodeEmitter::addNode(ObjectBranch* parent, BranchType type, std::string_view label,
                                   std::string_view contents, std::int32_t line) {
  ObjectBranch* const node = makeCountedNode();
  node->parent = parent;
  node->branchType = type;
  node->branchTypeAsString = label;
  node->contents = contents;
  node->lineNumber = line;
  node->filePath = currentBranch_->filePath;
  parent->children.push_back(node);
  return node;
}

void NodeEmitter::enterBlock(BranchType type, std::string_view label, std::int32_t line) {
  const std::string_view header = text::trimAndReduceView(chunk_.text(), scratch_);
  currentBranch_ = addNode(currentBranch_, type, label, header, line);
  chunk_.clear();
}

// Closing braces may have climbed above the wrappers; later statements get new ones.
void NodeEmitter::repairScope() {
  const ObjectBranch* const parent = currentBranch_->parent;
  if (parent == nullptr) {
    const std::string& path = currentBranch_->filePath;
    // required: the whole path is searched, and modules and wrapped functions are not considered.
    const bool isWindow = text::contains(path, ".html") || text::contains(path, "script");
    ObjectBranch* const scope = addNode(root_, kBranchNamespace, "namespace",
                                        isWindow ? "namespace window" : "namespace global", 0);
    scope->tags = kGeneratedTag;
    currentBranch_ = addNode(scope, kBranchClass, "class",
                             isWindow ? "class WindowScope" : "class GlobalScope", 0);
  } else if (parent->branchTypeAsString == "namespace" &&
             currentBranch_->branchTypeAsString != "class") {
    currentBranch_ = addNode(currentBranch_, kBranchClass, "class", "class GlobalScope", 0);
  } else {
    return;
  }
  currentBranch_->tags = kScopeWrapperTags;
}

// Appends an error node to the root and prints its text, without a line feed.
Scan NodeEmitter::fail(std::string_view label, std::string_view printed, std::int32_t line) {
  base::StreamWriter(stdout) << printed;
  addNode(root_, kBranchError, label, text::trimAndReduceView(chunk_.text(), scratch_), line);
  chunk_.clear();
  return Scan::kEnds;
}

}  // namespace builder

std::string CleanupChunk(std::string text) {
  std::string scratch;
  return std::string(builder::cleanedChunk(text, scratch));
}
