// Locks by which a run shows others, on this machine or on those that share a folder with it, that
// a temporary file is still in use. The system releases them when their holders end.
#pragma once

namespace host {

// Locks the open file or directory, and waits while somebody else holds the lock. Where the file
// system has no locks it stays unlocked.
void lockFile(int descriptor);

// Locks it if nobody else holds the lock. Returns false otherwise, and without locks.
bool tryLockFile(int descriptor);

// Whether the name in the directory still leads to the open file: another process may have removed
// it before it was locked.
bool isStillAt(int descriptor, int directory, const char* name);

}  // namespace host
