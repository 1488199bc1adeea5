#include "packager/content/class_list.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <string_view>

#include "packager/bytes/byte_sinks.h"
#include "packager/reading/runtime_classes.h"

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

// What a JVM writes behind the name of a class of such a loader.
constexpr std::string_view kOtherLoader = " source: ";

bool isClassName(std::string_view word) {
  // "@" is for the JVM's own notes, "#" for comments, "[" for arrays.
  return !word.empty() && std::string_view("@#[").find(word.front()) == std::string_view::npos &&
         std::none_of(word.begin(), word.end(), [](char c) {
           return static_cast<unsigned char>(c) <= ' ' || c == '.' || c == ';' || c == '[' ||
                  c == '\x7f';
         });
}

}  // namespace

void addUpdaterClasses(const std::string& javaHome) {
  const std::string path = javaHome + '/' + kRuntimeClassList;
  if (!isFile(path)) return;
  writeWholeFile(path, readWholeFile(path).append(kUpdaterClasses));
}

std::vector<std::string> classNamesIn(std::string_view list) {
  std::set<std::string> names;
  for (std::size_t at = 0; at < list.size();) {
    const std::size_t end = std::min(list.find('\n', at), list.size());
    const std::string_view line = list.substr(at, end - at);
    const std::string_view word = line.substr(0, line.find_first_of(" \t\r"));
    if (isClassName(word) && line.find(kOtherLoader) == std::string_view::npos) {
      names.emplace(word);
    }
    at = end + 1;
  }
  return {names.begin(), names.end()};
}

std::vector<std::string> classesOf(const std::string& javaHome,
                                   const std::vector<std::string>& names) {
  const std::optional<std::set<std::string>> known = classesOfRuntime(javaHome);
  std::vector<std::string> classes;
  std::copy_if(names.begin(), names.end(), std::back_inserter(classes),
               [&](const std::string& name) { return !known || known->count(name) != 0; });
  return classes;
}

std::vector<std::string> missingIn(std::string_view list, const std::vector<std::string>& names) {
  const std::vector<std::string> there = classNamesIn(list);
  std::vector<std::string> missing;
  std::copy_if(names.begin(), names.end(), std::back_inserter(missing),
               [&](const std::string& name) {
                 return !std::binary_search(there.begin(), there.end(), name);
               });
  return missing;
}

std::string extendedClassList(std::string list, const std::vector<std::string>& names) {
  const std::vector<std::string> missing = missingIn(list, names);
  if (!missing.empty() && !list.empty() && list.back() != '\n') {
    list += '\n';
  }
  for (const std::string& name : missing) {
    list += name + '\n';
  }
  return list;
}

}  // namespace quillory::pack
