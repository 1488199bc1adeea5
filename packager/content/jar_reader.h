// Looks into jars: which classes there are, and what the manifest says.
#pragma once
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace quillory::pack {

class Jar {
 public:
  /// Reads the directory of the jar. Throws PackError when it is none.
  explicit Jar(const std::string& path);

  bool contains(const std::string& entry) const { return entries_.count(entry) != 0; }
  /// Whether it is a module, for some version of Java at least.
  bool isModule() const;
  /// Whether a class is in it, by its name with dots.
  bool hasClass(const std::string& name) const;
  /// A value of the manifest's main section, or "", as `java -jar` reads it: names in any case,
  /// lines ended in any way, the last one also by nothing. Throws PackError when the manifest is
  /// damaged or larger than a mebibyte.
  std::string manifestValue(const std::string& name) const;
  /// The class that it starts, with dots however it is written; "" for none.
  std::string mainClass() const;
  /// Hands over the bytes of one class after the other, until `take` answers false. Classes that
  /// are damaged or larger than a mebibyte are passed over.
  void eachClass(const std::function<bool(std::string_view)>& take) const;

 private:
  struct Entry {
    std::uint32_t method = 0;
    std::uint32_t packedSize = 0;
    std::uint32_t size = 0;
    std::uint32_t offset = 0;
  };
  std::string content(const std::string& name) const;

  std::string path_;
  std::map<std::string, Entry> entries_;
};

}  // namespace quillory::pack
