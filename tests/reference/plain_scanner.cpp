#include "reference/plain_scanner.h"

#include <cstddef>
#include <cstdint>

#include "reference/plain_detectors.h"
#include "reference/plain_strings.h"
#include "reference/plain_tree.h"

namespace reference {
namespace {

constexpr std::size_t kScanLimit = 10'485'760;

class Scanner {
 public:
  Scanner(ObjectBranch* root, ObjectBranch* start, bool isJavaScript, std::string& chunk)
      : root_(root), currentBranch_(start), isJavaScript_(isJavaScript), chunk_(chunk) {}

  std::string run(const std::string& text) {
    for (std::size_t position = 0; position < text.size() && position < kScanLimit; ++position) {
      takeByte(text[position]);
      if (ended_) break;
    }
    return printed_;
  }

 private:
  bool inString() const { return inSingleQuote_ || inDoubleQuote_ || inBackQuote_; }

  void takeByte(char byte) {
    if (inString() && byte == '\\') {
      escaped_ = !escaped_;
      chunk_ += byte;
      return;
    }
    if (byte == '`') return takeQuote(byte, inBackQuote_, inSingleQuote_ || inDoubleQuote_);
    if (byte == '\'') return takeQuote(byte, inSingleQuote_, inBackQuote_ || inDoubleQuote_);
    if (byte == '"') return takeQuote(byte, inDoubleQuote_, inBackQuote_ || inSingleQuote_);
    if (inString()) {
      escaped_ = false;
      chunk_ += byte;
      return;
    }
    if (byte == '\n') return endLine();
    if (byte == '}') return closeBrace();
    if (byte == ';' && parenDepth_ == 0) return endStatement();
    if (byte == '(') ++parenDepth_;
    if (byte == ')') {
      --parenDepth_;
      if (parenDepth_ < 0) parenDepth_ = 0;
    }
    if (byte == '[' && !bracketSkip_ && parenDepth_ == 0 && trimAndReduce(chunk_).empty() &&
        !isJavaScript_) {
      bracketSkip_ = true;
      return;
    }
    if (byte == ']' && bracketSkip_) {
      bracketSkip_ = false;
      return;
    }
    if (byte == '{') return openBrace();
    if (bracketSkip_) return;
    chunk_ += byte;
  }

  void takeQuote(char quote, bool& own, bool otherIsOpen) {
    if (own) {
      if (escaped_) {
        escaped_ = false;
      } else {
        own = false;
      }
    } else if (!otherIsOpen) {
      own = true;
    } else {
      escaped_ = false;
    }
    chunk_ += quote;
  }

  void endLine() {
    ++lineCounter_;
    if (continues(chunk_)) return;
    const std::string c = cleanedChunk(chunk_);
    if (c.empty() || parenDepth_ != 0 || c == ")" || c == "});" || c == "})" || c == ")))" ||
        c == "))))" || c == "}" || c == "{" || c == "};") {
      chunk_ = "";
      return;
    }
    ObjectBranch* node = newCountedNode();
    node->parent = currentBranch_;
    node->branchType = detectJSImports(c) ? 4 : 3;
    node->branchTypeAsString = detectJSImports(c) ? "define" : "line";
    node->contents = c;
    node->lineNumber = lineCounter_ - 1;
    node->filePath = currentBranch_->filePath;
    currentBranch_->children.push_back(node);
    chunk_ = "";
  }

  void endStatement() {
    std::string c = cleanedChunk(chunk_);
    if (c == ")" || c == "}" || c == "})") {
      chunk_ = "";
      return;
    }
    if (indexOf(c, "import ") == 0) {
      chunk_ = "";
      return;
    }
    if (indexOf(c, "const ") == 0 && contains(c, "require")) {
      chunk_ = "";
      return;
    }
    if (c.empty()) {
      classBlockPending_ = false;
      return;
    }
    repairScope();
    ObjectBranch* node = newCountedNode();
    node->parent = currentBranch_;
    node->branchType = 3;
    node->branchTypeAsString = "line";
    node->contents = c;
    node->lineNumber = lineCounter_;
    node->filePath = currentBranch_->filePath;
    currentBranch_->children.push_back(node);
    chunk_ = "";
  }

  void repairScope() {
    if (currentBranch_->parent == nullptr) {
      std::string word = "global";
      if (contains(currentBranch_->filePath, ".html") ||
          contains(currentBranch_->filePath, "script"))
        word = "window";
      ObjectBranch* scope = newCountedNode();
      scope->parent = root_;
      scope->branchType = 8;
      scope->branchTypeAsString = "namespace";
      scope->contents = "namespace " + word;
      scope->filePath = currentBranch_->filePath;
      scope->tags = "\n      \"auto-generated\"\n";
      root_->children.push_back(scope);
      addClass(scope, word == "window" ? "class WindowScope" : "class GlobalScope");
    } else if (currentBranch_->parent->branchTypeAsString == "namespace" &&
               currentBranch_->branchTypeAsString != "class") {
      addClass(currentBranch_, "class GlobalScope");
    }
  }

  void addClass(ObjectBranch* parent, const std::string& contents) {
    ObjectBranch* node = newCountedNode();
    node->parent = parent;
    node->branchType = 7;
    node->branchTypeAsString = "class";
    node->contents = contents;
    node->filePath = currentBranch_->filePath;
    node->tags = "\n      \"auto-generated\"\n      \"scope-wrapper\"\n";
    parent->children.push_back(node);
    currentBranch_ = node;
  }

  void openBrace() {
    if (isJavaScript_) {
      if (contains(chunk_, "class")) {
        if (!contains(chunk_, "\"") && !contains(chunk_, "'") && !contains(chunk_, "`"))
          classBlockPending_ = true;
      } else if (!contains(chunk_, "(") && !contains(chunk_, "=>")) {
        ObjectBranch* node = newCountedNode();
        if (root_->children.empty())
          return fail("error: Zero child objects", "zero children. This is not correct.");
        enterBlock(node, 4, "define", 0);
        return;
      }
    }
    ObjectBranch* node = newCountedNode();
    if (classBlockPending_) {
      enterBlock(node, 4, "define", lineCounter_);
    } else {
      enterBlock(node, 2, "container", lineCounter_);
    }
  }

  void enterBlock(ObjectBranch* node, std::uint32_t code, const std::string& label, int line) {
    node->parent = currentBranch_;
    node->branchType = code;
    node->branchTypeAsString = label;
    node->contents = trimAndReduce(chunk_);
    node->lineNumber = line;
    node->filePath = currentBranch_->filePath;
    chunk_ = "";
    currentBranch_->children.push_back(node);
    currentBranch_ = node;
  }

  void closeBrace() {
    if (currentBranch_->parent == nullptr)
      return fail("error: NULL parent branch", "Null parent branch? This is not right.");
    currentBranch_ = currentBranch_->parent;
    chunk_ = "";
    parenDepth_ = 0;
  }

  void fail(const std::string& label, const std::string& printed) {
    printed_ += printed;
    ObjectBranch* node = newCountedNode();
    node->parent = root_;
    node->branchType = 18;
    node->branchTypeAsString = label;
    node->contents = trimAndReduce(chunk_);
    node->lineNumber = lineCounter_;
    node->filePath = currentBranch_->filePath;
    root_->children.push_back(node);
    chunk_ = "";
    ended_ = true;
  }

  // Nodes of the scan are counted twice.
  static ObjectBranch* newCountedNode() {
    ++objectCount;
    return newNode();
  }

  ObjectBranch* root_;
  ObjectBranch* currentBranch_;
  bool isJavaScript_;
  std::string& chunk_;
  int lineCounter_ = 1;
  int parenDepth_ = 0;
  bool inSingleQuote_ = false;
  bool inDoubleQuote_ = false;
  bool inBackQuote_ = false;
  bool escaped_ = false;
  bool bracketSkip_ = false;
  bool classBlockPending_ = false;
  bool ended_ = false;
  std::string printed_;
};

}  // namespace

std::string cleanedChunk(std::string text) {
  std::string r = trimAndReduce(text);
  if (r.size() >= 2 && r[0] == ',' && r[1] == ' ') {
    r.erase(0, 2);
  } else if (!r.empty() && r[0] == ',') {
    r.erase(0, 1);
  }
  while (!r.empty() && r[r.size() - 1] == ')') r.erase(r.size() - 1);
  while (!r.empty() && r[0] == ')') r.erase(0, 1);
  return trimAndReduce(r);
}

bool continues(const std::string& chunk) {
  if (!contains(chunk, "\\")) return false;
  const std::string before = lastWord(chunk);
  return !before.empty() && before[before.size() - 1] == '\\';
}

std::string scanCharacters(const std::string& text, ObjectBranch* root, ObjectBranch* start,
                           bool isJavaScript, std::string& chunk) {
  return Scanner(root, start, isJavaScript, chunk).run(text);
}

}  // namespace reference
