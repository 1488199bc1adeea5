// The names of launch properties files, once, for who writes and who shows them. What is in them is
// a property block; docs/formats/launch-properties.md has the bytes.
#pragma once

namespace quillory {

/// "QYLaunchProperties-<milliseconds>-<entries>" in the folder of the application.
inline constexpr char kLaunchPropertiesPrefix[] = "QYLaunchProperties-";

/// The same of the file in which an application hears of URLs that are opened while it runs.
inline constexpr char kOpenRequestsPrefix[] = "QYOpenRequests-";

/// And of the file in which the updater leaves why it could not start the application, where the
/// parameter "error_dialog" asks for it.
inline constexpr char kStartFailurePrefix[] = "QYStartFailure-";

}  // namespace quillory
