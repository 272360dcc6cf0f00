// Tags files: an index of definitions for editors.
//
// ctags, which Vim and most others read, has a line a tag:
//
//   render<TAB>src/a.js<TAB>12;"<TAB>kind:m<TAB>line:12<TAB>class:View<TAB>end:40
//
// etags, which Emacs reads, has a section a file. Behind its name and the number of bytes that
// follow comes a line a tag: the source line up to the name, the name, the line, and the characters
// before that line.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "formats/formatters.h"
#include "formats/item_choice.h"
#include "formats/item_lines.h"
#include "formats/json_text.h"
#include "formats/signature.h"
#include "formats/tag_path.h"
#include "outline/item.h"
#include "outline/outline.h"
#include "outline/source_lines.h"

namespace host {
namespace {

using outline::Item;

constexpr std::size_t kMaxNameBytes = 250;  // Vim is not sure to read lines above 512 bytes
constexpr std::size_t kMaxPatternBytes = 500;
constexpr const char* kUnfitPath = "its name does not fit into a tags file";

// By kind; those without a letter are not tags.
constexpr std::array<char, outline::kKindCount> kLetters = {'f', 'm', 'm', 'm', 'm', 'c', 'I',
                                                            'g', 'n', 't', 'v', 'v', 'i', 0,
                                                            0,   0,   0,   'e', 'l', 's', 'b'};

char letterOf(outline::Kind kind) { return kLetters[static_cast<std::size_t>(kind)]; }

bool isControl(char byte) { return static_cast<unsigned char>(byte) < ' ' || byte == '\x7f'; }

bool holdsControl(std::string_view text) {
  return std::any_of(text.begin(), text.end(), isControl);
}

void appendField(std::string& line, std::string_view key, std::int32_t number) {
  line.append("\t").append(key).append(":");
  appendNumber(line, number);
}

}  // namespace

// A name that begins with an exclamation mark or a blank would be taken for a header or for none.
bool isTag(const Item& item) {
  return letterOf(item.kind) != 0 && !item.name.empty() && item.name.size() <= kMaxNameBytes &&
         item.name.front() != '!' && item.name.front() != ' ' && !holdsControl(item.name);
}

bool fitsIntoTags(std::string_view path) { return !holdsControl(path); }

std::string tagLine(const Item& item, std::string_view path, const Item* parent) {
  std::string line = item.name;
  line.append("\t").append(path).append("\t");
  appendNumber(line, item.firstLine);
  line.append(";\"\tkind:").append(1, letterOf(item.kind));
  appendField(line, "line", item.firstLine);
  if (parent != nullptr) {
    line.append("\t").append(outline::kindWord(parent->kind)).append(":").append(parent->name);
  }
  appendField(line, "end", item.lastLine);
  return line + "\n";
}

namespace {

// The items that are tags, each with the one around it.
std::vector<ChosenItem> chooseTags(const std::vector<Item>& items, const FormatSettings& settings) {
  std::vector<ChosenItem> chosen = chooseItems(items, settings, true);
  for (ChosenItem& each : chosen) {
    if (each.parent < 0) continue;
    const ChosenItem& parent = chosen[static_cast<std::size_t>(each.parent)];
    if (!isTag(*parent.item)) each.parent = parent.parent;  // which is a tag, or none
  }
  return chosen;
}

// The characters in front of lines, as Emacs counts them: a CR LF is one.
class CharacterCount {
 public:
  explicit CharacterCount(std::string_view source) : source_(source) {}

  // Positions come in order.
  std::size_t before(std::size_t position) {
    for (; position_ < position; ++position_) {
      const auto byte = static_cast<unsigned char>(source_[position_]);
      const bool isInside = (byte & 0xc0U) == 0x80U;
      const bool isOfPair = byte == '\n' && position_ > 0 && source_[position_ - 1] == '\r';
      if (!isInside && !isOfPair) ++count_;
    }
    return count_;
  }

 private:
  std::string_view source_;
  std::size_t position_ = 0;
  std::size_t count_ = 0;
};

// What Emacs searches for: the line up to and with the name.
std::string_view patternOf(const Item& item, std::string_view line) {
  const std::size_t name = findName(line, item.name);
  const std::size_t end = name == std::string_view::npos ? line.size() : name + item.name.size();
  line = line.substr(0, std::min(end, kMaxPatternBytes));
  const auto* const control = std::find_if(
      line.begin(), line.end(), [](char byte) { return byte != '\t' && isControl(byte); });
  return line.substr(0, static_cast<std::size_t>(control - line.begin()));
}

}  // namespace

void beginCtags(const FormatSettings& /*settings*/, std::string& out) {
  out +=
      "!_TAG_FILE_FORMAT\t2\t/extended format/\n"
      "!_TAG_FILE_SORTED\t1\t/0=unsorted, 1=sorted, 2=foldcase/\n"
      "!_TAG_PROGRAM_NAME\tquorl-js\t//\n"
      "!_TAG_PROGRAM_VERSION\t" QUORL_VERSION "\t//\n";
}

std::string writeCtagsFile(const FileReport& report, const FormatSettings& settings,
                           std::string& out) {
  if (report.status != FileStatus::kAnswered) return {};
  std::string fault;
  const std::vector<Item> items =
      outline::makeOutline(report.source, report.answer, {.fault = &fault});
  const std::string path = pathFrom(settings.tagsFolder, report.path);
  if (!fitsIntoTags(path)) return kUnfitPath;
  const std::vector<ChosenItem> chosen = chooseTags(items, settings);
  std::vector<std::string> lines;
  for (const ChosenItem& each : chosen) {
    const Item& item = *each.item;
    if (!isTag(item)) continue;
    const Item* const parent =
        each.parent < 0 ? nullptr : chosen[static_cast<std::size_t>(each.parent)].item;
    lines.push_back(tagLine(item, path, parent));
  }
  std::sort(lines.begin(), lines.end());
  lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
  for (const std::string& line : lines) out += line;
  return fault;
}

std::string writeEtagsFile(const FileReport& report, const FormatSettings& settings,
                           std::string& out) {
  if (report.status != FileStatus::kAnswered) return {};
  std::string fault;
  const std::vector<Item> items =
      outline::makeOutline(report.source, report.answer, {.fault = &fault});
  const std::string path = pathFrom(settings.tagsFolder, report.path);
  if (!fitsIntoTags(path)) return kUnfitPath;
  const outline::SourceLines lines(report.source);
  CharacterCount characters(report.source);
  std::string tags;
  for (const ChosenItem& each : chooseTags(items, settings)) {
    const Item& item = *each.item;
    if (!isTag(item)) continue;
    tags.append(patternOf(item, lines.text(item.firstLine))).append("\x7f").append(item.name);
    tags += "\x01";
    appendNumber(tags, item.firstLine);
    tags += ",";
    appendNumber(tags, characters.before(lines.begin(item.firstLine)));
    tags += "\n";
  }
  if (tags.empty()) return fault;
  out.append("\x0c\n").append(path).append(",");
  appendNumber(out, tags.size());
  out.append("\n").append(tags);
  return fault;
}

}  // namespace host
