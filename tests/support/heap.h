// Lets a test run out of memory for one kind of object, and watch which objects are destroyed.
// Linking it replaces the test program's operator new and operator delete.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <unordered_set>
#include <vector>

#include "tree/object_branch.h"

namespace support {

// While alive, operator new fails for every block of exactly that many bytes.
class FailingNew {
 public:
  explicit FailingNew(std::size_t bytes);
  FailingNew(const FailingNew&) = delete;
  FailingNew& operator=(const FailingNew&) = delete;
  ~FailingNew();
};

// While alive, counts how often operator delete is called for each watched block. It frees the
// blocks only in its destructor, so that none of their addresses is reused.
class ReleaseWatch {
 public:
  explicit ReleaseWatch(std::initializer_list<void*> blocks);
  ReleaseWatch(const ReleaseWatch&) = delete;
  ReleaseWatch& operator=(const ReleaseWatch&) = delete;
  ~ReleaseWatch();

  // Returns how often each block was released, in the order given to the constructor.
  std::vector<int> releases() const;

  // If block is watched, counts its release and returns true.
  bool take(void* block) noexcept;

 private:
  struct Entry {
    void* block;
    int releases;
  };
  std::vector<Entry> entries_;
};

// While alive, records which nodes are made; its destructor destroys those that are left, which no
// run does, so that a test can make tens of thousands of runs. It also removes them from the
// registry.
class NodeSweep {
 public:
  NodeSweep();
  NodeSweep(const NodeSweep&) = delete;
  NodeSweep& operator=(const NodeSweep&) = delete;
  ~NodeSweep();

  // Whether a node that was made since construction still exists.
  bool isAlive(const ObjectBranch* node) const;

  void note(void* block, std::size_t bytes);
  void forget(void* block) noexcept;

 private:
  std::unordered_set<void*> blocks_;  // blocks with the size of a node
};

}  // namespace support
