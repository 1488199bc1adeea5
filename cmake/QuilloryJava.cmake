# Jars of our own Java code: quillory_jar(target OUTPUT file FOLDER sources), with MAIN_CLASS for
# what "java -jar" is to start, RELEASE for code that needs a Java newer than 8, and CLASS_PATH for
# the jars that it needs; ALSO names targets of this kind whose classes go into the jar, too.
# The jar of the same sources is the same to the byte: fixed times, byte order, nothing else in it.
find_package(Java 17 QUIET REQUIRED COMPONENTS Development Runtime)

function(quillory_jar target)
  cmake_parse_arguments(ARG "" "OUTPUT;MAIN_CLASS;FOLDER;RELEASE" "CLASS_PATH;ALSO" ${ARGN})
  if(NOT ARG_RELEASE)
    set(ARG_RELEASE 8)
  endif()
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${ARG_FOLDER}/*.java)
  list(SORT sources)
  set(classes ${CMAKE_CURRENT_BINARY_DIR}/${target}_classes)
  set(also)
  foreach(other ${ARG_ALSO})
    get_target_property(jar ${other} JAR_FILE)
    get_target_property(folder ${other} CLASSES_FOLDER)
    list(APPEND ARG_CLASS_PATH ${jar})
    list(APPEND also -C ${folder} .)
  endforeach()
  string(JOIN ":" class_path ${ARG_CLASS_PATH})
  cmake_path(GET ARG_OUTPUT PARENT_PATH output_folder)
  file(MAKE_DIRECTORY ${output_folder})
  # A manifest that says nothing would only be read, at the load of the first class.
  set(manifest --no-manifest)
  if(ARG_MAIN_CLASS)
    set(manifest --main-class ${ARG_MAIN_CLASS})
  endif()
  # -options: newer compilers warn that 8 is old. The jar is not compressed, because it travels in a
  # compressed archive, and classes load faster.
  add_custom_command(
    OUTPUT ${ARG_OUTPUT}
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${classes}
    COMMAND ${Java_JAVAC_EXECUTABLE} --release ${ARG_RELEASE} -Xlint:all,-options -Werror
            -g:lines,source -encoding UTF-8 -cp "${class_path}" -d ${classes} ${sources}
    COMMAND ${Java_JAR_EXECUTABLE} --create --file ${ARG_OUTPUT} ${manifest} --no-compress
            --date 2000-01-01T00:00:00Z -C ${classes} . ${also}
    DEPENDS ${sources} ${ARG_CLASS_PATH}
    COMMENT "Jar ${ARG_OUTPUT}"
    VERBATIM)
  add_custom_target(${target} ALL DEPENDS ${ARG_OUTPUT})
  if(ARG_ALSO)
    add_dependencies(${target} ${ARG_ALSO})
  endif()
  set_target_properties(${target} PROPERTIES JAR_FILE ${ARG_OUTPUT} CLASSES_FOLDER ${classes})
endfunction()
