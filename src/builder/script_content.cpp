// A line scanner: it keeps no statement buffer, counts no parentheses and never joins or splits
// lines. Open scopes are on a stack, and a new node becomes a child of the top one. A line that
// opens a scope is pushed if it has any "{", whether or not its braces balance.
#include "builder/script_content.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

#include "builder/scope_wrappers.h"
#include "detect/declarations.h"
#include "detect/flow.h"
#include "text/byte_blocks.h"
#include "text/byte_set.h"
#include "text/file_names.h"
#include "text/string_primitives.h"

namespace builder {
namespace {

constexpr int kMaxLines = 100'000;             // later lines are ignored
constexpr std::size_t kMaxLineBytes = 10'000;  // a longer line is skipped, but counted
constexpr int kMaxBracesOfAKind = 100;         // a line with more is skipped
constexpr std::size_t kMaxOpenScopes = 1'000;  // a deeper scope gets a node, but takes no children

constexpr text::ByteSet kBraceStops{"\\\"'`{}"};

struct Braces {
  int opening = 0;
  int closing = 0;
};

// Counts the braces of one line outside strings. No state carries over between lines: a string that
// spans lines is forgotten. A backslash escapes the next byte, outside strings too.
Braces countBraces(std::string_view line) {
  Braces braces;
  const auto isBrace = [](text::Bytes bytes) { return bytes.are('{') | bytes.are('}'); };
  if (!text::holdsByte(line, isBrace)) return braces;
  const auto isStop = [&](text::Bytes bytes) {
    return isBrace(bytes) | bytes.are('\\') | bytes.are('"') | bytes.are('\'') | bytes.are('`');
  };
  char quote = 0;  // the byte that closes the string, 0 outside
  std::size_t i = 0;
  while ((i = text::findMemberByBlocks(line, kBraceStops, isStop, i)) < line.size()) {
    const char byte = line[i++];
    if (byte == '\\') {
      ++i;
    } else if (quote != 0) {
      if (byte == quote) quote = 0;
    } else if (byte == '{') {
      ++braces.opening;
    } else if (byte == '}') {
      ++braces.closing;
    } else {
      quote = byte;
    }
  }
  return braces;
}

struct Kind {
  BranchType branchType;
  std::string_view label;
};
constexpr Kind kLine{kBranchLine, "line"};
constexpr Kind kVariable{kBranchClassVar, "classvar"};
constexpr Kind kFunction{kBranchFunction, "function"};

// The first rule that applies wins. All of these open a scope if their line has a "{".
struct ScopeRule {
  bool (*applies)(const detect::Statement&);
  Kind kind;
};
constexpr ScopeRule kScopeRules[] = {{detect::isFunction, kFunction},
                                     {detect::isClass, {kBranchClass, "class"}},
                                     {detect::isLogic, {kBranchLogic, "logic"}},
                                     {detect::isLoop, {kBranchLoop, "loop"}}};

class ScriptContentParser {
 public:
  ScriptContentParser(ObjectBranch* parent, const std::string& path, detect::AnswerTable& answers)
      : path_(path), answers_(answers) {
    scopeStack_.reserve(kMaxOpenScopes);
    scopeStack_.push_back(parent);
  }

  void parseLine(std::string_view line, std::int32_t lineNumber);

 private:
  void closeScopes(std::string_view statement, int count, std::int32_t lineNumber);
  void addStatement(bool hasOpeningBrace, std::int32_t lineNumber);

  // Makes a node for the statement with the top of the stack as its parent, but does not attach it.
  std::unique_ptr<ObjectBranch> makeNode(std::int32_t lineNumber) const;
  static void setKind(ObjectBranch& node, const Kind& kind);
  void setFunctionName(ObjectBranch& node) const;
  ObjectBranch* attach(std::unique_ptr<ObjectBranch> node);

  // The parent at the bottom is never popped.
  void pop() {
    if (scopeStack_.size() > 1) scopeStack_.pop_back();
  }

  const std::string& path_;
  detect::AnswerTable& answers_;
  std::vector<ObjectBranch*> scopeStack_;
  detect::Statement statement_;
  std::string scratch_;
};

void ScriptContentParser::parseLine(std::string_view line, std::int32_t lineNumber) {
  const std::string_view statement = text::trimAndReduceView(line, scratch_);
  if (statement.empty()) return;
  const Braces braces = countBraces(line);
  if (braces.opening > kMaxBracesOfAKind || braces.closing > kMaxBracesOfAKind) return;
  if (statement == "}") {
    pop();
  } else if (braces.closing > braces.opening) {
    closeScopes(statement, braces.closing, lineNumber);
  } else if (statement != "{") {  // required: a brace on a line of its own opens no scope
    statement_.reset(statement);
    addStatement(braces.opening > 0, lineNumber);
  }
}

void ScriptContentParser::closeScopes(std::string_view statement, int count,
                                      std::int32_t lineNumber) {
  // The statement is the text before the last "}", and the text after it is lost; a line that
  // begins with its only "}" stays whole. More braces close than open, so there is a last "}", and
  // the text before it cannot be a lone "{".
  const std::size_t lastBrace = statement.rfind('}');
  if (lastBrace > 0) {
    statement = text::trimView(statement.substr(0, lastBrace));  // already reduced
  }
  statement_.reset(statement);
  std::unique_ptr<ObjectBranch> node = makeNode(lineNumber);
  const bool isVariable = !detect::isReturn(statement_) && detect::isVariable(statement_);
  setKind(*node, isVariable ? kVariable : kLine);
  attach(std::move(node));
  for (int i = 0; i < count; ++i) pop();
}

void ScriptContentParser::addStatement(bool hasOpeningBrace, std::int32_t lineNumber) {
  std::unique_ptr<ObjectBranch> node = makeNode(lineNumber);
  bool opensScope = false;
  const auto* const rule =
      std::find_if(std::begin(kScopeRules), std::end(kScopeRules),
                   [this](const ScopeRule& each) { return each.applies(statement_); });
  if (rule != std::end(kScopeRules)) {
    setKind(*node, rule->kind);
    if (rule->kind.branchType == kBranchFunction) setFunctionName(*node);
    opensScope = hasOpeningBrace;
  } else if (detect::isVariable(statement_)) {
    // An arrow with a bare parameter. required: it gets no name, and an object literal no scope.
    opensScope = hasOpeningBrace && text::contains(statement_.text(), "=>");
    setKind(*node, opensScope ? kFunction : kVariable);
  } else {
    setKind(*node, kLine);
  }
  ObjectBranch* const added = attach(std::move(node));
  if (opensScope && scopeStack_.size() < kMaxOpenScopes) scopeStack_.push_back(added);
}

std::unique_ptr<ObjectBranch> ScriptContentParser::makeNode(std::int32_t lineNumber) const {
  std::unique_ptr<ObjectBranch> node(tree::makeNode());
  node->parent = scopeStack_.back();
  node->lineNumber = lineNumber;
  node->filePath = path_;
  node->contents = statement_.text();
  return node;
}

void ScriptContentParser::setKind(ObjectBranch& node, const Kind& kind) {
  node.branchType = kind.branchType;
  node.branchTypeAsString = kind.label;
}

void ScriptContentParser::setFunctionName(ObjectBranch& node) const {
  try {
    node.simpleFunctionName = detect::functionNameOf(statement_);
  } catch (const std::exception&) {
    node.simpleFunctionName = "anonymous";
  }
}

ObjectBranch* ScriptContentParser::attach(std::unique_ptr<ObjectBranch> node) {
  answers_.note(node->nodeID, statement_);
  scopeStack_.back()->children.push_back(node.get());
  return node.release();
}

// Returns the scope's name: the module system that the text uses, with the file's name.
std::string scopeName(std::string_view text, std::string_view baseName) {
  std::string name;
  if (text::contains(text, "export ") || text::contains(text, "import ")) {
    return name.append("module:").append(baseName);
  }
  if (text::contains(text, "module.exports") || text::contains(text, "require(")) {
    return name.append("commonjs:").append(baseName);
  }
  return "global";
}

// Returns the file's name as a class name: letters and digits, the first byte in upper case.
std::string className(std::string_view baseName) {
  std::string name(baseName);
  // required: the case changes before symbols are dropped, so in "_app" the "a" stays lower case.
  if (!name.empty() && name[0] >= 'a' && name[0] <= 'z')
    name[0] = static_cast<char>(name[0] - 'a' + 'A');
  std::erase_if(name, [](char byte) { return !text::kLetters(byte) && !text::kDigits(byte); });
  return name.empty() ? "Script" : name;
}

}  // namespace

void parseScriptFile(std::string_view text, ObjectBranch* root, const std::string& path,
                     detect::AnswerTable& answers) {
  if (root == nullptr) return;
  const std::string_view baseName = text::baseNameView(path);

  ObjectBranch* const scope =
      addScope(root, kBranchNamespace, "namespace", "namespace " + scopeName(text, baseName),
               "\n      \"javascript-file\"\n", path);
  ObjectBranch* const script = addScope(scope, kBranchClass, "class", className(baseName),
                                        "\n      \"main-script\"\n", path);
  parseScriptContent(text, script, path, 1, answers);
}

void parseScriptContent(std::string_view text, ObjectBranch* parent, const std::string& path,
                        int startLine, detect::AnswerTable& answers) {
  if (text.empty() || parent == nullptr) return;
  ScriptContentParser parser(parent, path, answers);
  std::size_t in = 0;
  for (int lineCount = 0; in < text.size() && lineCount < kMaxLines; ++lineCount) {
    const std::size_t end = std::min(text.find('\n', in), text.size());
    const std::string_view line = text.substr(in, end - in);
    in = end + 1;
    if (line.size() > kMaxLineBytes) continue;
    try {
      parser.parseLine(line, startLine + lineCount);
    } catch (const std::exception&) {
      // Out of memory: skip this line and go on.
    }
  }
}

}  // namespace builder

void ParsePureJavaScript(const std::string& text, ObjectBranch* root, const std::string& path) {
  detect::AnswerTable unread(currentIndex);
  builder::parseScriptFile(text, root, path, unread);
}

void ParseScriptContent(const std::string& text, ObjectBranch* parent, const std::string& path,
                        int startLine) {
  detect::AnswerTable unread(currentIndex);
  builder::parseScriptContent(text, parent, path, startLine, unread);
}
