#include "reference/plain_run.h"

#include <cstdint>
#include <fstream>
#include <sstream>

#include "reference/plain_cleaner.h"
#include "reference/plain_inline_functions.h"
#include "reference/plain_page.h"
#include "reference/plain_records.h"
#include "reference/plain_refine.h"
#include "reference/plain_scanner.h"
#include "reference/plain_script_content.h"
#include "reference/plain_strings.h"
#include "reference/plain_tree.h"

namespace reference {
namespace {

ObjectBranch* addScope(ObjectBranch* parent, std::uint32_t code, const std::string& label,
                       const std::string& contents, const std::string& tags,
                       const std::string& path) {
  ObjectBranch* node = newNode();
  node->parent = parent;
  node->branchType = code;
  node->branchTypeAsString = label;
  node->contents = contents;
  node->tags = tags;
  node->filePath = path;
  parent->children.push_back(node);
  return node;
}

std::string scopeWordOf(const Request& request) {
  std::string word = "global";
  const std::string extension = fileExtension(request.filePath);
  if (contains(extension, ".html") || contains(extension, ".htm")) word = "window";
  if (contains(request.text, "export ") || contains(request.text, "import ") ||
      contains(request.text, "module.exports") || contains(request.text, "require("))
    word = "module:" + fileName(request.filePath);
  const std::string t = trim(request.text);
  if (!t.empty() && t[0] == '(') {
    const std::string head = t.substr(0, 50);
    if (contains(head, "function") || contains(head, "=>"))
      word = "iife:" + fileName(request.filePath);
  }
  return word;
}

std::string scopeClassWordOf(const std::string& scopeWord) {
  if (scopeWord == "window") return "WindowScope";
  if (beginsWith(scopeWord, "module:")) return "ModuleScope";
  if (beginsWith(scopeWord, "iife:")) return "IIFEScope";
  return "GlobalScope";
}

// Returns what the scan prints.
std::string buildByScanner(const Request& request, ObjectBranch* root, std::string& chunk) {
  ObjectBranch* currentBranch = root;
  const std::string scopeWord = scopeWordOf(request);
  if (request.namespaceName.empty()) {
    currentBranch = addScope(root, 13, "namespace", "namespace " + scopeWord,
                             "\n      \"auto-generated\"\n", request.filePath);
    if (request.className.empty())
      currentBranch =
          addScope(currentBranch, 13, "class", "class " + scopeClassWordOf(scopeWord),
                   "\n      \"auto-generated\"\n      \"scope-wrapper\"\n", request.filePath);
  }
  const std::string printed =
      scanCharacters(request.text, root, currentBranch, request.isJavaScript, chunk);
  generateInlineFunctions(root);
  return printed;
}

// Returns every line that is not empty.
std::vector<std::string> splitDefines(const std::string& defines) {
  std::vector<std::string> lines;
  std::string line;
  for (const char byte : defines + "\n") {
    if (byte != '\n') {
      line += byte;
    } else if (!line.empty()) {
      lines.push_back(line);
      line = "";
    }
  }
  return lines;
}

}  // namespace

std::string readFile(const std::string& path) {
  const std::ifstream file(path);
  std::ostringstream stream;
  stream << file.rdbuf();
  return stream.str();
}

Run buildTree(const Request& request, ObjectBranch* root, std::string& chunk) {
  Run run;
  if (root == nullptr) {
    run.answer = "{ \"error\": \"Invalid root node\" }";
    return run;
  }
  root->branchType = 11;
  root->branchTypeAsString = "filepath";
  root->contents = fileNameWithExtension(request.filePath);
  root->filePath = request.filePath;
  if (isJavaScriptOnlyFile(request.filePath)) {
    parsePureJavaScript(request.text, root, request.filePath);
    expandClassnames(root);
    appendAllDefines(root, request.defines);
    removeBraceOnlyNodes(root);
  } else if (isHtmlFile(request.filePath)) {
    ObjectBranch* document = addScope(root, 8, "namespace", "namespace document",
                                      "\n      \"html-document\"\n", request.filePath);
    ObjectBranch* structure = addScope(document, 7, "class", "HTMLDocument",
                                       "\n      \"html-structure\"\n", request.filePath);
    run.strayTags = parsePage(request.text, structure, request.filePath, 0);
    expandClassnames(root);
    appendAllDefines(root, request.defines);
    removeBraceOnlyNodes(root);
  } else {
    run.printed = buildByScanner(request, root, chunk);
    expandClassnames(root);
    appendAllDefines(root, request.defines);
  }
  const Records records = generateRecords(root);
  run.answer = records.text;
  run.printed += records.printed;
  return run;
}

Run parseJS(const std::string& path, const std::string& bytes, const std::string& defines,
            std::string& chunk) {
  currentIndex = 0;
  objectCount = 1;
  chunk = "";
  Run run;
  if (bytes.empty()) {
    run.answer = "[{\"error\": \"File is empty: " + escapeString(path) + "\"}]";
    return run;
  }
  ObjectBranch* root = newNode();
  const Simulated cleaned = cleanText(bytes, {}, splitDefines(defines));
  run = buildTree({path, "", "", cleaned.text, true, cleaned.defines}, root, chunk);
  run.answer = run.answer.substr(0, run.answer.find('\0'));
  run.printed = cleaned.report + run.printed + "Cleaning up parse tree...\nCleanup complete\n";
  root->children.clear();
  return run;
}

}  // namespace reference
