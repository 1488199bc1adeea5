#include "packager/commands/server_check.h"

#include <cstdlib>
#include <utility>

#include "formats/release_list.h"
#include "formats/update_url.h"
#include "packager/commands/web_probe.h"

namespace quillory::pack {
namespace {

constexpr int kAnswered = 200;
constexpr int kPartAnswered = 206;
constexpr int kNotModified = 304;
constexpr int kForbidden = 403;
constexpr int kNothingThere = 404;
constexpr int kGone = 410;
constexpr long kLongestAgeOfList = 3600;  // seconds
constexpr char kHosting[] = "docs/updates.md has it for servers, under \"Hosting\"";

// The seconds of "max-age=60"; -1 when it does not say.
long maxAge(const std::string& cacheControl) {
  const std::string key = "max-age=";
  const std::size_t at = cacheControl.find(key);
  return at == std::string::npos ? -1
                                 : std::strtol(cacheControl.c_str() + at + key.size(), nullptr, 10);
}

class ServerCheck {
 public:
  ServerCheck(std::string url, const Trusted& trusted)
      : base_(url.ends_with('/') ? std::move(url) : url + '/'), trusted_(trusted) {}

  Findings run() {
    if (base_.starts_with("http://")) {
      add(Severity::kWarning, "plain-http", "",
          "it is plain http: anybody on the way can see and hold back what is downloaded",
          "use https://");
    }
    const std::string name = releaseListName(trusted_.application, trusted_.channel);
    if (const std::optional<ReleaseList> list = listAt(name)) {
      checkFiles(*list);
      checkMissing(name);
    }
    return std::move(findings_);
  }

 private:
  void add(Severity severity, const char* rule, const std::string& name, const std::string& what,
           const std::string& advice) {
    findings_.push_back({severity, rule, what, {base_ + name, 0}, advice});
  }

  WebAnswer ask(const std::string& name, const std::vector<std::string>& headers,
                std::size_t mostBytes) {
    return askServer(base_ + escapedForUrl(name), headers, mostBytes);
  }

  static std::string said(const WebAnswer& answer) {
    return answer.status == 0 ? answer.reason : "it answers " + std::to_string(answer.status);
  }

  std::optional<ReleaseList> listAt(const std::string& name) {
    const WebAnswer answer = ask(name, {}, kMaxReleaseListBytes + 1);
    if (answer.status != kAnswered) {
      add(Severity::kError, "server-file", name, "the list cannot be had: " + said(answer),
          "copy the release files there");
      return std::nullopt;
    }
    const ReleaseListVerdict verdict = readReleaseListBytes(answer.body, trusted_.keys);
    if (!verdict.list) {
      add(Severity::kError, "signature", name, "clients refuse the list: " + verdict.refusal,
          "copy the release files again");
      return std::nullopt;
    }
    checkCachingOfList(name, answer);
    checkType(name, answer);
    return verdict.list;
  }

  void checkCachingOfList(const std::string& name, const WebAnswer& answer) {
    const std::string tag = answer.header("etag");
    if (tag.empty()) {
      add(Severity::kWarning, "server-etag", name,
          "there is no ETag: every check loads the list again, where it would be told that nothing "
          "has changed",
          kHosting);
    } else if (ask(name, {"If-None-Match: " + tag}, kMaxReleaseListBytes).status != kNotModified) {
      add(Severity::kWarning, "server-etag", name,
          "it has an ETag and does not go by it (If-None-Match): every check loads the list again",
          kHosting);
    }
    const std::string cache = answer.header("cache-control");
    const long age = maxAge(cache);
    if (cache.find("immutable") != std::string::npos || age > kLongestAgeOfList) {
      add(Severity::kWarning, "server-cache", name,
          "caches on the way may keep the list (" + cache +
              "): a release reaches people as much later",
          "a minute is enough for the list; " + std::string(kHosting));
    }
  }

  void checkType(const std::string& name, const WebAnswer& answer) {
    const std::string type = answer.header("content-type");
    if (type.starts_with("text/")) {
      add(Severity::kWarning, "server-type", name,
          "it is called " + type + ", which proxies may change on the way",
          "application/octet-stream; " + std::string(kHosting));
    }
    const std::string encoding = answer.header("content-encoding");
    if (!encoding.empty() && encoding != "identity") {
      add(Severity::kError, "server-type", name,
          "it comes encoded (" + encoding + ") although nobody asks for that: its hash is another",
          kHosting);
    }
  }

  void checkFiles(const ReleaseList& list) {
    std::vector<ReleaseFile> files;
    for (const ReleaseComponent& component : list.components) {
      files.push_back(component.archive);
      for (const ReleaseDelta& delta : component.deltas) {
        files.push_back(delta.file);
      }
    }
    if (!list.steppingStone.name.empty()) {
      files.push_back(list.steppingStone);
    }
    for (const ReleaseFile& file : files) {
      checkFile(file);
    }
    checkIfRange(files.front());
  }

  void checkFile(const ReleaseFile& file) {
    const WebAnswer answer = ask(file.name, {"Range: bytes=0-0"}, 1);
    if (answer.status != kAnswered && answer.status != kPartAnswered) {
      add(Severity::kError, "server-file", file.name, "it cannot be had: " + said(answer),
          "copy the release files again, the lists last");
      return;
    }
    const std::string length = std::to_string(file.length);
    if (answer.status == kAnswered) {
      if (!rangesTold_) {
        rangesTold_ = true;
        add(Severity::kWarning, "server-ranges", file.name,
            "ranges are not answered: a download that breaks begins anew", kHosting);
      }
      requireLength(file, answer.header("content-length"), length);
    } else {
      const std::string range = answer.header("content-range");
      requireLength(file, range.substr(range.find('/') + 1), length);
    }
    checkType(file.name, answer);
  }

  void requireLength(const ReleaseFile& file, const std::string& found, const std::string& wanted) {
    if (!found.empty() && found != "*" && found != wanted) {
      add(Severity::kError, "server-file", file.name,
          "it has " + found + " bytes, and the list says " + wanted,
          "copy the release files again");
    }
  }

  // A download that goes on in another file than it began in is found out by its hash, and was in
  // vain.
  void checkIfRange(const ReleaseFile& file) {
    const WebAnswer answer = ask(file.name, {"Range: bytes=0-0", "If-Range: \"no-such-tag\""}, 1);
    if (answer.status == kPartAnswered) {
      add(Severity::kWarning, "server-ranges", file.name,
          "If-Range is not gone by: a download may go on in another file than it began in",
          kHosting);
    }
  }

  void checkMissing(const std::string& list) {
    const std::string name = list + "-missing";
    const WebAnswer answer = ask(name, {}, 1);
    if (answer.status != kNothingThere && answer.status != kForbidden && answer.status != kGone) {
      add(Severity::kWarning, "server-missing", name,
          "there is no such file, and " + said(answer) + " in place of 404", kHosting);
    }
  }

  std::string base_;
  const Trusted& trusted_;
  Findings findings_;
  bool rangesTold_ = false;
};

}  // namespace

Findings checkServer(const std::string& url, const Trusted& trusted) {
  return ServerCheck(url, trusted).run();
}

}  // namespace quillory::pack
