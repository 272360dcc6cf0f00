#include "reference/plain_strings.h"

#include <cstddef>

namespace reference {
namespace {

bool isTrimmed(char byte) {
  return byte == ' ' || byte == '\n' || byte == '\r' || byte == '\t' || byte == '\f' ||
         byte == '\v';
}

bool isReduced(char byte) { return byte == ' ' || byte == '\r' || byte == '\n' || byte == '\t'; }

}  // namespace

bool isLetter(char byte) { return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z'); }

bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
  if (from.empty()) return;
  std::size_t start = 0;
  while (true) {
    const std::size_t hit = text.find(from, start);
    if (hit == std::string::npos) return;
    text.replace(hit, from.size(), to);
    start = hit + to.size();
  }
}

std::string ltrim(std::string text) {
  while (!text.empty() && isTrimmed(text[0])) text.erase(0, 1);
  return text;
}

std::string rtrim(std::string text) {
  while (!text.empty() && isTrimmed(text[text.size() - 1])) text.erase(text.size() - 1);
  return text;
}

std::string trim(const std::string& text) { return rtrim(ltrim(text)); }

std::string whiteSpaceToSingleSpace(const std::string& text) {
  std::string result;
  bool inRun = false;
  for (const char byte : text) {
    if (!isReduced(byte)) {
      result += byte;
    } else if (!inRun) {
      result += ' ';
    }
    inRun = isReduced(byte);
  }
  return result;
}

std::string trimAndReduce(const std::string& text) { return trim(whiteSpaceToSingleSpace(text)); }

std::string firstWord(const std::string& text) {
  std::string word;
  for (const char byte : text) {
    if (byte != '_' && byte != '#' && !isDigit(byte) && !isLetter(byte)) return word;
    word += byte;
  }
  return word;
}

std::string lastWord(const std::string& text) {
  for (std::size_t i = text.size(); i > 0; --i)
    if (text[i - 1] == ' ') return text.substr(0, i - 1);
  return text;
}

std::string lastWordNoDots(std::string& text) {
  const std::size_t colon = text.rfind(':');
  if (colon != 0 && colon != std::string::npos) text = text.substr(0, colon - 1);
  const std::size_t space = text.rfind(' ');
  if (space != std::string::npos && space != text.size() - 1) text = text.substr(space + 1);
  return text;
}

bool contains(const std::string& haystack, const std::string& needle) {
  return haystack.find(needle) != std::string::npos;
}

bool outsideStringMatch(const std::string& haystack, const std::string& needle) {
  if (!contains(haystack, needle)) return false;
  bool inQuotes = false;
  int braceDepth = 0;
  int parenDepth = 0;
  int angleDepth = 0;
  for (const char byte : haystack) {
    const std::string c(1, byte);
    if (c == "\"") {
      inQuotes = !inQuotes;
    } else if (inQuotes) {
      continue;
    } else if (c == "{") {
      ++braceDepth;
    } else if (c == "}") {
      --braceDepth;
    } else if (c == "(") {
      ++parenDepth;
    } else if (c == ")") {
      --parenDepth;
    } else if (c == "<") {
      ++angleDepth;
    } else if (c == ">") {
      --angleDepth;
    } else if (braceDepth == 0 && parenDepth == 0 && angleDepth == 0 && c == needle) {
      return true;
    }
  }
  return false;
}

std::int64_t indexOf(const std::string& haystack, const std::string& needle) {
  for (std::size_t i = 0; i + needle.size() <= haystack.size(); ++i)
    if (haystack.compare(i, needle.size(), needle) == 0) return static_cast<std::int64_t>(i);
  return -1;
}

bool beginsWith(const std::string& text, const std::string& beginning) {
  return text.substr(0, beginning.size()) == beginning;
}

std::string fileExtension(const std::string& path) {
  const std::size_t dot = path.rfind('.');
  return dot == std::string::npos ? "" : path.substr(dot + 1);
}

bool isHtmlFile(const std::string& path) {
  const std::string extension = fileExtension(path);
  return extension == "html" || extension == "htm" || extension == "xhtml" || extension == "php";
}

bool isJavaScriptOnlyFile(const std::string& path) {
  const std::string extension = fileExtension(path);
  return extension == "js" || extension == "jsx" || extension == "ts" || extension == "tsx" ||
         extension == "mjs" || extension == "cjs" || extension == "es6" || extension == "es";
}

std::string fileNameWithExtension(std::string path) {
  for (std::size_t i = path.size(); i > 0; --i) {
    if (path[i - 1] != '\\' && path[i - 1] != '/') continue;
    path.erase(0, i);
    break;
  }
  return path;
}

std::string fileName(const std::string& path) {
  std::string name = fileNameWithExtension(path);
  const std::size_t dot = name.rfind('.');
  if (dot != std::string::npos) name.erase(dot);
  return name;
}

}  // namespace reference
