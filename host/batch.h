// The run over all files that the user named.
#pragma once

#include <string>
#include <vector>

#include "answer_directory.h"
#include "command_line.h"
#include "output.h"
#include "plugin_module.h"

namespace host {

// Has each file answered, in order, and complains of those that fail. With answerDirectory, which
// may be null, the answers go there and not to output. Gives false if any file failed.
bool answerFiles(const std::vector<std::string>& names, const CommandLine& commandLine,
                 const PluginModule& plugin, Output& output,
                 const AnswerDirectory* answerDirectory);

}  // namespace host
