// The splash without a launcher, for developers and tests. Carries out one command a line, on a
// thread of its own as the launcher does, and answers each with "done NAME" on standard output. The
// commands come from the file named by SPLASH_DEMO_COMMANDS, else from standard input. Arguments
// are those of the application that it stands for.
//
//   init | configure FILE | show | progress N | hide-progress | hide | cleanup | buffer N
//   reshow          hides and shows it, and waits for an answer of the window server, all at once
//   size W H        resizes the window
//   script          the scripted demonstration
//   notice TEXT     shows it, with the button that ends the program
//   notice-down     takes it away
//   failure SECONDS TEXT  shows it, for so long where nobody is there
//   press           presses the button
//   terminate       has the application object asked to end, as by "Quit"
//   url             prints the URL that was requested
//   shell COMMAND   runs a command in a shell, as the launcher does with its tools
//   wait MS         does nothing for a time
//
//   printf '%s\n' init 'configure splash.png' show 'progress 37' 'wait 5000' | splash_demo
#include <pthread.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <istream>
#include <sstream>
#include <string>

#include "platform/autorelease_pool.h"
#include "platform/main_thread.h"
#include "platform/support_cocoa.h"
#include "support/clock.h"
#include "support/platform.h"
#include "support/process.h"
#include "support/url_request.h"
#import "ui/app_runner_cocoa.h"
#import "ui/application_delegate_cocoa.h"
#include "ui/application_shell_cocoa.h"
#include "ui/failure_window_cocoa.h"
#include "ui/for_embedders.h"
#include "ui/notice_window_cocoa.h"
#include "ui/splash.h"
#include "ui/splash_window_cocoa.h"

namespace {

namespace splash = quillory::splash;

void runScript() {
  const quillory::AutoreleasePool pool;
  AppRunner* runner = [[AppRunner alloc] init];
  [runner runThread:nil];
  [runner release];
}

void printUrl() {
  const char* url = quillory::getRequestedURL();
  std::printf("url %s\n", url == nullptr ? "NULL" : url);
}

void runShell(const std::string& command) {
  const int status = quillory::processCalls.runShell(command.c_str());
  std::printf("status %d\n", status);
}

// With the answer all that the window server had to say before has come, such as the request to
// draw the window: nothing follows that would wake the main thread.
void reshow() {
  quillory::platform::onMainThread([] {
    const quillory::AutoreleasePool pool;
    splash::hideSplash();
    splash::showSplash();
    [NSClassFromString(@"NSEvent") mouseLocation];
  });
}

// As a click on it does.
void pressQuit() {
  quillory::platform::onMainThread([] {
    const quillory::AutoreleasePool pool;
    NSArray* windows = [NSApp windows];
    for (NSUInteger i = 0; i < [windows count]; ++i) {
      NSArray* views = [[[windows objectAtIndex:i] contentView] subviews];
      for (NSUInteger j = 0; j < [views count]; ++j) {
        id view = [views objectAtIndex:j];
        if ([view isKindOfClass:NSClassFromString(@"NSButton")]) [view performClick:nil];
      }
    }
  });
}

void askToTerminate() {
  quillory::platform::onMainThread([] {
    const quillory::AutoreleasePool pool;
    [NSApp setDelegate:quillory::ownDelegate()];
    [NSApp terminate:nil];
  });
}

int numberIn(std::istream& line) {
  int number = 0;
  line >> number;
  return number;
}

std::string restOf(std::istream& line) {
  std::string rest;
  std::getline(line >> std::ws, rest);
  return rest;
}

void carryOut(const std::string& name, std::istream& line) {
  if (name == "init") splash::init();
  if (name == "configure") splash::configureSplash(restOf(line).c_str());
  if (name == "show") splash::showSplash();
  if (name == "reshow") reshow();
  if (name == "progress") splash::setProgress(numberIn(line));
  if (name == "hide-progress") splash::hideProgress();
  if (name == "hide") splash::hideSplash();
  if (name == "cleanup") splash::cleanup();
  if (name == "buffer") splash::setSplashBuffer(numberIn(line));
  if (name == "size") {
    const int width = numberIn(line);
    splash::setFrameSize(width, numberIn(line));
  }
  if (name == "script") runScript();
  if (name == "url") printUrl();
  if (name == "notice") quillory::platformCalls.notice.show(restOf(line).c_str());
  if (name == "notice-down") quillory::platformCalls.notice.takeDown();
  if (name == "failure") {
    const int seconds = numberIn(line);
    quillory::platformCalls.failure.show({.sentence = restOf(line),
                                          .cause = "java.lang.Error: on purpose\n\tat Demo.main",
                                          .logFile = "/a/log",
                                          .unattendedSeconds = seconds});
  }
  if (name == "press") pressQuit();
  if (name == "terminate") askToTerminate();
  if (name == "shell") runShell(restOf(line));
  if (name == "wait")
    quillory::timeCalls.sleepMicros(static_cast<std::uint64_t>(numberIn(line)) * 1000);
}

void* runCommands(void*) {
  const char* path = std::getenv("SPLASH_DEMO_COMMANDS");
  std::ifstream file(path == nullptr ? "/dev/stdin" : path);
  std::string text;
  while (std::getline(file, text)) {
    std::istringstream line(text);
    std::string name;
    line >> name;
    carryOut(name, line);
    std::printf("done %s\n", name.c_str());
    std::fflush(stdout);
  }
  std::exit(0);
}

}  // namespace

int main(int, char** argv) {
  quillory::startCocoa(argv);
  quillory::platformCalls.systemLog = quillory::logThroughCocoa;
  quillory::platformCalls.requestedUrl = quillory::latestRequestedUrl;
  quillory::platformCalls.window = quillory::cocoaSplashWindow();
  quillory::platformCalls.notice = quillory::cocoaNotice();
  quillory::platformCalls.failure = quillory::cocoaFailure();
  quillory::createApplication();
  quillory::registerOSXEventListener();
  pthread_t thread;
  if (pthread_create(&thread, nullptr, runCommands, nullptr) != 0) return 1;
  quillory::setUpApplicationMenu();
  quillory::runApplication();
}
