/* A host in C: includes the header, opens the module and parses one file. */
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

#include "plugin/plugin_api.h"

typedef const char* (*ParseFunction)(const char*, const char*);
typedef void (*CleanupFunction)(void);
typedef const char* (*InfoFunction)(void);

/* usage: c_host MODULE FILE; exit status 0 if the file's answer is a record array. */
int main(int argc, char** argv) {
  static const char kBanner[] = "Quorl JavaScript Parser Plugin v1.0 - HTML/JS Support (Address: ";
  static const char kFirstRecord[] = "[\n  {\n    \"lineNumber\": 0,\n";
  ParseFunction parse;
  CleanupFunction cleanup;
  InfoFunction info;
  void* module;
  if (argc != 3) return 2;
  module = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (module == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    return 2;
  }
  /* POSIX's way to convert an object pointer to a function pointer. */
  *(void**)&parse = dlsym(module, "ParseJS");
  *(void**)&cleanup = dlsym(module, "CleanupJS");
  *(void**)&info = dlsym(module, "Info");
  if (parse == NULL || cleanup == NULL || info == NULL) return 2;
  if (strncmp(info(), kBanner, sizeof kBanner - 1) != 0) return 1;
  if (strncmp(parse(argv[2], NULL), kFirstRecord, sizeof kFirstRecord - 1) != 0) return 1;
  cleanup();
  return 0;
}
