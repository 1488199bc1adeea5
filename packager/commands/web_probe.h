// One request to a web server, and all that it answers: to judge the server, where a client only
// wants the file.
#pragma once
#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace quillory::pack {

struct WebAnswer {
  int status = 0;  ///< 0: there was no answer
  /// Of the last answer, names in lower case; of one that comes twice the last value.
  std::map<std::string, std::string> headers;
  std::string body;    ///< as much of it as was asked for
  std::string reason;  ///< why there is no answer, in words

  /// The value of a header; "" without it.
  std::string header(const std::string& name) const;
};

/// GET, redirects followed. `headers` are lines of the request: "Range:
/// bytes=0-0". No more than `mostBytes` of the body are taken. Throws PackError where this system
/// has no libcurl, and when the run is interrupted.
WebAnswer askServer(const std::string& url, const std::vector<std::string>& headers,
                    std::size_t mostBytes);

}  // namespace quillory::pack
