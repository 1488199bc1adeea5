// Which thread this is.
#pragma once
#import <Foundation/Foundation.h>

namespace quillory::platform {

inline bool isMainThread() { return [NSThread isMainThread] == YES; }

}  // namespace quillory::platform
