// Walks the text line by line, in place. The first byte of a line that is not a space decides where
// the line goes: into the directive if it is "#", else to the output, or nowhere inside an inactive
// branch. The spaces before that byte are collected as the start of a directive and dropped with
// it, which is how most lines lose their indentation; after a line of only spaces, an #include or
// an #else they go to the output instead.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <unordered_set>

#include "base/stream_writer.h"
#include "cleaner/cleaner.h"
#include "text/byte_blocks.h"
#include "text/byte_set.h"
#include "text/string_primitives.h"

namespace cleaner {
namespace {

constexpr std::size_t kMaxSilentDirectiveBytes = 50;  // each byte beyond is reported

// Bytes are compared as signed values, so those from 0x80 up are dropped too.
bool isDropped(char byte) { return static_cast<signed char>(byte) < 0x20; }

bool holdsDropped(std::string_view text) {
  return text::holdsByte(text, [](text::Bytes bytes) { return bytes.areBelow(0x20); });
}

enum class Directive { kInclude, kOpening, kAlternative, kElse, kEnd, kOther };

Directive directiveOf(std::string_view keyword) {
  struct Row {
    std::string_view keyword;
    Directive directive;
  };
  constexpr std::array<Row, 7> kRows{{{"#include", Directive::kInclude},
                                      {"#if", Directive::kOpening},
                                      {"#ifdef", Directive::kOpening},
                                      {"#ifndef", Directive::kOpening},
                                      {"#elif", Directive::kAlternative},
                                      {"#else", Directive::kElse},
                                      {"#endif", Directive::kEnd}}};
  const auto row = std::find_if(kRows.begin(), kRows.end(),
                                [keyword](const Row& each) { return each.keyword == keyword; });
  return row == kRows.end() ? Directive::kOther : row->directive;
}

class PreprocessorSimulation {
 public:
  PreprocessorSimulation(std::string& text, const std::vector<std::string>& knownDefines,
                         std::vector<std::string>& defines)
      : text_(text), knownDefines_(knownDefines), defines_(defines) {}

  void run() {
    std::size_t in = 0;
    while (in < text_.size()) {
      const std::size_t end = std::min(text_.find('\n', in), text_.size());
      readLine(in, end);
      if (end == text_.size()) break;
      endLine();
      text_[out_++] = '\n';
      in = end + 1;
    }
    text_.resize(out_);
  }

 private:
  void readLine(std::size_t in, std::size_t end);
  void endLine();
  void endDirective(const DirectiveParts& parts);
  void open(const DirectiveParts& parts);
  void alternate(const DirectiveParts& parts);
  void turnToElse();
  void close();
  void registerName(const DirectiveParts& parts);
  void leave(bool atLineStart, bool inDirective) {
    atLineStart_ = atLineStart;
    inDirective_ = inDirective;
  }

  // Each handles a piece of a line and skips its dropped bytes.
  void takeBytes(std::size_t in, std::size_t end);
  void emit(std::size_t in, std::size_t end);
  void collect(std::size_t in, std::size_t end);
  void collectRun(std::string_view run);

  bool isLiveAbove() const { return activeStates_[depth_ - 1] != 0; }
  void setState(bool active) {
    activeStates_[depth_] = active ? 1 : 0;
    emitting_ = active;
  }

  std::string& text_;
  const std::vector<std::string>& knownDefines_;
  std::vector<std::string>& defines_;
  std::size_t out_ = 0;  // the result so far is text_[0, out_)

  bool atLineStart_ = true;
  bool inDirective_ = true;
  std::string directiveLine_;
  std::size_t inkEnd_ = 0;  // just past the last byte of directiveLine_ that is not a space
  bool emitting_ = true;

  // Indexed by nesting depth of conditionals; entry 0 is the text outside all of them. Entries
  // above the depth keep their values until a later conditional overwrites them.
  std::size_t depth_ = 0;
  std::vector<char> activeStates_{1};  // the branch at this depth is active
  std::vector<char> takenStates_{0};   // the opening directive at this depth was true

  std::unordered_set<std::string> names_;  // copy of defines_, filled at the first lookup
  base::StreamWriter report_{stdout};
};

void PreprocessorSimulation::readLine(std::size_t in, std::size_t end) {
  if (atLineStart_) {
    std::size_t ink = in;
    while (ink < end && (text_[ink] == ' ' || isDropped(text_[ink]))) ++ink;
    const bool isOther = ink < end && text_[ink] != '#';
    // Blanks in front of other text would be collected for nothing, unless they are reported.
    const bool isUnread =
        inDirective_ && isOther && directiveLine_.size() + (ink - in) <= kMaxSilentDirectiveBytes;
    if (!isUnread) takeBytes(in, ink);
    if (ink == end) return;
    in = ink;
    inDirective_ = !isOther;
    if (isOther) {
      directiveLine_.clear();
      inkEnd_ = 0;
    }
    atLineStart_ = false;
  }
  takeBytes(in, end);
}

void PreprocessorSimulation::takeBytes(std::size_t in, std::size_t end) {
  if (inDirective_) {
    collect(in, end);
  } else {
    emit(in, end);
  }
}

void PreprocessorSimulation::emit(std::size_t in, std::size_t end) {
  if (!emitting_) return;
  char* const line = text_.data() + in;
  std::size_t length = end - in;
  // Cleaned text holds none of these bytes, so most lines skip the filtering.
  if (holdsDropped({line, length})) {
    length = static_cast<std::size_t>(std::remove_if(line, line + length, isDropped) - line);
  }
  std::memmove(text_.data() + out_, line, length);
  out_ += length;
}

void PreprocessorSimulation::collect(std::size_t in, std::size_t end) {
  while (in < end) {
    std::size_t to = in;
    while (to < end && !isDropped(text_[to])) ++to;
    collectRun(std::string_view(text_).substr(in, to - in));
    in = to < end ? to + 1 : end;
  }
}

void PreprocessorSimulation::collectRun(std::string_view run) {
  const std::size_t before = directiveLine_.size();
  directiveLine_.append(run);
  const std::size_t ink = run.find_last_not_of(' ');
  if (ink != std::string_view::npos) inkEnd_ = before + ink + 1;
  // required: the line so far is reported once for every byte beyond the limit.
  const std::string_view line = directiveLine_;
  for (std::size_t size = std::max(before, kMaxSilentDirectiveBytes) + 1; size <= line.size();
       ++size) {
    report_ << "[[" << line.substr(0, size) << "]]\n";
  }
}

void PreprocessorSimulation::endLine() {
  if (directiveLine_.empty()) {
    leave(true, true);
    return;
  }
  if (inkEnd_ > 0 && directiveLine_[inkEnd_ - 1] == '\\') return;  // continues on the next line
  const DirectiveParts parts = inkEnd_ > 0 ? splitDirective(directiveLine_) : DirectiveParts{};
  if (parts.count == 0) {
    leave(true, false);
  } else {
    endDirective(parts);
  }
  directiveLine_.clear();
  inkEnd_ = 0;
}

void PreprocessorSimulation::endDirective(const DirectiveParts& parts) {
  Directive directive = directiveOf(parts.keyword);
  // Outside all conditionals these belong to nothing.
  const bool isStray =
      depth_ == 0 && (directive == Directive::kAlternative || directive == Directive::kElse ||
                      directive == Directive::kEnd);
  if (isStray) directive = Directive::kOther;
  switch (directive) {
    case Directive::kInclude:
      leave(true, false);
      return;
    case Directive::kOpening:
      open(parts);
      return;
    case Directive::kAlternative:
      alternate(parts);
      return;
    case Directive::kElse:
      turnToElse();
      leave(true, false);
      return;
    case Directive::kEnd:
      close();
      leave(true, true);
      return;
    case Directive::kOther:
      leave(true, true);
      return;
  }
}

void PreprocessorSimulation::open(const DirectiveParts& parts) {
  ++depth_;
  if (activeStates_.size() == depth_) {
    activeStates_.push_back(1);
    takenStates_.push_back(0);
  }
  takenStates_[depth_] = 0;
  if (isLiveAbove()) {
    setState(opensLiveBranch(parts, activeStates_[depth_], knownDefines_));
    takenStates_[depth_] = activeStates_[depth_];
    atLineStart_ = true;
  } else {
    // required: atLineStart_ stays false, so the whole next line is read as a directive.
    activeStates_[depth_] = 0;
  }
  registerName(parts);
  inDirective_ = true;
}

void PreprocessorSimulation::alternate(const DirectiveParts& parts) {
  if (isLiveAbove()) {
    if (takenStates_[depth_] != 0) {
      emitting_ = false;
    } else {
      // required: a true #elif does not count as taken, so a later #else is emitted as well.
      setState(opensLiveBranch(parts, activeStates_[depth_], knownDefines_));
    }
    atLineStart_ = true;
  } else {
    activeStates_[depth_] = 0;
  }
  registerName(parts);
  inDirective_ = true;
}

void PreprocessorSimulation::turnToElse() {
  setState(isLiveAbove() && activeStates_[depth_] == 0 && takenStates_[depth_] == 0);
}

void PreprocessorSimulation::close() {
  --depth_;
  if (activeStates_[depth_] == 0) {
    emitting_ = false;
  } else if (depth_ == 0) {
    emitting_ = true;
  }
  // Only active branches enclose an active one, so the enclosing levels need no check.
  // required: otherwise emitting_ stays, so a false block silences the rest of a true block around
  // it.
}

void PreprocessorSimulation::registerName(const DirectiveParts& parts) {
  if (parts.count < 2) return;
  if (names_.empty()) names_.insert(defines_.begin(), defines_.end());
  if (names_.insert(parts.argument).second) defines_.push_back(parts.argument);
}

}  // namespace

DirectiveParts splitDirective(std::string_view line) {
  DirectiveParts parts;
  std::string current;
  std::size_t i = 0;
  const auto take = [&](std::string& part) {
    part = text::trimView(current);
    current.clear();
    ++parts.count;
  };

  // The keyword: "#" and letters. Other bytes are dropped, and a blank ends it unless it is only
  // "#".
  bool seenHash = false;
  for (; i < line.size() && parts.count == 0; ++i) {
    const char byte = line[i];
    if (byte == '#') {
      seenHash = true;
      current.push_back(byte);
    } else if (byte == ' ') {
      if (seenHash && current.size() != 1) take(parts.keyword);
    } else {
      if (text::kLetters(byte)) {
        if (!seenHash) return parts;
        current.push_back(byte);
      }
      // required: before a "(" even an empty keyword counts as a part.
      if (i + 1 < line.size() && line[i + 1] == '(') take(parts.keyword);
    }
  }

  // The argument: blanks before its first "(" or letter are dropped.
  bool inArgument = false;
  for (; i < line.size(); ++i) {
    const char byte = line[i];
    if (!inArgument && byte == ' ') continue;
    inArgument = inArgument || byte == '(' || text::kLetters(byte);
    current.push_back(byte);
  }
  if (!current.empty()) take(parts.count == 0 ? parts.keyword : parts.argument);
  return parts;
}

bool opensLiveBranch(const DirectiveParts& parts, int previousState,
                     const std::vector<std::string>& knownDefines) {
  if (parts.count == 0 || previousState == -1) return false;
  const bool found = parts.count > 1 && std::find(knownDefines.begin(), knownDefines.end(),
                                                  parts.argument) != knownDefines.end();
  const std::string_view keyword = parts.keyword;
  if (keyword == "#include" || keyword == "#define") return true;
  // required: expressions are not evaluated: "#if 1" is false unless "1" is a known name.
  if (keyword == "#ifdef" || keyword == "#if") return found;
  if (keyword == "#ifndef") return !found;
  if (keyword == "#elif") return previousState == 0 && found;
  return keyword == "#else" && previousState == 0;
}

void simulatePreprocessor(std::string& text, const std::vector<std::string>& knownDefines,
                          std::vector<std::string>& defines) {
  PreprocessorSimulation(text, knownDefines, defines).run();
}

}  // namespace cleaner

std::string Cleaner::PreProcessorSimulation(std::string text, std::vector<std::string> knownDefines,
                                            std::vector<std::string>& defines) {
  cleaner::simulatePreprocessor(text, knownDefines, defines);
  return text;
}

bool Cleaner::GetPreProcessorDirectiveActiveState(std::string line, std::int32_t previousState,
                                                  std::vector<std::string> knownDefines) {
  return cleaner::opensLiveBranch(cleaner::splitDirective(line), previousState, knownDefines);
}

void Cleaner::CleanerPartsList(std::string line, std::vector<std::string>& parts) {
  const cleaner::DirectiveParts split = cleaner::splitDirective(line);
  if (split.count > 0) parts.push_back(split.keyword);
  if (split.count > 1) parts.push_back(split.argument);
}
