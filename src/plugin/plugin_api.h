/*
 * The C interface of the plug-in, for C11 and C++20: the only header that a host needs.
 *
 * Conventions
 *  1. Ownership. The plug-in owns every string returned here. Copy what you keep; free nothing.
 *  2. Lifetime. The answer of ParseJS is valid until the next ParseJS begins or until CleanupJS,
 *     that of Info until CleanupJS.
 *  3. Threads. Calls must not overlap: the functions share unguarded state. A host with several
 *     threads holds a lock during the call and while it reads the answer.
 *  4. Errors. Failures are returned as text. No C++ exception leaves the plug-in.
 *  5. Standard output. ParseJS prints diagnostic lines to standard output and, for some pages,
 *     warnings to standard error. Both are part of its behaviour. A host that uses its own standard
 *     output points file descriptor 1 elsewhere during the call.
 *  6. Memory. The tree of each run stays allocated for the life of the process.
 */
#ifndef QUORL_PLUGIN_API_H
#define QUORL_PLUGIN_API_H

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Parses one file and returns its structure records as text.
 *
 * path     NUL-terminated bytes; must not be null. The extension decides how the file is read.
 *          Every record repeats the path unchanged.
 * defines  Null, or NUL-terminated text with one define per line. All of them together become one
 *          record. Lines end in a line feed; empty lines are skipped and nothing is trimmed.
 *
 * Returns NUL-terminated text: an array of records, which begins with "[\n", or one of these error
 * answers, in which the path or message is escaped as in a record:
 *
 *   [{"error": "Could not open file: PATH"}]
 *   [{"error": "File is empty: PATH"}]              also for a directory
 *   [{"error": "Parser exception: MESSAGE"}]        out of memory, or a read failed
 *   [{"error": "Unknown parser exception occurred"}]
 *
 * Returns null only if there is no memory even for an error answer.
 */
const char* ParseJS(const char* path, const char* defines);

/* Frees the latest answers of ParseJS and Info. May be called at any time, and repeatedly. */
void CleanupJS(void);

/*
 * Returns one line with the name and version of the plug-in, or null if there is no memory for it.
 * Only the latest line is freed by CleanupJS: call Info once.
 */
const char* Info(void);

#ifdef __cplusplus
}
#endif

#endif
