/* Opens the installed module by its path, like a host in C, and parses one file. */
#include <dlfcn.h>
#include <plugin/plugin_api.h>
#include <stdio.h>
#include <string.h>

/* usage: open_module FILE; exit status 0 if the file's answer is a record array */
int main(int argc, char** argv) {
  static const char kFirstRecord[] = "[\n  {\n    \"lineNumber\": 0,\n";
  const char* (*parse)(const char*, const char*);
  void (*cleanup)(void);
  const char* (*info)(void);
  void* module;
  if (argc != 2) return 2;
  module = dlopen(QUORL_PLUGIN, RTLD_NOW | RTLD_LOCAL);
  if (module == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    return 2;
  }
  /* POSIX's way to convert an object pointer to a function pointer. */
  *(void**)&parse = dlsym(module, "ParseJS");
  *(void**)&cleanup = dlsym(module, "CleanupJS");
  *(void**)&info = dlsym(module, "Info");
  if (parse == NULL || cleanup == NULL || info == NULL) return 2;
  if (strncmp(info(), "Quorl JavaScript Parser Plugin v1.0 ", 36) != 0) return 1;
  if (strncmp(parse(argv[1], NULL), kFirstRecord, sizeof kFirstRecord - 1) != 0) return 1;
  cleanup();
  return 0;
}
