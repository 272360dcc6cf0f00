// The options of "quorl-js view".

#include <array>
#include <string_view>

#include "cli/option_table.h"
#include "cli/program_options.h"

namespace host {
namespace {

constexpr std::array<std::string_view, 2> kViewSynopses = {
    "quorl-js view FILE... -o PAGE [OPTION]...", "quorl-js view --index INDEX -o PAGE [OPTION]..."};

constexpr std::array kViewOptions = {
    optionCalled("--recursive"),
    optionCalled("--hidden"),
    optionCalled("--node-modules"),
    optionCalled("--no-ignore"),
    optionCalled("--binary"),
    optionCalled("--include"),
    optionCalled("--exclude"),
    optionCalled("--files-from"),
    optionCalled("--null"),
    Option{.name = "--index",
           .argument = "INDEX",
           .completion = Completion::kFiles,
           .help = "Show what INDEX holds, see quorl-js index, instead of reading files"},
    Option{.name = "--output",
           .shortName = "-o",
           .argument = "PAGE",
           .completion = Completion::kFiles,
           .group = "Page",
           .help = "Write to PAGE, which is replaced when the page is complete",
           .details = "Without it, and with -, the page goes to standard output, unless that is a "
                      "terminal."},
    Option{.name = "--all",
           .help = "Show every statement, however many there are",
           .details =
               "Without it, a page with more than 200,000 items leaves out plain statements, "
               "those of the label line that define nothing."},
    Option{.name = "--sources",
           .help = "Put the sources into the page",
           .details = "Without it, they are put there if they have less than 4 MB together. A "
                      "source that has changed since it was read stays out."},
    Option{.name = "--no-sources", .help = "Keep the sources out of the page"},
    optionCalled("--defines"),
    optionCalled("--plugin"),
    optionCalled("--jobs"),
    optionCalled("--timeout"),
    optionCalled("--max-memory"),
    optionCalled("--max-output"),
    optionCalled("--max-size"),
    optionCalled("--strict"),
    optionCalled("--quiet"),
    optionCalled("--no-progress"),
    kHelpOption,
};

constexpr std::array kViewStatuses = {
    ExitStatus{"0", "Every file was read."},
    ExitStatus{"1",
               "Some file was not read. With --strict, also a warning. PAGE is complete, and "
               "shows why."},
    ExitStatus{
        "2",
        "The command failed: wrong usage, no working plug-in, an unreadable LIST or INDEX, a "
        "PAGE that could not be written. PAGE is as it was."},
};

constexpr std::array kViewExamples = {
    Example{"See what a file is made of:", "quorl-js view a.js -o a.html"},
    Example{"See a code base:", "quorl-js view -r src -o src.html"},
    Example{"See one that is indexed:", "quorl-js view --index code.index -o code.html"},
};

}  // namespace

constinit const Command kView = {
    "quorl-js view",
    "FILE",
    kViewSynopses,
    "Write a page that shows the structure of each FILE in a browser: a list, a map in proportion, "
    "and the text of what is chosen. The page is one HTML file that loads nothing else.",
    kViewOptions,
    {.name = "--", .help = "Treat every further argument as a FILE"},
    kViewStatuses,
    kViewExamples};

}  // namespace host
