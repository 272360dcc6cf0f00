/*
 * The C face of the plug-in: the only header that a host needs. Read by C11 and C++20 compilers.
 *
 * Conventions
 *  1. Ownership. Every string returned here belongs to the plug-in; the host copies what it wants
 *     to keep and frees nothing.
 *  2. Lifetime. ParseJS's answer is valid until the next ParseJS begins or until CleanupJS;
 *     Info's until CleanupJS.
 *  3. Threads. One thread at a time: the functions share unguarded state. A host that uses several
 *     threads takes a lock of its own around the call and around the reading of its answer.
 *  4. Failures arrive as text in the answer, never as a C++ exception.
 *  5. Standard output. ParseJS writes diagnostic lines to standard output (and, for some pages, to
 *     standard error). They are part of its behaviour; a host whose own standard output matters
 *     points file descriptor 1 elsewhere during the call.
 *  6. Memory. The tree of each run stays allocated for the life of the process.
 */
#ifndef QUORL_PLUGIN_API_H
#define QUORL_PLUGIN_API_H

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Reads one file and returns its structure records as text.
 *
 * path     The file, as NUL-terminated bytes; must not be null. Every record repeats it unchanged.
 *          Its extension decides how the file is read.
 * defines  Null, or NUL-terminated text with one define a line; all of them together make one
 *          record. Lines end in a line feed; empty ones are skipped and nothing is trimmed.
 *
 * Returns NUL-terminated text: an array of records, which begins with "[\n", or one of these error
 * answers, with the path or message escaped as in the records:
 *
 *   [{"error": "Could not open file: PATH"}]
 *   [{"error": "File is empty: PATH"}]              also for a directory
 *   [{"error": "Parser exception: MESSAGE"}]        such as exhausted memory or a failing disk
 *   [{"error": "Unknown parser exception occurred"}]
 *
 * Returns null only when there is no memory for the answer itself, or next to none to begin with.
 */
const char* ParseJS(const char* path, const char* defines);

/* Frees the answers of ParseJS and Info. May be called at any time, and any number of times. */
void CleanupJS(void);

/* Returns one line that names the plug-in and its version; null without memory for it. */
const char* Info(void);

#ifdef __cplusplus
}
#endif

#endif
