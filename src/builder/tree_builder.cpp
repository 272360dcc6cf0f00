#include "builder/tree_builder.h"

#include <utility>

#include "builder/character_scanner.h"
#include "builder/scope_wrappers.h"
#include "builder/script_content.h"
#include "html/html_structure.h"
#include "records/record_pass.h"
#include "refine/inline_functions.h"
#include "refine/qualified_names.h"
#include "refine/tidying.h"
#include "text/file_names.h"
#include "text/string_primitives.h"

std::string chunk;

namespace builder {
namespace {

constexpr std::size_t kInvokedFunctionHeadBytes = 50;  // where a wrapped function has to show

// The document's scope and the node under which its elements go.
ObjectBranch* makePageWrappers(ObjectBranch* root, const std::string& path) {
  ObjectBranch* const document = addScope(root, kBranchNamespace, "namespace", "namespace document",
                                          "\n      \"html-document\"\n", path);
  return addScope(document, kBranchClass, "class", "HTMLDocument", "\n      \"html-structure\"\n",
                  path);
}

bool isInvokedFunctionText(std::string_view text) {
  const std::string_view head = text::trimView(text).substr(0, kInvokedFunctionHeadBytes);
  return head.starts_with('(') && (text::contains(head, "function") || text::contains(head, "=>"));
}

bool hasModuleSigns(std::string_view text) {
  return text::contains(text, "export ") || text::contains(text, "import ") ||
         text::contains(text, "module.exports") || text::contains(text, "require(");
}

// The word for the scope that the text shows. A wrapped function comes last and overrides a module.
std::string scopeWord(std::string_view text, const std::string& path) {
  std::string word;
  if (isInvokedFunctionText(text)) return word.append("iife:").append(text::baseNameView(path));
  if (hasModuleSigns(text)) return word.append("module:").append(text::baseNameView(path));
  // required: an extension holds no dot, so this never applies.
  const std::string_view extension = text::extensionView(path);
  if (text::contains(extension, ".html") || text::contains(extension, ".htm")) return "window";
  return "global";
}

std::string_view scopeClassWord(std::string_view scopeWord) {
  if (scopeWord == "window") return "WindowScope";
  if (scopeWord.starts_with("module:")) return "ModuleScope";
  return scopeWord.starts_with("iife:") ? "IIFEScope" : "GlobalScope";
}

// The wrappers of the scanner route; gives the node under which the scan begins. required: both
// keep the code 13 of a new node, whatever their labels say.
ObjectBranch* makeScopeWrappers(const BuildRequest& request, ObjectBranch* root) {
  if (!request.namespaceName.empty()) return root;
  const std::string word = scopeWord(request.text, request.filePath);
  ObjectBranch* const scope = addScope(root, kBranchNone, "namespace", "namespace " + word,
                                       kGeneratedTag, request.filePath);
  if (!request.className.empty()) return scope;
  return addScope(scope, kBranchNone, "class", std::string("class ").append(scopeClassWord(word)),
                  kScopeWrapperTags, request.filePath);
}

void buildPage(const BuildRequest& request, ObjectBranch* root, detect::AnswerTable& answers) {
  ObjectBranch* const structure = makePageWrappers(root, request.filePath);
  html::parseStructure(request.text, structure, request.filePath, 0, answers);
}

void buildOther(const BuildRequest& request, ObjectBranch* root, detect::AnswerTable& answers) {
  ObjectBranch* const start = makeScopeWrappers(request, root);
  scanCharacters(request.text, root, start, request.isJavaScript, request.chunk);
  CleanUpBranchTypes(root);
  refine::generateInlineFunctions(root, answers);
}

}  // namespace

records::RecordText buildRecords(const BuildRequest& request, ObjectBranch* root,
                                 records::RecordText out) {
  if (root == nullptr) {
    out.append("{ \"error\": \"Invalid root node\" }");
    return out;
  }
  root->branchType = kBranchFilePath;
  root->branchTypeAsString = "filepath";
  root->contents = text::fileNameView(request.filePath);
  root->filePath = request.filePath;
  detect::AnswerTable answers(currentIndex);
  const bool isScript = text::isScriptPath(request.filePath);
  const bool isPage = !isScript && text::isPagePath(request.filePath);
  if (isScript) {
    parseScriptFile(request.text, root, request.filePath, answers);
  } else if (isPage) {
    buildPage(request, root, answers);
  } else {
    buildOther(request, root, answers);
  }
  const ObjectBranch* const definesNode = refine::appendAllDefines(root, request.defines);
  // required: in other text, nodes that are only a brace stay.
  const refine::TreeTidier tidier(definesNode, isScript || isPage);
  return records::generate(root, answers, tidier, std::move(out));
}

}  // namespace builder

std::ostringstream TreeBuilderJS(std::string filePath, std::string namespaceName,
                                 std::string className, std::string text, bool isJavaScript,
                                 ObjectBranch* root, std::vector<std::string> defines) {
  return records::toStream(builder::buildRecords(
      {filePath, namespaceName, className, text, isJavaScript, defines, chunk}, root));
}
