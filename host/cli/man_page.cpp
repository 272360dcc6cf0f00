#include "cli/man_page.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "cli/option_table.h"
#include "cli/quoting.h"
#include "system/failure.h"
#include "system/text_parts.h"

namespace host {
namespace {

// Plain text, with the bytes escaped that scdoc would take for markup.
std::string plain(std::string_view text) { return withBackslashes(text, "\\*_`"); }

std::string bold(std::string_view text) { return "*" + plain(text) + "*"; }

// A command line or label: placeholders, which are words in capitals, underlined and others bold.
std::string markedUp(std::string_view synopsis) {
  constexpr std::string_view kCapitals = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  constexpr std::string_view kNeither = " .,:[]";
  std::string result;
  while (!synopsis.empty()) {
    const bool isPlaceholder = kCapitals.find(synopsis.front()) != std::string_view::npos;
    const bool isWord = !isPlaceholder && kNeither.find(synopsis.front()) == std::string_view::npos;
    const std::size_t end = isPlaceholder ? synopsis.find_first_not_of(kCapitals)
                            : isWord      ? synopsis.find_first_of(kNeither)
                                          : synopsis.find_first_not_of(kNeither);
    const std::string_view part = synopsis.substr(0, end);
    result += isPlaceholder ? "_" + plain(part) + "_" : isWord ? bold(part) : std::string(part);
    synopsis.remove_prefix(part.size());
  }
  return result;
}

void appendEntry(std::string& out, const std::string& label, std::string_view text) {
  out.append(label).append("\n\t").append(plain(text)).append("\n\n");
}

void appendOption(std::string& out, const Option& option) {
  appendEntry(out, markedUp(labelOf(option)), descriptionOf(option));
}

std::string synopses(const Command& command) {
  std::string text;
  for (const std::string_view synopsis : command.synopses) {
    text.append(text.empty() ? "" : "++\n").append(markedUp(synopsis));
  }
  return text + "\n";
}

std::string options(const Command& command) {
  std::string text;
  for (const Option& option : command.options) {
    if (!option.group.empty()) text.append("## ").append(option.group).append("\n\n");
    appendOption(text, option);
  }
  appendOption(text, command.endOfOptions);
  return text;
}

std::string statuses(const Command& command) {
  std::string text;
  for (const ExitStatus& row : command.statuses) appendEntry(text, bold(row.status), row.meaning);
  return text;
}

std::string examples(const Command& command) {
  std::string text;
  for (const Example& example : command.examples) {
    text.append(plain(example.purpose)).append("\n\n```\n").append(example.commands);
    text += "\n```\n\n";
  }
  return text;
}

std::string purpose(const Command& command) { return plain(command.purpose) + "\n"; }

struct Place {
  std::string_view line;
  std::string (*text)(const Command& command);
  const Command& command;
};

constexpr std::array kPlaces = {
    Place{"@SYNOPSIS@", synopses, kProgram},       Place{"@PURPOSE@", purpose, kProgram},
    Place{"@OPTIONS@", options, kProgram},         Place{"@STATUSES@", statuses, kProgram},
    Place{"@EXAMPLES@", examples, kProgram},       Place{"@MERGE_SYNOPSIS@", synopses, kMerge},
    Place{"@MERGE_PURPOSE@", purpose, kMerge},     Place{"@MERGE_OPTIONS@", options, kMerge},
    Place{"@MERGE_STATUSES@", statuses, kMerge},   Place{"@MERGE_EXAMPLES@", examples, kMerge},
    Place{"@LSP_SYNOPSIS@", synopses, kLsp},       Place{"@LSP_PURPOSE@", purpose, kLsp},
    Place{"@LSP_OPTIONS@", options, kLsp},         Place{"@LSP_STATUSES@", statuses, kLsp},
    Place{"@LSP_EXAMPLES@", examples, kLsp},       Place{"@INDEX_SYNOPSIS@", synopses, kIndex},
    Place{"@INDEX_PURPOSE@", purpose, kIndex},     Place{"@INDEX_OPTIONS@", options, kIndex},
    Place{"@INDEX_STATUSES@", statuses, kIndex},   Place{"@INDEX_EXAMPLES@", examples, kIndex},
    Place{"@QUERY_SYNOPSIS@", synopses, kQuery},   Place{"@QUERY_PURPOSE@", purpose, kQuery},
    Place{"@QUERY_OPTIONS@", options, kQuery},     Place{"@QUERY_STATUSES@", statuses, kQuery},
    Place{"@QUERY_EXAMPLES@", examples, kQuery},   Place{"@STATUS_SYNOPSIS@", synopses, kStatus},
    Place{"@STATUS_PURPOSE@", purpose, kStatus},   Place{"@STATUS_STATUSES@", statuses, kStatus},
    Place{"@STATUS_EXAMPLES@", examples, kStatus}, Place{"@VIEW_SYNOPSIS@", synopses, kView},
    Place{"@VIEW_PURPOSE@", purpose, kView},       Place{"@VIEW_OPTIONS@", options, kView},
    Place{"@VIEW_STATUSES@", statuses, kView},     Place{"@VIEW_EXAMPLES@", examples, kView},
};

}  // namespace

std::string manPage(std::string_view pageTemplate) {
  std::string page = "quorl-js(1) \"quorl-js " QUORL_VERSION "\" \"User commands\"\n\n";
  for (const std::string_view line : partsOf(pageTemplate, '\n')) {
    const auto* const place = std::find_if(kPlaces.begin(), kPlaces.end(),
                                           [&](const Place& row) { return row.line == line; });
    if (place != kPlaces.end()) {
      page += place->text(place->command);
    } else if (line.starts_with('@')) {
      throw Failure("manual page: no text for " + std::string(line));
    } else {
      page.append(line).append("\n");
    }
  }
  return page;
}

}  // namespace host
