// The arguments of a command, read by its table of options.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/option_table.h"
#include "system/failure.h"

namespace host {

class ArgumentParser {
 public:
  // Takes them as main does: the first is the command's own name. The command has to outlive the
  // parser. Throws Failure for arguments that do not follow the table.
  ArgumentParser(const Command& command, int argc, const char* const* argv);

  // Whether the help is asked for; the rest is then as if not given.
  bool isHelpWanted() const { return isHelpWanted_; }

  bool isGiven(std::string_view option) const { return values_.find(option) != values_.end(); }

  // The value of an option that has one: the last that is given.
  std::optional<std::string> valueOf(std::string_view option) const;

  // All values of an option, in their order.
  std::vector<std::string> valuesOf(std::string_view option) const;

  // The arguments that are not options, byte for byte and in their order.
  const std::vector<std::string>& operands() const { return operands_; }

  // What to throw for arguments that cannot be followed. Without a hint it names the help.
  Failure failure(const std::string& message, const std::string& hint = {}) const;

  // What to throw for a value that the option cannot have: it names those that it can.
  Failure invalidValue(std::string_view option, std::string_view value) const;

 private:
  const Command& command_;
  bool isHelpWanted_ = false;
  std::map<std::string, std::vector<std::string>, std::less<>> values_;  // of the options given
  std::vector<std::string> operands_;
};

// The file that --output names, unless it names standard output.
std::optional<std::string> outputFileOf(const ArgumentParser& arguments);

}  // namespace host
