# Builds for macOS on another system, with Zig's compiler and our own declarations of Cocoa.
# scripts/build-macos.sh gives
#   QUILLORY_ZIG       the zig program
#   QUILLORY_ARCH      x86_64 or arm64
#   QUILLORY_PREFIXES  the folders of the static libraries and of the headers
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR ${QUILLORY_ARCH})
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QUILLORY_ZIG QUILLORY_ARCH QUILLORY_PREFIXES)

# With the version, always: without one Zig takes another, and below 11 it has no headers.
string(REPLACE arm64 aarch64 zig_arch ${QUILLORY_ARCH})
set(zig_target -target ${zig_arch}-macos.11.0)
set(CMAKE_C_COMPILER ${QUILLORY_ZIG} cc ${zig_target})
set(CMAKE_CXX_COMPILER ${QUILLORY_ZIG} c++ ${zig_target})
set(CMAKE_OBJCXX_COMPILER ${QUILLORY_ZIG} c++ ${zig_target})
set(CMAKE_AR llvm-ar-14 CACHE FILEPATH "")
set(CMAKE_RANLIB llvm-ranlib-14 CACHE FILEPATH "")
set(CMAKE_INSTALL_NAME_TOOL llvm-install-name-tool-14 CACHE FILEPATH "")
set(CMAKE_SIZEOF_VOID_P 8)  # Not found out by a link: Zig refuses one of its options.
set(CMAKE_OSX_SYSROOT "" CACHE STRING "" FORCE)
set(CMAKE_OSX_DEPLOYMENT_TARGET "" CACHE STRING "" FORCE)

# -I and not -isystem: before Zig's own headers. Zig leaves an argument of CMake's unused. The
# images hold no path of the machine that built them.
get_filename_component(root ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
set(sdk ${root}/platform/macos-sdk)
set(common_flags "-I${sdk}/include -g0 -fmacro-prefix-map=${root}/= \
-Wno-unused-command-line-argument")
set(CMAKE_C_FLAGS_INIT "${common_flags}")
set(CMAKE_CXX_FLAGS_INIT "${common_flags}")
set(CMAKE_OBJCXX_FLAGS_INIT "${common_flags}")
# What only a linker needs is taken away behind it, by finish_image.py: -s has no effect here.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-F${sdk}/Frameworks -L${sdk}/lib")

set(CMAKE_FIND_ROOT_PATH ${QUILLORY_PREFIXES})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
list(TRANSFORM QUILLORY_PREFIXES APPEND /lib/pkgconfig OUTPUT_VARIABLE pkgconfig)
string(JOIN ":" pkgconfig ${pkgconfig})
set(ENV{PKG_CONFIG_LIBDIR} "${pkgconfig}")
