// The documented C++ interface, declared by hand from the documentation instead of the project's
// headers, as an outside program that looks up the names would declare it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <sstream>
#include <string>
#include <vector>

// A program that has these types from the installed header skips them here.
#ifndef PROMISED_WITHOUT_TYPES
struct ObjectBranch {
  ObjectBranch* parent = nullptr;
  std::uint32_t branchType = 13;
  std::int32_t lineNumber = 0;
  std::string filePath;
  std::string contents;
  std::string branchTypeAsString;
  std::string simpleFunctionName;
  std::int32_t functionID = -1;
  std::vector<ObjectBranch*> children;
  std::string tags;
  std::int32_t nodeID = -1;
};

class Cleaner {
 public:
  std::string CleanText(std::string, std::vector<std::string>, std::vector<std::string>&);
  std::string CleanText(std::string, std::vector<std::string>, std::vector<std::string>&, bool);
  std::string RemoveHTMLComments(std::string);
  void ReplaceAll(std::string&, const std::string&, const std::string&);
  std::string UncommentAndUnquoteText(std::string);
  std::string UncommentAndUnquoteText(std::string, bool);
  std::string PreProcessorSimulation(std::string, std::vector<std::string>,
                                     std::vector<std::string>&);
  bool GetPreProcessorDirectiveActiveState(std::string, std::int32_t, std::vector<std::string>);
  void CleanerPartsList(std::string, std::vector<std::string>&);
};
#endif

extern "C" {
const char* ParseJS(const char*, const char*);
void CleanupJS();
const char* Info();
extern std::vector<ObjectBranch*> AllBranches;
}
extern std::string chunk;
extern std::int32_t currentIndex;
extern std::int32_t objectCount;
extern std::string startPath;
extern std::set<ObjectBranch*> allAllocatedNodes;
void cleanup();

bool IsDirectory(const std::string&);
bool IsJavaScriptFile(const std::string&);
std::vector<std::string> GetFilesInDirectory(const std::string&);
void ProcessSingleFile(const std::string&, const std::string&);
void writeafile(std::string, std::string);
void appendafile(std::string, std::string);
std::string ExtractNamespaceName(const std::string&);
std::string GetFileNameWithoutExtension(const std::string&);
std::string SanitizeFileName(const std::string&);

ObjectBranch* allocateObjectBranch();
std::string branchTypeAsString(ObjectBranch);
char* safeStringAlloc(std::size_t);
void AddObjectToVector(ObjectBranch*, std::vector<ObjectBranch*>*);
void DeleteNodeTree(ObjectBranch*, std::set<ObjectBranch*>&);
void FreeChildren(ObjectBranch*);
void CleanupTree(ObjectBranch*);

bool BothAreSpaces(char, char);
void replaceAll(std::string&, const std::string&, const std::string&);
std::string ltrim(const std::string&);
std::string rtrim(const std::string&);
std::string trim(const std::string&);
std::string ConvertWhiteSpacesToSingleSpace(std::string);
std::string TrimAndReduce(std::string&);
std::string FirstWord(const std::string&);
std::string FirstWord(std::string&);
std::string LastWord(std::string&);
std::string LastWordNoDots(std::string&);
bool Contains(std::string&, std::string);
bool ContainsWord(std::string&, std::string);
bool OutsideStringMatch(std::string, std::string);
std::int64_t IndexOf(std::string, std::string);
void PartsList(std::string, std::vector<std::string>&);

std::string GetFileExtension(const std::string&);
bool IsHTMLFile(const std::string&);
bool IsJavaScriptOnlyFile(const std::string&);
std::string FileName(std::string);
std::string FileNameWithExtension(std::string);

bool DetectJSFunctionDeclaration(std::string);
std::string functionName(std::string, std::string);
bool DetectJSVariableDeclaration(std::string);
bool DetectJSReturnDeclaration(std::string);
bool DetectJSClass(std::string);
bool DetectJSLogic(std::string);
bool DetectJSLoop(std::string);
bool DetectJSImports(std::string);
bool DetectIIFE(std::string);
bool DetectWebComponent(std::string);
std::string DetectModulePattern(std::string);

std::string ExtractHrefValue(const std::string&);
std::string ExtractSrcValue(const std::string&);
std::string GetElementIdentifier(const std::string&);
std::string ExtractTextPreview(const std::string&, std::size_t);
void ParseHTMLStructure(const std::string&, ObjectBranch*, const std::string&, int);

std::string CleanupChunk(std::string);
void ParsePureJavaScript(const std::string&, ObjectBranch*, const std::string&);
void ParseScriptContent(const std::string&, ObjectBranch*, const std::string&, int);
std::ostringstream TreeBuilderJS(std::string, std::string, std::string, std::string, bool,
                                 ObjectBranch*, std::vector<std::string>);

void GenerateInlineFunctions(ObjectBranch*, bool);
std::string extractClassName(std::string);
std::string climbForLongName(ObjectBranch*);
void SpelunkForClasses(ObjectBranch*);
void ExpandClassnames(ObjectBranch*);
void CleanUpBranchTypes(ObjectBranch*);
void RemoveBraceOnlyNodes(ObjectBranch*);
void AppendAllDefines(ObjectBranch*, std::vector<std::string>);

std::string EscapeString(const std::string&);
std::ostringstream StartGeneratingObjects(ObjectBranch*, std::string);
bool ShouldSkipNode(const ObjectBranch&);
std::string ExtractSimpleFunctionNameForPreview(const std::string&);
