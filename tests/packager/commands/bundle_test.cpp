// Bundles as the command makes them, looked at with other eyes than those that made them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "formats/markers.h"
#include "packager/writing/tail_writer.h"
#include "tests/harness/child_process.h"
#include "tests/harness/records.h"
#include "tests/packager/project_fixture.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::StartsWith;

// Every file below a folder with its content.
std::map<std::string, std::string> contentOf(const std::string& folder) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) {
      files[entry.path().string().substr(folder.size())] = readFile(entry.path());
    }
  }
  return files;
}

std::vector<std::string> namesOf(const std::map<std::string, std::string>& files) {
  std::vector<std::string> names;
  for (const auto& [name, content] : files) {
    names.push_back(name);
  }
  return names;
}

std::string unpacked(const std::string& path) {
  return runChild({"xz", "--format=lzma", "-dc", path}).out;
}

TEST(Bundle, HasTheFilesOfABundleAndOfARelease) {
  Project project;
  const std::string bundle = bundleOf(project, project.config(kRuntime));
  EXPECT_EQ(bundle, project / "dist/Hello.app");
  EXPECT_EQ(
      namesOf(contentOf(project / "dist")),
      (std::vector<std::string>{
          "/Hello.app/Contents/Info.plist", "/Hello.app/Contents/MacOS/Hello",
          "/Hello.app/Contents/Resources/AppParams.excludefromsigning",
          "/Hello.app/Contents/Resources/Tail", "/release/Quillory-Hello-3-archive.p2.l2",
          "/release/Quillory-Hello-version.txt", "/release/Quillory-JRE-170000900-archive.p2.l2",
          "/release/Quillory-JRE-version.txt", "/release/Quillory-Quillory-1-archive.p2.l2",
          "/release/Quillory-Quillory-version.txt"}));
  EXPECT_EQ(readFile(bundle + "/Contents/MacOS/Hello"), readFile(project / "launcher"));
  EXPECT_NE(modeOf(bundle + "/Contents/MacOS/Hello") & 0100, 0u);
  EXPECT_EQ(readFile(project / "dist/release/Quillory-Hello-version.txt"), "3\n");
}

TEST(Bundle, HasATailInTheOrderThatTheLauncherReads) {
  Project project;
  writeFile(project / "cacerts", "certificates");
  const std::string bundle =
      bundleOf(project, project.config("min-splash-ms = 500\n"
                                       "splash-override = true\n"
                                       "[install]\nfor = \"all-users\"\nsilent-switch = \"-q\"\n"
                                       "required-java = 8\n"
                                       "[update]\nurl = \"https://example.com/u\"\n") +
                            kRuntime);
  const std::string tail = readFile(bundle + "/Contents/Resources/Tail");
  const std::string key = runChild({"sh", "-c",
                                    "openssl rsa -in '" + Project::key() +
                                        "' -pubout -outform DER 2>/dev/null | xxd -p | "
                                        "tr -d '\\n'"})
                              .out;
  const std::string release = project / "dist/release/Quillory-";
  const auto entry = [](const std::string& name, const std::string& content) {
    return records({"0", name, std::to_string(content.size())}) + content;
  };
  EXPECT_EQ(tail, records({"Hello", "3", "170000900", "1", "500", key, "1", "perm_all", "-q", "8",
                           "https://example.com/u"}) +
                      entry("lzma64", readFile(project / "lzma64")) +
                      entry("nativesplash.png", "") + entry("cacerts", "") +
                      entry("verpatch.exe", "") +
                      entry("GU.p2.l2", readFile(release + "Quillory-1-archive.p2.l2")) +
                      entry("JRE.p2.l2", readFile(release + "JRE-170000900-archive.p2.l2")) +
                      entry("App.p2.l2", readFile(release + "Hello-3-archive.p2.l2")) +
                      entry("App2", ""));
}

TEST(Bundle, CarriesSplashCertificatesIconAndElevationTool) {
  Project project;
  const std::string picture("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR\0\0\1\0\0\0\1\0", 24);
  writeFile(project / "splash.png", picture + "splash");
  writeFile(project / "icon.png", picture + "icon");
  writeFile(project / "cacerts", "certificates");
  const std::string tool =
      "\x7f"
      "ELF tool";
  writeFile(project / "elev", tool);
  std::string config = project.config("splash = \"splash.png\"\nicon = \"icon.png\"\n");
  config.replace(config.find("[updater]\n"), 10,
                 "elev-mac = \"elev\"\n[updater]\ncacerts = \"cacerts\"\n");
  const std::string bundle = bundleOf(project, config);
  const std::string tail = readFile(bundle + "/Contents/Resources/Tail");
  EXPECT_THAT(tail, HasSubstr(records({"0", "nativesplash.png", "30"}) + picture + "splash"));
  EXPECT_THAT(tail, HasSubstr(records({"0", "cacerts", "12"}) + "certificates"));
  EXPECT_THAT(readFile(bundle + "/Contents/Resources/Hello.icns"), StartsWith("icns"));
  EXPECT_EQ(readFile(bundle + "/Contents/Resources/elev_mac"), tool);
  EXPECT_NE(modeOf(bundle + "/Contents/Resources/elev_mac") & 0100, 0u);
}

TEST(Bundle, LeavesTheRuntimeOutOfAnOnlineInstaller) {
  Project project;
  const std::string bundle =
      bundleOf(project, project.config("[update]\nurl = \"https://example.com/\"\n"));
  const std::string tail = readFile(bundle + "/Contents/Resources/Tail");
  EXPECT_THAT(tail, StartsWith(records({"Hello", "3", "", "1"})));
  EXPECT_EQ(tail.find("JRE.p2"), std::string::npos);
  EXPECT_FALSE(fs::exists(project / "dist/release/Quillory-JRE-version.txt"));
}

TEST(Bundle, WritesTheDynamicParameters) {
  Project project;
  const std::string bundle =
      bundleOf(project, project.config("[update]\ndynamic = true\nurl = \"https://example.com/\"\n"
                                       "[jvm]\nforce-spawn = true\n"
                                       "[parameters]\nchannel = \"beta\"\n") +
                            kRuntime);
  const std::string params = readFile(bundle + "/Contents/Resources/AppParams.excludefromsigning");
  EXPECT_EQ(params.substr(64),
            records({"6", "jre_name", "JRE", "update_url", "https://example.com/", "force_spawn",
                     "true", "hardened", "true", "error_dialog", "true", "channel", "beta"}));
  EXPECT_THAT(readFile(bundle + "/Contents/Resources/Tail"), HasSubstr(records({"", "D", "0"})));
}

TEST(Bundle, SaysNothingOfItselfWhereItIsNotHardened) {
  Project project;
  const std::string bundle =
      bundleOf(project, project.config("[install]\nhardened = false\n") + kRuntime);
  const std::string params = readFile(bundle + "/Contents/Resources/AppParams.excludefromsigning");
  EXPECT_EQ(params.substr(64), records({"2", "jre_name", "JRE", "error_dialog", "true"}));
  for (const char* part : {"Hello-3", "Quillory-1"}) {
    EXPECT_THAT(unpacked(project / "dist/release/Quillory-" + part + "-archive.p2.l2"),
                StartsWith(records({"0", "QuilloryLaunch"})))
        << part;
  }
}

TEST(Bundle, PutsTheTailBehindTheMarkerInTheExecutableWhenAsked) {
  Project project;
  std::string config = project.config(kRuntime);
  config.replace(config.find("[bundle]\n"), 9, "[bundle]\ntail = \"executable\"\n");
  const std::string bundle = bundleOf(project, config);
  EXPECT_FALSE(fs::exists(bundle + "/Contents/Resources/Tail"));
  EXPECT_THAT(readFile(bundle + "/Contents/MacOS/Hello"),
              StartsWith(readFile(project / "launcher") + quillory::tailMarker() +
                         records({"Hello", "3"})));
}

TEST(Bundle, PacksTheApplicationWithALaunchFile) {
  Project project;
  writeFile(project / "data/a.txt", "A");
  writeFile(project / "manual", "M");
  bundleOf(project, project.config("arguments = [\"-x\", \"y z\"]\n"
                                   "files = [\"data/\", { from = \"manual\", to = \"help/m\" }]\n"
                                   "[jvm]\nmemory-mb = 256\ninitial-memory-mb = 64\n"));
  const std::string archive = unpacked(project / "dist/release/Quillory-Hello-3-archive.p2.l2");
  const std::string launch = records({"6", "com.example.hello.Hello", "", "Hello", "", "0", "256",
                                      "64", "1", "lib/hello.jar", "2", "-x", "y z", "", "", "", "1",
                                      "-Dquillory.arguments=user", "0"});
  const std::string jar = readFile(project / "hello.jar");
  EXPECT_THAT(archive, StartsWith(records({"0", "qyArcSpBlock_Component1;Hello;3;linux", "0"}) +
                                  records({"0", "QuilloryLaunch", std::to_string(launch.size())}) +
                                  launch + records({"1", "data", "0", "data/a.txt", "1"}) + "A" +
                                  records({"0", "help/m", "1"}) + "M" + records({"1", "lib"}) +
                                  records({"0", "lib/hello.jar", std::to_string(jar.size())}) +
                                  jar + records({"0", "qyArcSpBlock_DigitalSignature1", "1"})));
}

TEST(Bundle, PacksTheUpdaterWithTheApplicationsNameAndMemory) {
  Project project;
  bundleOf(project, project.config("[jvm]\nmemory-mb = 256\n"));
  const std::string launch =
      records({"6", "io.quillory.updater.Main", "", "Hello", "", "0", "256", "0", "1",
               "updater.jar", "0", "io.quillory.updater.JreCompatibility", "", "", "0", "0"});
  EXPECT_THAT(unpacked(project / "dist/release/Quillory-Quillory-1-archive.p2.l2"),
              StartsWith(records({"0", "qyArcSpBlock_Component1;Quillory;1;any", "0"}) +
                         records({"0", "QuilloryLaunch", std::to_string(launch.size())}) + launch +
                         records({"0", "updater.jar"})));
}

TEST(Bundle, TakesJarsInTheOrderOfTheClassPathAndEachOnce) {
  Project project;
  fs::create_directory(project / "libs");
  for (const char* name : {"libs/b.jar", "libs/a.jar", "libs/.hidden.jar"}) {
    fs::copy_file(project / "hello.jar", project / name);
  }
  std::string config = project.config();
  config.replace(config.find("[\"hello.jar\"]"), 13,
                 "[\"libs/b.jar\", \"hello.jar\", \"libs/*.jar\"]");
  bundleOf(project, config);
  EXPECT_THAT(unpacked(project / "dist/release/Quillory-Hello-3-archive.p2.l2"),
              HasSubstr(records({"3", "lib/b.jar", "lib/hello.jar", "lib/a.jar", "0"})));
}

TEST(Bundle, HasTheSameBytesForTheSameInput) {
  Project project;
  const std::string config = project.config(kRuntime);
  bundleOf(project, config);
  const auto first = contentOf(project / "dist");
  // Another time, another folder, another umask, another state of the files.
  Project other;
  fs::copy(project.folder().path() / "jre", other.folder().path() / "jre",
           fs::copy_options::overwrite_existing | fs::copy_options::recursive);
  fs::last_write_time(other / "jre/bin/java",
                      fs::file_time_type::clock::now() - std::chrono::hours(9));
  fs::permissions(other / "jre/bin/java", fs::perms(0700));
  bundleOf(other, config);
  EXPECT_EQ(contentOf(other / "dist"), first);
}

TEST(Bundle, DiffersByTheSaltOnlyUnlessItIsDerived) {
  Project project;
  std::string config = project.config();
  config.replace(config.find("derived"), 7, "random");
  bundleOf(project, config);
  const std::string first = unpacked(project / "dist/release/Quillory-Hello-3-archive.p2.l2");
  bundleOf(project, config);
  const std::string second = unpacked(project / "dist/release/Quillory-Hello-3-archive.p2.l2");
  EXPECT_NE(first, second);
  const std::size_t block = first.find("qyArcSpBlock_");
  EXPECT_EQ(first.substr(0, block), second.substr(0, block));
}

// A folder for what was packed before, in the place of none.
class CacheFolder {
 public:
  explicit CacheFolder(const std::string& path) { setenv("QUILLORY_PACK_CACHE", path.c_str(), 1); }
  ~CacheFolder() { setenv("QUILLORY_PACK_CACHE", "", 1); }
  CacheFolder(const CacheFolder&) = delete;
  CacheFolder& operator=(const CacheFolder&) = delete;
};

TEST(Bundle, TakesFromTheCacheWhatHasNotChanged) {
  Project project;
  const CacheFolder cache(project / "cache");
  std::string config = project.config(kRuntime);
  config.replace(config.find("derived"), 7, "random");
  const std::string path = project.writeConfig(config);
  const CommandResult first = pack({"bundle", "--verbose", path});
  EXPECT_EQ(first.err.find("in the cache"), std::string::npos) << first.err;
  const auto made = contentOf(project / "dist");
  const CommandResult second = pack({"bundle", "--verbose", path});
  for (const char* part : {"runtime", "updater", "application"}) {
    EXPECT_THAT(second.err, HasSubstr("the " + std::string(part) + " is in the cache"));
  }
  EXPECT_EQ(contentOf(project / "dist"), made) << "the signatures, too";
  writeFile(project / "jre/lib/modules", "other classes");
  const CommandResult changed = pack({"bundle", "--verbose", path});
  EXPECT_EQ(changed.err.find("the runtime is in the cache"), std::string::npos);
  EXPECT_THAT(changed.err, HasSubstr("the application is in the cache"));
  EXPECT_EQ(pack({"verify", project / "dist/Hello.app"}).status, 0);
}

TEST(Bundle, MakesAnewWhatIsDamagedInTheCacheOrPackedInAnotherWay) {
  Project project;
  const CacheFolder cache(project / "cache");
  const std::string path = project.writeConfig(project.config(kRuntime));
  ASSERT_EQ(pack({"bundle", path}).status, 0);
  const auto made = contentOf(project / "dist");
  for (const auto& entry : fs::directory_iterator(project / "cache")) {
    std::string bytes = readFile(entry.path());
    bytes[bytes.size() / 2] = static_cast<char>(bytes[bytes.size() / 2] ^ 1);
    writeFile(entry.path(), bytes);
  }
  const CommandResult again = pack({"bundle", "--verbose", path});
  EXPECT_EQ(again.status, 0) << again.err;
  EXPECT_EQ(again.err.find("in the cache"), std::string::npos);
  EXPECT_EQ(contentOf(project / "dist"), made);
  for (const char* other : {"--compression=1", "--unsigned", "--no-cache"}) {
    const CommandResult result = pack({"bundle", "--verbose", path, other});
    EXPECT_EQ(result.err.find("in the cache"), std::string::npos) << other;
  }
}

TEST(Bundle, LeavesTheCacheAloneWhenItIsTold) {
  Project project;
  const CacheFolder cache(project / "cache");
  ASSERT_EQ(pack({"bundle", "--no-cache", project.writeConfig(project.config(kRuntime))}).status,
            0);
  EXPECT_FALSE(fs::exists(project / "cache"));
}

TEST(Bundle, ReplacesTheBundleOfAnEarlierRunAndKeepsOlderReleaseFiles) {
  Project project;
  bundleOf(project, project.config());
  writeFile(project / "dist/Hello.app/Contents/left", "over");
  std::string next = project.config();
  next.replace(next.find("version = 3"), 11, "version = 4");
  bundleOf(project, next);
  EXPECT_FALSE(fs::exists(project / "dist/Hello.app/Contents/left"));
  EXPECT_TRUE(fs::exists(project / "dist/release/Quillory-Hello-3-archive.p2.l2"));
  EXPECT_TRUE(fs::exists(project / "dist/release/Quillory-Hello-4-archive.p2.l2"));
  EXPECT_EQ(readFile(project / "dist/release/Quillory-Hello-version.txt"), "4\n");
}

TEST(Bundle, NeverReplacesWhatIsNoBundle) {
  Project project;
  writeFile(project / "dist/Hello.app/mine", "precious");
  const CommandResult result = pack({"bundle", project.writeConfig(project.config())});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("is in the way, and is no bundle"));
  EXPECT_EQ(readFile(project / "dist/Hello.app/mine"), "precious");
}

TEST(Bundle, GoesWhereItIsToldAndFromAnyFolder) {
  Project project;
  TempDir elsewhere;
  const CommandResult result =
      pack({"bundle", project.writeConfig(project.config()), "--output", elsewhere / "out"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, elsewhere / "out/Hello.app\n");
  EXPECT_FALSE(fs::exists(project / "dist"));
}

// A configuration that is not accepted: status 3, the rule, and nothing written.
void expectRejected(const Project& project, const std::string& config, const std::string& rule) {
  const CommandResult result = pack({"bundle", project.writeConfig(config)});
  EXPECT_EQ(result.status, 3) << result.err;
  EXPECT_THAT(result.err, HasSubstr('[' + rule + ']'));
  EXPECT_FALSE(fs::exists(project / "dist/Hello.app"));
  EXPECT_FALSE(fs::exists(project / "dist/release"));
}

TEST(BundleLint, RefusesToPackWithoutAKeyUnlessAsked) {
  Project project;
  std::string config = project.config();
  config.erase(config.find("key = "), config.find("salt") - config.find("key = "));
  expectRejected(project, config, "unsigned");
  const CommandResult result = pack({"bundle", "--unsigned", project.writeConfig(config)});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.err, HasSubstr("warning: the archives are not signed"));
  const std::string archive = unpacked(project / "dist/release/Quillory-Hello-3-archive.p2.l2");
  EXPECT_EQ(archive.find("qyArcSpBlock_"), std::string::npos);
  EXPECT_EQ(archive.back(), '\0');
  EXPECT_THAT(readFile(project / "dist/Hello.app/Contents/Resources/Tail"),
              HasSubstr(records({"1", "0", "", "0", "perm_user"})));
}

TEST(BundleLint, RefusesAKeyThatIsTooShort) {
  Project project;
  ASSERT_EQ(runChild({"openssl", "genrsa", "-out", project / "short.pem", "1032"}).exitStatus, 0);
  std::string config = project.config();
  config.replace(config.find(Project::key()), Project::key().size(), "short.pem");
  expectRejected(project, config, "key-size");
}

TEST(BundleLint, RefusesWhatIsNoSigningKey) {
  Project project;
  writeFile(project / "text.pem", "text");
  const std::string publicHalf = project / "public.pem";
  ASSERT_EQ(
      runChild({"openssl", "rsa", "-in", Project::key(), "-pubout", "-out", publicHalf}).exitStatus,
      0);
  ASSERT_EQ(runChild({"openssl", "ecparam", "-name", "prime256v1", "-genkey", "-noout", "-out",
                      project / "ec.pem"})
                .exitStatus,
            0);
  for (const char* name : {"missing.pem", "jre", "text.pem", "public.pem", "ec.pem"}) {
    std::string config = project.config();
    config.replace(config.find(Project::key()), Project::key().size(), name);
    expectRejected(project, config, "signing-key");
    EXPECT_THAT(pack({"bundle", project / "quillory.toml"}).err,
                HasSubstr("quillory.toml:7: error: " + project / name));
  }
}

TEST(BundleLint, WarnsOfAKeyThatOthersCanRead) {
  Project project;
  fs::copy_file(Project::key(), project / "key.pem");
  fs::permissions(project / "key.pem", fs::perms(0644));
  std::string config = project.config();
  config.replace(config.find(Project::key()), Project::key().size(), "key.pem");
  EXPECT_THAT(pack({"bundle", project.writeConfig(config)}).err, HasSubstr("[key-mode]"));
}

TEST(BundleLint, RefusesARuntimeWithoutJava) {
  Project project;
  fs::remove(project / "jre/bin/java");
  expectRejected(project, project.config(kRuntime), "no-java");
}

TEST(BundleLint, RefusesARuntimeOfUnknownVersion) {
  Project project;
  fs::remove(project / "jre/release");
  expectRejected(project, project.config(kRuntime), "version");
  EXPECT_EQ(pack({"bundle", "-q",
                  project.writeConfig(project.config(kRuntime + std::string("version = 17\n")))})
                .status,
            0);
}

TEST(BundleLint, RefusesAMainClassThatNoJarHas) {
  Project project;
  std::string config = project.config();
  config.replace(config.find("hello.Hello"), 11, "hello.Hullo");
  expectRejected(project, config, "main-class");
}

TEST(BundleLint, RefusesJarsThatAreNotThere) {
  Project project;
  std::string config = project.config();
  config.replace(config.find("[\"hello.jar\"]"), 13, "[\"hello.jar\", \"no/*.jar\"]");
  expectRejected(project, config, "missing-file");
}

TEST(BundleLint, RefusesFilesThatAreNotThere) {
  Project project;
  expectRejected(project, project.config("files = [\"missing\"]\n"), "missing-file");
  expectRejected(project, project.config("files = [{ from = \"missing/\", to = \"x\" }]\n"),
                 "missing-file");
  expectRejected(project, project.config("[runtime]\njlink = true\njdk = \"missing\"\n"),
                 "missing-file");
}

TEST(BundleLint, NamesTheLineOfAFileThatIsNotThere) {
  Project project;
  const std::string path = project.writeConfig(project.config("files = [\"missing\"]\n"));
  EXPECT_THAT(pack({"bundle", path}).err,
              HasSubstr(path + ":15: error: there is no file or folder " + project / "missing"));
}

TEST(BundleLint, RefusesADamagedJar) {
  Project project;
  writeFile(project / "hello.jar", readFile(project / "hello.jar").substr(0, 100));
  const std::string path = project.writeConfig(project.config());
  const CommandResult result = pack({"bundle", path});
  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(result.err, HasSubstr(path + ":13: error: " + project / "hello.jar" +
                                    ": is not a jar, or a damaged one [jar]\n"));
  EXPECT_EQ(result.err.find("[main-class]"), std::string::npos);
  EXPECT_FALSE(fs::exists(project / "dist/Hello.app"));
}

TEST(BundleLint, RefusesAnUpdaterThatCannotBeStarted) {
  Project project;
  std::string config = project.config();
  config.replace(config.find("[updater]\n"), 10, "[updater]\nmain-class = \"com.example.No\"\n");
  expectRejected(project, config, "main-class");
  writeFile(project / "bad.jar", "text");
  config.replace(config.find(QUILLORY_UPDATER_JAR), std::string(QUILLORY_UPDATER_JAR).size(),
                 "bad.jar");
  expectRejected(project, config, "jar");
}

TEST(BundleLint, RefusesTwoFilesForOnePath) {
  Project project;
  fs::create_directory(project / "other");
  fs::copy_file(project / "hello.jar", project / "other/hello.jar");
  std::string config = project.config();
  config.replace(config.find("[\"hello.jar\"]"), 13, "[\"hello.jar\", \"other/hello.jar\"]");
  expectRejected(project, config, "same-path");
}

TEST(BundleLint, RefusesFilesWhereTheInstallationPutsItsOwn) {
  Project project;
  writeFile(project / "App.p2", "x");
  expectRejected(project, project.config("files = [\"App.p2\"]\n"), "path-taken");
  writeFile(project / "QuilloryLaunch", "x");
  expectRejected(project, project.config("files = [\"QuilloryLaunch\"]\n"), "same-path");
  expectRejected(project, project.config("files = [{ from = \"App.p2\", to = \"../x\" }]\n"),
                 "path");
  expectRejected(project,
                 project.config("files = [{ from = \"App.p2\", to = \"qyArcSpBlock_x\" }]\n"),
                 "special-prefix");
}

TEST(BundleLint, RefusesToPackItsOwnKeyByWhateverName) {
  Project project;
  fs::copy_file(Project::key(), project / "signing.pem");
  fs::create_directory(project / "data");
  fs::create_hard_link(project / "signing.pem", project / "data/innocent.txt");
  std::string config = project.config("files = [\"data\"]\n");
  config.replace(config.find(Project::key()), Project::key().size(), "signing.pem");
  expectRejected(project, config, "key-packed");
  EXPECT_EQ(pack({"bundle", "--unsigned", project / "quillory.toml"}).status, 3)
      << "a key that is not used is as precious";
  fs::remove(project / "data/innocent.txt");
  writeFile(project / "data/innocent.txt", "x");
  bundleOf(project, config);
}

TEST(BundleLint, RefusesToPackTheFolderOfItsResults) {
  Project project;
  expectRejected(project, project.config("files = [{ from = \".\", to = \"x\" }]\n"),
                 "output-packed");
  writeFile(project / "data/file", "x");
  const std::string config = project.writeConfig(project.config("files = [\"data\"]\n"));
  for (const char* inside : {"data", "data/new/dist"}) {
    const CommandResult result = pack({"bundle", config, "-o", project / inside});
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.err, HasSubstr("[output-packed]"));
  }
  EXPECT_EQ(pack({"bundle", "-q", config, "-o", project.folder().path()}).status, 0)
      << "above what is packed, and not in it";
}

TEST(BundleLint, RefusesPicturesThatAreNone) {
  Project project;
  expectRejected(project, project.config("splash = \"hello.jar\"\n"), "picture");
  expectRejected(project, project.config("icon = \"hello.jar\"\n"), "picture");
  expectRejected(project, project.config("splash = \"missing.png\"\n"), "missing-file");
  writeFile(project / "cut.png", "\x89PNG\r\n\x1a\n");
  expectRejected(project, project.config("splash = \"cut.png\"\n"), "picture");
  expectRejected(project, project.config("icon = \"cut.png\"\n"), "picture");
  writeFile(project / "cut.icns", "icns");
  expectRejected(project, project.config("icon = \"cut.icns\"\n"), "picture");
  writeFile(project / "odd.png",
            std::string("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR\0\0\0\1\0\0\0\1\x08\6\0\0\0", 29));
  expectRejected(project, project.config("icon = \"odd.png\"\n"), "picture");
  EXPECT_EQ(
      pack({"bundle", "-q", project.writeConfig(project.config("splash = \"odd.png\"\n"))}).status,
      0);
}

TEST(BundleLint, RefusesAJarWhoseNameSplitsTheClassPath) {
  Project project;
  fs::copy_file(project / "hello.jar", project / "a:b.jar");
  std::string config = project.config();
  config.replace(config.find("[\"hello.jar\"]"), 13, "[\"a:b.jar\"]");
  expectRejected(project, config, "name-colon");
}

TEST(BundleLint, WarnsOfEmptyFilesAndLeavesThemOut) {
  Project project;
  writeFile(project / "data/empty", "");
  const CommandResult result =
      pack({"bundle", project.writeConfig(project.config("files = [\"data\"]\n"))});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.err, HasSubstr("\"data/empty\" of the application is empty"));
  EXPECT_EQ(unpacked(project / "dist/release/Quillory-Hello-3-archive.p2.l2").find("data/empty"),
            std::string::npos);
}

TEST(Bundle, LeavesTheOldBundleAndNoWorkWhenItFails) {
  Project project;
  bundleOf(project, project.config());
  const auto before = contentOf(project / "dist");
  // A file that nobody can read from its start, and which is read after the packing.
  std::string config = project.config();
  config.replace(config.find("[updater]\n"), 10, "[updater]\ncacerts = \"/proc/self/mem\"\n");
  EXPECT_EQ(pack({"bundle", project.writeConfig(config)}).status, 1);
  EXPECT_EQ(contentOf(project / "dist"), before);
}

TEST(Bundle, LeavesTheOldBundleWhenTheReleaseFilesCannotBePutInPlace) {
  Project project;
  const std::string bundle = bundleOf(project, project.config());
  writeFile(bundle + "/Contents/old", "one");
  std::string next = project.config();
  next.replace(next.find("version = 3"), 11, "version = 4");
  const auto bundleBefore = contentOf(bundle);

  fs::rename(project / "dist/release", project / "kept");
  writeFile(project / "dist/release", "a file");
  const CommandResult noFolder = pack({"bundle", project.writeConfig(next)});
  EXPECT_EQ(noFolder.status, 1);
  EXPECT_THAT(noFolder.err, HasSubstr("dist/release: error: cannot be created: "));
  EXPECT_EQ(contentOf(bundle), bundleBefore);
  EXPECT_EQ(readFile(project / "dist/release"), "a file");

  // The last step: the version file of the application, for which something is in the way.
  fs::remove(project / "dist/release");
  fs::rename(project / "kept", project / "dist/release");
  const std::string version = project / "dist/release/Quillory-Hello-version.txt";
  fs::remove(version);
  writeFile(version + "/in", "the way");
  const CommandResult noVersion = pack({"bundle", project.writeConfig(next)});
  EXPECT_EQ(noVersion.status, 1);
  EXPECT_THAT(noVersion.err, HasSubstr(version + ": error: cannot be put in place: "));
  EXPECT_EQ(contentOf(bundle), bundleBefore);

  fs::remove_all(version);
  EXPECT_EQ(pack({"bundle", "-q", project / "quillory.toml"}).status, 0);
  EXPECT_FALSE(fs::exists(bundle + "/Contents/old"));
  for (const auto& entry : fs::directory_iterator(project / "dist")) {
    EXPECT_EQ(entry.path().filename().string().find(".unfinished"), std::string::npos);
  }
}

TEST(Bundle, LeavesNoFirstBundleWhenTheReleaseFilesCannotBePutInPlace) {
  Project project;
  writeFile(project / "dist/release/Quillory-Hello-version.txt/in", "the way");
  EXPECT_EQ(pack({"bundle", project.writeConfig(project.config())}).status, 1);
  EXPECT_FALSE(fs::exists(project / "dist/Hello.app"));
}

}  // namespace
}  // namespace quillory::testing
