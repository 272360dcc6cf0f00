#include "reference/plain_cleaner.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "reference/plain_strings.h"

namespace reference {
namespace {

bool isIn(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

class Stripper {
 public:
  explicit Stripper(const std::string& text) : text_(text) {
    for (at_ = 0; at_ < text_.size(); ++at_) takeByte();
  }
  const std::string& result() const { return result_; }

 private:
  bool inString() const { return inSingleQuote_ || inDoubleQuote_; }
  bool inComment() const { return inLineComment_ || inBlockComment_; }

  // Each return ends the work on this byte.
  void takeByte() {
    const char c = text_[at_];
    const int value = static_cast<signed char>(c);
    const char next = at_ + 1 < text_.size() ? text_[at_ + 1] : c;
    const char prev = at_ > 0 ? text_[at_ - 1] : c;
    if ((value < 0x20 && c != '\n' && c != '\r') || value > 0x7E) return append(' ');
    if (copyNext_) {
      copyNext_ = false;
      return append(c);
    }
    if (opensMarkerRun()) {
      markerRun_ = true;
      return;
    }
    if (c == ';') {
      if (markerRun_) {
        markerRun_ = false;
        return;
      }
      statementStart_ = true;
    }
    if (statementStart_ && c == '[') return;
    if (markerRun_) return;
    if (c == '*') {
      if (inString()) return append(c);
      if (inLineComment_) return;
      if (inBlockComment_ && prev == '/') {
        copyNext_ = true;
        return;
      }
    }
    if (c == '/') {
      if (inString()) return append(c);
      if (inLineComment_) return;
      if (inBlockComment_) {
        if (prev == '*') {
          inBlockComment_ = false;
          copyNext_ = true;
        }
        return;
      }
      if (next == '/') {
        inLineComment_ = true;
        return;
      }
      if (next == '*') {
        inBlockComment_ = true;
        return;
      }
    }
    if (inString()) {
      if (c == '\\') copyNext_ = true;
      if (inSingleQuote_ && c == '\'') inSingleQuote_ = false;
      if (inDoubleQuote_ && c == '"') inDoubleQuote_ = false;
      return append(c);
    }
    if (c == '\'') {
      if (inComment()) return;
      inSingleQuote_ = true;
      return append(c);
    }
    if (c == '"') {
      if (inComment()) return;
      inDoubleQuote_ = true;
      return append(c);
    }
    if (c == '\n') {
      if (inBlockComment_) return append(c);
      if (inLineComment_) {
        inLineComment_ = false;
        return append(c);
      }
      statementStart_ = true;
    }
    if (inComment()) return;
    if (c != ' ' && c != '\n' && c != '}' && c != ';') statementStart_ = false;
    append(c);
  }

  bool opensMarkerRun() const {
    if (inString() || markerRun_ || inComment()) return false;
    if (at_ + 5 >= text_.size() || text_.compare(at_, 5, "TTTTT") != 0) return false;
    return at_ < 2 || text_[at_ - 2] != 'd';
  }

  void append(char byte) { result_ += byte; }

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

class Simulation {
 public:
  Simulation(const std::vector<std::string>& known, const std::vector<std::string>& defines)
      : known_(known) {
    result_.defines = defines;
  }

  Simulated run(const std::string& text) {
    for (const char byte : text) takeByte(byte);
    return std::move(result_);
  }

 private:
  void takeByte(char c) {
    if (c == '\n') {
      endLine();
      result_.text += '\n';
      return;
    }
    if (static_cast<signed char>(c) < 0x20) return;
    if (c != ' ') {
      if (atLineStart_) {
        inDirective_ = c == '#';
        if (!inDirective_) directiveLine_ = "";
      }
      atLineStart_ = false;
    }
    if (!inDirective_) {
      if (emitting_) result_.text += c;
      return;
    }
    directiveLine_ += c;
    if (directiveLine_.size() > 50) result_.report += "[[" + directiveLine_ + "]]\n";
  }

  void endLine() {
    const std::string trimmed = trim(directiveLine_);
    if (!trimmed.empty() && trimmed[trimmed.size() - 1] == '\\') return;  // continues
    const std::vector<std::string> parts = directiveParts(directiveLine_);
    if (directiveLine_.empty()) {
      leave(true, true);
    } else if (trimmed.empty() || parts.empty() || parts[0] == "#include") {
      leave(true, false);
    } else if (parts[0] == "#if" || parts[0] == "#ifdef" || parts[0] == "#ifndef") {
      open();
      registerName(parts);
      inDirective_ = true;
    } else if (parts[0] == "#elif" && depth_ > 0) {
      alternate();
      registerName(parts);
      inDirective_ = true;
    } else if (parts[0] == "#else" && depth_ > 0) {
      turn();
      leave(true, false);
    } else if (parts[0] == "#endif" && depth_ > 0) {
      close();
      leave(true, true);
    } else {  // also an #elif, #else or #endif outside all conditionals
      leave(true, true);
    }
    directiveLine_ = "";
  }

  void leave(bool atLineStart, bool inDirective) {
    atLineStart_ = atLineStart;
    inDirective_ = inDirective;
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
      if (active_[depth_]) taken_[depth_] = true;
      emitting_ = active_[depth_];
      atLineStart_ = true;
    } else {
      active_[depth_] = false;
    }
  }

  void alternate() {
    if (active_[depth_ - 1]) {
      if (taken_[depth_]) {
        emitting_ = false;
      } else {
        active_[depth_] = holds();
        emitting_ = active_[depth_];
      }
      atLineStart_ = true;
    } else {
      active_[depth_] = false;
    }
  }

  void turn() {
    if (!active_[depth_ - 1] || active_[depth_] || taken_[depth_]) {
      active_[depth_] = false;
      emitting_ = false;
    } else {
      active_[depth_] = true;
      emitting_ = true;
    }
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

  bool holds() const { return opensLiveBranch(directiveLine_, active_[depth_] ? 1 : 0, known_); }

  void registerName(const std::vector<std::string>& parts) {
    if (parts.size() > 1 && !isIn(result_.defines, parts[1])) result_.defines.push_back(parts[1]);
  }

  const std::vector<std::string>& known_;
  Simulated result_;
  bool atLineStart_ = true;
  bool inDirective_ = true;
  std::string directiveLine_;
  bool emitting_ = true;
  std::size_t depth_ = 0;
  std::vector<bool> active_{true};
  std::vector<bool> taken_{false};
};

}  // namespace

std::string removeHtmlComments(const std::string& text) {
  std::string result;
  bool inHtmlComment = false;
  std::size_t i = 0;
  while (i < text.size()) {
    if (!inHtmlComment && text.compare(i, 4, "<!--") == 0) {
      inHtmlComment = true;
      i += 4;
    } else if (inHtmlComment && text.compare(i, 3, "-->") == 0) {
      inHtmlComment = false;
      i += 3;
    } else {
      if (!inHtmlComment || text[i] == '\n') result += text[i];
      ++i;
    }
  }
  return result;
}

std::string stripComments(const std::string& text) { return Stripper(text).result(); }

Simulated simulatePreprocessor(const std::string& text,
                               const std::vector<std::string>& knownDefines,
                               const std::vector<std::string>& defines) {
  return Simulation(knownDefines, defines).run(text);
}

bool opensLiveBranch(const std::string& line, int previousState,
                     const std::vector<std::string>& knownDefines) {
  const std::vector<std::string> parts = directiveParts(line);
  if (parts.empty() || previousState == -1) return false;
  const bool found = parts.size() > 1 && isIn(knownDefines, parts[1]);
  if (parts[0] == "#include") return true;
  if (parts[0] == "#define") return true;
  if (parts[0] == "#ifdef") return found;
  if (parts[0] == "#ifndef") return !found;
  if (parts[0] == "#if") return found;
  if (parts[0] == "#elif") return previousState == 0 ? found : false;
  if (parts[0] == "#else") return previousState == 0;
  return false;
}

std::vector<std::string> directiveParts(const std::string& line) {
  std::vector<std::string> parts;
  bool seenHash = false;
  bool inArguments = false;
  std::string current;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    const char next = i + 1 < line.size() ? line[i + 1] : '\0';
    if (!parts.empty()) {
      if (!inArguments && c == ' ') continue;
      if (c == '(' || isLetter(c)) inArguments = true;
      current += c;
    } else if (c == '#') {
      seenHash = true;
      current += c;
    } else if (c == ' ') {
      if (seenHash && current.size() != 1) {
        parts.push_back(trim(current));
        current = "";
      }
    } else {
      if (isLetter(c)) {
        if (!seenHash) return {};
        current += c;
      }
      if (next == '(') {
        parts.push_back(trim(current));
        current = "";
      }
    }
  }
  if (!current.empty()) parts.push_back(trim(current));
  return parts;
}

Simulated cleanText(const std::string& text, const std::vector<std::string>& knownDefines,
                    const std::vector<std::string>& defines) {
  std::string cleaned = removeHtmlComments(text);
  replaceAll(cleaned, "\t", " ");
  replaceAll(cleaned, "\r", "\n");
  return simulatePreprocessor(stripComments(cleaned), knownDefines, defines);
}

}  // namespace reference
