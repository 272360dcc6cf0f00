/* A minimal host: loads the plug-in, parses one file and prints the answer. */
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include "plugin/plugin_api.h"

int main(int argc, char** argv) {
  const char* (*parse)(const char*, const char*);
  void (*cleanup)(void);
  const char* answer;
  FILE* out;
  void* module;
  int failed;

  if (argc != 3) return fputs("usage: smallest_host MODULE FILE\n", stderr), 2;
  module = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (module == NULL) return fprintf(stderr, "%s\n", dlerror()), 2;
  /* POSIX's way to turn the object pointer from dlsym into a function pointer. */
  *(void**)&parse = dlsym(module, "ParseJS");
  *(void**)&cleanup = dlsym(module, "CleanupJS");
  if (parse == NULL || cleanup == NULL) return fputs("not the plug-in\n", stderr), 2;

  /* The plug-in prints diagnostics to standard output: keep the real one for the answer. */
  out = fdopen(dup(STDOUT_FILENO), "w");
  if (out == NULL || freopen("/dev/null", "w", stdout) == NULL) return 2;

  answer = parse(argv[2], NULL); /* owned by the plug-in; valid until the next call */
  if (answer == NULL) return fputs("out of memory\n", stderr), 1;
  failed = strncmp(answer, "[\n", 2) != 0; /* records begin with "[\n", an error with "[{" */
  fputs(answer, out);
  cleanup();
  return fclose(out) == 0 ? failed : 2;
}
