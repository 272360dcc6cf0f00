#include "sources/name_list.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "system/failure.h"
#include "system/io.h"
#include "system/text_parts.h"

namespace host {
namespace {

std::string readList(const std::string& list, const std::string& subject) {
  const bool isStandardInput = list == "-";
  const int descriptor =
      isStandardInput ? STDIN_FILENO : ::open(list.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) throw systemFailure(subject, errno);
  try {
    std::string text = readToEnd(descriptor, subject);
    if (!isStandardInput) ::close(descriptor);
    return text;
  } catch (const Failure&) {
    if (!isStandardInput) ::close(descriptor);
    throw;
  }
}

}  // namespace

std::vector<std::string> readNameList(const std::string& list, NameEnd nameEnd) {
  const std::string subject = "list " + list;
  const std::string text = readList(list, subject);
  if (nameEnd != NameEnd::kNul && text.find('\0') != std::string::npos) {
    throw Failure(subject + ": a name has a NUL byte in it; see --null");
  }
  std::vector<std::string> names;
  for (const std::string_view name : partsOf(text, static_cast<char>(nameEnd))) {
    if (!name.empty()) names.emplace_back(name);
  }
  return names;
}

bool hasWindowsLineEnds(const std::vector<std::string>& names) {
  return std::any_of(names.begin(), names.end(), [](const std::string& name) {
    std::error_code unseen;
    return name.ends_with('\r') && !std::filesystem::exists(name, unseen) &&
           std::filesystem::exists(name.substr(0, name.size() - 1), unseen);
  });
}

}  // namespace host
