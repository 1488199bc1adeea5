// The part of CFBundle that loading a bundle needs, with the names that it has in CoreFoundation.
#pragma once

using Boolean = unsigned char;
using CFAllocatorRef = const struct StandInAllocator*;
using CFURLRef = const struct StandInUrl*;  ///< an NSURL
using CFErrorRef = struct StandInError*;    ///< an NSError
using CFBundleRef = struct StandInBundle*;

inline constexpr CFAllocatorRef kCFAllocatorDefault = nullptr;

/// A bundle of the folder that `url` names, or null when there is none. It lives as long as the
/// process, as does the code that it loads.
CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef url);

/// Loads Contents/MacOS/<executable>, named by CFBundleExecutable of Contents/Info.plist or else
/// like the folder without its extension. On failure `error`, which may be null, is set to an error
/// that the caller releases.
Boolean CFBundleLoadExecutableAndReturnError(CFBundleRef bundle, CFErrorRef* error);
