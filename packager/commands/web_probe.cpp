#include "packager/commands/web_probe.h"

#include <algorithm>
#include <cctype>
#include <memory>

#include "packager/bytes/work_folder.h"
#include "packager/report/findings.h"
#include "platform/curl_library.h"

namespace quillory::pack {
namespace {

using platform::CurlLibrary;

constexpr long kStallSeconds = 30;
constexpr long kMostRedirects = 20;
constexpr char kUserAgent[] = "quillory-pack/1.0";

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  return first == std::string::npos
             ? ""
             : text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

// What libcurl hands over, piece by piece.
struct Receiver {
  WebAnswer& answer;
  std::size_t mostBytes;

  static std::size_t onHeader(char* bytes, std::size_t size, std::size_t count, void* receiver) {
    WebAnswer& answer = static_cast<Receiver*>(receiver)->answer;
    const std::string line(bytes, size * count);
    const std::size_t colon = line.find(':');
    if (line.starts_with("HTTP/")) {
      answer.headers.clear();  // of the redirect before
    } else if (colon != std::string::npos) {
      std::string name = line.substr(0, colon);
      std::transform(name.begin(), name.end(), name.begin(),
                     [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
      answer.headers[name] = trimmed(line.substr(colon + 1));
    }
    return size * count;
  }

  // Fewer bytes than came end the transfer.
  static std::size_t onBody(char* bytes, std::size_t size, std::size_t count, void* receiver) {
    auto& its = *static_cast<Receiver*>(receiver);
    const std::size_t room = its.mostBytes - its.answer.body.size();
    its.answer.body.append(bytes, std::min(size * count, room));
    return size * count <= room ? size * count : 0;
  }
};

}  // namespace

std::string WebAnswer::header(const std::string& name) const {
  const auto found = headers.find(name);
  return found == headers.end() ? "" : found->second;
}

WebAnswer askServer(const std::string& url, const std::vector<std::string>& headers,
                    std::size_t mostBytes) {
  stopIfInterrupted();
  const CurlLibrary* curl = platform::curlLibrary();
  if (curl == nullptr) {
    throw PackError(std::string("there is no ") + platform::curlLibraryName() +
                    " on this system, which talks to web servers");
  }
  const std::unique_ptr<CURL, decltype(curl->cleanUp)> handle(curl->easyInit(), curl->cleanUp);
  curl_slist* lines = nullptr;
  for (const std::string& header : headers) {
    lines = curl->appendToList(lines, header.c_str());
  }
  const std::unique_ptr<curl_slist, decltype(curl->freeList)> owned(lines, curl->freeList);
  WebAnswer answer;
  Receiver receiver{answer, mostBytes};
  const auto set = [&](CURLoption option, auto value) {
    curl->setOption(handle.get(), option, value);
  };
  set(CURLOPT_URL, url.c_str());
  set(CURLOPT_USERAGENT, kUserAgent);
  set(CURLOPT_HTTPHEADER, owned.get());
  set(CURLOPT_FOLLOWLOCATION, 1L);
  set(CURLOPT_MAXREDIRS, kMostRedirects);
  set(CURLOPT_NOSIGNAL, 1L);
  set(CURLOPT_CONNECTTIMEOUT, kStallSeconds);
  set(CURLOPT_LOW_SPEED_LIMIT, 1L);
  set(CURLOPT_LOW_SPEED_TIME, kStallSeconds);
  set(CURLOPT_HEADERFUNCTION, &Receiver::onHeader);
  set(CURLOPT_HEADERDATA, &receiver);
  set(CURLOPT_WRITEFUNCTION, &Receiver::onBody);
  set(CURLOPT_WRITEDATA, &receiver);
  const CURLcode code = curl->perform(handle.get());
  long status = 0;
  curl->getInfo(handle.get(), CURLINFO_RESPONSE_CODE, &status);
  const bool hasEnough = code == CURLE_WRITE_ERROR && answer.body.size() == mostBytes;
  if (code != CURLE_OK && !hasEnough) {
    return {0, {}, "", curl->errorText(code)};
  }
  answer.status = static_cast<int>(status);
  return answer;
}

}  // namespace quillory::pack
