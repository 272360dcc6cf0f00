#include "plugin/source_file.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <ios>
#include <stdexcept>
#include <system_error>

#include "base/fresh_memory.h"

namespace plugin {
namespace {

// The first block: an ordinary small file whole, and no more of a directory or an endless file
// than it takes to notice.
constexpr std::size_t kMinFirstBytes = 4'096;
constexpr std::size_t kMaxFirstBytes = 65'536;

// A block for which large pages, of 2 MB, are worth asking for.
constexpr std::size_t kLargeBlock = std::size_t{4} << 20U;

// The bytes from the read position to the end, or 0 for a file that has no positions. Throws when
// the way back to the read position fails: what is read from the end would be the records of a
// part.
std::size_t bytesLeft(std::filebuf& file) {
  const std::streamoff here = file.pubseekoff(0, std::ios::cur, std::ios::in);
  if (here < 0) return 0;
  const std::streamoff end = file.pubseekoff(0, std::ios::end, std::ios::in);
  if (file.pubseekpos(here, std::ios::in) != std::filebuf::pos_type(here)) {
    throw std::ios_base::failure("seek", std::make_error_code(std::errc::io_error));
  }
  return end > here ? static_cast<std::size_t>(end - here) : 0;
}

// Reads into ever larger blocks, the second of which takes the rest of an ordinary file. A block is
// one byte more than is left, so that the end shows without another one.
std::string readAll(std::filebuf& file) {
  std::string text;
  std::size_t block = std::clamp(bytesLeft(file) + 1, kMinFirstBytes, kMaxFirstBytes);
  while (true) {
    const std::size_t before = text.size();
    if (block >= kLargeBlock) {  // 3 % of a run over 10 MB of Markdown
      text.reserve(before + block);
      base::preferLargePages(text.data() + before, block);
    }
    text.resize(before + block);
    const std::streamsize got =
        file.sgetn(text.data() + before, static_cast<std::streamsize>(block));
    text.resize(before + static_cast<std::size_t>(got));
    if (static_cast<std::size_t>(got) < block) return text;
    block = before == 0 ? std::max(bytesLeft(file) + 1, kMaxFirstBytes) : text.size();
  }
}

// The system's words for an error, in English whatever language the host has set.
std::string messageOf(const std::error_code& code) {
#ifdef __GLIBC__
  const bool isOfSystem = code.category() != std::iostream_category();
  const char* const words = isOfSystem ? strerrordesc_np(code.value()) : nullptr;
  if (words != nullptr) return words;
#endif
  return code.message();
}

}  // namespace

std::optional<std::string> readSourceFile(const std::string& path) {
  std::filebuf file;
  if (file.open(path, std::ios::in) == nullptr) return std::nullopt;
  try {
    return readAll(file);
  } catch (const std::ios_base::failure& failure) {
    if (failure.code() == std::errc::is_a_directory) return std::string();
    throw std::runtime_error("Could not read file: " + messageOf(failure.code()));
  }
}

}  // namespace plugin
