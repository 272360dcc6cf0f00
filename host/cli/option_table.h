// The command line as tables. Each text stands here once: the argument parser, --help, the
// completions, the manual page and the tables of docs/cli.md are made from it.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// What a shell offers for an option's argument besides its words.
enum class Completion { kNothing, kFiles, kDirectories };

struct Option {
  std::string_view name;
  std::string_view shortName = {};  // or empty
  std::string_view argument = {};   // the name of its value; empty for an option without one
  Completion completion = Completion::kNothing;
  std::vector<std::string_view> (*words)() = nullptr;  // values with a meaning of their own
  std::string_view values = {};                        // allowed values, unless words lists them
  bool mayRepeat = false;                              // keeps every value, not just the last
  bool takesList = false;            // a value may be several words with commas between them
  std::string_view neededName = {};  // the option that this one needs, or empty
  std::string_view group = {};       // the heading that begins with this option, or empty
  std::string_view help;             // at most two lines of --help; see summary
  std::string_view details = {};     // further sentences for the manual page and the documentation
};

struct ExitStatus {
  std::string_view status;
  std::string_view meaning;
};

struct Example {
  std::string_view purpose;   // with a colon at its end
  std::string_view commands;  // one a line
};

struct Command {
  std::string_view name;
  std::string_view operand;                    // the name of an argument that is not an option
  std::span<const std::string_view> synopses;  // the forms of the command line
  std::string_view purpose;                    // what the command does, in a sentence or two
  std::span<const Option> options;             // in the order of --help
  Option endOfOptions;                         // "--", which is never looked up
  std::span<const ExitStatus> statuses;
  std::span<const Example> examples;
  std::span<const Option> hiddenOptions = {};  // for the build; no text names them
  Completion operandCompletion = Completion::kFiles;
};

// The row that all commands have.
inline constexpr Option kHelpOption{.name = "--help", .shortName = "-h", .help = "Print this help"};

extern const Command kProgram;  // the program as such
extern const Command kMerge;    // what it does when its first argument is merge
extern const Command kLsp;      // and when it is lsp, and so on
extern const Command kIndex;
extern const Command kQuery;
extern const Command kStatus;
extern const Command kView;

// A command of the program that its first argument names.
struct Subcommand {
  std::string_view word;
  const Command& command;
  std::string_view summary;  // as much as a completion has room for
};

extern const std::span<const Subcommand> kSubcommands;

// "-j, --jobs N".
std::string labelOf(const Option& option);

// The help and the details as sentences.
std::string descriptionOf(const Option& option);

// The help without what follows its first parenthesis, colon or semicolon: as much as a completion
// has room for.
std::string_view summary(const Option& option);

// The words of the option with blanks between them; empty if it has none.
std::string joinedWords(const Option& option);

}  // namespace host
