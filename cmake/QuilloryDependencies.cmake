# Libraries that are not ours, as imported targets.
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)

# LibTomCrypt and its arithmetic provider LibTomMath, inside of our programs: few users' machines
# have them, and each library less starts a program faster.
find_path(QUILLORY_TOMCRYPT_INCLUDE tomcrypt.h REQUIRED)
find_library(QUILLORY_TOMCRYPT libtomcrypt.a REQUIRED)
find_library(QUILLORY_TOMMATH libtommath.a REQUIRED)
add_library(quillory_tomcrypt INTERFACE)
target_compile_definitions(quillory_tomcrypt INTERFACE LTM_DESC)
target_include_directories(quillory_tomcrypt SYSTEM INTERFACE ${QUILLORY_TOMCRYPT_INCLUDE})
target_link_libraries(quillory_tomcrypt INTERFACE ${QUILLORY_TOMCRYPT} ${QUILLORY_TOMMATH})

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
