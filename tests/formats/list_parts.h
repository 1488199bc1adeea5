// Release lists, written by hand as docs/formats/release-list.md has them.
#pragma once
#include <initializer_list>
#include <map>
#include <string>
#include <vector>

#include "formats/release_list.h"
#include "tests/formats/archive_parts.h"

namespace quillory::testing {

/// The values of the page's example, in their order, with `nextKeys` as its next keys.
inline std::vector<std::string> listValues(const std::vector<std::string>& nextKeys = {}) {
  const auto hash = [](const char* pair) {
    std::string digits;
    for (int i = 0; i < 32; ++i) digits += pair;
    return digits;
  };
  std::vector<std::string> values = {"1",
                                     "Hello",
                                     "stable",
                                     "linux",
                                     "7",
                                     "1767225600",
                                     "1775001600",
                                     "2.31",
                                     "0",
                                     "",
                                     "0",
                                     "",
                                     "2",
                                     "1767225600",
                                     "7",
                                     "100",
                                     "1",
                                     hash("3f"),
                                     "3",
                                     "- Opens *faster*\n",
                                     std::to_string(nextKeys.size())};
  values.insert(values.end(), nextKeys.begin(), nextKeys.end());
  for (const std::string& value :
       {std::string("1"), std::string("application"), std::string("Hello"), std::string("4"),
        std::string("1.3"), std::string("Quillory-Hello-4-archive.p2.l2"), std::string("1000"),
        hash("a1"), std::string("2000"), hash("b2"), std::string("1900"), std::string("1"),
        std::string("2"), hash("c3"), std::string("Quillory-Hello-4-from-2-delta"),
        std::string("30"), hash("d4"), std::string("70000")})
    values.push_back(value);
  return values;
}

inline std::string bytesOf(const std::vector<std::string>& values) {
  std::string bytes;
  for (const std::string& value : values) bytes.append(value).push_back('\0');
  return bytes;
}

/// The same with a signature of tests/data/signatures.
inline std::string withSignature(const std::string& signedBytes, const std::string& name) {
  return signedBytes + signatureBlock(std::to_string(signedBytes.size()), signatureData(name));
}

/// What the example says.
inline ReleaseList exampleList() {
  const std::vector<std::string> values = listValues();
  ReleaseList list;
  list.application = "Hello";
  list.channel = "stable";
  list.platform = "linux";
  list.number = 7;
  list.issued = 1767225600;
  list.expires = 1775001600;
  list.minimumSystem = "2.31";
  list.criticalBelow = 2;
  list.rollout = {1767225600, 7, 100};
  list.withdrawn = {{values[17], "3"}};
  list.notes = "- Opens *faster*\n";
  ReleaseComponent component;
  component.role = "application";
  component.name = "Hello";
  component.version = "4";
  component.shownVersion = "1.3";
  component.archive = {"Quillory-Hello-4-archive.p2.l2", 1000, values[28]};
  component.plainLength = 2000;
  component.plainSha256 = values[30];
  component.installedLength = 1900;
  component.deltas = {{"2", values[34], {"Quillory-Hello-4-from-2-delta", 30, values[37]}, 70000}};
  list.components = {component};
  return list;
}

}  // namespace quillory::testing
