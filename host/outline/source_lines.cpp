#include "outline/source_lines.h"

#include <algorithm>

namespace host::outline {

SourceLines::SourceLines(std::string_view source) : source_(source) {
  starts_.push_back(0);
  // A plain loop: find_first_of makes a call for each byte.
  for (std::size_t at = 0; at < source.size(); ++at) {
    if (source[at] != '\n' && source[at] != '\r') continue;
    if (source.substr(at).starts_with("\r\n")) ++at;
    starts_.push_back(at + 1);
  }
}

std::string_view SourceLines::text(std::int32_t line) const {
  const auto index = static_cast<std::size_t>(line) - 1;
  const std::size_t end = index + 1 < starts_.size() ? starts_[index + 1] : source_.size();
  std::string_view text = source_.substr(starts_[index], end - starts_[index]);
  while (text.ends_with('\n') || text.ends_with('\r')) text.remove_suffix(1);
  return text;
}

std::int32_t SourceLines::blockEnd(std::int32_t line) {
  if (blockEnds_.empty()) findBlockEnds();
  return blockEnds_[static_cast<std::size_t>(line) - 1];
}

// From the last line up, so that what a closer that opens again comes to is known already. The
// stack holds the lines below that are indented less and less.
void SourceLines::findBlockEnds() {
  constexpr std::string_view kClosers = "})]";
  constexpr std::string_view kOpeners = "{([";
  struct Below {
    std::int32_t line;
    std::size_t indentation;
  };
  std::vector<Below> below;
  blockEnds_.resize(starts_.size());
  for (std::int32_t line = count(); line > 0; --line) {
    std::int32_t& end = blockEnds_[static_cast<std::size_t>(line) - 1];
    end = line;
    const std::string_view head = text(line);
    const std::size_t indentation = head.find_first_not_of(" \t");
    if (indentation == std::string_view::npos) continue;
    while (!below.empty() && below.back().indentation > indentation) below.pop_back();
    if (!below.empty() && below.back().indentation == indentation) {
      const std::int32_t next = below.back().line;
      const std::string_view closer = text(next);
      if (kClosers.find(closer[indentation]) != std::string_view::npos) {
        const char last = closer[closer.find_last_not_of(" \t")];
        const bool opensAgain = kOpeners.find(last) != std::string_view::npos;
        end = opensAgain ? blockEnds_[static_cast<std::size_t>(next) - 1] : next;
      }
      below.pop_back();
    }
    below.push_back({line, indentation});
  }
}

}  // namespace host::outline
