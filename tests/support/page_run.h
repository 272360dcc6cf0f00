// One run of the page parser over a text, under a node of its own.
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
  ObjectBranch* top;   // the node under which the page hangs
  std::string errors;  // what the run wrote to standard error

  std::string nodes() const { return dumpChildren(top); }
};

inline PageRun pageRunOf(std::string_view text, int startLine = 0) {
  PageRun run{addNode(nullptr, kBranchClass, "class", "HTMLDocument", "a.html"), ""};
  const std::string copy(text);
  run.errors = stderrOf([&] { ParseHTMLStructure(copy, run.top, "a.html", startLine); });
  return run;
}

// What is said of so many closing tags that close nothing.
inline std::string strayTagWarnings(int count) {
  std::string lines;
  for (int i = 0; i < count; ++i) lines += "Warning: Attempting to pop from empty element stack\n";
  return lines;
}

}  // namespace support
