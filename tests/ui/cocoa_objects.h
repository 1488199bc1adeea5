// For tests of the Cocoa objects in the test's own process. Windows, menus and images need a window
// server, and an application object that has found it.
#pragma once
#include <gtest/gtest.h>
#import <objc/runtime.h>

#include <cstdlib>

#import "cocoa.h"
#include "platform/autorelease_pool.h"
#include "platform/toolkit.h"
#include "tests/ui/x_server.h"

namespace quillory::testing {

/// One server and one application object for all tests of the process.
class CocoaObjects : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    const AutoreleasePool pool;
    static char programName[] = "ui_cocoa_tests";
    platform::startToolkit(programName);
    static const XServer server;
    setenv("DISPLAY", server.display().c_str(), 1);
  }

  // Before each test: one that went on without would fail by something else.
  void SetUp() override {
    ASSERT_TRUE(platform::isReadyForWindows()) << "no window server at " << getenv("DISPLAY");
  }

  const AutoreleasePool pool_;
};

/// Puts `replacement` in the place of a method, which takes the receiver and the selector before
/// the method's own arguments, until the end of the scope.
class ScopedMethod {
 public:
  template <typename Function>
  ScopedMethod(Method method, Function* replacement)
      : method_(method),
        original_(method_setImplementation(
            method, reinterpret_cast<IMP>(reinterpret_cast<void (*)()>(replacement)))) {}
  ~ScopedMethod() { method_setImplementation(method_, original_); }
  ScopedMethod(const ScopedMethod&) = delete;
  ScopedMethod& operator=(const ScopedMethod&) = delete;

 private:
  const Method method_;
  const IMP original_;
};

}  // namespace quillory::testing
