#include "reference/plain_parts_list.h"

#include <cstddef>

#include "reference/plain_strings.h"

namespace reference {
namespace {

class Splitter {
 public:
  std::vector<std::string> split(const std::string& statement) {
    for (std::size_t i = 0; i < statement.size() && statement[i] != '\0'; ++i) {
      const bool wasInWord = inWord_;
      inWord_ = false;
      take(statement[i], i > 0 ? statement[i - 1] : statement[i], wasInWord);
    }
    flush();
    return parts_;
  }

 private:
  static bool isOneOf(char byte, const std::string& bytes) {
    return bytes.find(byte) != std::string::npos;
  }
  bool inString() const { return inSingleQuote_ || inDoubleQuote_ || inBackQuote_; }

  void flush() {
    if (!part_.empty()) parts_.push_back(part_);
  }
  void flushAndSet(const std::string& part) {
    flush();
    part_ = part;
  }

  // The caller has cleared inWord_; only some bytes set it again.
  void take(char c, char prev, bool wasInWord) {
    if (c == '\\' && inString()) {
      escaped_ = !escaped_;
      part_ += c;
    } else if (c == '`') {
      takeBackQuote();
    } else if (c == '\'') {
      takeSingleQuote();
    } else if (c == '"') {
      takeDoubleQuote();
    } else if (inString()) {
      escaped_ = false;
      part_ += c;
    } else if (isOneOf(c, ":();[]{},")) {
      flushAndSet(std::string(1, c));
    } else if (c == '.') {
      if (isDigit(prev)) {
        inWord_ = true;
        part_ += c;
      } else {
        flushAndSet(".");
      }
    } else if (isOneOf(c, "><=!")) {
      operate(c, "><=!+/*-%", wasInWord);
    } else if (isOneOf(c, "+*%/-")) {
      operate(c, "+*%/-=", wasInWord);
    } else if (isOneOf(c, " \t\n\v\f\r")) {
      flushAndSet("");
    } else if (wasInWord) {
      part_ += c;
      inWord_ = true;
    } else {
      flushAndSet(std::string(1, c));
      inWord_ = true;
    }
  }

  void takeBackQuote() {
    if (inBackQuote_) {
      endOrEscape(inBackQuote_);
      part_ += '`';
    } else if (!inString()) {
      inBackQuote_ = true;
      flushAndSet("`");
      part_ += '`';
    } else {
      part_ += '`';  // a pending escape stays pending
    }
  }

  void takeSingleQuote() {
    if (inSingleQuote_) {
      endOrEscape(inSingleQuote_);
      part_ += '\'';
    } else if (!inString()) {
      inSingleQuote_ = true;
      flushAndSet("'");
      part_ += '\'';
    } else {
      escaped_ = false;
      part_ += '\'';
    }
  }

  void takeDoubleQuote() {
    if (inDoubleQuote_) {
      endOrEscape(inDoubleQuote_);
      part_ += '"';
    } else if (!inString()) {
      inDoubleQuote_ = true;
      flushAndSet("\"");
    } else {
      escaped_ = false;
      part_ += '"';
    }
  }

  void endOrEscape(bool& inThis) {
    if (escaped_) {
      escaped_ = false;
    } else {
      inThis = false;
    }
  }

  void operate(char c, const std::string& gluesTo, bool wasInWord) {
    if (wasInWord) {
      flushAndSet(std::string(1, c));
    } else if (part_.empty()) {
      part_ = std::string(1, c);
    } else if (isOneOf(part_[part_.size() - 1], gluesTo)) {
      part_ += c;
    } else {
      flushAndSet(std::string(1, c));
    }
  }

  std::vector<std::string> parts_;
  std::string part_;
  bool inSingleQuote_ = false;
  bool inDoubleQuote_ = false;
  bool inBackQuote_ = false;
  bool escaped_ = false;
  bool inWord_ = false;
};

}  // namespace

std::vector<std::string> partsList(const std::string& statement) {
  return Splitter().split(statement);
}

}  // namespace reference
