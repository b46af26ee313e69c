// What the plug-in uses of <string.h>, for the cross build.
#pragma once

#include <stddef.h>

extern "C" {
void* memcpy(void* to, const void* from, size_t count);
void* memmove(void* to, const void* from, size_t count);
void* memset(void* to, int value, size_t count);
int memcmp(const void* a, const void* b, size_t count);
size_t strlen(const char* text);
int strcmp(const char* a, const char* b);
int strncmp(const char* a, const char* b, size_t count);
}
