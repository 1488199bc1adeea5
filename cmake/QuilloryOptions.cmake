# Compiler options of our own code. Link every target of ours to quillory_options (PRIVATE).
add_library(quillory_options INTERFACE)
target_include_directories(quillory_options INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(quillory_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                       -Werror)
# An overrun of the stack ends the process before it is of use to anybody, and crash reports name our
# frames.
target_compile_options(quillory_options INTERFACE -fstack-protector-strong -fno-omit-frame-pointer)
# A system's next version may call deprecated what this one's has.
if(APPLE)
  target_compile_options(quillory_options INTERFACE -Wno-error=deprecated-declarations)
endif()
# g++ 12 sees std::string and std::optional wrongly as uninitialised or overlapping when it
# optimises; the sanitizers look for the real thing.
target_compile_options(quillory_options INTERFACE
                       "$<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized;-Wno-restrict>")
# The same as too long, when its headers are precompiled.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND NOT CMAKE_DISABLE_PRECOMPILE_HEADERS)
  target_compile_options(quillory_options INTERFACE -Wno-stringop-overflow -Wno-array-bounds)
endif()
if(QUILLORY_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
elseif(QUILLORY_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
elseif(QUILLORY_SANITIZE_THREADS)
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
endif()

# Headers that nearly every source includes are parsed once: quillory_precompile_for(OWNER HEADERS...)
# does that for a target, and quillory_precompile(TARGET OWNER) has another one use them. A source
# includes what it uses nevertheless: the preset "debug", the macOS programs and the fuzz targets are
# built without.
if(CMAKE_CROSSCOMPILING OR QUILLORY_FUZZ)
  set(CMAKE_DISABLE_PRECOMPILE_HEADERS ON)
endif()

function(quillory_precompile_for owner)
  list(TRANSFORM ARGN REPLACE "(.+)" "$<$<COMPILE_LANGUAGE:CXX>:<\\1$<ANGLE-R>>")
  target_precompile_headers(${owner} PRIVATE ${ARGN})
endfunction()

function(quillory_precompile target owner)
  get_target_property(sources ${target} SOURCES)
  list(FILTER sources INCLUDE REGEX "[.]mm$")
  set_source_files_properties(${sources} PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
  target_precompile_headers(${target} REUSE_FROM ${owner})
endfunction()

# For sources that take long to compile and hardly any time to run: quillory_compile_quickly(SOURCES...).
function(quillory_compile_quickly)
  set_source_files_properties(${ARGN} PROPERTIES COMPILE_OPTIONS $<$<CONFIG:Release>:-O1>)
endfunction()

# A library of our own code: quillory_library(name SOURCES... LIBRARIES...). Headers are found from
# the top of the tree ("formats/archive.h").
function(quillory_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE quillory_options PUBLIC ${ARG_LIBRARIES})
  if(TARGET quillory_support AND NOT name STREQUAL quillory_support)
    quillory_precompile(${name} quillory_support)
  endif()
endfunction()
