#include "support/heap.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

namespace {

std::size_t failingBytes = 0;  // 0: nothing fails
support::ReleaseWatch* watch = nullptr;
support::NodeSweep* sweep = nullptr;

}  // namespace

// The forms that are not here call these. Only a sanitizer's operator new for std::nothrow does
// not.
void* operator new(std::size_t bytes) {
  if (bytes != 0 && bytes == failingBytes) throw std::bad_alloc();
  void* const block = std::malloc(bytes == 0 ? 1 : bytes);
  if (block == nullptr) throw std::bad_alloc();
  if (sweep != nullptr) sweep->note(block, bytes);
  return block;
}

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  try {
    return operator new(bytes);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void operator delete(void* block) noexcept {
  if (sweep != nullptr) sweep->forget(block);
  if (watch == nullptr || !watch->take(block)) std::free(block);
}

void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

namespace support {

FailingNew::FailingNew(std::size_t bytes) { failingBytes = bytes; }

FailingNew::~FailingNew() { failingBytes = 0; }

ReleaseWatch::ReleaseWatch(std::initializer_list<void*> blocks) {
  entries_.reserve(blocks.size());
  for (void* block : blocks) entries_.push_back({block, 0});
  watch = this;
}

ReleaseWatch::~ReleaseWatch() {
  watch = nullptr;
  for (const Entry& entry : entries_)
    if (entry.releases > 0) std::free(entry.block);
}

std::vector<int> ReleaseWatch::releases() const {
  std::vector<int> counts;
  for (const Entry& entry : entries_) counts.push_back(entry.releases);
  return counts;
}

bool ReleaseWatch::take(void* block) noexcept {
  for (Entry& entry : entries_) {
    if (entry.block != block) continue;
    ++entry.releases;
    return true;
  }
  return false;
}

NodeSweep::NodeSweep() { sweep = this; }

NodeSweep::~NodeSweep() {
  sweep = nullptr;
  for (void* block : blocks_) {
    auto* const node = static_cast<ObjectBranch*>(block);
    if (allAllocatedNodes.erase(node) > 0) delete node;
  }
}

bool NodeSweep::isAlive(const ObjectBranch* node) const {
  return std::any_of(blocks_.begin(), blocks_.end(),
                     [node](const void* block) { return block == node; });
}

// The set allocates and frees memory itself, which must not be recorded.
void NodeSweep::note(void* block, std::size_t bytes) {
  if (bytes != sizeof(ObjectBranch)) return;
  NodeSweep* const self = std::exchange(sweep, nullptr);
  blocks_.insert(block);
  sweep = self;
}

void NodeSweep::forget(void* block) noexcept {
  NodeSweep* const self = std::exchange(sweep, nullptr);
  if (blocks_.erase(block) > 0) allAllocatedNodes.erase(static_cast<ObjectBranch*>(block));
  sweep = self;
}

}  // namespace support
