// Extended attributes of files, of the C library.
#pragma once
#include <stdint.h>
#include <sys/types.h>

extern "C" {

enum { XATTR_NOFOLLOW = 0x0001 };

ssize_t getxattr(const char* path, const char* name, void* value, size_t size, uint32_t position,
                 int options);

}  // extern "C"
