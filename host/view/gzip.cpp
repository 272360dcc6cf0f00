#include "view/gzip.h"

#include <libdeflate.h>

#include <cstddef>
#include <memory>
#include <new>

#include "system/runtime_library.h"

namespace host::view {
namespace {

constexpr int kLevel = 6;  // of 12; 9 takes five times as long for three hundredths of the size

struct Functions {
  explicit Functions(const RuntimeLibrary& library) {
    library.find("libdeflate_alloc_compressor", alloc);
    library.find("libdeflate_free_compressor", free);
    library.find("libdeflate_gzip_compress_bound", bound);
    library.find("libdeflate_gzip_compress", compress);
  }

  decltype(&libdeflate_alloc_compressor) alloc = nullptr;
  decltype(&libdeflate_free_compressor) free = nullptr;
  decltype(&libdeflate_gzip_compress_bound) bound = nullptr;
  decltype(&libdeflate_gzip_compress) compress = nullptr;
};

}  // namespace

std::string gzip(std::string_view bytes) {
  const Functions functions(RuntimeLibrary(QUORL_LIBDEFLATE));
  const std::unique_ptr<libdeflate_compressor, decltype(functions.free)> compressor(
      functions.alloc(kLevel), functions.free);
  if (!compressor) throw std::bad_alloc();
  std::string packed(functions.bound(compressor.get(), bytes.size()), '\0');
  packed.resize(functions.compress(compressor.get(), bytes.data(), bytes.size(), packed.data(),
                                   packed.size()));
  return packed;
}

}  // namespace host::view
