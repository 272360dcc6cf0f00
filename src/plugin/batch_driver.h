// Running of the parser over files without a host, and a few file chores. Everything here reports
// on standard output or not at all; nothing returns an error, and nothing throws. Without memory a
// function does nothing and returns nothing, or an empty result; never a part of one.
#pragma once

#include <string>
#include <vector>

#include "base/export.h"

// Whether the path names a directory; false if it names nothing.
QUORL_API bool IsDirectory(const std::string& path);

// Whether the extension, case-sensitive, is one of js, jsx, ts, tsx, html, htm, xhtml, php.
// required: the module extensions mjs, cjs, es6 and es are not batch files.
QUORL_API bool IsJavaScriptFile(const std::string& name);

// The batch files right in the directory, each with the path before its name, in the order in
// which the system lists them; empty if the directory cannot be opened. Does not descend.
QUORL_API std::vector<std::string> GetFilesInDirectory(const std::string& path);

// Runs one file through the parser and throws its records away; says on standard output what
// became of it, and nothing without memory to begin. The second argument is not read.
QUORL_API void ProcessSingleFile(const std::string& path, const std::string& unused);

// Write the text to the file, in place of what it held or behind it. A file that cannot be opened
// is passed over in silence.
QUORL_API void writeafile(std::string text, std::string path);
QUORL_API void appendafile(std::string text, std::string path);

// The letters, digits, "_" and ":" behind the first "namespace ", empty without one.
QUORL_API std::string ExtractNamespaceName(const std::string& text);

// The last path component without its last extension.
QUORL_API std::string GetFileNameWithoutExtension(const std::string& path);

// The letters, digits and "_" of the name.
QUORL_API std::string SanitizeFileName(const std::string& name);
