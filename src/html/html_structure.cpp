// A closing tag of any name closes the innermost open element, and an element that is never closed
// stays open: its children are whatever comes while it is on the stack. A script element with
// inline text is not pushed: the script content parser gets its text, and the scan continues after
// its closing tag.
#include "html/html_structure.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "base/stream_writer.h"
#include "builder/script_content.h"
#include "html/attributes.h"
#include "text/string_primitives.h"

namespace html {
namespace {

constexpr std::size_t kMaxPageBytes = 52'428'800;   // anything that begins later is ignored
constexpr std::size_t kMaxTagBytes = 10'000;        // a longer tag is cut
constexpr std::size_t kMaxTextBytes = 10'000;       // a longer run of text is cut
constexpr std::size_t kMaxScriptBytes = 1'048'576;  // a longer inline script is cut
constexpr std::size_t kMaxOpenElements = 1'000;     // a deeper element takes no children
constexpr std::size_t kTextPreviewBytes = 30;       // shown of an element's first text

constexpr std::string_view kScriptClose = "</script>";
constexpr std::string_view kTextOpen = ": \"";  // between an element's name and its text

// Tags that begin with these make no node. required: case-sensitive, so "<!doctype html>" is an
// element.
constexpr std::array<std::string_view, 3> kIgnoredTags{"!--", "!DOCTYPE", "?"};
// Prefixes, so "brand" and "linker" take no children either.
constexpr std::array<std::string_view, 6> kVoidTags{"meta", "link", "img", "br", "hr", "input"};

bool startsWithOneOf(std::string_view text, const auto& prefixes) {
  return std::any_of(prefixes.begin(), prefixes.end(),
                     [text](std::string_view prefix) { return text.starts_with(prefix); });
}

class PageScanner {
 public:
  PageScanner(std::string_view text, ObjectBranch* root, const std::string& path, int startLine,
              detect::AnswerTable& answers)
      : text_(text),
        limit_(std::min(text.size(), kMaxPageBytes)),
        path_(path),
        answers_(answers),
        line_(startLine) {
    openElements_.reserve(kMaxOpenElements);
    openElements_.push_back({root});
  }

  void run() {
    while (scanNextTag()) {
    }
  }

 private:
  struct OpenElement {
    ObjectBranch* node;
    bool hasText = false;  // a text was seen: its contents need not be searched again
  };

  bool scanNextTag();
  void takeText(std::string_view text);
  void closeElement();
  void addElement(std::string_view tagText, std::size_t behindTag);
  void addLink(ObjectBranch* element, std::string_view kind, std::string_view tag,
               std::string_view value);
  void addInlineScript(ObjectBranch* element, std::string_view tagText, std::size_t begin,
                       std::size_t close);

  ObjectBranch* addNode(ObjectBranch* parent, BranchType type, std::string_view label,
                        std::int32_t lineNumber, std::string contents);
  std::size_t findScriptClose(std::size_t from);

  // Position of the first such byte at or after from, or limit_ if there is none.
  std::size_t findByte(char byte, std::size_t from) const {
    return std::min(text_.find(byte, from), limit_);
  }
  void countLines(std::size_t from, std::size_t to) {
    const auto piece = text_.substr(from, to - from);
    line_ += static_cast<std::int32_t>(std::count(piece.begin(), piece.end(), '\n'));
  }

  const std::string_view text_;
  const std::size_t limit_;
  const std::string& path_;
  detect::AnswerTable& answers_;
  std::size_t position_ = 0;
  std::int32_t line_;  // zero-based in a page; line feeds inside a tag are not counted
  std::vector<OpenElement> openElements_;  // the root at the bottom is never popped
  std::size_t scriptClose_ = 0;            // the last result of findScriptClose
  bool scriptCloseKnown_ = false;
  base::StreamWriter warnings_{stderr};
};

// Handles the text up to the next tag and the tag itself. Returns false at the end of the scan.
bool PageScanner::scanNextTag() {
  while (position_ < limit_ && text_[position_] == '\n') {
    ++position_;
    ++line_;
  }
  const std::size_t open = findByte('<', position_);
  if (open == limit_) return false;  // text after the last tag is dropped
  countLines(position_, open);
  if (open > position_)
    takeText(text_.substr(position_, std::min(open - position_, kMaxTextBytes)));

  const std::size_t close = findByte('>', open);
  if (close == limit_) return false;
  const std::string_view tagText = text_.substr(open + 1, std::min(close - open - 1, kMaxTagBytes));
  position_ = close + 1;
  if (startsWithOneOf(tagText, kIgnoredTags)) return true;
  if (tagText.starts_with('/')) {
    closeElement();
  } else {
    addElement(tagText, close + 1);
  }
  return true;
}

// Only the first text of an element is kept, wherever it is in the element.
void PageScanner::takeText(std::string_view text) {
  OpenElement& element = openElements_.back();
  if (element.hasText) return;
  if (text::trimView(text).empty()) return;  // reducing never empties a text that trimming does not
  element.hasText = true;
  std::string& contents = element.node->contents;
  // required: an identifier that contains these bytes counts as having a text.
  if (text::contains(contents, kTextOpen)) return;
  contents.append(kTextOpen).append(textPreview(text, kTextPreviewBytes)).push_back('"');
}

void PageScanner::closeElement() {
  if (openElements_.size() > 1) {
    openElements_.pop_back();
  } else {
    warnings_ << "Warning: Attempting to pop from empty element stack\n";
  }
}

void PageScanner::addElement(std::string_view tagText, std::size_t behindTag) {
  const bool isVoid = tagText.ends_with('/') || startsWithOneOf(tagText, kVoidTags);
  if (tagText.ends_with('/')) tagText.remove_suffix(1);

  ObjectBranch* const element = addNode(openElements_.back().node, kBranchHtmlElement,
                                        "htmlelement", line_, elementIdentifier(tagText));
  addLink(element, "href: ", "\n      \"href\"\n", hrefValue(tagText));
  addLink(element, "src: ", "\n      \"src\"\n", srcValue(tagText));

  if (tagText.starts_with("script") && !text::contains(tagText, "src=")) {
    const std::size_t close = findScriptClose(behindTag);
    if (close < limit_) {
      addInlineScript(element, tagText, behindTag, close);
      return;
    }
  }
  if (!isVoid && openElements_.size() < kMaxOpenElements) openElements_.push_back({element});
}

void PageScanner::addLink(ObjectBranch* element, std::string_view kind, std::string_view tag,
                          std::string_view value) {
  if (value.empty()) return;
  ObjectBranch* const link =
      addNode(element, kBranchLink, "link", line_, std::string(kind).append(value));
  link->tags = tag;
}

void PageScanner::addInlineScript(ObjectBranch* element, std::string_view tagText,
                                  std::size_t begin, std::size_t close) {
  const std::string_view script = text_.substr(begin, std::min(close - begin, kMaxScriptBytes));
  const std::int32_t scriptLine = line_ + 1;
  ObjectBranch* const node =
      addNode(element, kBranchClass, "class", scriptLine, std::string(tagText));
  node->tags = "\n      \"inline-script\"\n";
  if (!text::trimView(script).empty()) {
    builder::parseScriptContent(script, node, path_, scriptLine, answers_);
  }
  position_ = close + kScriptClose.size();
  countLines(begin, std::min(position_, limit_));
}

ObjectBranch* PageScanner::addNode(ObjectBranch* parent, BranchType type, std::string_view label,
                                   std::int32_t lineNumber, std::string contents) {
  ObjectBranch* const node = tree::makeNode(parent, type, label, lineNumber, path_);
  node->contents = std::move(contents);
  parent->children.push_back(node);
  return node;
}

// Position of the next closing script tag at or after from, npos if there is none. from only grows,
// so the last result holds until from passes it, and scripts without an end are searched for once.
std::size_t PageScanner::findScriptClose(std::size_t from) {
  if (!scriptCloseKnown_ || scriptClose_ < from) scriptClose_ = text_.find(kScriptClose, from);
  scriptCloseKnown_ = true;
  return scriptClose_;
}

}  // namespace

void parseStructure(std::string_view text, ObjectBranch* root, const std::string& path,
                    int startLine, detect::AnswerTable& answers) {
  if (root != nullptr) PageScanner(text, root, path, startLine, answers).run();
}

}  // namespace html

void ParseHTMLStructure(const std::string& text, ObjectBranch* root, const std::string& path,
                        int startLine) {
  detect::AnswerTable unread(currentIndex);
  html::parseStructure(text, root, path, startLine, unread);
}
