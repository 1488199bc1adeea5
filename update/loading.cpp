#include "update/loading.h"

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "formats/tail_format.h"
#include "formats/text_encodings.h"
#include "formats/whole_archive.h"
#include "install/closed_installation.h"
#include "install/version_folders.h"
#include "java/jre_bundle.h"
#include "java/jre_inspection.h"
#include "support/durable.h"
#include "support/file_modes.h"
#include "support/files.h"
#include "support/log.h"
#include "support/output_file.h"
#include "support/paths.h"
#include "update/archive_source.h"
#include "update/cancel.h"
#include "update/staged.h"
#include "update/update_folder.h"

namespace quillory::update {
namespace {

constexpr FetchEnd kLoaded = FetchEnd::kComplete;
constexpr std::int64_t kRoomToSpare = 16 * 1024 * 1024;

FetchResult notWritten(const std::string& path, const std::string& why) {
  return {FetchEnd::kNotWritten, path + ": " + why};
}

FetchResult notWritten(const std::string& path) { return notWritten(path, std::strerror(errno)); }

// A key that lives as long as the block that it is asked in.
class ImportedKey {
 public:
  explicit ImportedKey(const std::string& hex) {
    const std::vector<unsigned char> der = bytesOfHex(hex);
    isKey_ = importPublicKey(der.data(), static_cast<int>(der.size()), &key_);
  }
  ~ImportedKey() {
    if (isKey_) rsa_free(&key_);
  }
  ImportedKey(const ImportedKey&) = delete;
  ImportedKey& operator=(const ImportedKey&) = delete;
  Rsa_key* get() { return isKey_ ? &key_ : nullptr; }

 private:
  Rsa_key key_ = {};
  bool isKey_ = false;
};

// One component on its way to the staging folder.
class Staging {
 public:
  Staging(const LoadRequest& request, const PlannedComponent& planned)
      : request_(request),
        planned_(planned),
        archive_(makingFolder(request.installation, planned.component.plainSha256 + ".p2")),
        making_(makingFolder(request.installation, planned.folder)),
        staged_(stagedFolder(request.installation, planned.folder)) {}
  ~Staging() {
    removeFileOrLink(archive_);
    removeTree(making_);
  }
  Staging(const Staging&) = delete;
  Staging& operator=(const Staging&) = delete;

  FetchResult run(LoadProgress& progress) {
    FetchResult result = provideArchive(request_, planned_, archive_, progress);
    if (result.end == kLoaded) result = unpack();
    if (result.end == kLoaded) result = complete();
    return result.end == kLoaded ? finish() : result;
  }

 private:
  const ReleaseComponent& component() const { return planned_.component; }
  bool isRuntime() const { return component().role == kRuntimeRole; }

  void tell(const char* what) const {
    request_.lines(Line("step").with("what", what).with("component", component().role));
  }

  // Which key has signed it nobody says: with several the archive is kept for the next one.
  FetchResult unpack() {
    tell("verify");
    const std::string again = archive_ + ".again";
    FetchResult result{FetchEnd::kFailed, "there is no key to verify archives with"};
    for (std::size_t i = 0; i < request_.keys.size(); ++i) {
      removeFileOrLink(again);
      const bool isLast = i + 1 == request_.keys.size();
      if (!isLast && link(archive_.c_str(), again.c_str()) != 0) return notWritten(again);
      result = unpackWith(request_.keys[i]);
      if (result.end == FetchEnd::kFailed && !isLast &&
          std::rename(again.c_str(), archive_.c_str()) == 0)
        continue;
      break;
    }
    removeFileOrLink(again);
    return result;
  }

  FetchResult unpackWith(const std::string& keyHex) {
    removeTree(making_);
    if (makeNewDir(making_.c_str()) != 0) return notWritten(making_);
    ImportedKey key(keyHex);
    const ArchiveTrust trust{
        key.get(), true,
        ArchiveIdentity{component().name, component().version, std::string(thisPlatform())}};
    const std::string unpack200 = unpack200Path();
    const ExtractionResult extracted = extractAllOf(unpack200.c_str(), archive_, making_, trust);
    if (extracted.end == ExtractionEnd::kArchiveRejected)
      return {FetchEnd::kFailed, component().archive.name + ": " + extracted.reason};
    if (extracted.isFailure())
      return notWritten(extracted.path.empty() ? making_ : extracted.path, extracted.reason);
    return {kLoaded, ""};
  }

  // Of the runtime that a start would use: archives may hold what only it can unpack.
  std::string unpack200Path() const {
    const std::vector<InstalledVersion> runtimes = runtimeVersions(request_.installation);
    if (runtimes.empty()) return "";
    const std::string& master = request_.installation.masterFolder;
    const std::string path =
        joinPath(master, runtimes.front().folder + kBundleSuffix, "Contents/Home/bin/unpack200");
    const bool isAdministrators = geteuid() == 0 && usesOnlyTrusted();
    return isAdministrators && !isOutOfReach(master, path) ? "" : path;
  }

  FetchResult complete() {
    if (isCancelled) return {FetchEnd::kCancelled, "cancelled"};
    if (isRuntime()) return completeRuntime();
    if (component().role == kUpdaterRole) {
      const FetchResult carried = carryOver();
      if (carried.end != kLoaded) return carried;
    }
    return noteArchive();
  }

  // As a launcher completes one, but beside its place; see java/jre_provisioning.cpp.
  FetchResult completeRuntime() {
    if (!holdsJava(making_))
      return {FetchEnd::kFailed, component().archive.name + " holds no usable Java runtime"};
    regenerateSharedArchive(making_);
    const std::string alias = joinPath(request_.installation.masterFolder, planned_.folder);
    const ShapedJre jre = shapeJreBeside(making_, alias);
    const std::string trustStore = joinPath(request_.installation.updaterFolder, kTrustStoreName);
    if (replaceTrustStore(trustStore, jre.alias, jre.content) != 0)
      return notWritten(jre.content, "the trust store cannot be copied");
    openAsInstalled(making_);
    openAsInstalled(jre.content);
    openAsInstalled(joinPath(jre.content, "bin"));
    const FetchResult noted = noteArchive();
    if (noted.end != kLoaded) return noted;
    const std::string home = staged_ + kStagedHomeSuffix;
    removeTree(home);
    syncTree(making_);
    if (std::rename(jre.content.c_str(), home.c_str()) != 0) return notWritten(home);
    return {kLoaded, ""};
  }

  // What a bundle puts beside the updater's archive, and the next start of a launcher looks for.
  FetchResult carryOver() const {
    for (const char* const name : {kLzmaToolName, kSplashPictureName, kTrustStoreName}) {
      const std::string from = joinPath(request_.installation.updaterFolder, name);
      const std::string to = joinPath(making_, name);
      if (access(to.c_str(), F_OK) == 0 || access(from.c_str(), F_OK) != 0) continue;
      if (copyFile(from.c_str(), to.c_str()) != 0) return notWritten(to, "it cannot be copied");
      if (name == std::string_view(kLzmaToolName)) openAsInstalled(to);
    }
    return {kLoaded, ""};
  }

  FetchResult noteArchive() const {
    OutputFile file(joinPath(making_, kArchiveHashFile), ExactMode{0644},
                    Durability::kLeftToTheSystem);
    const std::string text = component().plainSha256 + '\n';
    if (file.isOpen() && file.write(text.data(), text.size()) && file.commit())
      return {kLoaded, ""};
    return notWritten(file.error(), "cannot be written");
  }

  FetchResult finish() {
    if (!isRuntime()) openAsInstalled(making_);
    if (!syncTree(making_)) return notWritten(making_);
    removeTree(staged_);
    if (std::rename(making_.c_str(), staged_.c_str()) != 0) return notWritten(staged_);
    syncFolder(stagingFolder(request_.installation));
    return {kLoaded, ""};
  }

  const LoadRequest& request_;
  const PlannedComponent& planned_;
  const std::string archive_;
  const std::string making_;
  const std::string staged_;
};

std::string megabytes(std::int64_t bytes) {
  constexpr std::int64_t kMegabyte = 1000 * 1000;
  return std::to_string((bytes + kMegabyte - 1) / kMegabyte) + " MB";
}

// A disk that would be full at the end is full for others before it.
FetchResult checkRoom(const Installation& installation, const Plan& plan) {
  struct statvfs found {};
  if (statvfs(installation.updatesFolder().c_str(), &found) != 0) return {kLoaded, ""};
  const auto free =
      static_cast<std::int64_t>(found.f_bavail) * static_cast<std::int64_t>(found.f_frsize);
  const std::int64_t needed = plan.room() + kRoomToSpare;
  if (free >= needed) return {kLoaded, ""};
  return notWritten(installation.updatesFolder(),
                    megabytes(needed) + " are needed, and " + megabytes(free) + " are free");
}

std::vector<ReleaseFile> filesOf(const Plan& plan) {
  std::vector<ReleaseFile> files;
  for (const PlannedComponent& planned : plan.components) {
    files.push_back(planned.component.archive);
    if (planned.road) files.push_back(planned.road->delta.file);
  }
  return files;
}

FetchResult makeFolders(const Installation& installation) {
  for (const std::string& folder :
       {installation.inUpdates(kDownloadsFolder), stagingFolder(installation)})
    if (!makeDirWithParents(folder)) return notWritten(folder);
  return {kLoaded, ""};
}

}  // namespace

FetchResult load(const LoadRequest& request, const Plan& plan) {
  const Installation& installation = request.installation;
  FetchResult result = makeFolders(installation);
  if (result.end != kLoaded) return result;
  std::vector<std::string> folders;
  for (const PlannedComponent& planned : plan.components)
    if (planned.isStaged) folders.push_back(planned.folder);
  clearStaging(installation, folders);
  clearDownloads(installation.inUpdates(kDownloadsFolder), filesOf(plan));
  result = checkRoom(installation, plan);
  if (result.end != kLoaded) return result;

  Progress progress(request.lines);
  LoadProgress counted{progress, 0, plan.size()};
  progress.expect(counted.total);
  for (const PlannedComponent& planned : plan.components) {
    if (planned.isStaged) continue;
    result = Staging(request, planned).run(counted);
    if (result.end != kLoaded) return result;
  }
  clearDownloads(installation.inUpdates(kDownloadsFolder), {});
  return result;
}

}  // namespace quillory::update
