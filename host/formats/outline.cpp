// The outline for people: the file's name, and below it a line an item, nested by the source:
//
//   examples/greet.js
//           1-3 function     Greeter(name)
//             4 variable     total

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "formats/display_line.h"
#include "formats/formatters.h"
#include "formats/item_choice.h"
#include "formats/item_lines.h"
#include "formats/json_text.h"
#include "formats/signature.h"
#include "outline/item.h"
#include "outline/outline.h"
#include "outline/source_lines.h"

namespace host {
namespace {

using outline::Item;
using outline::Kind;

constexpr std::size_t kRangeColumns = 13;
constexpr std::size_t kKindColumns = 11;  // as many as "constructor" has

std::string_view colorOf(Kind kind) {
  constexpr std::array<std::string_view, outline::kKindCount> kColors = {
      kBlue,  kBlue,    kBlue, kBlue, kBlue, kYellow, kYellow, kYellow, kYellow,  kYellow, kGreen,
      kGreen, kMagenta, kBlue, kCyan, kCyan, "",      kBlue,   kGreen,  kMagenta, ""};
  return kColors[static_cast<std::size_t>(kind)];
}

std::string rangeOf(const Item& item) {
  std::string text;
  appendNumber(text, item.firstLine);
  if (item.lastLine == item.firstLine) return text;
  text += "-";
  appendNumber(text, item.lastLine);
  return text;
}

}  // namespace

void showItem(const Item& item, std::size_t level, std::string_view text,
              const FormatSettings& settings, std::string& out) {
  DisplayLine line(settings, out);
  line.showRight(rangeOf(item), kDim, kRangeColumns);
  line.skip(1);
  line.showLeft(outline::kindWord(item.kind), colorOf(item.kind), kKindColumns);
  line.indent(level, kRangeColumns + 1 + kKindColumns);
  if (item.name.empty()) {
    text = text.substr(0, text.find_first_of("\r\n"));
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    line.show(text, "");
  } else {
    line.show(item.name, kBold);
    line.show(signatureOf(item, text), "");
  }
  line.end();
}

std::string writeOutlineFile(const FileReport& report, const FormatSettings& settings,
                             std::string& out) {
  if (showUnanswered(report, settings, out)) return {};
  showHeading(report.path, settings, out);
  std::string fault;
  const std::vector<Item> items =
      outline::makeOutline(report.source, report.answer, {.fault = &fault});
  const outline::SourceLines lines(report.source);
  for (const ChosenItem& chosen : chooseItems(items, settings, false)) {
    if (settings.depth && chosen.level >= *settings.depth) continue;
    const std::string_view text = report.source.substr(lines.begin(chosen.item->firstLine));
    showItem(*chosen.item, chosen.level, text, settings, out);
  }
  if (!fault.empty()) showFault(report.path, fault, settings, out);
  return fault;
}

}  // namespace host
