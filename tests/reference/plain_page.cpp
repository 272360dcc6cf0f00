#include "reference/plain_page.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "reference/plain_attributes.h"
#include "reference/plain_script_content.h"
#include "reference/plain_strings.h"
#include "reference/plain_tree.h"

namespace reference {
namespace {

constexpr std::size_t kNone = std::string::npos;

bool beginsWithOneOf(const std::string& text, const std::vector<std::string>& words) {
  for (const std::string& word : words)
    if (beginsWith(text, word)) return true;
  return false;
}

bool isBlank(const std::string& text) { return trimAndReduce(text).empty(); }

class Page {
 public:
  Page(const std::string& text, ObjectBranch* root, const std::string& path, int startLine)
      : text_(text),
        limit_(std::min<std::size_t>(text.size(), 52'428'800)),
        path_(path),
        line_(startLine),
        open_{root} {}

  int parse() {
    while (position_ < limit_ && takeTextAndTag()) {
    }
    return strayTags_;
  }

 private:
  bool takeTextAndTag() {
    while (position_ < limit_ && text_[position_] == '\n') {
      ++position_;
      ++line_;
    }
    const std::size_t begin = text_.find('<', position_);
    if (begin == kNone || begin >= limit_) return false;
    countLines(position_, begin);
    if (begin > position_)
      takeText(text_.substr(position_, std::min<std::size_t>(begin - position_, 10'000)));

    const std::size_t end = text_.find('>', begin);
    if (end == kNone || end >= limit_) return false;
    position_ = end + 1;
    takeTag(text_.substr(begin + 1, std::min<std::size_t>(end - begin - 1, 10'000)));
    return true;
  }

  void takeText(const std::string& text) {
    std::string& contents = open_.back()->contents;
    if (isBlank(text) || contains(contents, ": \"")) return;
    contents += ": \"" + textPreview(text, 30) + "\"";
  }

  // position_ is just past the tag.
  void takeTag(std::string tag) {
    if (beginsWithOneOf(tag, {"!--", "!DOCTYPE", "?"})) return;
    if (beginsWith(tag, "/")) {
      if (open_.size() > 1)
        open_.pop_back();
      else
        ++strayTags_;
      return;
    }
    bool isVoid = false;
    if (!tag.empty()) {
      isVoid =
          tag.back() == '/' || beginsWithOneOf(tag, {"meta", "link", "img", "br", "hr", "input"});
      if (tag.back() == '/') tag.pop_back();
    }

    ObjectBranch* element = addNode(open_.back(), kBranchHtmlElement, "htmlelement", line_);
    element->contents = elementIdentifier(tag);
    addLink(element, "href", hrefValue(tag));
    addLink(element, "src", srcValue(tag));

    if (beginsWith(tag, "script") && !contains(tag, "src=")) {
      const std::size_t close = text_.find("</script>", position_);
      if (close != kNone && close < limit_) {
        takeScript(element, tag, close);
        return;
      }
    }
    if (!isVoid && open_.size() < 1'000) open_.push_back(element);
  }

  void takeScript(ObjectBranch* element, const std::string& tag, std::size_t close) {
    const std::string script =
        text_.substr(position_, std::min<std::size_t>(close - position_, 1'048'576));
    ObjectBranch* node = addNode(element, kBranchClass, "class", line_ + 1);
    node->contents = tag;
    node->tags = "\n      \"inline-script\"\n";
    if (!isBlank(script)) parseScriptContent(script, node, path_, line_ + 1);
    countLines(position_, std::min(close + 9, limit_));
    position_ = close + 9;
  }

  void addLink(ObjectBranch* element, const std::string& kind, const std::string& value) {
    if (value.empty()) return;
    ObjectBranch* node = addNode(element, kBranchLink, "link", line_);
    node->contents = kind + ": " + value;
    node->tags = "\n      \"" + kind + "\"\n";
  }

  ObjectBranch* addNode(ObjectBranch* parent, std::uint32_t code, const std::string& label,
                        std::int32_t line) const {
    ObjectBranch* node = newNode();
    node->parent = parent;
    node->branchType = code;
    node->branchTypeAsString = label;
    node->lineNumber = line;
    node->filePath = path_;
    parent->children.push_back(node);
    return node;
  }

  void countLines(std::size_t begin, std::size_t end) {
    for (std::size_t i = begin; i < end; ++i)
      if (text_[i] == '\n') ++line_;
  }

  const std::string& text_;
  const std::size_t limit_;
  const std::string& path_;
  std::int32_t line_;
  std::vector<ObjectBranch*> open_;  // the root comes first
  std::size_t position_ = 0;
  int strayTags_ = 0;
};

}  // namespace

int parsePage(const std::string& text, ObjectBranch* root, const std::string& path, int startLine) {
  return root == nullptr ? 0 : Page(text, root, path, startLine).parse();
}

}  // namespace reference
