// Files that appear complete or not at all: each is written under a temporary name, which begins
// with a dot, and then renamed. A signal that ends the run removes it; there is one at a time. It
// is locked until then, so that other runs know it from one that a killed run left.
#pragma once

#include <string>

namespace host {

struct TemporaryFile {
  std::string name;
  int descriptor;  // negative if it could not be made, for the reason in errno
  int lock;        // a second descriptor, which stays open when the first is closed
};

// Makes a file in the directory, whose descriptor has to stay open.
TemporaryFile makeTemporaryFile(int directory);

// Gives the file its name, in place of what bore it, or removes the file if the number of an error
// comes with it. Returns 0 or the number of the error.
int finishTemporaryFile(int directory, const TemporaryFile& file, const std::string& name,
                        int error);

// Removes the file, whose descriptor is closed by now.
void dropTemporaryFile(int directory, const TemporaryFile& file);

// Removes the temporary files that nobody holds a lock on, as a killed run leaves them. On a file
// system without locks it removes nothing.
void removeStaleTemporaryFiles(int directory);

}  // namespace host
