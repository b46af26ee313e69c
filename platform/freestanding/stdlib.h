// What the plug-in uses of <stdlib.h>, for the cross build.
#pragma once

#include <stddef.h>

extern "C" {
void* malloc(size_t size);
void* calloc(size_t count, size_t size);
void* realloc(void* memory, size_t size);
void free(void* memory);
}
