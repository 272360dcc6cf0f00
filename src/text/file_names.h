// Derives facts about a file from its path alone: nothing here touches the file system.
#pragma once

#include <string>
#include <string_view>

#include "base/export.h"

// Returns the bytes after the last "." of the whole path; empty without a ".".
// required: directories are not stripped first: "dir.d/file" yields "d/file".
QUORL_API std::string GetFileExtension(const std::string& path);

// Returns whether the extension, case-sensitive, is one of html, htm, xhtml, php.
QUORL_API bool IsHTMLFile(const std::string& path);

// Returns whether the extension, case-sensitive, is one of js, jsx, ts, tsx, mjs, cjs, es6, es.
QUORL_API bool IsJavaScriptOnlyFile(const std::string& path);

// Return the last path component, with and without its last extension. Both "/" and the backslash
// separate components on every platform.
QUORL_API std::string FileNameWithExtension(std::string path);
QUORL_API std::string FileName(std::string path);

namespace text {

std::string_view extensionView(std::string_view path);
bool isPagePath(std::string_view path);
bool isScriptPath(std::string_view path);
std::string_view fileNameView(std::string_view path);
std::string_view baseNameView(std::string_view path);

}  // namespace text
