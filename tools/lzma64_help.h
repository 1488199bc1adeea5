// What lzma64 says of itself, for --help and for its manual page.
#pragma once

namespace quillory {

inline constexpr char kLzma64Usage[] =
    "lzma64 d IN OUT          unpacks the LZMA-alone file IN into OUT\n"
    "lzma64 e [-LEVEL] IN OUT packs IN into the LZMA-alone file OUT\n"
    "lzma64 --help\n";

inline constexpr char kLzma64Notes[] =
    "LEVEL is 0 (fastest) to 9 (smallest); without it, 6. OUT appears, or is replaced, only\n"
    "when everything went well; a symbolic link at OUT is replaced, not followed.\n";

inline constexpr char kLzma64Statuses[] =
    "0 done, 1 the input is bad or a file cannot be read or written, 2 wrong use\n";

inline constexpr char kLzma64Example[] = "lzma64 e -9 application.p2 application.p2.l2\n";

}  // namespace quillory
