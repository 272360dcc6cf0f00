#include "outline/page_elements.h"

#include <algorithm>
#include <array>
#include <string>
#include <unordered_map>

namespace host::outline {
namespace {

constexpr std::array<std::string_view, 16> kVoid = {
    "area",  "base",   "br",   "col",  "embed", "frame",  "hr",    "img",
    "input", "keygen", "link", "meta", "param", "source", "track", "wbr"};
constexpr std::array<std::string_view, 8> kRawText = {"iframe", "noembed",  "noframes", "script",
                                                      "style",  "textarea", "title",    "xmp"};

// An opening tag that closes an element of the same kind that is still open.
struct Implied {
  std::string_view opens;
  std::string_view closes;
};
constexpr std::array kImplied = {
    Implied{"li", "li"},     Implied{"dt", "dt"},         Implied{"dt", "dd"}, Implied{"dd", "dt"},
    Implied{"dd", "dd"},     Implied{"option", "option"}, Implied{"tr", "td"}, Implied{"tr", "th"},
    Implied{"tr", "tr"},     Implied{"td", "td"},         Implied{"td", "th"}, Implied{"th", "td"},
    Implied{"th", "th"},     Implied{"p", "p"},           Implied{"div", "p"}, Implied{"ul", "p"},
    Implied{"ol", "p"},      Implied{"table", "p"},       Implied{"pre", "p"}, Implied{"form", "p"},
    Implied{"h1", "p"},      Implied{"h2", "p"},          Implied{"h3", "p"},  Implied{"h4", "p"},
    Implied{"section", "p"}, Implied{"blockquote", "p"}};

bool isLetter(char byte) { return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z'); }
bool isBlank(char byte) {
  return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r' || byte == '\f';
}
char lower(char byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}
std::string lower(std::string_view text) {
  std::string result(text);
  for (char& byte : result) byte = lower(byte);
  return result;
}

template <std::size_t count>
bool holds(const std::array<std::string_view, count>& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

class ElementFinder {
 public:
  explicit ElementFinder(std::string_view source) : source_(source) {}

  std::vector<PageElement> run() {
    while (position_ < source_.size()) {
      const std::size_t open = std::min(source_.find('<', position_), source_.size());
      moveTo(open);
      const char next = open + 1 < source_.size() ? source_[open + 1] : '\0';
      if (open == source_.size()) break;
      if (isLetter(next)) {
        takeElement();
      } else if (next == '/') {
        takeClosingTag();
      } else if (next == '!' || next == '?') {
        skipDeclaration();
      } else {
        moveTo(open + 1);
      }
    }
    while (!open_.empty()) closeLast(source_.size());
    return std::move(elements_);
  }

 private:
  struct Open {
    std::size_t element;
    const std::string* name;
    std::int64_t* count;  // how many of that name are open
  };

  void moveTo(std::size_t end) {
    for (; position_ < end; ++position_) {
      const char byte = source_[position_];
      const bool isPair =
          byte == '\r' && position_ + 1 < source_.size() && source_[position_ + 1] == '\n';
      if (byte == '\n' || (byte == '\r' && !isPair)) ++line_;
    }
  }

  std::size_t find(std::string_view needle, std::size_t from) const {
    const std::size_t found = source_.find(needle, from);
    return found == std::string_view::npos ? source_.size() : found;
  }

  void skipDeclaration() {
    const std::string_view rest = source_.substr(position_);
    std::string_view end = ">";
    if (rest.starts_with("<!--")) end = "-->";
    if (rest.starts_with("<?php") || rest.starts_with("<?=")) end = "?>";
    moveTo(std::min(source_.size(), find(end, position_ + 2) + end.size()));
  }

  std::size_t nameEnd(std::size_t from) const {
    while (from < source_.size() && !isBlank(source_[from]) && source_[from] != '>' &&
           source_[from] != '/') {
      ++from;
    }
    return from;
  }

  // Behind the > of the tag; quoted values may hold one.
  std::size_t tagEnd(std::size_t from) const {
    bool behindEquals = false;
    while (from < source_.size() && source_[from] != '>') {
      const char byte = source_[from];
      if ((byte == '"' || byte == '\'') && behindEquals) {
        from = find(std::string_view(&byte, 1), from + 1);
        if (from == source_.size()) return from;
      }
      if (!isBlank(byte)) behindEquals = byte == '=';
      ++from;
    }
    return std::min(source_.size(), from + 1);
  }

  void closeLast(std::size_t end) {
    PageElement& element = elements_[open_.back().element];
    element.end = end;
    element.lastLine = line_;
    --*open_.back().count;
    open_.pop_back();
  }

  void takeElement() {
    PageElement element;
    element.begin = position_;
    element.line = line_;
    const std::size_t end = nameEnd(position_ + 1);
    element.name = source_.substr(position_ + 1, end - position_ - 1);
    const auto [entry, isNew] = counts_.try_emplace(lower(element.name), 0);
    const std::string& name = entry->first;
    while (!open_.empty() && impliesEnd(name, *open_.back().name)) closeLast(position_);
    moveTo(tagEnd(end));
    element.end = element.textBegin = element.textEnd = position_;
    element.lastLine = element.textLine = line_;
    const bool closesItself = source_.substr(0, position_).ends_with("/>");
    elements_.push_back(element);
    if (closesItself || holds(kVoid, name)) return;
    ++entry->second;
    open_.push_back({elements_.size() - 1, &name, &entry->second});
    if (!holds(kRawText, name)) return;
    moveTo(rawTextEnd(name));
    elements_.back().textEnd = position_;
  }

  static bool impliesEnd(std::string_view opens, std::string_view closes) {
    return std::any_of(kImplied.begin(), kImplied.end(), [&](const Implied& row) {
      return row.opens == opens && row.closes == closes;
    });
  }

  // Where the closing tag of the element begins.
  std::size_t rawTextEnd(std::string_view name) const {
    for (std::size_t at = find("</", position_); at < source_.size(); at = find("</", at + 2)) {
      if (lower(source_.substr(at + 2, name.size())) != name) continue;
      const std::size_t behind = at + 2 + name.size();
      if (behind >= source_.size() || nameEnd(behind) == behind) return at;
    }
    return source_.size();
  }

  void takeClosingTag() {
    const std::size_t end = nameEnd(position_ + 2);
    const auto entry = counts_.find(lower(source_.substr(position_ + 2, end - position_ - 2)));
    if (entry != counts_.end() && entry->second > 0) {
      while (open_.back().name != &entry->first) closeLast(position_);
      moveTo(tagEnd(end));
      closeLast(position_);
      return;
    }
    moveTo(tagEnd(end));
  }

  std::string_view source_;
  std::size_t position_ = 0;
  std::int32_t line_ = 1;
  std::vector<PageElement> elements_;
  std::vector<Open> open_;
  std::unordered_map<std::string, std::int64_t> counts_;  // open elements by name
};

}  // namespace

std::vector<PageElement> findElements(std::string_view source) {
  return ElementFinder(source).run();
}

}  // namespace host::outline
