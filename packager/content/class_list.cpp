#include "packager/content/class_list.h"

#include <string_view>

#include "packager/bytes/byte_sinks.h"

namespace quillory::pack {
namespace {

// With its class loader, and with the decoder that a path with a space needs.
constexpr std::string_view kUpdaterClasses =
    "java/io/IOException\n"
    "java/lang/reflect/InvocationTargetException\n"
    "java/net/URLClassLoader\n"
    "java/net/URLClassLoader$1\n"
    "java/nio/charset/CharsetDecoder\n"
    "java/security/AllPermissionCollection\n"
    "sun/nio/cs/UTF_8$Decoder\n";

}  // namespace

void addUpdaterClasses(const std::string& javaHome) {
  const std::string path = javaHome + "/lib/classlist";
  if (!isFile(path)) return;
  writeWholeFile(path, readWholeFile(path).append(kUpdaterClasses));
}

}  // namespace quillory::pack
