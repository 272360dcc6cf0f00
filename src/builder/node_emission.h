// What the scanner does with a finished chunk: four actions that make the nodes of the scanner
// route, move up and down the tree, repair a scope that was closed too often, and stop the scan on
// an error.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/export.h"
#include "builder/chunk_text.h"
#include "tree/object_branch.h"

// Returns the text trimmed and reduced, without one leading comma and without the ")" at both ends.
// required: a balanced call loses its ")" as well: "foo(1)" becomes "foo(1".
QUORL_API std::string CleanupChunk(std::string text);

namespace builder {

enum class Scan { kGoesOn, kEnds };

class NodeEmitter {
 public:
  // start takes the first nodes: root or a wrapper below it.
  NodeEmitter(ObjectBranch* root, ObjectBranch* start, bool isJavaScript, ChunkText& chunk)
      : root_(root), currentBranch_(start), isJavaScript_(isJavaScript), chunk_(chunk) {}

  // On a line feed; line is the number of the line that starts.
  void newlineAction(std::int32_t line, bool inParentheses);
  // On a ";" outside parentheses.
  void statementAction(std::int32_t line);
  // On a "{" and on a "}".
  Scan openBraceAction(std::int32_t line);
  Scan closeBraceAction(std::int32_t line);

 private:
  ObjectBranch* addNode(ObjectBranch* parent, BranchType type, std::string_view label,
                        std::string_view contents, std::int32_t line);
  // Adds a node with the chunk as its contents below the current node and makes it current.
  void enterBlock(BranchType type, std::string_view label, std::int32_t line);
  void repairScope();
  Scan fail(std::string_view label, std::string_view printed, std::int32_t line);

  ObjectBranch* const root_;
  ObjectBranch* currentBranch_;
  const bool isJavaScript_;
  ChunkText& chunk_;
  bool classBlockPending_ = false;
  std::string scratch_;
};

}  // namespace builder
