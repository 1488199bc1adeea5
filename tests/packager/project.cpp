#include "tests/packager/project.h"

#include <filesystem>

#include "tests/packager/openssl.h"

namespace quillory::testing {

namespace fs = std::filesystem;

Project::Project() {
  fs::copy_file(QUILLORY_HELLO_JAR, folder_ / "hello.jar");
  writeFile(folder_ / "launcher",
            "\x7f"
            "ELF, says this stand-in");
  writeFile(folder_ / "lzma64",
            "\x7f"
            "ELF, too");
  writeFile(folder_ / "jre/bin/java",
            "\x7f"
            "ELF java");
  writeFile(folder_ / "jre/lib/modules", "classes");
  writeFile(folder_ / "jre/lib/libjli.so", "library");
  writeFile(folder_ / "jre/release", "IMPLEMENTOR=\"Nobody\"\nJAVA_VERSION=\"17.0.9\"\n");
}

std::string Project::config(const std::string& extra) const {
  return "[bundle]\n"
         "launcher = \"launcher\"\n"
         "lzma64 = \"lzma64\"\n"
         "[updater]\n"
         "jar = \"" QUILLORY_UPDATER_JAR
         "\"\n"
         "[signing]\n"
         "key = \"" +
         key() +
         "\"\n"
         "salt = \"derived\"\n"
         "[application]\n"
         "name = \"Hello\"\n"
         "version = 3\n"
         "main-class = \"com.example.hello.Hello\"\n"
         "jars = [\"hello.jar\"]\n"
         "identifier = \"com.example.hello\"\n" +
         extra;
}

std::string Project::writeConfig(const std::string& text) const {
  writeFile(folder_ / "quillory.toml", text);
  return folder_ / "quillory.toml";
}

std::string Project::key() { return madeKey(); }

}  // namespace quillory::testing
