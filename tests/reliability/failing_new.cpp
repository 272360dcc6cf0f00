#include "reliability/failing_new.h"

#include <cstdlib>
#include <new>

namespace reliability {

Requests requests;

namespace {

void* request(std::size_t bytes) {
  const std::size_t number = requests.count++;
  if (requests.failing &&
      (number == *requests.failing || (requests.andAllBehind && number > *requests.failing))) {
    return nullptr;
  }
  return std::malloc(bytes == 0 ? 1 : bytes);
}

}  // namespace
}  // namespace reliability

void* operator new(std::size_t bytes) {
  void* const memory = reliability::request(bytes);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return reliability::request(bytes);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
