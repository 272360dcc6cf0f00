// The option tables of the commands that ask an index.

#include <array>

#include "cli/option_table.h"
#include "outline/item.h"

namespace host {
namespace {

constexpr std::array<std::string_view, 1> kQuerySynopses = {"quorl-js query INDEX... [OPTION]..."};

constexpr std::array kQueryOptions = {
    Option{.name = "--name",
           .argument = "TEXT",
           .group = "Names",
           .help = "Print items with this name"},
    Option{
        .name = "--prefix", .argument = "TEXT", .help = "Print items whose name begins with TEXT"},
    Option{
        .name = "--contains", .argument = "TEXT", .help = "Print items whose name contains TEXT"},
    Option{.name = "--regex",
           .argument = "REGEX",
           .help = "Print items whose name has a part that matches REGEX",
           .details = "REGEX is a POSIX extended regular expression, as for grep -E, with at most "
                      "three bounds in braces and no back-references."},
    Option{.name = "--kind",
           .argument = "KIND",
           .words = outline::kindWords,
           .mayRepeat = true,
           .takesList = true,
           .group = "Places",
           .help = "Print items of this kind only (repeatable, or comma-separated)"},
    Option{.name = "--path",
           .argument = "GLOB",
           .values = "a pattern such as *.js or src/",
           .mayRepeat = true,
           .help = "Print items of files that match GLOB only (repeatable)",
           .details =
               "A GLOB without a slash matches the name of a file or of a directory above it, "
               "one with a slash the path."},
    Option{.name = "--at",
           .argument = "FILE:LINE",
           .completion = Completion::kFiles,
           .help = "Print the items that contain the line, from the outermost to the innermost"},
    Option{.name = "--inside",
           .argument = "NAME",
           .help = "Print items inside of an item with this name only"},
    Option{.name = "--text",
           .argument = "TEXT",
           .help = "Print items whose record contains TEXT only",
           .details = "A record is a statement or tag without its comments."},
    Option{.name = "--limit",
           .argument = "N",
           .values = "a number from 0 to 4294967295",
           .group = "Output",
           .help = "Print the first N items only"},
    Option{.name = "--count", .help = "Print the number of items instead of the items"},
    Option{
        .name = "--format",
        .argument = "FORMAT",
        .words =
            [] {
              return std::vector<std::string_view>{"outline", "ndjson", "json", "ctags", "vimgrep"};
            },
        .help = "Choose the output format: outline, ndjson, json, ctags or vimgrep (default: "
                "outline)",
        .details = "vimgrep prints FILE:LINE:COLUMN:TEXT, which editors jump to; the column is "
                   "always 1."},
    Option{
        .name = "--color",
        .argument = "WHEN",
        .words =
            [] {
              return std::vector<std::string_view>{"auto", "always", "never"};
            },
        .help = "Color outline: auto, always or never (default: auto)",
        .details = "auto means: on a terminal, unless the environment variable NO_COLOR is set."},
    kHelpOption,
};

constexpr std::array kQueryStatuses = {
    ExitStatus{"0", "Some item was found."},
    ExitStatus{"1", "None was found."},
    ExitStatus{"2",
               "The command failed: wrong usage, an INDEX that is unreadable, damaged or none, "
               "output that could not be written."},
};

constexpr std::array kQueryExamples = {
    Example{"Find a function by its name:", "quorl-js query code.index --name render"},
    Example{"List the classes below a folder:",
            "quorl-js query code.index --kind class --path 'src/**'"},
    Example{"Show what a line is inside of:", "quorl-js query code.index --at src/a.js:120"},
    Example{"Fill the quickfix list of Vim:",
            ":cexpr system('quorl-js query code.index --format vimgrep --prefix get')"},
};

constexpr std::array<std::string_view, 1> kStatusSynopses = {"quorl-js status INDEX"};

constexpr std::array kStatusOptions = {
    kHelpOption,
};

constexpr std::array kStatusStatuses = {
    ExitStatus{"0", "Nothing has changed on disk since INDEX was written."},
    ExitStatus{"1", "Something has changed."},
    ExitStatus{"2", "The command failed: wrong usage, an INDEX that is unreadable or none."},
};

constexpr std::array kStatusExamples = {
    Example{"Bring an index up to date if that is needed:",
            "quorl-js status code.index || quorl-js index code.index"},
};

}  // namespace

constinit const Command kQuery = {
    "quorl-js query",
    "INDEX",
    kQuerySynopses,
    "Print the items of each INDEX that meet all conditions, in the order of paths and lines. With "
    "--prefix and --contains, items whose whole name is TEXT come first. An INDEX is opened for "
    "reading only.",
    kQueryOptions,
    {.name = "--", .help = "Treat every further argument as an INDEX"},
    kQueryStatuses,
    kQueryExamples};

constinit const Command kStatus = {
    "quorl-js status",
    "INDEX",
    kStatusSynopses,
    "Print what INDEX holds, how old it is, and which of its files have changed on disk since: one "
    "line for each that is changed, gone or new.",
    kStatusOptions,
    {.name = "--", .help = "Treat every further argument as INDEX"},
    kStatusStatuses,
    kStatusExamples};

}  // namespace host
