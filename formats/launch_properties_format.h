// The names of launch properties files, once, for who writes and who shows them. What is in them is
// a property block; docs/formats/launch-properties.md has the bytes.
#pragma once

namespace quillory {

/// "QYLaunchProperties-<milliseconds>-<entries>" in the folder of the application.
inline constexpr char kLaunchPropertiesPrefix[] = "QYLaunchProperties-";

/// The same of the file in which an application hears of URLs that are opened while it runs.
inline constexpr char kOpenRequestsPrefix[] = "QYOpenRequests-";

}  // namespace quillory
