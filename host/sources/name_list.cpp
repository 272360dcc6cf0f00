#include "sources/name_list.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <string_view>

#include "system/failure.h"
#include "system/io.h"

namespace host {
namespace {

constexpr std::size_t kReadBytes = std::size_t{64} * 1024;

// Appends all bytes to text. Returns 0, or the error number of the read that failed.
int readAll(int descriptor, std::string& text) {
  std::array<char, kReadBytes> block;
  while (true) {
    const ssize_t count = readSome(descriptor, block.data(), block.size());
    if (count <= 0) return count == 0 ? 0 : errno;
    text.append(block.data(), static_cast<std::size_t>(count));
  }
}

std::string readList(const std::string& list, const std::string& subject) {
  const bool isStandardInput = list == "-";
  const int descriptor =
      isStandardInput ? STDIN_FILENO : ::open(list.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) throw systemFailure(subject, errno);
  std::string text;
  const int error = readAll(descriptor, text);
  if (!isStandardInput) ::close(descriptor);
  if (error != 0) throw systemFailure(subject, error);
  return text;
}

}  // namespace

std::vector<std::string> readNameList(const std::string& list, NameEnd nameEnd) {
  const std::string subject = "list " + list;
  const std::string text = readList(list, subject);
  if (nameEnd != NameEnd::kNul && text.find('\0') != std::string::npos) {
    throw Failure(subject + ": a name has a NUL byte in it; see --null");
  }
  std::vector<std::string> names;
  for (std::string_view rest = text; !rest.empty();) {
    const std::string_view name = rest.substr(0, rest.find(static_cast<char>(nameEnd)));
    if (!name.empty()) names.emplace_back(name);
    rest.remove_prefix(std::min(name.size() + 1, rest.size()));
  }
  return names;
}

}  // namespace host
