# Libraries that are not ours, as imported targets.
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)

# LibTomCrypt and its arithmetic provider LibTomMath.
pkg_check_modules(TOMCRYPT REQUIRED IMPORTED_TARGET libtomcrypt)
pkg_check_modules(TOMMATH REQUIRED IMPORTED_TARGET libtommath)
add_library(quillory_tomcrypt INTERFACE)
target_compile_definitions(quillory_tomcrypt INTERFACE LTM_DESC)
target_link_libraries(quillory_tomcrypt INTERFACE PkgConfig::TOMCRYPT PkgConfig::TOMMATH)

# Only the JNI headers are needed: the JVM itself is loaded at run time.
find_path(QUILLORY_JNI_INCLUDE jni.h
          HINTS $ENV{JAVA_HOME}/include /usr/lib/jvm/java-17-openjdk-amd64/include
                /usr/lib/jvm/default-java/include REQUIRED)
add_library(quillory_jni INTERFACE)
if(APPLE)
  set(QUILLORY_JNI_MACHINE ${QUILLORY_JNI_INCLUDE}/darwin)
else()
  set(QUILLORY_JNI_MACHINE ${QUILLORY_JNI_INCLUDE}/linux)
endif()
target_include_directories(quillory_jni SYSTEM INTERFACE ${QUILLORY_JNI_INCLUDE}
                           ${QUILLORY_JNI_MACHINE})
