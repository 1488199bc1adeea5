// The URL that the user asked the application to open, as far as one came before the launch.
#pragma once

namespace quillory {

/// The latest URL, borrowed, or null; says which in the system log.
const char* getRequestedURL();

}  // namespace quillory
