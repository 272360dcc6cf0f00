#include "plugin/plugin_api.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "builder/tree_builder.h"
#include "cleaner/cleaner.h"
#include "plugin/exported_data.h"
#include "plugin/failure_memory.h"
#include "plugin/source_file.h"
#include "records/record_format.h"
#include "records/record_text.h"
#include "tree/object_branch.h"

std::vector<ObjectBranch*> AllBranches;
std::string startPath = "/path/to/source.js";

namespace {

char* returnResult = nullptr;    // ParseJS's latest answer
std::size_t returnCapacity = 0;  // the bytes that it has room for
char* resPtr = nullptr;          // Info's latest answer
char* theString = nullptr;       // a slot that nothing fills

void release(char*& buffer) {
  std::free(buffer);
  buffer = nullptr;
}

// An empty answer in the memory of the latest one, which saves the system from finding new pages.
records::RecordText emptyAnswer() {
  return {records::MallocText(std::exchange(returnResult, nullptr)),
          std::exchange(returnCapacity, 0)};
}

// Needs memory for the answer alone, so that a run which is out of it can often still say so.
records::RecordText errorAnswer(std::string_view what, std::string_view detail) {
  records::RecordText answer = emptyAnswer();
  answer.append("[{\"error\": \"");
  answer.append(what);
  records::appendEscaped(answer, detail);
  answer.append("\"}]");
  return answer;
}

// One entry for each line that is not empty, just as it stands.
std::vector<std::string> splitDefines(const char* defines) {
  std::vector<std::string> lines;
  if (defines == nullptr) return lines;
  for (std::string_view rest = defines; !rest.empty();) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    if (!line.empty()) lines.emplace_back(line);
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
  }
  return lines;
}

// The answer for one file. root receives the run's root as soon as there is one.
records::RecordText parseFile(const std::string& path, const char* defines, ObjectBranch*& root) {
  std::optional<std::string> text = plugin::readSourceFile(path);
  if (!text) return errorAnswer("Could not open file: ", path);
  if (text->empty()) return errorAnswer("File is empty: ", path);
  root = tree::makeNode();
  std::vector<std::string> names = splitDefines(defines);
  // required: conditions do not know the host's names.
  cleaner::clean(*text, {}, names);
  records::RecordText answer =
      builder::buildRecords({path, {}, {}, *text, true, names, chunk}, root, emptyAnswer());
  CleanupTree(root);
  return answer;
}

// The answer for a run that failed, whose tree is cut off first.
records::RecordText failureAnswer(ObjectBranch* root, std::string_view what,
                                  std::string_view detail) {
  try {
    if (root != nullptr) CleanupTree(root);
  } catch (const std::bad_alloc&) {
    // Without memory even for that, the tree stays as it is: nothing refers to it any more.
  }
  return errorAnswer(what, detail);
}

// An earlier answer is given up only if its memory is needed: it saves the next one new pages.
bool reserveFailureMemory() {
  if (plugin::reserveFailureMemory()) return true;
  release(returnResult);
  return plugin::reserveFailureMemory();
}

void setAnswer(records::RecordText answer) {
  auto [text, capacity] = std::move(answer).take();
  returnResult = text.release();
  returnCapacity = capacity;
}

}  // namespace

extern "C" QUORL_API const char* ParseJS(const char* path, const char* defines) {
  currentIndex = 0;
  objectCount = 1;
  chunk.clear();
  AllBranches.clear();
  if (!reserveFailureMemory()) return nullptr;
  ObjectBranch* root = nullptr;
  try {
    try {
      setAnswer(parseFile(path, defines, root));
    } catch (const std::exception& error) {
      setAnswer(failureAnswer(root, "Parser exception: ", error.what()));
    } catch (...) {
      setAnswer(failureAnswer(root, "Unknown parser exception occurred", {}));
    }
  } catch (...) {
    // No memory for an error text: null is the answer that is left.
    release(returnResult);
  }
  return returnResult;
}

extern "C" QUORL_API void CleanupJS() {
  release(returnResult);
  release(resPtr);
  release(theString);
}

extern "C" QUORL_API const char* Info() {
  if (!plugin::reserveFailureMemory()) return resPtr = nullptr;
  std::array<char, 256> text;
  std::snprintf(text.data(), text.size(),
                "Quorl JavaScript Parser Plugin v1.0 - HTML/JS Support (Address: %p)\n",
                static_cast<void*>(&resPtr));
  // required: an earlier answer stays readable, and lost to CleanupJS.
  resPtr = strdup(text.data());
  return resPtr;
}

void cleanup() { release(theString); }
