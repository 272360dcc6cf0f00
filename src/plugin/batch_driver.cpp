#include "plugin/batch_driver.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

#include "base/stream_writer.h"
#include "builder/tree_builder.h"
#include "cleaner/cleaner.h"
#include "plugin/exported_data.h"
#include "plugin/failure_memory.h"
#include "plugin/source_file.h"
#include "text/byte_set.h"
#include "text/file_names.h"
#include "text/string_primitives.h"
#include "tree/object_branch.h"

namespace {

constexpr std::array<std::string_view, 8> kBatchExtensions{"js",   "jsx", "ts",    "tsx",
                                                           "html", "htm", "xhtml", "php"};

constexpr text::ByteSet kNameBytes = text::kLetters | text::kDigits | text::ByteSet{"_"};
constexpr text::ByteSet kNamespaceBytes = kNameBytes | text::ByteSet{":"};

// Writes a line and flushes, so that it stands in its order with what the run itself prints.
void say(std::string_view before, std::string_view path, std::string_view after) {
  base::StreamWriter out(stdout);
  out << before << path << after;
  out.flush();
}

// What the work gives; nothing, or something empty, without memory for it. A host in C cannot catch
// an exception.
template <typename Work>
auto resultOf(Work work) -> decltype(work()) {
  using Result = decltype(work());
  if (!plugin::reserveFailureMemory()) return Result();
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return Result();
  }
}

void processFile(const std::string& path) {
  std::optional<std::string> text = plugin::readSourceFile(path);
  if (!text) return say("Error: Could not open file ", path, "\n");
  if (text->empty()) return say("Warning: File is empty: ", path, "\n");
  ObjectBranch* const root = tree::makeNode();
  std::vector<std::string> defines;
  cleaner::clean(*text, {}, defines);
  builder::buildRecords({path, {}, {}, *text, true, defines, chunk}, root);
  say("Successfully processed: ", path, "\n");
  CleanupTree(root);
  AllBranches.clear();
}

std::vector<std::string> filesIn(const std::string& path) {
  std::vector<std::string> files;
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(path.c_str()), &closedir);
  if (directory == nullptr) return files;
  const std::string prefix = path.ends_with('/') ? path : path + "/";
  while (const dirent* entry = readdir(directory.get())) {
    const std::string name = entry->d_name;
    std::string file = prefix + name;
    // "." and ".." are directories, so they are left out with the rest.
    if (IsJavaScriptFile(name) && !IsDirectory(file)) files.push_back(std::move(file));
  }
  return files;
}

// Not part of the function that asks for stack: its writers alone take more than a page.
[[gnu::noinline]] void runFile(const std::string& path) {
  say("\n=== Processing: ", path, " ===\n");
  currentIndex = 0;
  objectCount = 0;
  chunk.clear();
  try {
    processFile(path);
  } catch (const std::exception& error) {
    base::StreamWriter out(stdout);
    out << "Exception while processing " << path << ": " << error.what() << "\n";
    out.flush();
  } catch (...) {
    say("Unknown exception while processing ", path, "\n");
  }
}

void writeFile(std::string_view text, const std::string& path, std::ios::openmode mode) {
  resultOf([&] {
    std::ofstream file(path, mode);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
  });
}

std::string namespaceNameIn(const std::string& text) {
  constexpr std::string_view kKeyword = "namespace ";
  const std::size_t hit = text.find(kKeyword);
  if (hit == std::string::npos) return {};
  const std::size_t begin = hit + kKeyword.size();
  return text.substr(begin, text::findNonMember(text, kNamespaceBytes, begin) - begin);
}

std::string sanitized(const std::string& name) {
  std::string kept;
  std::copy_if(name.begin(), name.end(), std::back_inserter(kept), kNameBytes);
  return kept;
}

}  // namespace

bool IsDirectory(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool IsJavaScriptFile(const std::string& name) {
  return text::isOneOf(text::extensionView(name), kBatchExtensions);
}

std::vector<std::string> GetFilesInDirectory(const std::string& path) {
  return resultOf([&] { return filesIn(path); });
}

void ProcessSingleFile(const std::string& path, const std::string& unused) {
  static_cast<void>(unused);
  if (plugin::reserveFailureMemory()) runFile(path);
}

void writeafile(std::string text, std::string path) { writeFile(text, path, std::ios::out); }

void appendafile(std::string text, std::string path) {
  writeFile(text, path, std::ios::out | std::ios::app);
}

std::string ExtractNamespaceName(const std::string& text) {
  return resultOf([&] { return namespaceNameIn(text); });
}

std::string GetFileNameWithoutExtension(const std::string& path) {
  return resultOf([&] { return std::string(text::baseNameView(path)); });
}

std::string SanitizeFileName(const std::string& name) {
  return resultOf([&] { return sanitized(name); });
}
