// The source of a file, and of a script all that the outline takes from it. A second thread may
// read both while the module works; only the first one calls the module.
#pragma once

#include <memory>
#include <string>

#include "outline/script_source.h"
#include "system/thread_ahead.h"

namespace host::lsp {

struct ReadSource {
  std::string text;
  std::unique_ptr<outline::ScriptSource> script;  // null if it was not read ahead
};

class SourceReading {
 public:
  // Begins to read a script on a thread of its own if it should and the script is large enough to
  // be worth one. Any other file is read by finish.
  SourceReading(const std::string& path, bool readsAhead);

  // Waits for the thread, or reads the file now. Gives a null pointer if the file is gone by now.
  // Throws Failure if it cannot be read. The thread needs no waiting for if this is never called.
  std::unique_ptr<ReadSource> finish();

 private:
  std::string path_;
  ThreadAhead<std::unique_ptr<ReadSource>> ahead_;
};

}  // namespace host::lsp
