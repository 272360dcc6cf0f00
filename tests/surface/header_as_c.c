#include "plugin/plugin_api.h"

/* The documented types. */
const char* (*const kParse)(const char*, const char*) = ParseJS;
void (*const kCleanup)(void) = CleanupJS;
const char* (*const kInfo)(void) = Info;
