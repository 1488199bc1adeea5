#include "packager/commands/inspect.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <utility>
#include <variant>

#include "formats/property_block.h"
#include "formats/remembered_options_format.h"
#include "formats/version_file_format.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/commands/update_views.h"
#include "packager/keys/pem.h"
#include "packager/keys/public_key.h"
#include "packager/reading/bundle_view.h"
#include "packager/reading/launch_file_view.h"
#include "packager/reading/plain_archive.h"
#include "packager/reading/target.h"
#include "packager/report/exit_statuses.h"
#include "packager/report/reporter.h"
#include "packager/report/value_lines.h"

namespace quillory::pack {
namespace {

std::string typeName(std::int64_t type) {
  return type == kFolderType ? "folder" : type == kPack200Type ? "pack200" : "file";
}

Json entriesOf(const std::vector<ListedEntry>& entries) {
  Json list = Json::array();
  for (const ListedEntry& entry : entries) {
    Json item = {{"type", typeName(entry.type)}, {"path", entry.path}};
    if (entry.type != kFolderType) {
      item["bytes"] = entry.length;
    }
    list.push_back(std::move(item));
  }
  return list;
}

Json describeArchive(const ArchiveListing& listing) {
  Json archive;
  std::int64_t total = 0;
  for (const ListedEntry& entry : listing.entries) {
    total += entry.length;
  }
  if (listing.identity) {
    archive["is"] = asText(*listing.identity);
  }
  archive["content"] = readableSize(static_cast<std::uint64_t>(total));
  archive["signed"] = listing.signature.has_value();
  if (listing.signature) {
    archive["signed bytes"] = listing.signature->offset;
    archive["signature bits"] = listing.signature->hex.size() * 4;
  }
  archive["entries"] = entriesOf(listing.entries);
  return archive;
}

Json inspectArchive(const FileRegion& region, bool compressed, const std::string& name,
                    Findings& findings) {
  const PlainArchive plain(region, compressed);
  return describeArchive(plain.list(findings, name));
}

std::string installTypeMeaning(const std::string& type) {
  return type == "perm_all"    ? "for all users"
         : type == "perm_user" ? "for the current user"
                               : "temporary, in the current user's folders";
}

Json describeKey(const std::string& hex, const std::string& file) {
  if (hex.empty()) {
    return "none";
  }
  const PublicKey key = PublicKey::fromHex(hex, file);
  return {{"bits", key.modulusBytes() * 8}, {"fingerprint", key.fingerprint()}};
}

Json describeTail(const TailView& tail, Findings& findings) {
  Json described;
  described["place"] = tail.inExecutable ? "behind the marker in " + tail.file : tail.file;
  Json records;
  for (const TailRecord& record : kTailRecords) {
    const std::string& value = tail.records.*record.text;
    const bool isKey = record.text == &TailRecords::signaturePublicKey;
    records[record.name] = isKey ? describeKey(value, tail.file) : Json(value);
  }
  described["records"] = records;
  described["installs"] = installTypeMeaning(tail.records.installType);
  Json entries = entriesOf(tail.entries);
  for (std::size_t i = 0; i < tail.entries.size(); ++i) {
    const ListedEntry& entry = tail.entries[i];
    if (isArchive(entry) && entry.length > 0) {
      try {
        entries[i]["archive"] = inspectArchive(tail.regionOf(entry), isCompressed(entry),
                                               tail.file + ": " + entry.path, findings);
      } catch (const PackError& e) {
        findings.push_back(e.finding());
      }
    }
  }
  described["entries"] = entries;
  return described;
}

Json describeParams(const ParamsView& params) {
  Json list = Json::array();
  for (const auto& [name, value] : params.parameters) {
    list.push_back({{"name", name}, {"value", value}});
  }
  return {{"file", params.file}, {"count", params.parameters.size()}, {"parameters", list}};
}

Json inspectTailFile(const std::string& path, bool inExecutable, Findings& findings) {
  const std::optional<TailView> tail = readTail(path, inExecutable, findings);
  if (!tail) {
    throw noMarker(findings, path, "holds no tail marker");
  }
  return describeTail(*tail, findings);
}

Json inspectParams(const std::string& path, Findings& findings) {
  const std::optional<ParamsView> params = readParams(path, findings);
  if (!params) {
    throw noMarker(findings, path, "holds no parameters marker");
  }
  return describeParams(*params);
}

Json inspectBundle(const std::string& path, Findings& findings) {
  const BundleView bundle = readBundle(path, findings);
  Json described;
  described["bundle"] = bundle.folder;
  described["executable"] = bundle.executable;
  if (std::filesystem::is_regular_file(bundle.executable)) {
    const ProgramImage launcher = programImageIn(bundle.executable);
    described["target"] = targetNameOf(launcher);
    if (!launcher.architectures.empty()) {
      described["architectures"] = launcher.architectures;
    }
  }
  for (const char* key : {"CFBundleIdentifier", "CFBundleShortVersionString", "CFBundleVersion"}) {
    described[key] = plistText(bundle.infoPlist, key);
  }
  if (bundle.params) {
    described["parameters"] = describeParams(*bundle.params);
  }
  if (bundle.tail) {
    described["tail"] = describeTail(*bundle.tail, findings);
  }
  return described;
}

Json textsOf(RecordInput& input, const std::string& countName, const std::string& entryName) {
  Json list = Json::array();
  const std::int64_t count = input.number(countName);
  for (std::int64_t i = 0; i < count && !input.atEnd(); ++i) {
    list.push_back(input.text(entryName));
  }
  return list;
}

Json inspectLaunchFile(const std::string& path, Findings& findings) {
  RecordInput input(path, findings);
  const LaunchFile file = readLaunchFile(input);
  Json shown;
  for (const LaunchFileRecord& record : kLaunchFileRecords) {
    if (record.sinceVersion == 1 || file.version >= record.sinceVersion) {
      std::visit([&](auto place) { shown[record.shownAs] = file.*place; }, record.value);
    }
  }
  return shown;
}

// Keys and values take turns; the last value has no terminator.
Json inspectLaunchProperties(const std::string& path) {
  const std::string bytes = readWholeFile(path);
  std::vector<std::string> texts;
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t end = std::min(bytes.find('\0', at), bytes.size());
    texts.push_back(bytes.substr(at, end - at));
    at = end + 1;
  }
  Json list = Json::array();
  for (std::size_t i = 0; i < texts.size(); i += 2) {
    const std::string& key = texts[i];
    const bool isStatic = key.starts_with(kStaticPrefix);
    const std::string value = i + 1 < texts.size() ? texts[i + 1] : "";
    list.push_back(
        {{"kind", isStatic                          ? "static"
                  : key.starts_with(kDynamicPrefix) ? "dynamic"
                                                    : "unknown"},
         {"name", key.size() > kStaticPrefix.size() ? key.substr(kStaticPrefix.size()) : key},
         {"value", value == kStoredForEmpty ? "" : value}});
  }
  return {{"count", list.size()}, {"properties", list}};
}

Json inspectRememberedOptions(const std::string& path, Findings& findings) {
  RecordInput input(path, findings);
  return {{"options", textsOf(input, kRememberedCountRecord, kRememberedEntryRecord)}};
}

Json inspectVersionFile(const std::string& path) {
  const std::string text = readWholeFile(path);
  return {{"version", text.substr(0, text.find_first_of(kVersionEnds))}};
}

Json inspectKey(const std::string& path) {
  const std::string kind = readPem(path).kind;
  const PublicKey key = PublicKey::load(path);
  return {
      {"holds", kind == "PUBLIC KEY" || kind == "RSA PUBLIC KEY" ? "the public half"
                                                                 : "the private key, which signs"},
      {"bits", key.modulusBytes() * 8},
      {"fingerprint", key.fingerprint()}};
}

Json inspectKind(const std::string& path, FileKind kind, Findings& findings) {
  switch (kind) {
    case FileKind::kBundle:
      return inspectBundle(path, findings);
    case FileKind::kTail:
      return inspectTailFile(path, false, findings);
    case FileKind::kExecutable:
      return inspectTailFile(path, true, findings);
    case FileKind::kParameters:
      return inspectParams(path, findings);
    case FileKind::kArchive:
      return inspectArchive(wholeFile(path), false, path, findings);
    case FileKind::kCompressedArchive:
      return inspectArchive(wholeFile(path), true, path, findings);
    case FileKind::kLaunchFile:
      return inspectLaunchFile(path, findings);
    case FileKind::kLaunchProperties:
      return inspectLaunchProperties(path);
    case FileKind::kRememberedOptions:
      return inspectRememberedOptions(path, findings);
    case FileKind::kVersionFile:
      return inspectVersionFile(path);
    case FileKind::kSigningKey:
      return inspectKey(path);
    case FileKind::kReleaseList:
      return describeReleaseList(path);
    case FileKind::kDelta:
      return describeDelta(path);
    case FileKind::kUpdateSettings:
      return describeUpdateSettings(path);
    case FileKind::kUnknown:
      break;
  }
  throw PackError("is none of the files that quillory-pack knows",
                  "say what it should be with --as", {path, 0});
}

struct InspectOptions {
  std::string file;
  std::string kind;  ///< "": found out
};

int runInspect(const InspectOptions& options, Reporter& reporter) {
  Findings findings;
  const Json content = inspectFile(options.file, fileKindNamed(options.kind), findings);
  reporter.value("content", content);
  const std::string lines = asLines(content);
  reporter.result(lines.substr(0, lines.find_last_not_of('\n') + 1));
  reporter.findings(findings);
  return hasErrors(findings) ? kFailed : kDone;
}

}  // namespace

Json inspectFile(const std::string& path, FileKind kind, Findings& findings) {
  const FileKind known = kind == FileKind::kUnknown ? fileKindOf(path) : kind;
  const Json content = inspectKind(path, known, findings);
  Json all = {{"file", path}, {"kind", fileKindNames()[static_cast<std::size_t>(known)]}};
  all.update(content);
  return all;
}

Command inspectCommand() {
  const auto options = std::make_shared<InspectOptions>();
  const std::vector<std::string>& kinds = fileKindNames();
  return {"inspect",
          "shows what is in a bundle, or in any file of ours",
          "quillory-pack inspect \"dist/My App.app\"",
          {{.name = "PATH",
            .description = "a bundle, tail, parameters file, archive, launch file, key ...",
            .into = &options->file,
            .isRequired = true},
           {.name = "--as",
            .description = "what it is, where that is not plain",
            .into = &options->kind,
            .choices = {kinds.begin() + 1, kinds.end()}}},  // the first is "unknown"
          [options](Reporter& reporter) { return runInspect(*options, reporter); }};
}

}  // namespace quillory::pack
