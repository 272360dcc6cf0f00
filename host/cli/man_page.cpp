#include "cli/man_page.h"

#include <cstddef>
#include <string_view>

#include "cli/option_table.h"

namespace host {
namespace {

constexpr std::string_view kOpening = "quorl-js(1) \"quorl-js " QUORL_VERSION
                                      R"(" "User commands"

# NAME

quorl-js - print the structure of JavaScript, HTML and other text as records

# SYNOPSIS

)";

// Behind the sentence with the purpose.
constexpr std::string_view kDescription = R"(
A file that fails has an answer too, which gives the error, and the message stands on standard error
as well; the files behind it are done. Every message is one line that begins with "quorl-js: ", with
control bytes as \\xNN. The plug-in has warnings of its own, which pass through; see *--quiet*.

Only regular files are opened. A FIFO, a device or a socket is named on standard error and skipped;
it makes the run fail only if it was named on the command line or in _LIST_, not if it was met below
a directory. So is a file that standard output leads to: it would be read while it grows. Without *--recursive* a directory is an empty file, which fails. A name on the command
line or in _LIST_ is taken whatever it is called, and a link that it leads to is followed.

The files of the command line are done first, then those of _LIST_, each in the order in which they
are given. _LIST_ may be a pipe, and is read whole before the first file. If it is empty, there is
nothing to do.

With *--out-dir*, the answer to _src/a b.js_ is _DIR/src%2Fa%20b.js.records_. A leading dot is
written %2E, so that no answer is a hidden file, and the empty name is a lone %. A name that this
makes longer than 200 bytes is cut, with "~" and 16 hexadecimal digits, a 64-bit FNV-1a hash of the
whole path, behind it. An answer is written under another name, which begins with ".quorl-js-", and
renamed when it is complete; what bore its name before is replaced, or removed where there is no
answer now. A file that is given twice has one answer. _DIR_ is passed over below a directory and may
not be walked itself.

Files are read by worker processes, which are replaced now and then, since the plug-in keeps what it
has read in memory. The output is in the order of the files and has the same bytes whatever
*--jobs* says. A file over which a worker dies, takes longer than *--timeout* or needs more than
*--max-memory* or *--max-output* is tried once more, in a worker of its own, and then reported: in
its place is an error answer, and the other files are done. _SIZE_ is a number of bytes, or of
KiB, MiB or GiB with K, M or G behind it.

SIGINT, SIGTERM and SIGHUP end the run, its workers too, and leave no half-written file in _DIR_.
A reader of standard output that has gone ends it with exit status 2.

# LIMITS

*--timeout* counts from the moment a worker begins with the file. *--max-memory* is a limit on the
address space of a worker (RLIMIT_AS), including program and plug-in, about 20 MiB, and the names of
all files; macOS does not hold processes to it. *--max-output* counts the bytes of the plug-in's own text, whatever the
format. *--max-size* is held against the size of the file before it is opened.

# OPTIONS

)";

// Behind the sentences with the purpose of merge.
constexpr std::string_view kMergeOptionsOpening = R"(
Its options are these:

)";

constexpr std::string_view kMergeStatusesOpening = R"(Its exit statuses are these:

)";

constexpr std::string_view kClosing = R"(# SEE ALSO

*find*(1), *git-ls-files*(1), *xargs*(1)
)";

// Plain text, with the bytes escaped that scdoc would take for markup.
std::string plain(std::string_view text) {
  std::string result;
  for (const char byte : text) {
    if (byte == '\\' || byte == '*' || byte == '_' || byte == '`') result += '\\';
    result += byte;
  }
  return result;
}

std::string bold(std::string_view text) { return "*" + plain(text) + "*"; }

// A command line with its placeholders, which are those in capitals, underlined and words bold.
std::string markedUp(std::string_view synopsis) {
  constexpr std::string_view kCapitals = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  constexpr std::string_view kNeither = " .[]";
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

std::string labelOf(const Option& option) {
  std::string label;
  if (!option.shortName.empty()) label += bold(option.shortName) + ", ";
  label += bold(option.name);
  if (!option.argument.empty()) label += " _" + plain(option.argument) + "_";
  return label;
}

void appendOptions(std::string& out, const Command& command) {
  for (const Option& option : command.options) appendEntry(out, labelOf(option), option.help);
  appendEntry(out, labelOf(command.endOfOptions), command.endOfOptions.help);
}

void appendStatuses(std::string& out, const Command& command) {
  for (const ExitStatus& row : command.statuses) appendEntry(out, bold(row.status), row.meaning);
}

void appendExamples(std::string& out, const Command& command) {
  for (const Example& example : command.examples) {
    out.append(plain(example.purpose)).append("\n\n```\n").append(example.commands);
    out += "\n```\n\n";
  }
}

}  // namespace

std::string manPage() {
  std::string page(kOpening);
  for (const std::string_view& synopsis : kProgram.synopses) {
    page.append(&synopsis == &kProgram.synopses.front() ? "" : "++\n").append(markedUp(synopsis));
  }
  page += "\n\n# DESCRIPTION\n\n" + plain(kProgram.purpose) + "\n";
  page += kDescription;
  appendOptions(page, kProgram);
  page += "# EXIT STATUS\n\n";
  appendStatuses(page, kProgram);
  page += "# MERGE\n\n" + markedUp(kMerge.synopses.front()) + "\n\n" + plain(kMerge.purpose) + "\n";
  page += kMergeOptionsOpening;
  appendOptions(page, kMerge);
  page += kMergeStatusesOpening;
  appendStatuses(page, kMerge);
  page += "# EXAMPLES\n\n";
  appendExamples(page, kProgram);
  appendExamples(page, kMerge);
  return page.append(kClosing);
}

}  // namespace host
