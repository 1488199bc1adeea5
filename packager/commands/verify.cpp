#include "packager/commands/verify.h"

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "formats/archive_format.h"
#include "packager/bytes/work_folder.h"
#include "packager/commands/identity_checks.h"
#include "packager/commands/strict_check.h"
#include "packager/keys/mixed_digest.h"
#include "packager/reading/archive_checks.h"
#include "packager/reading/bundle_view.h"
#include "packager/reading/file_kind.h"
#include "packager/report/exit_statuses.h"
#include "packager/report/joined.h"

namespace quillory::pack {
namespace {

using Json = nlohmann::ordered_json;

struct VerifyOptions {
  std::vector<std::string> paths;
  std::string key;  ///< "": the one in each bundle
  bool isStrict = false;
};

constexpr char kAccepts[] = "a client installs it";
constexpr char kDeletes[] = "a client deletes everything that it extracted from it";

Digest digestOf(const FileRegion& region) {
  MixedDigest digest;
  readRegion(region, [&](std::string_view block) { digest.update(block); });
  return digest.finish();
}

bool holds(const std::string& path, const ListedSignature& signature, const PublicKey& key) {
  return key.verifies(fromHex(signature.hex.substr(0, kCheckedHexCapacity - 1)),
                      digestOf({path, 0, signature.offset}));
}

void verifyTail(const TailView& tail, const PublicKey* given, const ExpectedArchives& expected,
                VerifyResult& result) {
  const std::optional<PublicKey> own = tail.key();
  const PublicKey* key = given != nullptr ? given : own ? &*own : nullptr;
  if (given != nullptr && own && given->fingerprint() != own->fingerprint()) {
    result.findings.push_back({Severity::kError,
                               "other-key",
                               "the tail has another key than the one given: its clients check "
                               "with " +
                                   own->fingerprint(),
                               {tail.file, 0},
                               "pack with the key that earlier versions were signed with"});
  }
  for (const ListedEntry& entry : tail.entries) {
    if (isArchive(entry) && entry.length > 0) {
      const Verdict verdict =
          verifyRegion(tail.regionOf(entry), isCompressed(entry), entry.path, key, result.findings);
      result.verdicts.push_back(verdict);
      checkIdentity(tail, entry, verdict, expected, tail.file + ": " + entry.path, result.findings);
    }
  }
  requireArchives(tail, result.findings);
}

void checkBundleFolder(const std::string& path, const PublicKey* given, bool isStrict,
                       VerifyResult& result) {
  const BundleView bundle = readBundle(path, result.findings);
  if (bundle.tail) {
    verifyTail(*bundle.tail, given, expectedArchivesOf(bundle), result);
  }
  result.uncovered = {"Info.plist", "the launcher", "elev_mac", "the parameters",
                      "the tail's records, tools and pictures"};
  if (isStrict) {
    checkStrictly(bundle, result.findings);
  }
}

void verifyArchivePath(const std::string& path, bool compressed, const PublicKey* key,
                       VerifyResult& result) {
  result.verdicts.push_back(verifyRegion(wholeFile(path), compressed, path, key, result.findings));
  checkReleaseIdentity(path, result.verdicts.back().identity, result.findings);
}

const char* asText(Trust trust) {
  switch (trust) {
    case Trust::kVerified:
      return "signed";
    case Trust::kUnsigned:
      return "unsigned";
    case Trust::kUnchecked:
      return "signed, not checked";
    case Trust::kBroken:
      break;
  }
  return "BROKEN";
}

// What cannot be looked at is a finding among others: the paths behind it are looked at too.
VerifyResult verifyOrReport(const std::string& path, const VerifyOptions& options) {
  try {
    return verifyPath(path, options.key, options.isStrict);
  } catch (const PackError& e) {
    stopIfInterrupted();
    VerifyResult result;
    result.findings.push_back(e.finding());
    return result;
  }
}

void sayUncovered(const std::string& path, const std::vector<std::string>& uncovered, bool isStrict,
                  Reporter& reporter) {
  reporter.line(path + ": no signature of ours covers " + joined(uncovered, ", ") +
                (isStrict ? "" : "; --strict compares what can be compared"));
}

int runVerify(const VerifyOptions& options, Reporter& reporter) {
  if (!options.key.empty()) {
    PublicKey::load(options.key);  // or nothing can be checked
  }
  bool good = true;
  bool allChecked = true;
  Json verdicts = Json::array();
  Json uncovered = Json::object();
  for (const std::string& path : options.paths) {
    const VerifyResult result = verifyOrReport(path, options);
    for (const Verdict& verdict : result.verdicts) {
      const std::string name = verdict.archive == path ? path : path + ": " + verdict.archive;
      verdicts.push_back(
          {{"archive", name}, {"result", asText(verdict.trust)}, {"client", verdict.client}});
      allChecked = verdict.trust != Trust::kUnchecked && allChecked;
      reporter.result(std::string(asText(verdict.trust)) + ": " + name + ": " + verdict.client);
    }
    reporter.findings(result.findings);
    if (!result.uncovered.empty()) {
      sayUncovered(path, result.uncovered, options.isStrict, reporter);
      uncovered[path] = result.uncovered;
    }
    good = result.good(!options.key.empty()) && good;
  }
  reporter.value("verdicts", verdicts);
  reporter.value("uncovered", uncovered);
  reporter.value("structure", good ? "good" : "NOT good");
  reporter.value("signature", allChecked && !verdicts.empty() ? "checked" : "not checked");
  // Neither good nor bad: nobody has looked.
  reporter.value("good", good && !allChecked ? Json() : Json(good));
  reporter.line(!good        ? "NOT good"
                : allChecked ? "good"
                             : "structure good; signatures not checked: --key checks them");
  return good ? kDone : kFailed;
}

}  // namespace

Verdict verifyRegion(const FileRegion& region, bool compressed, const std::string& name,
                     const PublicKey* key, Findings& findings) {
  try {
    return verifyArchiveFile(PlainArchive(region, compressed), name, key, findings);
  } catch (const DamagedArchive& e) {
    Finding finding = e.finding();
    finding.place = {name, 0};
    findings.push_back(std::move(finding));
    return {name, Trust::kBroken, "a client cannot unpack it"};
  }
}

Verdict verifyArchiveFile(const PlainArchive& archive, const std::string& name,
                          const PublicKey* key, Findings& findings) {
  Findings own;
  const ArchiveListing listing = archive.list(own, name);
  const auto verdict = [&](Trust trust, const char* client) {
    return Verdict{name, trust, client, listing.identity};
  };
  findings.insert(findings.end(), own.begin(), own.end());
  if (hasErrors(own)) {
    return verdict(Trust::kBroken, "a client stops at the error, or waits for ever");
  }
  if (!listing.signature) {
    return verdict(Trust::kUnsigned, "it is not signed, and a client installs it all the same");
  }
  if (listing.signature->claimedOffset != listing.signature->offset) {
    findings.push_back({Severity::kError,
                        "signature-place",
                        "the signature block says that it stands at " +
                            std::to_string(listing.signature->claimedOffset) + ", and stands at " +
                            std::to_string(listing.signature->offset),
                        {name, 0},
                        ""});
    return verdict(Trust::kBroken, kDeletes);
  }
  if (key == nullptr) {
    return verdict(Trust::kUnchecked,
                   "it is signed; a client without the key deletes what it extracted from it");
  }
  return holds(archive.path(), *listing.signature, *key) ? verdict(Trust::kVerified, kAccepts)
                                                         : verdict(Trust::kBroken, kDeletes);
}

bool VerifyResult::good(bool keyGiven) const {
  const bool anyChecked = std::any_of(verdicts.begin(), verdicts.end(), [](const Verdict& v) {
    return v.trust == Trust::kVerified || v.trust == Trust::kUnchecked;
  });
  return !hasErrors(findings) &&
         std::all_of(verdicts.begin(), verdicts.end(), [&](const Verdict& verdict) {
           return verdict.trust == Trust::kVerified || verdict.trust == Trust::kUnchecked ||
                  (verdict.trust == Trust::kUnsigned && !keyGiven && !anyChecked);
         });
}

VerifyResult verifyPath(const std::string& path, const std::string& keyFile, bool isStrict) {
  std::optional<PublicKey> key;
  if (!keyFile.empty()) {
    key = PublicKey::load(keyFile);
  }
  const PublicKey* given = key ? &*key : nullptr;
  VerifyResult result;
  const FileKind kind = fileKindOf(path);
  if (kind == FileKind::kBundle) {
    checkBundleFolder(path, given, isStrict, result);
  } else if (kind == FileKind::kTail || kind == FileKind::kExecutable) {
    const auto tail = readTail(path, kind == FileKind::kExecutable, result.findings);
    if (!tail) {
      throw noMarker(result.findings, path, "holds no tail marker");
    }
    verifyTail(*tail, given, {}, result);
  } else if (kind == FileKind::kArchive || kind == FileKind::kCompressedArchive) {
    verifyArchivePath(path, kind == FileKind::kCompressedArchive, given, result);
  } else {
    throw PackError("is neither a bundle nor an archive", "", {path, 0});
  }
  return result;
}

Command verifyCommand() {
  const auto options = std::make_shared<VerifyOptions>();
  return {
      "verify",
      "checks structure and signatures as a client would",
      "quillory-pack verify --key mykey.pem dist/release/*.p2.l2",
      {{.name = "PATH",
        .description = "bundles, tails and archives",
        .into = &options->paths,
        .isRequired = true},
       {.name = "--key",
        .description = "a PEM file with either half of the key; a bundle has its own",
        .into = &options->key},
       {.name = "--strict",
        .description = "compare launcher, lzma64, elev_mac and Info.plist of a bundle with what "
                       "this program would put there, and look for other files",
        .into = &options->isStrict}},
      [options](Reporter& reporter) { return runVerify(*options, reporter); }};
}

}  // namespace quillory::pack
