// Holds the passes, which work in place and move runs of bytes, against the plain reading of their
// rules, which looks at one byte after the other and keeps a flag for each thing it knows.

#include <cstddef>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "cleaner/cleaner.h"
#include "support/capture.h"
#include "support/names.h"

namespace {

using std::string_view_literals::operator""sv;

std::string withoutPageCommentsPlainly(const std::string& text) {
  std::string result;
  bool inComment = false;
  for (std::size_t i = 0; i < text.size();) {
    if (!inComment && text.compare(i, 4, "<!--") == 0) {
      inComment = true;
      i += 4;
    } else if (inComment && text.compare(i, 3, "-->") == 0) {
      inComment = false;
      i += 3;
    } else {
      if (!inComment || text[i] == '\n') result += text[i];
      ++i;
    }
  }
  return result;
}

class PlainStripper {
 public:
  explicit PlainStripper(const std::string& text) : text_(text) {
    for (at_ = 0; at_ < text_.size(); ++at_) takeByte(text_[at_]);
  }
  const std::string& result() const { return result_; }

 private:
  bool inString() const { return inSingleQuote_ || inDoubleQuote_; }
  bool inComment() const { return inLineComment_ || inBlockComment_; }

  void takeByte(char byte) {
    const auto order = static_cast<signed char>(byte);
    if ((order < 0x20 && byte != '\n' && byte != '\r') || order > 0x7E) {
      result_ += ' ';
    } else if (copyNext_) {
      copyNext_ = false;
      result_ += byte;
    } else if (opensMarkerRun()) {
      markerRun_ = true;
    } else if (byte == ';' && markerRun_) {
      markerRun_ = false;
    } else {
      if (byte == ';') statementStart_ = true;
      if (!(byte == '[' && statementStart_) && !markerRun_) takeTextByte(byte);
    }
  }

  bool opensMarkerRun() const {
    if (inString() || markerRun_ || inComment()) return false;
    return at_ + 5 < text_.size() && text_.compare(at_, 5, "TTTTT") == 0 &&
           (at_ < 2 || text_[at_ - 2] != 'd');
  }

  void takeTextByte(char byte) {
    const char next = at_ + 1 < text_.size() ? text_[at_ + 1] : byte;
    const char previous = at_ > 0 ? text_[at_ - 1] : byte;
    if (inString()) {
      if (byte == '\\') copyNext_ = true;
      if (inSingleQuote_ && byte == '\'') inSingleQuote_ = false;
      if (inDoubleQuote_ && byte == '"') inDoubleQuote_ = false;
      result_ += byte;
    } else if (inLineComment_) {
      if (byte != '\n') return;
      inLineComment_ = false;
      result_ += byte;
    } else if (inBlockComment_) {
      if (byte == '*' && previous == '/') copyNext_ = true;
      if (byte == '/' && previous == '*') {
        inBlockComment_ = false;
        copyNext_ = true;
      }
      if (byte == '\n') result_ += byte;
    } else if (byte == '/' && (next == '/' || next == '*')) {
      (next == '/' ? inLineComment_ : inBlockComment_) = true;
    } else if (byte == '\'' || byte == '"') {
      (byte == '\'' ? inSingleQuote_ : inDoubleQuote_) = true;
      result_ += byte;
    } else {
      if (byte == '\n') statementStart_ = true;
      if (" \n};"sv.find(byte) == std::string_view::npos) statementStart_ = false;
      result_ += byte;
    }
  }

  const std::string& text_;
  std::size_t at_ = 0;
  std::string result_;
  bool inLineComment_ = false;
  bool inBlockComment_ = false;
  bool inSingleQuote_ = false;
  bool inDoubleQuote_ = false;
  bool copyNext_ = false;
  bool markerRun_ = false;
  bool statementStart_ = true;
};

// Reads the text byte by byte; for a directive's words and what they decide it asks the doors.
class PlainSimulation {
 public:
  PlainSimulation(const std::string& text, const std::vector<std::string>& known,
                  std::vector<std::string> defines)
      : known_(known), defines_(std::move(defines)) {
    for (const char byte : text) takeByte(byte);
  }
  const std::string& result() const { return result_; }
  const std::string& report() const { return report_; }
  const std::vector<std::string>& defines() const { return defines_; }

 private:
  void takeByte(char byte) {
    if (byte == '\n') {
      if (!endLine()) line_.clear();
      result_ += byte;
      return;
    }
    if (static_cast<signed char>(byte) < 0x20) return;
    if (byte != ' ') {
      if (atLineStart_) {
        inDirective_ = byte == '#';
        if (!inDirective_) line_.clear();
      }
      atLineStart_ = false;
    }
    if (inDirective_) {
      line_ += byte;
      if (line_.size() > 50) report_ += "[[" + line_ + "]]\n";
    } else if (emitting_) {
      result_ += byte;
    }
  }

  // Whether the directive goes on with the next line.
  bool endLine() {
    const std::size_t last = line_.find_last_not_of(' ');
    if (last != std::string::npos && line_[last] == '\\') return true;
    parts_.clear();
    Cleaner().CleanerPartsList(line_, parts_);
    const std::string keyword = parts_.empty() ? "" : parts_[0];
    atLineStart_ = true;
    inDirective_ = line_.empty() || !parts_.empty();
    if (keyword == "#include") {
      inDirective_ = false;
    } else if (keyword == "#if" || keyword == "#ifdef" || keyword == "#ifndef") {
      open();
    } else if (depth_ > 0) {
      if (keyword == "#elif") alternate();
      if (keyword == "#else") turn();
      if (keyword == "#endif") close();
    }
    return false;
  }

  void open() {
    ++depth_;
    if (active_.size() == depth_) {
      active_.push_back(true);
      taken_.push_back(false);
    }
    taken_[depth_] = false;
    if (active_[depth_ - 1]) {
      active_[depth_] = holds();
      taken_[depth_] = active_[depth_];
      emitting_ = active_[depth_];
    } else {
      active_[depth_] = false;
      atLineStart_ = false;
    }
    registerName();
  }

  void alternate() {
    if (!active_[depth_ - 1]) {
      active_[depth_] = false;
      atLineStart_ = false;
    } else if (taken_[depth_]) {
      emitting_ = false;
    } else {
      active_[depth_] = holds();
      emitting_ = active_[depth_];
    }
    registerName();
  }

  void turn() {
    active_[depth_] = active_[depth_ - 1] && !active_[depth_] && !taken_[depth_];
    emitting_ = active_[depth_];
    inDirective_ = false;
  }

  void close() {
    --depth_;
    if (!active_[depth_]) {
      emitting_ = false;
    } else if (depth_ == 0) {
      emitting_ = true;
    } else if (!active_[depth_ - 1]) {
      active_[depth_] = false;
      emitting_ = false;
    }
  }

  bool holds() const {
    return Cleaner().GetPreProcessorDirectiveActiveState(line_, active_[depth_] ? 1 : 0, known_);
  }

  void registerName() {
    if (parts_.size() < 2) return;
    for (const std::string& name : defines_)
      if (name == parts_[1]) return;
    defines_.push_back(parts_[1]);
  }

  const std::vector<std::string>& known_;
  std::vector<std::string> defines_;
  std::string result_;
  std::string report_;
  std::string line_;
  std::vector<std::string> parts_;
  bool atLineStart_ = true;
  bool inDirective_ = true;
  bool emitting_ = true;
  std::size_t depth_ = 0;
  std::vector<bool> active_{true};
  std::vector<bool> taken_{false};
};

void expectPlainPageComments(const std::string& text) {
  ASSERT_EQ(Cleaner().RemoveHTMLComments(text), withoutPageCommentsPlainly(text))
      << testing::PrintToString(text);
}

void expectPlainStripping(const std::string& text) {
  ASSERT_EQ(Cleaner().UncommentAndUnquoteText(text), PlainStripper(text).result())
      << testing::PrintToString(text);
}

// The first text whose simulation differs, escaped; empty if none does. Nothing is asserted at the
// spot, since the pass writes its report to the standard output that a failure would go to.
class SimulationDifference {
 public:
  void operator()(const std::string& text) {
    for (const std::string_view known : {"", "A", "B,C"}) {
      const PlainSimulation plain(text, support::names(known), {"D"});
      std::vector<std::string> defines{"D"};
      const std::string result =
          Cleaner().PreProcessorSimulation(text, support::names(known), defines);
      plainReport_ += plain.report();
      const bool same = result == plain.result() && defines == plain.defines();
      if (!same && first_.empty())
        first_ = testing::PrintToString(text) + " with " + std::string(known) + " gives " +
                 testing::PrintToString(result) + ", not " + testing::PrintToString(plain.result());
    }
  }
  const std::string& first() const { return first_; }
  const std::string& plainReport() const { return plainReport_; }

 private:
  std::string first_;
  std::string plainReport_;
};

// Every text of up to that many of the pieces.
template <typename Expect>
void forEachText(std::span<const std::string_view> pieces, int count, const std::string& before,
                 Expect& expect) {
  expect(before);
  if (count == 0 || testing::Test::HasFatalFailure()) return;
  for (const std::string_view piece : pieces)
    forEachText(pieces, count - 1, before + std::string(piece), expect);
}

template <typename Expect>
void forRandomTexts(std::span<const std::string_view> pieces, std::size_t maxPieces, int texts,
                    Expect& expect) {
  std::mt19937 random(20240229);
  for (int i = 0; i < texts && !testing::Test::HasFatalFailure(); ++i) {
    std::string text;
    for (std::size_t left = random() % (maxPieces + 1); left > 0; --left)
      text += pieces[random() % pieces.size()];
    expect(text);
  }
}

constexpr std::string_view kPageBytes[] = {"<", "!", "-", ">", "\n", "a"};
constexpr std::string_view kPagePieces[] = {"<!--", "-->", "<",  "!", "--", "-",
                                            ">",    "\n",  "\r", "a", "//"};

TEST(CleanerPlainReading, PageComments) {
  forEachText(kPageBytes, 6, "<!--", expectPlainPageComments);
  forEachText(kPageBytes, 5, "", expectPlainPageComments);
  forRandomTexts(kPagePieces, 40, 20'000, expectPlainPageComments);
}

constexpr std::string_view kScriptBytes[] = {"/", "*", "'",  "\"", "\\",
                                             "[", ";", "\n", "a",  "\xE9"};
constexpr std::string_view kScriptPieces[] = {
    "/", "*", "\n", "'", "\"", "\\", "[",  "]",  ";",    "T",    "TTTTT", "d",
    " ", "x", "}",  "{", "\r", "//", "/*", "*/", "\xE9", "\0"sv, "\x7F",  "abc"};
constexpr std::string_view kMarkerPieces[] = {"[", "d",  "x",  "T",  "TTTTT", "TTTTTT", ";",
                                              " ", "\n", "//", "/*", "\xE9",  "*/",     "'"};

TEST(CleanerPlainReading, CommentStripping) {
  forEachText(kScriptBytes, 5, "", expectPlainStripping);
  forRandomTexts(kScriptPieces, 40, 50'000, expectPlainStripping);
  forRandomTexts(kMarkerPieces, 12, 50'000, expectPlainStripping);
}

constexpr std::string_view kDirectivePieces[] = {"#if A\n",
                                                 "#ifdef B\n",
                                                 "#ifndef C\n",
                                                 "#elif C\n",
                                                 "#elif A\n",
                                                 "#else\n",
                                                 "#endif\n",
                                                 "#ifndef D",
                                                 "x\n",
                                                 "  y\n",
                                                 "  \n",
                                                 "\n",
                                                 " ",
                                                 "1 #endif\n",
                                                 "z #if A\n",
                                                 "#include <a>\n",
                                                 "#define A \\\n",
                                                 "\\\n",
                                                 "#",
                                                 "1(",
                                                 "\t",
                                                 "\xE9",
                                                 "q",
                                                 "                    "};
constexpr std::string_view kConditionPieces[] = {"#ifdef A\n", "#ifndef A\n", "#elif B\n",
                                                 "#else\n",    "#endif\n",    "x\n"};

TEST(CleanerPlainReading, PreprocessorSimulation) {
  SimulationDifference difference;
  const std::string report = support::stdoutOf([&difference] {
    forEachText(kConditionPieces, 5, "", difference);
    forRandomTexts(kConditionPieces, 30, 5'000, difference);
    forRandomTexts(kDirectivePieces, 30, 10'000, difference);
  });
  EXPECT_EQ(difference.first(), "");
  EXPECT_TRUE(report == difference.plainReport());
  EXPECT_NE(report, "") << "no text was long enough to be reported";
}

}  // namespace
