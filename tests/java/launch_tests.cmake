# Launches: the launch file, the launch properties, the JVM in the process. Several of these need a
# JVM library: a stub that writes down how it is called, one that is none, and a real runtime.
include(QuilloryJava)
add_library(stub_jvm MODULE stub_jvm.cpp)
target_link_libraries(stub_jvm PRIVATE quillory_options quillory_jni)
add_library(stub_no_jvm MODULE stub_no_jvm.cpp)
target_link_libraries(stub_no_jvm PRIVATE quillory_options)

quillory_jar(probe_jar OUTPUT ${CMAKE_BINARY_DIR}/tests/probe.jar MAIN_CLASS Probe
             FOLDER ${CMAKE_CURRENT_SOURCE_DIR}/probe RELEASE 11)
add_executable(launch_probe launch_probe.cpp)
set_target_properties(launch_probe PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
target_link_libraries(launch_probe PRIVATE quillory_options quillory_java)

quillory_test(launch_tests
  SOURCES app_executable_test.cpp bundle_loader_test.cpp chosen_application_test.cpp jni_launch_test.cpp launch_command_test.cpp
          launch_fixture.cpp launch_flow_test.cpp launch_properties_test.cpp
          launch_start_test.cpp modified_utf8_test.cpp startup_archive_test.cpp
          trial_end_test.cpp
  LIBRARIES quillory_java)
get_target_property(runtime test_runtime RUNTIME_FOLDER)
get_target_property(probe_jar probe_jar JAR_FILE)
target_compile_definitions(launch_tests PRIVATE
  QUILLORY_LAUNCH_PROBE="$<TARGET_FILE:launch_probe>"
  QUILLORY_PROBE_JAR="${probe_jar}"
  QUILLORY_STUB_JVM="$<TARGET_FILE:stub_jvm>"
  QUILLORY_STUB_NO_JVM="$<TARGET_FILE:stub_no_jvm>"
  QUILLORY_TEST_RUNTIME="${runtime}")
add_dependencies(launch_tests launch_probe probe_jar stub_jvm stub_no_jvm test_runtime)

# LSan takes what the Objective-C libraries keep for leaks.
quillory_test(bundle_cocoa_tests SOURCES bundle_loader_cocoa_test.cpp
              LIBRARIES quillory_java_cocoa COCOA)
target_compile_definitions(bundle_cocoa_tests PRIVATE
  QUILLORY_STUB_NO_JVM="$<TARGET_FILE:stub_no_jvm>")
add_dependencies(bundle_cocoa_tests stub_no_jvm)

# The macOS side, in a program of its own.
quillory_test(java_macos_tests
  SOURCES cocoa_embedding_macos_test.cpp ${CMAKE_SOURCE_DIR}/java/cocoa_embedding_macos.cpp)
