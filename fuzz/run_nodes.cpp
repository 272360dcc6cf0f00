#include "run_nodes.h"

#include <cstddef>
#include <cstdlib>
#include <new>

#include "harness.h"
#include "tree/object_branch.h"

namespace {

bool watching = false;

// Erasing an entry frees a block of the registry itself, which must not be looked up in turn.
void forget(void* block) {
  watching = false;
  allAllocatedNodes.erase(static_cast<ObjectBranch*>(block));
  watching = true;
}

}  // namespace

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return std::malloc(bytes == 0 ? 1 : bytes);
}

void* operator new(std::size_t bytes) {
  void* const block = operator new(bytes, std::nothrow);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void operator delete(void* block) noexcept {
  if (watching) forget(block);
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

void operator delete(void* block, const std::nothrow_t&) noexcept { operator delete(block); }

namespace fuzz {

RunNodes::RunNodes() {
  require(allAllocatedNodes.empty(), "the registry of nodes is empty before a run");
  resetCounts();
  watching = true;
}

RunNodes::~RunNodes() {
  watching = false;
  for (const ObjectBranch* node : allAllocatedNodes) delete node;
  allAllocatedNodes.clear();
}

void resetCounts() {
  currentIndex = 0;
  objectCount = 1;
}

}  // namespace fuzz
