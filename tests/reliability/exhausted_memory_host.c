/* A host in C, which does not link the C++ library, has the module run out of memory, each time in
 * a process of its own: nothing that the module is asked for may end the process.
 *
 * usage: exhausted_memory_host MODULE FOLDER
 *
 * Each child process makes one call under a limit on its address space, the module's first call of
 * all, on the main thread, deep in that thread's stack, also behind a call from further up, or on a
 * thread that was just made. The answer has to be the whole text, an error text or null; then the
 * limit goes, and the same thread has to get the whole answer for a small file. Exit status 0 if
 * each child found it so.
 */
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include "plugin/plugin_api.h"

enum {
  kStatements = 1000, /* of a large file */
  kLimits = 64,
  kHeapSizes = 32,
  kHeapStep = 8192,
  kArenaBytes = 160 << 20, /* what the C library may map for a thread's heap */
  kPathBytes = 4096,
  kOutputBytes = 16384
};

/* What a child found, which is its exit status. */
enum Outcome { kFull, kError, kNull, kWrong, kWrongAfterwards, kNotTried, kOutcomes };

/* Where a child makes its call: on the main thread, on that thread where its stack has to grow, the
 * same behind a call from further up, on a new thread. */
enum Place { kMain, kDeep, kDeeper, kNewThread, kPlaces };
static const char* const kPlaceWords[kPlaces] = {"main thread", "deep stack", "deeper",
                                                 "new thread"};

struct Route {
  const char* extension;
  const char* head;
  const char* statement;
  const char* tail;
  char large[kPathBytes]; /* the paths of two files */
  char small[kPathBytes];
  uint64_t largeAnswer; /* the fingerprints of their answers */
  uint64_t smallAnswer;
  size_t need; /* bytes of address space that a call for the large file takes */
};
static struct Route routes[] = {
    {.extension = "js", .head = "", .statement = "a;\n", .tail = ""},
    {.extension = "html", .head = "<script>\n", .statement = "a;\n", .tail = "</script>\n"},
    {.extension = "txt", .head = "", .statement = "a;", .tail = ""},
};
enum { kRoutes = sizeof routes / sizeof routes[0] };

/* std::string and std::vector as libstdc++ lays them out. Functions in C++ take the one by its
 * address and return both where the caller says, as C does with a structure of this size. */
struct String {
  const char* text;
  size_t size;
  char local[16];
};
struct Vector {
  void* begin;
  void* end;
  void* room;
};

#define STRING "NSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"
static const char* (*parse)(const char*, const char*);
static const char* (*info)(void);
static void (*cleanup)(void);
static void (*processFile)(const struct String*, const struct String*);
static struct Vector (*filesIn)(const struct String*);
static struct String (*sanitized)(const struct String*);
static void (*writeText)(struct String*, struct String*);

static char folder[kPathBytes];
static char output[kPathBytes]; /* the file that is standard output in a child */

static void fail(const char* what) {
  fprintf(stderr, "exhausted_memory_host: %s\n", what);
  exit(2);
}

static uint64_t fingerprint(const char* text) {
  uint64_t hash = 14695981039346656037u;
  for (; *text != '\0'; ++text) hash = (hash ^ (unsigned char)*text) * 1099511628211u;
  return hash;
}

static size_t mappedBytes(void) {
  /* Without stdio, whose buffer would be the thread's first memory. */
  char text[64] = "";
  const int status = open("/proc/self/statm", O_RDONLY);
  if (status < 0 || read(status, text, sizeof text - 1) <= 0) fail("cannot read statm");
  close(status);
  return strtoul(text, NULL, 10) * (size_t)sysconf(_SC_PAGESIZE);
}

static void limitMemory(rlim_t bytes) {
  struct rlimit limit;
  if (getrlimit(RLIMIT_AS, &limit) != 0) fail("cannot read the limit");
  limit.rlim_cur = bytes;
  if (setrlimit(RLIMIT_AS, &limit) != 0) fail("cannot set the limit");
}

static struct String stringOf(const char* text) {
  struct String string = {text, strlen(text), ""};
  return string;
}

/* One attempt: what is called, where, and with how much memory. */
struct Attempt {
  const struct Route* route;
  enum Outcome (*call)(const struct Route*);
  enum Place place;
  bool onlyHeap; /* memory is what one free block of the heap holds, not a limit */
  size_t bytes;
};

static enum Outcome outcomeOf(const char* answer, uint64_t full) {
  static const char kErrorText[] = "[{\"error\": \"Parser exception: ";
  static const char kNotOpen[] = "[{\"error\": \"Could not open file: ";
  if (answer == NULL) return kNull;
  if (fingerprint(answer) == full) return kFull;
  return strncmp(answer, kErrorText, sizeof kErrorText - 1) == 0 ||
                 strncmp(answer, kNotOpen, sizeof kNotOpen - 1) == 0
             ? kError
             : kWrong;
}

static enum Outcome callParse(const struct Route* route) {
  return outcomeOf(parse(route->large, NULL), route->largeAnswer);
}

static enum Outcome callParseSmall(const struct Route* route) {
  return outcomeOf(parse(route->small, NULL), route->smallAnswer);
}

static enum Outcome callFace(const struct Route* route) {
  static const char kBanner[] = "Quorl JavaScript Parser Plugin v1.0";
  const char* const line = info();
  const enum Outcome outcome = line == NULL                                      ? kNull
                               : strncmp(line, kBanner, sizeof kBanner - 1) == 0 ? kFull
                                                                                 : kWrong;
  (void)route;
  cleanup();
  cleanup();
  return outcome;
}

/* The last bytes of standard output, which are all if there are few. */
static const char* lastOutput(void) {
  static char text[kOutputBytes];
  FILE* const file = fopen(output, "r");
  size_t size;
  fflush(stdout);
  if (file == NULL) return "";
  if (fseek(file, -(long)(sizeof text - 1), SEEK_END) != 0) rewind(file);
  size = fread(text, 1, sizeof text - 1, file);
  text[size] = '\0';
  fclose(file);
  return text;
}

static enum Outcome processed(const char* path) {
  const struct String name = stringOf(path);
  static char word[2 * kPathBytes]; /* off the stack, which may not be able to grow */
  const char* text;
  processFile(&name, &name);
  limitMemory(RLIM_INFINITY);
  text = lastOutput();
  snprintf(word, sizeof word, "Successfully processed: %s\n", path);
  if (strstr(text, word) != NULL) return kFull;
  snprintf(word, sizeof word, "Exception while processing %s: ", path);
  if (strstr(text, word) != NULL) return kError;
  if (text[0] == '\0') return kNull;
  snprintf(word, sizeof word, "Error: Could not open file %s\n", path);
  return strstr(text, word) != NULL ? kError : kWrong;
}

static enum Outcome callProcess(const struct Route* route) { return processed(route->large); }
static enum Outcome callProcessSmall(const struct Route* route) { return processed(route->small); }

/* The folder holds a large and a small file of each of two extensions that batches take. */
static enum Outcome callChores(const struct Route* route) {
  struct String name = stringOf("a-long-name-that-does-not-fit-into-a-string-itself.js");
  struct String path = stringOf(folder);
  const struct Vector files = filesIn(&path);
  const struct String kept = sanitized(&name);
  const ptrdiff_t count = ((char*)files.end - (char*)files.begin) / (ptrdiff_t)sizeof path;
  (void)route;
  path = stringOf("/dev/null");
  writeText(&name, &path);
  if (count != 0 && count != 4) return kWrong;
  if (kept.size == 0) return kNull;
  return strcmp(kept.text, "alongnamethatdoesnotfitintoastringitselfjs") == 0 ? kFull : kWrong;
}

/* Takes all memory that can be had without more from the system, and gives one block of it back. */
static void leaveOneBlock(size_t bytes) {
  void* volatile const block = malloc(bytes);
  void* volatile taken; /* or the compiler leaves out requests whose memory nobody uses */
  size_t size;
  limitMemory(mappedBytes());
  for (size = (size_t)1 << 20; size >= 16; size /= 2) {
    do {
      taken = malloc(size);
    } while (taken != NULL);
  }
  free(block);
}

/* A call as such takes stack, before the module can ask whether there is some: leave it a page. */
__attribute__((noinline)) static void growStack(void) {
  volatile char page[4096];
  page[0] = 0;
  (void)page;
}

static int run(const struct Attempt* attempt) {
  enum Outcome outcome;
  growStack();
  if (attempt->onlyHeap) {
    leaveOneBlock(attempt->bytes);
  } else {
    limitMemory(mappedBytes() + attempt->bytes);
  }
  outcome = attempt->call(attempt->route);
  limitMemory(RLIM_INFINITY);
  if (outcome == kWrong) return kWrong;
  return callParseSmall(attempt->route) == kFull ? (int)outcome : kWrongAfterwards;
}

static void* runOnThread(void* attempt) {
  _exit(run(attempt));
  return NULL;
}

/* So far down that the stack's first mapping, of 132 KB, is used up. */
static int runDeep(const struct Attempt* attempt) {
  volatile char frames[256 * 1024];
  size_t at;
  for (at = 0; at < sizeof frames; at += 4096) frames[at] = 0;
  return run(attempt) + frames[0];
}

static pid_t start(const struct Attempt* attempt) {
  pthread_attr_t attributes;
  pthread_t thread;
  pid_t child;
  fflush(stdout); /* or the child writes it too */
  child = fork();
  if (child != 0) return child;
  if (freopen(output, "w", stdout) == NULL) _exit(kNotTried);
  switch (attempt->place) {
    case kMain:
      _exit(run(attempt));
    case kDeep:
      _exit(runDeep(attempt));
    case kDeeper:
      if (info() == NULL) _exit(kNotTried);
      cleanup();
      _exit(runDeep(attempt));
    default:
      break;
  }
  /* As small as the host guide allows. */
  if (pthread_attr_init(&attributes) != 0 ||
      pthread_attr_setstacksize(&attributes, 128 * 1024) != 0 ||
      pthread_create(&thread, &attributes, &runOnThread, (void*)attempt) != 0) {
    _exit(kNotTried);
  }
  pthread_join(thread, NULL);
  _exit(kNotTried);
}

static int faults = 0;

/* Runs the call with each amount of memory and prints what came of them. */
static void try(const char* what, struct Attempt attempt, size_t step, int count, bool needsBoth) {
  int outcomes[kOutcomes] = {0};
  int ended = 0;
  int i;
  for (i = 0; i < count; ++i) {
    int status = 0;
    attempt.bytes = step * (size_t)i;
    if (waitpid(start(&attempt), &status, 0) < 0) fail("cannot wait");
    if (WIFEXITED(status) && WEXITSTATUS(status) < kOutcomes) {
      ++outcomes[WEXITSTATUS(status)];
    } else {
      ++ended;
    }
  }
  printf(
      "%-13s %-4s %-11s %3d limits: %d full, %d error, %d null; %d wrong, %d wrong afterwards, "
      "%d not tried, %d ended\n",
      what, attempt.route->extension, kPlaceWords[attempt.place], count, outcomes[kFull],
      outcomes[kError], outcomes[kNull], outcomes[kWrong], outcomes[kWrongAfterwards],
      outcomes[kNotTried], ended);
  faults += outcomes[kWrong] + outcomes[kWrongAfterwards] + outcomes[kNotTried] + ended;
  /* Or the limits have not been where memory runs out. */
  if (needsBoth && (outcomes[kFull] == 0 || outcomes[kFull] == count)) ++faults;
}

static void writeFile(char* path, const char* name, const struct Route* route, int statements) {
  FILE* file;
  int i;
  snprintf(path, kPathBytes, "%.4000s/%s.%s", folder, name, route->extension);
  file = fopen(path, "w");
  if (file == NULL) fail("cannot write");
  fputs(route->head, file);
  for (i = 0; i < statements; ++i) fputs(route->statement, file);
  fputs(route->tail, file);
  if (fclose(file) != 0) fail("cannot write");
}

/* What a call without a limit gives and takes, found out by a child. */
static void learn(struct Route* route) {
  struct Route* const seen =
      mmap(NULL, sizeof *seen, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  int status = 0;
  pid_t child;
  if (seen == MAP_FAILED) fail("no memory");
  fflush(stdout);
  child = fork();
  if (child == 0) {
    const size_t before = mappedBytes();
    const char* answer;
    if (freopen(output, "w", stdout) == NULL) _exit(1);
    answer = parse(route->small, NULL);
    if (answer == NULL || strncmp(answer, "[\n", 2) != 0) _exit(1);
    seen->smallAnswer = fingerprint(answer);
    answer = parse(route->large, NULL);
    if (answer == NULL || strncmp(answer, "[\n", 2) != 0) _exit(1);
    seen->largeAnswer = fingerprint(answer);
    seen->need = mappedBytes() - before + strlen(answer);
    _exit(0);
  }
  if (waitpid(child, &status, 0) < 0 || status != 0) fail("no answer without a limit");
  route->smallAnswer = seen->smallAnswer;
  route->largeAnswer = seen->largeAnswer;
  route->need = seen->need;
  munmap(seen, sizeof *seen);
}

static void* symbol(void* module, const char* name) {
  void* const found = dlsym(module, name);
  if (found == NULL) fail(name);
  return found;
}

int main(int argc, char** argv) {
  void* module;
  int i;
  int place;
  if (argc != 3) fail("usage: exhausted_memory_host MODULE FOLDER");
  module = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (module == NULL) fail(dlerror());
  /* The way that POSIX gives for turning an object pointer into a function pointer. */
  *(void**)&parse = symbol(module, "ParseJS");
  *(void**)&info = symbol(module, "Info");
  *(void**)&cleanup = symbol(module, "CleanupJS");
  *(void**)&processFile = symbol(module, "_Z17ProcessSingleFileRK" STRING "S6_");
  *(void**)&filesIn = symbol(module, "_Z19GetFilesInDirectoryRK" STRING);
  *(void**)&sanitized = symbol(module, "_Z16SanitizeFileNameRK" STRING);
  *(void**)&writeText = symbol(module, "_Z10writeafile" STRING "S4_");
  snprintf(folder, sizeof folder, "%.3900s/exhausted_memory", argv[2]);
  snprintf(output, sizeof output, "%.4000s/output", folder);
  mkdir(folder, 0777);
  for (i = 0; i < kRoutes; ++i) {
    writeFile(routes[i].large, "large", &routes[i], kStatements);
    writeFile(routes[i].small, "small", &routes[i], 3);
    learn(&routes[i]);
  }
  for (place = 0; place < kPlaces; ++place) {
    for (i = 0; i < kRoutes; ++i) {
      const struct Route* const route = &routes[i];
      const size_t step = route->need / (kLimits - 4);
      const size_t arenaStep = (route->need + kArenaBytes) / (kLimits - 4);
      const struct Attempt attempt = {.route = route, .place = (enum Place)place};
      struct Attempt with = attempt;
      with.call = &callParse;
      /* On a new thread these leave no room for a heap of its own, so none gives a full answer. */
      try("ParseJS", with, step, kLimits, place != kNewThread);
      if (place == kNewThread) try("ParseJS", with, arenaStep, kLimits, true);
      with.call = &callProcess;
      try("batch", with, step, kLimits, place != kNewThread);
      if (place == kNewThread) try("batch", with, arenaStep, kLimits, true);
      /* Where the first few pages are missing. */
      with.call = &callParseSmall;
      try("ParseJS", with, kHeapStep, kHeapSizes, false);
      with.onlyHeap = true;
      try("ParseJS, heap", with, kHeapStep, kHeapSizes, false);
      with.call = &callProcessSmall;
      try("batch, heap", with, kHeapStep, kHeapSizes, false);
      if (i > 0) continue;
      with.call = &callFace;
      try("face, heap", with, kHeapStep, kHeapSizes, false);
      with.call = &callChores;
      try("chores, heap", with, kHeapStep, kHeapSizes, false);
    }
  }
  printf("%d faults\n", faults);
  return faults == 0 ? 0 : 1;
}
