// A whole run in its plain reading: the plain cleaner, the plain route of the file, the plain
// passes over the tree and the plain records.
#pragma once

#include <string>
#include <vector>

#include "tree/object_branch.h"

namespace reference {

// What a run gives the host, and what it writes.
struct Run {
  std::string answer;
  std::string printed;  // on standard output
  int strayTags = 0;    // closing tags that close nothing: a line each on standard error
};

// All bytes of the file, which has to be there.
std::string readFile(const std::string& path);

// The arguments of TreeBuilderJS, of which the chunk is one here.
struct Request {
  std::string filePath;
  std::string namespaceName;
  std::string className;
  std::string text;
  bool isJavaScript = true;
  std::vector<std::string> defines;
};
Run buildTree(const Request& request, ObjectBranch* root, std::string& chunk);

// What ParseJS does with a file of these bytes, from the reset of the counters on. chunk receives
// what the run leaves in the chunk.
Run parseJS(const std::string& path, const std::string& bytes, const std::string& defines,
            std::string& chunk);

}  // namespace reference
