// Reference implementation of the string primitives and file names: byte by byte, and a copy per
// step.
#pragma once

#include <cstdint>
#include <string>

namespace reference {

bool isLetter(char byte);
bool isDigit(char byte);

void replaceAll(std::string& text, const std::string& from, const std::string& to);
std::string ltrim(std::string text);
std::string rtrim(std::string text);
std::string trim(const std::string& text);
std::string whiteSpaceToSingleSpace(const std::string& text);
std::string trimAndReduce(const std::string& text);
std::string firstWord(const std::string& text);
std::string lastWord(const std::string& text);
std::string lastWordNoDots(std::string& text);
bool contains(const std::string& haystack, const std::string& needle);
bool outsideStringMatch(const std::string& haystack, const std::string& needle);
std::int64_t indexOf(const std::string& haystack, const std::string& needle);
bool beginsWith(const std::string& text, const std::string& beginning);

std::string fileExtension(const std::string& path);
bool isHtmlFile(const std::string& path);
bool isJavaScriptOnlyFile(const std::string& path);
std::string fileNameWithExtension(std::string path);
std::string fileName(const std::string& path);

}  // namespace reference
