// A session bus of a test's own.
#pragma once
#include <gtest/gtest.h>

#include <string>

#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"
#include "tests/ui/x_server.h"

namespace quillory::testing {

class SessionBus {
 public:
  const std::string& address() const { return address_; }

  /// Has the owner of a name open a URL, as a desktop does when the user follows a link; what gdbus
  /// says of it. Returns when the owner has answered.
  ChildResult open(const std::string& url, const std::string& name, const std::string& path) const {
    ChildOptions options;
    options.environment["DBUS_SESSION_BUS_ADDRESS"] = address_;
    return runChild({"gdbus", "call", "--session", "--dest", name, "--object-path", path,
                     "--method", "org.freedesktop.Application.Open", "['" + url + "']", "{}"},
                    options);
  }

 private:
  TempDir folder_;  // of its socket
  BackgroundChild daemon_{{"dbus-daemon", "--session", "--address=unix:path=" + folder_ / "bus",
                           "--nofork", "--print-address=1"}};
  std::string address_ = firstLineOf(daemon_);
};

}  // namespace quillory::testing
