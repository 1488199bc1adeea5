// URLs that come while the application runs: they are added to a file that the application has made
// beside its launch properties, if it wants to hear of them (io.quillory.api.Launch.openRequests).
#pragma once
#include <string>

namespace quillory {

/// From now on requests are added to the file at `path`, where there is one when they come. Any
/// thread.
void passOpenRequestsTo(const std::string& path);

/// What became of a request.
enum class OpenRequest {
  kTooEarly,  ///< no application runs yet
  kHeard,     ///< the application has it
  kUnheard,   ///< there is no file, or it could not be written
};

/// Adds `url` and a zero byte. Makes no file, follows no link, and is silent about failures: an
/// application that does not listen is the usual case. Any thread.
OpenRequest passOnOpenRequest(const char* url);

}  // namespace quillory
