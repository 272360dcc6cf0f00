/* A minimal host: loads the plug-in, parses one file and prints the answer. */
/* For dup and fdopen: -std=c11 declares the functions of C alone. */
#define _POSIX_C_SOURCE 200809L
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
  int is_error;

  if (argc != 3) return fputs("usage: smallest_host MODULE FILE\n", stderr), 2;
  module = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (module == NULL) return fprintf(stderr, "%s\n", dlerror()), 2;
  /* The way that POSIX gives for turning an object pointer into a function pointer. */
  *(void**)&parse = dlsym(module, "ParseJS");
  *(void**)&cleanup = dlsym(module, "CleanupJS");
  if (parse == NULL || cleanup == NULL) return fputs("not the plug-in\n", stderr), 2;

  /* The plug-in prints diagnostic lines: keep standard output for the answer alone. */
  out = fdopen(dup(STDOUT_FILENO), "w");
  if (out == NULL || freopen("/dev/null", "w", stdout) == NULL) return 2;

  answer = parse(argv[2], NULL); /* owned by the plug-in; valid until the next call */
  if (answer == NULL) return fputs("out of memory\n", stderr), 1;
  is_error = strncmp(answer, "[\n", 2) != 0; /* records begin with "[\n", an error with "[{" */
  if (is_error) {
    fprintf(stderr, "%s\n", answer);
  } else {
    fputs(answer, out);
  }
  cleanup();
  return fclose(out) != 0 ? 2 : is_error;
}
