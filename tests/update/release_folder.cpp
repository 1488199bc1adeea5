#include "tests/update/release_folder.h"

#include <filesystem>

#include "formats/sha256.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/writing/archive_writer.h"
#include "packager/writing/delta_writer.h"
#include "packager/writing/release_list_writer.h"
#include "tests/packager/openssl.h"

namespace quillory::testing {
namespace {

// The shortest that can sign: making it takes milliseconds.
constexpr char kBits[] = "1040";

std::string plainArchive(const std::string& name, const std::string& version,
                         const Content& content, const pack::SigningKey& key) {
  pack::StringSink sink;
  pack::ArchiveWriter writer(sink);
  writer.identity({name, version, kAnyPlatform});
  for (const auto& [path, bytes] : content) {
    if (path.ends_with('/')) {
      writer.folder(path.substr(0, path.size() - 1));
    } else {
      writer.bytes(path, bytes);
    }
  }
  writer.endSigned(key, pack::Salt::kRandom);
  return sink.bytes();
}

std::string packed(const std::string& plain) {
  pack::StringSink sink;
  pack::LzmaSinkAdapter lzma(0, sink);
  lzma.write(plain);
  lzma.finish();
  return sink.bytes();
}

}  // namespace

const pack::SigningKey& testKey(const std::string& name) {
  static const TempDir folder;
  static std::map<std::string, pack::SigningKey> keys;
  const auto known = keys.find(name);
  if (known != keys.end()) return known->second;
  const std::string path = folder / (name + ".pem");
  openssl({"genrsa", "-traditional", "-out", path, kBits});
  return keys.emplace(name, pack::SigningKey::load(path)).first->second;
}

ReleaseFile named(const std::string& name, const std::string& bytes) {
  return {name, static_cast<std::int64_t>(bytes.size()), sha256Hex(bytes)};
}

ReleaseComponent ReleaseFolder::add(const std::string& role, const std::string& name,
                                    const std::string& version, const Content& content,
                                    const pack::SigningKey& key) {
  const std::string plain = plainArchive(name, version, content, key);
  const std::string archive = packed(plain);
  ReleaseComponent component;
  component.role = role;
  component.name = name;
  component.version = version;
  component.shownVersion = version + ".0";
  component.archive = named(releaseArchiveName(name, version), archive);
  component.plainLength = static_cast<std::int64_t>(plain.size());
  component.plainSha256 = sha256Hex(plain);
  for (const auto& [path, bytes] : content)
    component.installedLength += static_cast<std::int64_t>(bytes.size());
  writeFile(folder_ / component.archive.name, archive);
  writeFile(plainPath(component), plain);
  return component;
}

std::string ReleaseFolder::plainPath(const ReleaseComponent& component) const {
  return plain_ / component.plainSha256;
}

void ReleaseFolder::addDelta(ReleaseComponent& component, const ReleaseComponent& base) {
  const std::string name =
      "Quillory-" + component.name + '-' + component.version + "-from-" + base.version + "-delta";
  const pack::MadeDelta made = pack::writeDelta({.role = component.role,
                                                 .component = component.name,
                                                 .from = base.version,
                                                 .to = component.version,
                                                 .oldArchive = plainPath(base),
                                                 .newArchive = plainPath(component),
                                                 .wholeLength = component.archive.length},
                                                folder_ / name);
  EXPECT_TRUE(made.isMade) << made.reason;
  component.deltas.push_back(
      {base.version, made.baseSha256, {name, made.length, made.sha256}, made.memory});
}

ReleaseList ReleaseFolder::list(std::int64_t number, std::vector<ReleaseComponent> components) {
  ReleaseList list;
  list.application = "Demo";
  list.channel = kStandardChannel;
  list.platform = kAnyPlatform;
  list.number = number;
  list.issued = kIssued + number;
  list.expires = kIssued + 90 * kDay;
  list.components = std::move(components);
  return list;
}

void ReleaseFolder::publish(const ReleaseList& list,
                            const std::vector<const pack::SigningKey*>& keys) const {
  const std::string bytes = pack::releaseListBytes(list, keys, pack::Salt::kRandom);
  writeFile(folder_ / releaseListName(list.application, list.channel), bytes);
  writeFile(folder_ / keptReleaseListName(list.application, list.channel, list.number), bytes);
}

}  // namespace quillory::testing
