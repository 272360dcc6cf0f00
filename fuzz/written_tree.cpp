#include "written_tree.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace fuzz {
namespace {

constexpr std::array<std::string_view, 5> kLabels{"line", "namespace", "class", "function", ""};
constexpr std::array<std::string_view, 3> kTags{"", "\n      \"href\"\n", "raw \"\\"};
constexpr std::array<std::string_view, 3> kPaths{"a.js", "a.html", "dir/it's \"x\".php"};

constexpr std::size_t kHeadBytes = 4;
constexpr std::uint32_t kCodes = kBranchError + 3;
constexpr std::int32_t kNumberStep = 16'777'215;  // a byte's values reach both ends of the range

class TreeReader {
 public:
  explicit TreeReader(std::string_view bytes)
      : freeNumbers_(!bytes.empty() && bytes.front() == kFreeNumbers),
        rest_(bytes.substr(std::min<std::size_t>(1, bytes.size()))) {}

  std::vector<ObjectBranch*> read() {
    while (rest_.size() >= kHeadBytes) readNode();
    return nodes_;
  }

 private:
  unsigned takeByte() {
    const auto byte = static_cast<unsigned char>(rest_.front());
    rest_.remove_prefix(1);
    return byte;
  }

  void readNode() {
    const unsigned back = takeByte();
    ObjectBranch* const node = tree::makeNode();
    ObjectBranch* parent =
        nodes_.empty() ? nullptr : nodes_[nodes_.size() - 1 - back % nodes_.size()];
    node->branchType = takeByte() % kCodes;
    unsigned texts = takeByte();
    const auto pick = [&texts](const auto& table) {
      const std::string_view picked = table[texts % table.size()];
      texts /= static_cast<unsigned>(table.size());
      return std::string(picked);
    };
    node->branchTypeAsString = pick(kLabels);
    node->tags = pick(kTags);
    node->filePath = pick(kPaths);
    const auto last = static_cast<std::int32_t>(takeByte());
    node->parent = parent;
    node->lineNumber = (last - 128) * kNumberStep;
    if (freeNumbers_) {
      node->nodeID = (last / 4 * 4 - 128) * kNumberStep;  // often already taken
    } else {
      if ((last & 1) != 0 && parent != nullptr) parent->children.push_back(nullptr);
      if ((last & 2) != 0) node->parent = nullptr;
      if ((last & 4) != 0 && !nodes_.empty()) node->parent = nodes_.front();
    }
    const std::size_t end = std::min(rest_.find(kTextEnd), rest_.size());
    node->contents = rest_.substr(0, end);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    if (parent != nullptr) parent->children.push_back(node);
    nodes_.push_back(node);
  }

  const bool freeNumbers_;
  std::string_view rest_;
  std::vector<ObjectBranch*> nodes_;
};

}  // namespace

std::vector<ObjectBranch*> treeWrittenAs(std::string_view bytes) {
  return TreeReader(bytes).read();
}

}  // namespace fuzz
