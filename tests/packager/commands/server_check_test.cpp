#include "packager/commands/server_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/http_server.h"
#include "tests/packager/released_project.h"
#include "tests/update/nginx.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr char kServedList[] = "Quillory-Hello-stable-releases";
constexpr char kServedArchive[] = "Quillory-Hello-1-archive.p2.l2";
constexpr char kUpdater[] = "Quillory-Quillory-1-archive.p2.l2";

// A release, and a server that answers for its files as a test says.
class CheckServer : public ReleasedProject {
 protected:
  CheckServer() { release(config(1)); }

  // What it has against a server, but that it is plain http.
  std::vector<std::string> rulesAt(const std::string& url) {
    findings_ =
        pack::checkServer(url, {"Hello", "stable", {pack::PublicKey::load(Project::key()).hex()}});
    std::vector<std::string> rules = rulesOf(findings_);
    EXPECT_EQ(rules.at(0), "plain-http");
    rules.erase(rules.begin());
    return rules;
  }
  // 200 with all of a file and these lines.
  HttpAnswer whole(const std::string& name, const std::string& headers = "") const {
    const std::string body = readFile(releasePath(name));
    return {.head = "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" +
                    headers + "\r\n",
            .body = body};
  }
  // The part of the page that stands in nginx's server.
  static std::string recipe() {
    const std::string page = readFile(QUILLORY_SOURCE_DIR "/docs/updates.md");
    const std::size_t begin = page.find("  gzip off;");
    return page.substr(begin, page.find("}\n```", begin) - begin);
  }

  pack::Findings findings_;
};

TEST_F(CheckServer, HasNothingAgainstNginxAsThePageSetsItUp) {
  if (!Nginx::isThere()) GTEST_SKIP() << "there is no nginx";
  const Nginx server(project_ / "dist/release", recipe());
  EXPECT_THAT(rulesAt(server.url()), ElementsAre());
}

TEST_F(CheckServer, TellsWhatIsNotThere) {
  if (!Nginx::isThere()) GTEST_SKIP() << "there is no nginx";
  const Nginx server(project_ / "dist/release", recipe());
  writeFile(releasePath(kUpdater), "short");
  fs::remove(releasePath(kServedArchive));
  EXPECT_THAT(rulesAt(server.url()), ElementsAre("server-file", "server-file"));
  EXPECT_THAT(findings_[1].what, HasSubstr("it has 5 bytes, and the list says "));
  EXPECT_THAT(findings_[2].what, HasSubstr("it cannot be had: it answers 404"));
  fs::remove(releasePath(kServedList));
  EXPECT_THAT(rulesAt(server.url()), ElementsAre("server-file"));
}

TEST_F(CheckServer, TellsOfAServerThatOnlySendsWholeFiles) {
  HttpServer server;
  server.answer(std::string("/") + kServedList, whole(kServedList));
  server.answer(std::string("/") + kUpdater, whole(kUpdater));
  server.answer(std::string("/") + kServedArchive, whole(kServedArchive));
  EXPECT_THAT(rulesAt(server.url()), ElementsAre("server-etag", "server-ranges"));
}

TEST_F(CheckServer, TellsOfHeadersThatAreOfNoUse) {
  HttpServer server;
  server.answer(std::string("/") + kServedList, whole(kServedList,
                                                      "ETag: \"a\"\r\nContent-Type: text/html\r\n"
                                                      "Cache-Control: public, max-age=86400\r\n"));
  const std::string ranges = "Content-Encoding: gzip\r\nContent-Range: bytes 0-0/";
  for (const char* name : {kUpdater, kServedArchive}) {
    const std::string length = std::to_string(fs::file_size(releasePath(name)));
    server.answer(
        std::string("/") + name,
        {.head = "HTTP/1.1 206 Partial\r\nContent-Length: 1\r\n" + ranges + length + "\r\n\r\n",
         .body = "x"});
  }
  server.answer(std::string("/") + kServedList + "-missing", answerFile("a page"));
  EXPECT_THAT(rulesAt(server.url()),
              ElementsAre("server-etag", "server-cache", "server-type", "server-type",
                          "server-type", "server-ranges", "server-missing"));
}

TEST_F(CheckServer, TellsOfAListThatClientsRefuse) {
  HttpServer server;
  server.answer(std::string("/") + kServedList, answerFile("not found, said with status 200"));
  EXPECT_THAT(rulesAt(server.url()), ElementsAre("signature"));
}

TEST_F(CheckServer, IsWhatTheDoctorDoesWithAnAddress) {
  HttpServer server;
  const CommandResult result =
      pack({"doctor", server.url(), "--config", project_ / "quillory.toml"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("[server-file]"));
  EXPECT_THAT(result.out, HasSubstr("Clients would get no update from it"));
}

}  // namespace
}  // namespace quillory::testing
