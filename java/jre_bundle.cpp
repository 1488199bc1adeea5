#include "java/jre_bundle.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "install/replacement.h"
#include "java/jre_inspection.h"
#include "support/files.h"
#include "support/folder_listing.h"
#include "support/log.h"
#include "support/steady_file.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kExecutableForEveryone = 0111;

// The steps are those of a handful of shell commands, whose texts are what a log shows. They are
// carried out without a shell: a folder name may hold whatever a shell would expand.
void logCommand(const std::string& command) { logMessage("[LNS] Running %s\n", command.c_str()); }

std::string quoted(const std::string& path) { return '"' + path + '"'; }

bool isHidden(const std::string& name) { return name.front() == '.'; }

std::string linkTarget(const std::string& path) {
  std::error_code ignored;
  return fs::read_symlink(path, ignored).string();
}

// As ln -s. A failure is found by isHalfMade(), where it matters.
void makeLink(const std::string& target, const std::string& link) {
  inTwoTries([&] { return symlink(target.c_str(), link.c_str()) == 0 || errno == EEXIST; });
}

// The path without the suffix, or "" when it does not end so.
std::string aliasOf(std::string_view bundle) {
  if (!bundle.ends_with(kBundleSuffix)) return "";
  bundle.remove_suffix(sizeof kBundleSuffix - 1);
  return bundle.ends_with('/') ? "" : std::string(bundle);
}

void moveInto(const std::string& folder, const std::string& name, const std::string& target) {
  const std::string from = folder + '/' + name;
  const std::string to = target + '/' + name;
  // What is being provisioned replaces what is there, also a filled folder.
  if (std::rename(from.c_str(), to.c_str()) == 0) return;
  removeTree(to);
  (void)std::rename(from.c_str(), to.c_str());
}

// A Java home without a bundle around it, as the copy of a system JRE can be, gets one; also where
// a start was killed that had begun to.
void wrapPlainHome(const std::string& bundle) {
  const std::string contents = bundle + "/Contents";
  const std::string home = contents + "/Home";
  if (isLink(home) || access((home + "/bin/java").c_str(), F_OK) == 0) return;
  if (access((bundle + "/bin/java").c_str(), F_OK) != 0) return;
  logMessage("[OSX JRE] %s is a Java home, making a bundle of it\n", bundle.c_str());
  makeDir(contents.c_str());
  makeDir((contents + "/MacOS").c_str());
  makeDir(home.c_str());
  for (const std::string& name : namesIn(bundle))
    if (name != "Contents") moveInto(bundle, name, home);
}

// The one entry of Contents/MacOS, and what it links to.
struct BundleExecutable {
  std::string folder;
  std::string path;        // empty without exactly one entry
  bool isMissing = false;  // the folder is there, and empty
  std::string quotedPath;
  std::string target;  // empty when it is no link
};

BundleExecutable findExecutable(const std::string& bundle) {
  const std::string folder = bundle + "/Contents/MacOS";
  logCommand("ls " + quoted(folder));
  std::vector<std::string> names = namesIn(folder);
  std::erase_if(names, isHidden);
  std::string listing;
  for (const std::string& name : names) listing += (listing.empty() ? "" : "\n") + name;
  logMessage("[LNS] Got executable name: %s\n", listing.c_str());

  BundleExecutable executable;
  executable.folder = folder;
  executable.isMissing = names.empty() && isRealFolder(folder);
  executable.quotedPath = quoted(folder + '/' + listing);
  // Which of several is the executable cannot be told: they stay as they are.
  if (names.size() == 1) executable.path = folder + '/' + listing;
  logCommand("/usr/bin/readlink " + executable.quotedPath);
  if (!executable.path.empty()) executable.target = linkTarget(executable.path);
  logMessage("[LNS] Got target path: %s\n", executable.target.c_str());
  return executable;
}

std::string findHome(const std::string& bundle) {
  const std::string home = bundle + "/Contents/Home";
  const std::string subJre = home + "/jre";
  if (doesFileExist(subJre.c_str()) || isLink(subJre)) {
    logMessage("[LNS] Detected subJRE in JDK bundle\n");
    return subJre;
  }
  logMessage("[LNS] Detected JRE bundle\n");
  return home;
}

// Where the content of a home waits for its alias.
std::string stagingOf(const std::string& bundle) { return bundle + "/Contents/.Home"; }

// Afterwards `home` is a link to `alias`, and what was in it is at `staging`; hidden entries are
// dropped. A home that is a link already was moved before: nothing is moved or removed through it.
// Returns where the content is.
std::string takeHome(const std::string& home, const std::string& alias,
                     const std::string& staging) {
  const bool hasContent = isRealFolder(home);
  logCommand("mv " + quoted(home) + "/* " + quoted(alias));
  logCommand("rm " + quoted(home) + "/.* ");
  for (const std::string& name : hasContent ? namesIn(home) : std::vector<std::string>())
    if (isHidden(name)) removeTree(home + '/' + name);

  logCommand("rmdir " + quoted(home));
  if (hasContent) {
    removeTree(staging);
    if (!inTwoTries([&] { return std::rename(home.c_str(), staging.c_str()) == 0; })) return home;
  }

  logCommand("ln -s " + quoted(alias) + ' ' + quoted(home));
  // A link from elsewhere, as after the whole folder was moved, is made anew.
  if (isLink(home)) unlink(home.c_str());
  makeLink(alias, home);
  return isRealFolder(staging) ? staging : alias;
}

bool doesContentHave(const ShapedJre& jre, const char* file) {
  if (access((jre.content + file).c_str(), R_OK) != 0) return false;
  logMessage("File exists: %s%s\n", jre.alias.c_str(), file);
  return true;
}

// What the bundle's executable shall link to, or "".
std::string chooseTarget(const BundleExecutable& executable, const ShapedJre& jre) {
  if (!executable.target.empty()) return executable.target;
  for (const char* const library : {"/lib/libnpjp2.dylib", "/lib/jli/libjli.dylib"})
    if (doesContentHave(jre, library)) return jre.alias + library;
  return "";
}

void relinkExecutable(const BundleExecutable& executable, const ShapedJre& jre) {
  logCommand("rm " + executable.quotedPath);
  if (!executable.path.empty() && !isRealFolder(executable.path)) unlink(executable.path.c_str());

  const std::string target = chooseTarget(executable, jre);
  if (target.empty()) {
    logMessage("[WARNING] Unable to find a link target for the JRE bundle!\n");
    return;
  }
  logCommand("ln -s " + quoted(target) + ' ' + executable.quotedPath);
  if (executable.path.empty() && !executable.isMissing) return;
  // A link that is made in a folder gets the name of its target.
  const fs::path link = executable.isMissing
                            ? fs::path(executable.folder) / fs::path(target).filename()
                            : fs::path(executable.path);
  makeLink(target, link);
}

void makeSpawnHelperExecutable(const ShapedJre& jre) {
  constexpr char kHelper[] = "/lib/jspawnhelper";
  logCommand("chmod a+x " + quoted(jre.alias + kHelper));
  const std::string helper = jre.content + kHelper;
  struct stat info = {};
  if (lstat(helper.c_str(), &info) == 0 && S_ISREG(info.st_mode))
    chmod(helper.c_str(), info.st_mode | kExecutableForEveryone);
}

// The alias, as it is or else empty.
void makeAlias(const std::string& alias) {
  if (isRealFolder(alias)) {
    chmod777(alias.c_str());
  } else {
    makeDir(alias.c_str());
  }
}

ShapedJre shape(const std::string& bundle, const std::string& alias,
                void (*prepareAlias)(const std::string& alias)) {
  ShapedJre jre = {alias, ""};
  logStartSection("OSX JRE initialisation");
  logMessage("[OSX JRE] Alias JRE path is %s\n", jre.alias.c_str());
  wrapPlainHome(bundle);
  const BundleExecutable executable = findExecutable(bundle);
  prepareAlias(jre.alias);
  jre.content = takeHome(findHome(bundle), jre.alias, stagingOf(bundle));
  relinkExecutable(executable, jre);
  makeSpawnHelperExecutable(jre);
  logEndSection("OSX JRE initialisation");
  return jre;
}

}  // namespace

ShapedJre shapeJreBundle(const std::string& bundle) {
  return shape(bundle, aliasOf(bundle), makeAlias);
}

ShapedJre shapeJreBeside(const std::string& bundle, const std::string& alias) {
  return shape(bundle, alias, [](const std::string&) {});
}

void publishJre(const ShapedJre& jre) {
  if (jre.content == jre.alias) return;
  // The content was a folder of an archive; the alias has the mode of what is installed.
  struct stat alias = {};
  if (lstat(jre.alias.c_str(), &alias) == 0 && S_ISDIR(alias.st_mode))
    chmod(jre.content.c_str(), alias.st_mode & 07777);
  if (!replaceFolder(jre.content, jre.alias)) doRename(jre.content.c_str(), jre.alias.c_str());
}

std::string prepareJreBundle(const std::string& bundle) {
  const std::string alias = aliasOf(bundle);
  if (alias.empty()) {
    logError("[OSX JRE] %s is no JRE bundle\n", bundle.c_str());
    return bundle;
  }
  const ShapedJre jre = shapeJreBundle(bundle);
  if (jre.content == jre.alias) return jre.alias;
  // What else the alias holds stays there, as it does behind the command.
  for (const std::string& name : namesIn(jre.content)) moveInto(jre.content, name, jre.alias);
  rmdir(jre.content.c_str());
  return jre.alias;
}

bool isWholeJre(const std::string& jreFolder) {
  return isHealthyJre(jreFolder) && !isHalfMade(jreFolder);
}

bool isHalfMade(const std::string& jreFolder) {
  if (jreFolder.ends_with(kBundleSuffix)) return true;
  const std::string contents = jreFolder + kBundleSuffix + "/Contents";
  const std::string home = contents + "/Home";
  // Of a JDK the inner "jre" is the link.
  if (isRealFolder(home)) return !isLink(home + "/jre");
  return isRealFolder(contents) && !isLink(home);
}

}  // namespace quillory
