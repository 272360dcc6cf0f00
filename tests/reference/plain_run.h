// Reference implementation of a whole run: the reference cleaner, the file's reference route, the
// reference passes over the tree and the reference records.
#pragma once

#include <string>
#include <vector>

#include "tree/object_branch.h"

namespace reference {

// The answer of a run and what it prints.
struct Run {
  std::string answer;
  std::string printed;  // on standard output
  int strayTags = 0;    // closing tags without an open element: one line each on standard error
};

// Returns all bytes of the file, which must exist.
std::string readFile(const std::string& path);

// The arguments of TreeBuilderJS, including the chunk.
struct Request {
  std::string filePath;
  std::string namespaceName;
  std::string className;
  std::string text;
  bool isJavaScript = true;
  std::vector<std::string> defines;
};
Run buildTree(const Request& request, ObjectBranch* root, std::string& chunk);

// Does what ParseJS does with a file of these bytes, from the reset of the counters on. Stores in
// chunk what the run leaves there.
Run parseJS(const std::string& path, const std::string& bytes, const std::string& defines,
            std::string& chunk);

}  // namespace reference
