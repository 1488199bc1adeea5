# build/<preset>/tests/runtime: a small Java runtime (java.base only) for the tests that need a real
# one, made once. Depend on test_runtime; the folder is the property RUNTIME_FOLDER of that target.
# It is shared: copy it, or link to its files, but never change it.
find_package(Java 17 QUIET REQUIRED COMPONENTS Development)
cmake_path(GET Java_JAVAC_EXECUTABLE PARENT_PATH java_bin)
find_program(QUILLORY_JLINK jlink HINTS ${java_bin} REQUIRED)

set(runtime ${CMAKE_BINARY_DIR}/tests/runtime)
add_custom_command(
  OUTPUT ${runtime}/release
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${runtime}
  COMMAND ${QUILLORY_JLINK} --add-modules java.base --strip-java-debug-attributes --no-man-pages
          --no-header-files --output ${runtime}
  # With the archive of its classes a JVM starts in a fraction of the time.
  COMMAND ${runtime}/bin/java -Xshare:dump -Xlog:disable
  COMMENT "Java runtime for the tests"
  VERBATIM)
add_custom_target(test_runtime DEPENDS ${runtime}/release)
set_target_properties(test_runtime PROPERTIES RUNTIME_FOLDER ${runtime})
