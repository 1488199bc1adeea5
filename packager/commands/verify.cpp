#include "packager/commands/verify.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "formats/archive_signature.h"
#include "packager/keys/mixed_digest.h"
#include "packager/reading/archive_checks.h"
#include "packager/reading/bundle_view.h"
#include "packager/reading/file_kind.h"

namespace quillory::pack {
namespace {

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

void verifyTail(const TailView& tail, const PublicKey* given, VerifyResult& result) {
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
      result.verdicts.push_back(verifyRegion(tail.regionOf(entry), isCompressed(entry), entry.path,
                                             key, result.findings));
    }
  }
  requireArchives(tail, result.findings);
}

void checkBundleFolder(const std::string& path, const PublicKey* given, VerifyResult& result) {
  const BundleView bundle = readBundle(path, result.findings);
  if (bundle.tail) {
    verifyTail(*bundle.tail, given, result);
  }
}

void verifyArchivePath(const std::string& path, bool compressed, const PublicKey* key,
                       VerifyResult& result) {
  result.verdicts.push_back(verifyRegion(wholeFile(path), compressed, path, key, result.findings));
}

}  // namespace

Verdict verifyRegion(const FileRegion& region, bool compressed, const std::string& name,
                     const PublicKey* key, Findings& findings) {
  try {
    return verifyArchiveFile(PlainArchive(region, compressed), name, key, findings);
  } catch (const PackError& e) {
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
  findings.insert(findings.end(), own.begin(), own.end());
  if (hasErrors(own)) {
    return {name, Trust::kBroken, "a client stops at the error, or waits for ever"};
  }
  if (!listing.signature) {
    return {name, Trust::kUnsigned, "it is not signed, and a client installs it all the same"};
  }
  if (listing.signature->claimedOffset != listing.signature->offset) {
    findings.push_back({Severity::kError,
                        "signature-place",
                        "the signature block says that it stands at " +
                            std::to_string(listing.signature->claimedOffset) + ", and stands at " +
                            std::to_string(listing.signature->offset),
                        {name, 0},
                        ""});
    return {name, Trust::kBroken, kDeletes};
  }
  if (key == nullptr) {
    return {name, Trust::kUnchecked,
            "it is signed; a client without the key deletes what it extracted from it"};
  }
  return holds(archive.path(), *listing.signature, *key) ? Verdict{name, Trust::kVerified, kAccepts}
                                                         : Verdict{name, Trust::kBroken, kDeletes};
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

VerifyResult verifyPath(const std::string& path, const std::string& keyFile) {
  std::optional<PublicKey> key;
  if (!keyFile.empty()) {
    key = PublicKey::load(keyFile);
  }
  const PublicKey* given = key ? &*key : nullptr;
  VerifyResult result;
  const FileKind kind = fileKindOf(path);
  if (kind == FileKind::kBundle) {
    checkBundleFolder(path, given, result);
  } else if (kind == FileKind::kTail || kind == FileKind::kExecutable) {
    const auto tail = readTail(path, kind == FileKind::kExecutable, result.findings);
    if (!tail) {
      throw noMarker(result.findings, path, "holds no tail marker");
    }
    verifyTail(*tail, given, result);
  } else if (kind == FileKind::kArchive || kind == FileKind::kCompressedArchive) {
    verifyArchivePath(path, kind == FileKind::kCompressedArchive, given, result);
  } else {
    throw PackError("is neither a bundle nor an archive", "", {path, 0});
  }
  return result;
}

}  // namespace quillory::pack
