#include "java/jre_provisioning.h"

#include <unistd.h>

#include <optional>

#include "formats/downloads.h"
#include "formats/extraction.h"
#include "install/replacement.h"
#include "install/version_folders.h"
#include "java/jre_bundle.h"
#include "java/jre_download.h"
#include "java/jre_inspection.h"
#include "java/jre_search.h"
#include "support/files.h"
#include "support/log.h"

namespace quillory {
namespace {

constexpr char kOfflineSection[] = "Extracting Offline JRE";
constexpr char kOnlineSection[] = "Setting up online JRE";

std::string finalFolder(const JrePlace& place, const std::string& version) {
  return versionFolder(place.masterFolder, place.name.text(), version);
}

// What every JRE gets, however it came, and also one that was there before; while it is not yet
// behind its alias, so that a start which is killed here leaves none that looks complete.
void completeJre(const JreRequest& request, const std::string& bundle, const ShapedJre& jre) {
  logMessage("[Extractor] JRE setup. Overriding cacerts.\n");
  replaceTrustStore(request.caCerts, jre.alias, jre.content);
  chmod777(bundle.c_str());
  logMessage("[Extractor] Ensuring JRE bin is writable.\n");
  chmod777((bundle + "/bin").c_str());
  // Where a bundle was made of a Java home, that folder is behind the alias by now. Whoever starts
  // the application puts a copy of java there, which need not be the user who installed.
  const std::string bin = jre.content + "/bin";
  if (isFolder(bin)) openAsInstalled(bin);
}

std::string prepareAndComplete(const JreRequest& request, const std::string& bundle) {
  const ShapedJre jre = shapeJreBundle(bundle);
  completeJre(request, bundle, jre);
  publishJre(jre);
  return bundle;
}

// As isHealthyJre(), without its log lines.
bool isWorthKeeping(const std::string& folder) {
  return !isLink(folder) && access((folder + "/bin/java").c_str(), R_OK) == 0 &&
         access((folder + "/lib/rt.jar").c_str(), R_OK) == 0;
}

// Moves the JRE in `temporary` into place, over what is there.
JreOutcome<std::string> installJre(const JreRequest& request, const std::string& temporary,
                                   const std::string& folder) {
  const std::string bundle = folder + kBundleSuffix;
  if (request.tools.isHardened && !holdsJava(temporary)) {
    logError("[Extractor] No usable JRE was extracted. What is installed stays as it is\n");
    removeTree(temporary);
    return {};
  }
  // An archive whose signature did not hold leaves nothing. That is moved into place like any JRE
  // (the next start finds it broken and tries again), but not at the price of one that works.
  if (!holdsJava(temporary) && holdsJava(folder)) {
    logError("[Extractor] No usable JRE was extracted, keeping the one in %s\n", folder.c_str());
    removeTree(temporary);
    return {.provided = prepareAndComplete(request, bundle)};
  }
  // One that works stays behind its alias until the new one is complete. What is broken is not
  // worth keeping, and no link is left that the new one would be reached through.
  if (!isWorthKeeping(folder)) removeTree(folder);
  // Flushed when it is published: until then nobody takes it for whole.
  putInPlace(temporary, bundle, Durability::kLeftToTheSystem);
  logMessage("[Extractor] Renamed JRE folder to %s\n", bundle.c_str());
  return {.provided = prepareAndComplete(request, bundle)};
}

ExtractionResult extractFromTail(const JreRequest& request, const std::string& folder) {
  const std::string unpack200 = unpack200Of(folder);
  logMessage("[Extractor] UP200 path is %s\n", unpack200.c_str());
  logMessage("[Extractor] Extracting JRE archive...\n");
  std::optional<MetSignature> unused;  // Of the tail, which has none; the archive has its own.
  const ExtractionTools tools = {request.tools.lzmaTool.c_str(), unpack200.c_str()};
  ExtractionResult result =
      extractEntry(tools, folder, request.embedded.tail, unused,
                   request.tools.trustIn(request.embedded.name, request.embedded.version));
  if (result.isFailure()) return result;
  logMessage("[Extractor] Extracted JRE %s\n", request.place.name.text().c_str());
  return result;
}

JreOutcome<std::string> provideOffline(const JreRequest& request) {
  logStartSection(kOfflineSection);
  logMessage("[Extractor] We want to query the JRE version to enable proxy detection.\n");
  downloadVersionFile(request.server.versionFileFolder.c_str(), request.server.url.c_str(),
                      request.place.name.text().c_str());
  const std::string temporary = temporaryFolder(request.place.masterFolder);
  makeNewDir(temporary.c_str());
  const std::string folder = finalFolder(request.place, request.embedded.version);
  logMessage("[Extractor] Offline installer - no need to download JRE, will extract\n");
  const ExtractionResult extracted = extractFromTail(request, temporary);
  if (extracted.isFailure()) {
    removeTree(temporary);
    return {.exitStatus = exitStatusOf(extracted)};
  }
  logMessage("[Extractor] Regenerating jsa...\n");
  regenerateSharedArchive(temporary);
  logEndSection(kOfflineSection);
  return installJre(request, temporary, folder);
}

// The path of an installed JRE that a start would accept.
std::optional<std::string> findHealthyJre(const JrePlace& place) {
  const std::optional<std::string> newest =
      newestVersionFolder(place.masterFolder, place.name.text());
  if (!newest) return std::nullopt;
  std::string folder = place.masterFolder + '/' + *newest;
  if (!isHealthyJre(folder)) return std::nullopt;
  return folder;
}

std::string useInstalled(const JreRequest& request, const std::string& folder) {
  logMessage("[Extractor] Using the installed JRE %s\n", folder.c_str());
  // Killed between its move into place and its preparation, a plain Java home stands there as a
  // bundle without its alias.
  if (folder.ends_with(kBundleSuffix)) return prepareAndComplete(request, folder);
  const std::string bundle = folder + kBundleSuffix;
  // Versions before this one moved what is in the home piece by piece: the rest follows.
  if (isHalfMade(folder)) prepareJreBundle(bundle);
  completeJre(request, bundle, {.alias = folder, .content = folder});
  return bundle;
}

// A copy of one of the system, or else a downloaded one, in a temporary folder.
JreOutcome<FetchedJre> fetchJre(const JreRequest& request) {
  const SystemJreSearch search = copySystemJre(request.place.masterFolder, request.system);
  if (search.isCutShort) return {};
  if (search.copy) return {.provided = FetchedJre{kSystemJreVersion, *search.copy}};
  return downloadJre(request.place, request.server, request.tools, request.display);
}

JreOutcome<std::string> provideOnline(const JreRequest& request) {
  logStartSection(kOnlineSection);
  logMessage(
      "[Extractor] Online installer - no stored JRE, will check for compatible system JRE\n");
  const JreOutcome<FetchedJre> fetched = fetchJre(request);
  if (!fetched.provided) return {.exitStatus = fetched.exitStatus};
  const FetchedJre& jre = *fetched.provided;
  logMessage("[JREDownload] Finalising setup of new JRE %s\n", jre.version.c_str());
  const std::string folder = finalFolder(request.place, jre.version);
  logEndSection(kOnlineSection);
  return installJre(request, jre.folder, folder);
}

}  // namespace

JreOutcome<std::string> provisionJre(const JreRequest& request) {
  logMessage("[Extractor] Setting up a JRE\n");
  if (!request.embedded.version.empty()) return provideOffline(request);
  if (const std::optional<std::string> healthy = findHealthyJre(request.place))
    return {.provided = useInstalled(request, *healthy)};
  return provideOnline(request);
}

}  // namespace quillory
