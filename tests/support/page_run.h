// Runs the page parser over a text, below a node of its own.
#pragma once

#include <string>
#include <string_view>

#include "html/html_structure.h"
#include "support/capture.h"
#include "support/dump_tree.h"
#include "support/make_tree.h"
#include "tree/object_branch.h"

namespace support {

struct PageRun {
  ObjectBranch* top;   // the parent of the page's nodes
  std::string errors;  // what the run wrote to standard error

  std::string nodes() const { return dumpChildren(top); }
};

inline PageRun pageRunOf(std::string_view text, int startLine = 0) {
  PageRun run{addNode(nullptr, kBranchClass, "class", "HTMLDocument", "a.html"), ""};
  const std::string copy(text);
  run.errors = stderrOf([&] { ParseHTMLStructure(copy, run.top, "a.html", startLine); });
  return run;
}

// Returns the warnings for count closing tags without an open element.
inline std::string strayTagWarnings(int count) {
  std::string lines;
  for (int i = 0; i < count; ++i) lines += "Warning: Attempting to pop from empty element stack\n";
  return lines;
}

}  // namespace support
