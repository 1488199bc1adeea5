// CoreFoundation: bundles.
#pragma once

extern "C" {

typedef unsigned char Boolean;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const void* CFTypeRef;
typedef const struct __CFDictionary* CFDictionaryRef;
typedef const struct __CFURL* CFURLRef;
typedef struct __CFError* CFErrorRef;
typedef struct __CFBundle* CFBundleRef;

extern const CFAllocatorRef kCFAllocatorDefault;

void CFRelease(CFTypeRef object);
CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef bundleURL);
Boolean CFBundleLoadExecutableAndReturnError(CFBundleRef bundle, CFErrorRef* error);

}  // extern "C"
