// The one file of a run, which lies in memory.
#pragma once

#include <string>

// What the plug-in reads, whatever the path is.
std::string& memoryFile();
