#include "plugin/plugin_api.h"

/* The types that the documentation promises. */
const char* (*const kParse)(const char*, const char*) = ParseJS;
void (*const kCleanup)(void) = CleanupJS;
const char* (*const kInfo)(void) = Info;
