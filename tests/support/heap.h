// Lets a test run out of memory for one kind of object, and see which objects were destroyed. The
// test program's operator new and operator delete are replaced for it.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <unordered_set>
#include <vector>

#include "tree/object_branch.h"

namespace support {

// While it lives, operator new fails for every block of exactly that many bytes.
class FailingNew {
 public:
  explicit FailingNew(std::size_t bytes);
  FailingNew(const FailingNew&) = delete;
  FailingNew& operator=(const FailingNew&) = delete;
  ~FailingNew();
};

// While it lives, counts how often operator delete is given each of some blocks. It holds the
// blocks back until its own end, so that none of their addresses is given out again.
class ReleaseWatch {
 public:
  explicit ReleaseWatch(std::initializer_list<void*> blocks);
  ReleaseWatch(const ReleaseWatch&) = delete;
  ReleaseWatch& operator=(const ReleaseWatch&) = delete;
  ~ReleaseWatch();

  // How often each block was released, in the order in which the watch was given them.
  std::vector<int> releases() const;

  // Whether block is one of the watched, whose release is then counted.
  bool take(void* block) noexcept;

 private:
  struct Entry {
    void* block;
    int releases;
  };
  std::vector<Entry> entries_;
};

// While it lives, notes which nodes are made, and at its end destroys those that are left, which no
// run does: so a test can go through runs by the ten thousand. The registry forgets these nodes.
class NodeSweep {
 public:
  NodeSweep();
  NodeSweep(const NodeSweep&) = delete;
  NodeSweep& operator=(const NodeSweep&) = delete;
  ~NodeSweep();

  // Whether a node that was made meanwhile is still there.
  bool isAlive(const ObjectBranch* node) const;

  void note(void* block, std::size_t bytes);
  void forget(void* block) noexcept;

 private:
  std::unordered_set<void*> blocks_;  // of the size of a node
};

}  // namespace support
