#include "reference/plain_script_content.h"

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <vector>

#include "reference/plain_detectors.h"
#include "reference/plain_strings.h"
#include "reference/plain_tree.h"

namespace reference {
namespace {

class Lines {
 public:
  Lines(ObjectBranch* parent, const std::string& path, int startLine)
      : path_(path), scopeStack_{parent}, currentLine_(startLine) {}

  void read(const std::string& text) {
    std::istringstream stream(text);
    std::string line;
    for (int lineCount = 0; lineCount < 100'000 && std::getline(stream, line); ++lineCount) {
      ++currentLine_;
      if (line.size() <= 10'000) takeLine(line);
    }
  }

 private:
  void takeLine(const std::string& line) {
    const std::string statement = trimAndReduce(line);
    if (statement.empty()) return;
    countBraces(line);
    if (openCount_ > 100 || closeCount_ > 100) return;
    if (statement == "}") {
      pop();
    } else if (closeCount_ > openCount_) {
      takeClosing(statement);
    } else if (statement != "{") {
      takeStatement(statement);
    }
  }

  void countBraces(const std::string& line) {
    openCount_ = 0;
    closeCount_ = 0;
    bool escaped = false;
    bool inString = false;
    char quote = 0;
    for (const char byte : line) {
      if (escaped) {
        escaped = false;
      } else if (byte == '\\') {
        escaped = true;
      } else if (inString) {
        if (byte == quote) inString = false;
      } else if (byte == '"' || byte == '\'' || byte == '`') {
        inString = true;
        quote = byte;
      } else if (byte == '{') {
        ++openCount_;
      } else if (byte == '}') {
        ++closeCount_;
      }
    }
  }

  void takeClosing(const std::string& statement) {
    std::string copy = statement;
    const std::size_t last = copy.rfind('}');
    if (last != std::string::npos && last != 0) copy = trimAndReduce(copy.substr(0, last));
    if (!copy.empty() && copy != "{") {
      ObjectBranch* node = makeNode(copy);
      if (detectJSReturnDeclaration(copy)) {
        classify(node, 3, "line");
      } else if (detectJSVariableDeclaration(copy)) {
        classify(node, 12, "classvar");
      } else {
        classify(node, 3, "line");
      }
      scopeStack_.back()->children.push_back(node);
    }
    for (int i = 0; i < closeCount_; ++i) pop();
  }

  void takeStatement(const std::string& statement) {
    bool opensScope = false;
    ObjectBranch* node = makeNode(statement);
    if (detectJSFunctionDeclaration(statement)) {
      classify(node, 6, "function");
      node->simpleFunctionName = functionName(statement);
      opensScope = openCount_ > 0;
    } else if (detectJSClass(statement)) {
      classify(node, 7, "class");
      opensScope = openCount_ > 0;
    } else if (detectJSLogic(statement)) {
      classify(node, 5, "logic");
      opensScope = openCount_ > 0;
    } else if (detectJSLoop(statement)) {
      classify(node, 10, "loop");
      opensScope = openCount_ > 0;
    } else if (detectJSVariableDeclaration(statement)) {
      classify(node, 12, "classvar");
      if (contains(statement, "=>") && openCount_ > 0) {
        classify(node, 6, "function");
        opensScope = true;
      }
    } else {
      classify(node, 3, "line");
    }
    scopeStack_.back()->children.push_back(node);
    if (opensScope && scopeStack_.size() < 1'000) scopeStack_.push_back(node);
  }

  void pop() {
    if (scopeStack_.size() > 1) scopeStack_.pop_back();
  }

  ObjectBranch* makeNode(const std::string& contents) const {
    ObjectBranch* node = newNode();
    node->parent = scopeStack_.back();
    node->lineNumber = currentLine_ - 1;
    node->filePath = path_;
    node->contents = contents;
    return node;
  }

  static void classify(ObjectBranch* node, std::uint32_t code, const std::string& label) {
    node->branchType = code;
    node->branchTypeAsString = label;
  }

  const std::string& path_;
  std::vector<ObjectBranch*> scopeStack_;
  std::int32_t currentLine_;
  int openCount_ = 0;
  int closeCount_ = 0;
};

std::string classNameOf(const std::string& path) {
  std::string name = fileName(path);
  if (!name.empty() && name[0] >= 'a' && name[0] <= 'z')
    name[0] = static_cast<char>(name[0] - 'a' + 'A');
  std::string result;
  for (const char byte : name)
    if (isLetter(byte) || isDigit(byte)) result += byte;
  return result.empty() ? "Script" : result;
}

}  // namespace

void parsePureJavaScript(const std::string& text, ObjectBranch* root, const std::string& path) {
  if (root == nullptr) return;
  ObjectBranch* scope = newNode();
  scope->parent = root;
  scope->branchType = 8;
  scope->branchTypeAsString = "namespace";
  scope->filePath = path;
  std::string scopeName = "global";
  if (contains(text, "export ") || contains(text, "import ")) {
    scopeName = "module:" + fileName(path);
  } else if (contains(text, "module.exports") || contains(text, "require(")) {
    scopeName = "commonjs:" + fileName(path);
  }
  scope->contents = "namespace " + scopeName;
  scope->tags = "\n      \"javascript-file\"\n";
  root->children.push_back(scope);

  ObjectBranch* script = newNode();
  script->parent = scope;
  script->branchType = 7;
  script->branchTypeAsString = "class";
  script->filePath = path;
  script->contents = classNameOf(path);
  script->tags = "\n      \"main-script\"\n";
  scope->children.push_back(script);
  parseScriptContent(text, script, path, 1);
}

void parseScriptContent(const std::string& text, ObjectBranch* parent, const std::string& path,
                        int startLine) {
  if (text.empty() || parent == nullptr) return;
  Lines(parent, path, startLine).read(text);
}

}  // namespace reference
