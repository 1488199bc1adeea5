# quillory_cocoa_flags: how Objective-C++ is compiled and linked against this system's Cocoa, which
# is Apple's frameworks on macOS and GNUstep elsewhere. Only the platform layer links to it.
if(APPLE)
  enable_language(OBJCXX)
  add_library(quillory_cocoa_flags INTERFACE)
  # A message that no declaration answers is a mistake, not a wish.
  target_compile_options(quillory_cocoa_flags INTERFACE
                         "$<$<COMPILE_LANGUAGE:OBJCXX>:-std=gnu++20;-fno-objc-arc;\
-Werror=objc-method-access;-Werror=undeclared-selector>")
  # Each framework by its own name: the umbrella over them would be one more to load.
  target_link_libraries(quillory_cocoa_flags INTERFACE "-framework AppKit" "-framework Foundation"
                        "-framework CoreFoundation" "-framework CoreGraphics" objc Threads::Threads)
  add_library(quillory_foundation INTERFACE)  # It is one of the frameworks.
else()
  # Detection would take clang++ where it is installed; GNUstep's runtime here is gcc's.
  if(NOT CMAKE_OBJCXX_COMPILER)
    find_program(CMAKE_OBJCXX_COMPILER NAMES g++-12 g++ REQUIRED)
  endif()
  enable_language(OBJCXX)
  add_library(quillory_cocoa_flags INTERFACE)
  find_program(GNUSTEP_CONFIG gnustep-config REQUIRED)
  execute_process(COMMAND ${GNUSTEP_CONFIG} --objc-flags OUTPUT_VARIABLE gs_c
                  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND ${GNUSTEP_CONFIG} --base-libs OUTPUT_VARIABLE gs_l
                  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  # It asks make, and without one prints nothing and says that all is well.
  if(gs_c STREQUAL "" OR gs_l STREQUAL "")
    message(FATAL_ERROR "gnustep-config names no flags: is make installed? scripts/setup.sh has it")
  endif()
  separate_arguments(gs_c UNIX_COMMAND "${gs_c}")
  separate_arguments(gs_l UNIX_COMMAND "${gs_l}")
  set(gs_i ${gs_c})
  list(FILTER gs_i INCLUDE REGEX "^-I/")
  list(TRANSFORM gs_i REPLACE "^-I" "")
  list(FILTER gs_c EXCLUDE REGEX "^-(I.*|MMD|MP|g|O.*|W.*|DGSWARN|DGSDIAGNOSE)$")
  list(REMOVE_DUPLICATES gs_c)
  target_include_directories(quillory_cocoa_flags SYSTEM INTERFACE ${gs_i})
  # CMake 3.25 adds no -std for Objective-C++ with the GNU compiler.
  set(gs_c -std=gnu++20 ${gs_c} -fobjc-call-cxx-cdtors)
  target_compile_options(quillory_cocoa_flags INTERFACE
                         "$<$<COMPILE_LANGUAGE:OBJCXX>:${gs_c}>")
  # Without the library of windows, which the first window loads (platform/gnustep/window_library.h), and
  # without Foundation's, which a program links or loads: quillory_foundation,
  # platform/gnustep/foundation_library.h.
  target_link_libraries(quillory_cocoa_flags INTERFACE objc Threads::Threads ${CMAKE_DL_LIBS})
  add_library(quillory_foundation INTERFACE)
  target_link_libraries(quillory_foundation INTERFACE ${gs_l})
  # Of the version that is built against.
  find_library(gnustep_base gnustep-base REQUIRED)
  execute_process(COMMAND ${CMAKE_OBJDUMP} -p ${gnustep_base} OUTPUT_VARIABLE gs_dynamic
                  COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCH "SONAME +([^\n]+)" _ "${gs_dynamic}")
  set(QUILLORY_FOUNDATION_LIBRARY ${CMAKE_MATCH_1})
endif()
