// Entry: the main thread becomes the application's event loop, and the run thread does the work.
#include <pthread.h>

#include <cstdlib>

#include "launcher/cocoa_platform.h"
#include "launcher/prepare_only.h"
#include "launcher/run_thread.h"
#include "launcher/session_arguments.h"
#include "support/exit_status.h"
#include "support/log.h"
#include "support/platform.h"
#include "support/standard_streams.h"
#include "ui/application_shell_cocoa.h"

namespace {

using quillory::logToSystem;

void logArguments(int count, char** arguments) {
  logToSystem("------------OSsX Wrapper Start-------------\n");
  for (int i = 0; i < count; ++i) logToSystem("main(%d)=%s\n", i, arguments[i]);
  logToSystem("Starting up runner\n");
}

void startRunThread() {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  const std::size_t stack = quillory::runThreadStackBytes();
  if (stack > 0) pthread_attr_setstacksize(&attributes, stack);
  pthread_t thread;
  const int refused = pthread_create(&thread, &attributes, quillory::run, nullptr);
  pthread_attr_destroy(&attributes);
  if (refused != 0) {
    logToSystem("The run thread cannot be started.\n");
    std::exit(quillory::kExitFailure);
  }
}

}  // namespace

int main(int argc, char** argv) {
  // An empty argument list names no program, and no argument that could be the last one.
  if (argc < 1) return quillory::kExitFailure;
  argc = quillory::withoutArgumentsOfTheSystem(argc, argv);
  quillory::fillStandardStreams();
  // What nobody reads is no reason not to install.
  quillory::outliveReaders();
  quillory::startCocoa(argv);
  quillory::platformCalls = quillory::cocoaPlatform();

  logArguments(argc, argv);
  quillory::argc = argc;
  quillory::argv = argv;
  quillory::createApplication();
  if (quillory::isPrepareOnly(argc, argv)) quillory::leaveDock();
  logToSystem("Created application\n");
  // Before the loop, so that a URL that started the application is not lost.
  quillory::registerOSXEventListener();
  logToSystem("Registered OS X Event Listener\n");
  startRunThread();
  quillory::setUpApplicationMenu();
  quillory::runApplication();
  return quillory::returnCode;
}
