# Compiler options of our own code. Link every target of ours to quillory_options (PRIVATE).
add_library(quillory_options INTERFACE)
target_include_directories(quillory_options INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(quillory_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                       -Werror)
# g++ 12 sees std::string and std::optional wrongly as uninitialised or overlapping when it
# optimises; the sanitizers look for the real thing.
target_compile_options(quillory_options INTERFACE
                       "$<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized;-Wno-restrict>")
if(QUILLORY_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
elseif(QUILLORY_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

# A library of our own code: quillory_library(name SOURCES... LIBRARIES...). Headers are found from
# the top of the tree ("formats/archive.h").
function(quillory_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE quillory_options PUBLIC ${ARG_LIBRARIES})
endfunction()
