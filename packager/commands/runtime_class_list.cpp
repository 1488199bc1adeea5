#include "packager/commands/runtime_class_list.h"

#include "packager/bytes/byte_sinks.h"
#include "packager/content/class_list.h"
#include "packager/content/ready_class_lists.h"

namespace quillory::pack {
namespace {

// The list as a file of the runtime that is packed.
const std::string kPackedList = std::string("Contents/Home/") + kRuntimeClassList;

// One that lies beside the configuration counts without a key; the finding is about itself then.
Place placeOfList(const Config& config, const std::string& file) {
  return config.places.count("runtime.class-list") != 0 ? config.placeOf("runtime.class-list")
                                                        : Place{file, 0};
}

std::vector<std::string> namesInFile(const Config& config, const std::string& file) {
  const Place place = placeOfList(config, file);
  if (!isFile(file)) {
    throw RejectedInput({{Severity::kError, "missing-file", "there is no file " + file, place,
                          "make it with quillory-pack train, or leave out runtime.class-list"}});
  }
  std::vector<std::string> names = classNamesIn(readWholeFile(file));
  if (names.empty()) {
    throw RejectedInput({{Severity::kError, "class-list", file + " names no class", place,
                          "make it anew with quillory-pack train, or remove it"}});
  }
  return names;
}

}  // namespace

std::string chosenClassList(const Config& config, const std::vector<std::string>& jars) {
  const std::string& asked = config.runtime.classList;
  if (asked == kNoClassList) {
    return "";
  }
  if (asked != kAutomaticClassList) {
    return asked;
  }
  const std::string kept = config.resolve(kKeptClassList);
  return isFile(kept) ? kept : readyClassList(toolkitOf(jars));
}

void addClassList(const Config& config, const std::vector<std::string>& jars,
                  const std::string& javaHome, ContentTree& runtime, Reporter& reporter) {
  if (!runtime.contains(kPackedList)) {
    return;
  }
  const std::string file = chosenClassList(config, jars);
  if (file.empty()) {
    return;
  }
  const std::vector<std::string> names = namesInFile(config, file);
  const std::vector<std::string> known = classesOf(javaHome, names);
  if (known.empty()) {
    reporter.finding({Severity::kWarning, "class-list",
                      file + " names no class that the runtime has", placeOfList(config, file),
                      "make it anew with quillory-pack train: it may be another file"});
    return;
  }
  const std::string own = readWholeFile(runtime.entries().at(kPackedList).source);
  runtime.removeFiles([](const std::string& path) { return path == kPackedList; });
  runtime.addBytes(extendedClassList(own, known), kPackedList);
  reporter.detail("the runtime's archive of classes gets " +
                  std::to_string(missingIn(own, known).size()) + " more, from " + file);
}

}  // namespace quillory::pack
