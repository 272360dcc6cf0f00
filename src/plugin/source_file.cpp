#include "plugin/source_file.h"

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <ios>
#include <stdexcept>
#include <system_error>

namespace plugin {
namespace {

constexpr std::size_t kFirstReadBytes = 65'536;

// The bytes from the read position to the end, or 0 for a file that has no positions.
std::size_t bytesLeft(std::filebuf& file) {
  const std::streamoff here = file.pubseekoff(0, std::ios::cur, std::ios::in);
  if (here < 0) return 0;
  const std::streamoff end = file.pubseekoff(0, std::ios::end, std::ios::in);
  file.pubseekpos(here, std::ios::in);
  return end > here ? static_cast<std::size_t>(end - here) : 0;
}

// Reads into ever larger blocks, the second of which takes the rest of an ordinary file.
std::string readAll(std::filebuf& file) {
  std::string text;
  std::size_t block = kFirstReadBytes;
  while (true) {
    const std::size_t before = text.size();
    text.resize(before + block);
    const std::streamsize got =
        file.sgetn(text.data() + before, static_cast<std::streamsize>(block));
    text.resize(before + static_cast<std::size_t>(got));
    if (static_cast<std::size_t>(got) < block) return text;
    // One byte more than is left, so that the end shows without another block.
    block = before == 0 ? std::max(bytesLeft(file) + 1, kFirstReadBytes) : text.size();
  }
}

}  // namespace

std::optional<std::string> readSourceFile(const std::string& path) {
  std::filebuf file;
  if (file.open(path, std::ios::in) == nullptr) return std::nullopt;
  try {
    return readAll(file);
  } catch (const std::ios_base::failure& failure) {
    if (failure.code() == std::errc::is_a_directory) return std::string();
    throw std::runtime_error("Could not read file: " + failure.code().message());
  }
}

}  // namespace plugin
