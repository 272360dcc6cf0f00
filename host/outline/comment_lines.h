// Comments that take whole lines, for outlines that fold them.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace host::outline {

// Source lines from 1.
struct CommentLines {
  std::int32_t firstLine = 0;
  std::int32_t lastLine = 0;
  bool operator==(const CommentLines&) const = default;
};

// Adds a comment that begins its line; one that is a single line continues the one of the line
// before if that is a single line too or a run of them.
class CommentRuns {
 public:
  void add(std::int32_t firstLine, std::int32_t lastLine);

  // Those of more than one line, in order.
  std::vector<CommentLines> take();

 private:
  void endRun();

  CommentLines run_;  // of comments of a single line; 0 if there is none
  std::vector<CommentLines> comments_;
};

// Comments of pages and of text that is no script, by how their first line begins: //, /* or <!--.
std::vector<CommentLines> findComments(std::string_view source);

}  // namespace host::outline
