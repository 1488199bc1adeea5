// CoreGraphics: geometry, window levels, the session.
#pragma once
#include <CoreFoundation/CoreFoundation.h>
#include <stdint.h>

extern "C" {

typedef double CGFloat;
typedef struct CGPoint {
  CGFloat x;
  CGFloat y;
} CGPoint;
typedef struct CGSize {
  CGFloat width;
  CGFloat height;
} CGSize;
typedef struct CGRect {
  CGPoint origin;
  CGSize size;
} CGRect;

typedef int32_t CGWindowLevel;
typedef int32_t CGWindowLevelKey;
enum { kCGFloatingWindowLevelKey = 5 };

CGWindowLevel CGWindowLevelForKey(CGWindowLevelKey key);
CFDictionaryRef CGSessionCopyCurrentDictionary(void);

}  // extern "C"
