#include "text/file_names.h"

#include <array>

#include "text/string_primitives.h"

namespace text {
namespace {

constexpr std::array<std::string_view, 4> kPageExtensions{"html", "htm", "xhtml", "php"};
constexpr std::array<std::string_view, 8> kScriptExtensions{"js",  "jsx", "ts",  "tsx",
                                                            "mjs", "cjs", "es6", "es"};

}  // namespace

std::string_view extensionView(std::string_view path) {
  const std::size_t dot = path.rfind('.');
  return dot == std::string_view::npos ? std::string_view{} : path.substr(dot + 1);
}

bool isPagePath(std::string_view path) { return isOneOf(extensionView(path), kPageExtensions); }

bool isScriptPath(std::string_view path) { return isOneOf(extensionView(path), kScriptExtensions); }

std::string_view fileNameView(std::string_view path) {
  return path.substr(path.find_last_of("\\/") + 1);  // npos + 1 is 0: the whole path
}

std::string_view baseNameView(std::string_view path) {
  const std::string_view name = fileNameView(path);
  return name.substr(0, name.rfind('.'));
}

}  // namespace text

std::string GetFileExtension(const std::string& path) {
  return std::string(text::extensionView(path));
}

bool IsHTMLFile(const std::string& path) { return text::isPagePath(path); }

bool IsJavaScriptOnlyFile(const std::string& path) { return text::isScriptPath(path); }

std::string FileNameWithExtension(std::string path) {
  return std::string(text::fileNameView(path));
}

std::string FileName(std::string path) { return std::string(text::baseNameView(path)); }
