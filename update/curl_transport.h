// The web as libcurl reaches it, with the proxies of the environment, or else of the system, and
// the authorities that the system trusts.
//
// Redirects lead to http and https, never from https to http, and at most twenty times. A transfer
// ends when no byte has come for a minute, never because it takes long. Addresses of files are for
// tests: a program that is shipped is built without them (QUILLORY_UPDATE_FILE_URLS).
#pragma once
#include <memory>

#include "update/transport.h"

namespace quillory::update {

inline constexpr double kStallSeconds = 60;
inline constexpr char kUserAgent[] = "quillory-update/1.0";

/// Connections are kept from request to request. One thread at a time. Where the system has no
/// libcurl every request is kRefused and says so.
std::unique_ptr<Transport> makeCurlTransport(double stallSeconds = kStallSeconds);

}  // namespace quillory::update
