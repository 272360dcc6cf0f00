#include "outline/comment_lines.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "outline/source_lines.h"

namespace host::outline {
namespace {

struct CommentMarks {
  std::string_view begin;
  std::string_view end;  // empty if the comment ends with its line
};
constexpr std::array kMarks = {CommentMarks{"//", ""}, CommentMarks{"/*", "*/"},
                               CommentMarks{"<!--", "-->"}};

const CommentMarks* marksOf(std::string_view text) {
  const auto* const marks =
      std::find_if(kMarks.begin(), kMarks.end(),
                   [text](const CommentMarks& known) { return text.starts_with(known.begin); });
  return marks == kMarks.end() ? nullptr : marks;
}

}  // namespace

void CommentRuns::add(std::int32_t firstLine, std::int32_t lastLine) {
  if (lastLine > firstLine) {
    endRun();
    comments_.push_back({firstLine, lastLine});
  } else if (run_.firstLine > 0 && firstLine == run_.lastLine + 1) {
    run_.lastLine = firstLine;
  } else {
    endRun();
    run_ = {firstLine, firstLine};
  }
}

void CommentRuns::endRun() {
  if (run_.lastLine > run_.firstLine) comments_.push_back(run_);
  run_ = {};
}

std::vector<CommentLines> CommentRuns::take() {
  endRun();
  return std::exchange(comments_, {});
}

std::vector<CommentLines> findComments(std::string_view source) {
  const SourceLines lines(source);
  CommentRuns runs;
  for (std::int32_t line = 1; line <= lines.count(); ++line) {
    std::string_view text = lines.text(line);
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    const CommentMarks* const marks = marksOf(text);
    if (marks == nullptr) continue;
    std::int32_t last = line;
    if (!marks->end.empty()) {
      text.remove_prefix(marks->begin.size());
      while (last < lines.count() && text.find(marks->end) == std::string_view::npos) {
        text = lines.text(++last);
      }
    }
    runs.add(line, last);
    line = last;
  }
  return runs.take();
}

}  // namespace host::outline
