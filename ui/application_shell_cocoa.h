// The application around the launcher: its Cocoa object, its menu, its events. All on the main
// thread, in the order of the declarations.
#pragma once
#include "support/platform.h"

namespace quillory {

/// First of all, with the process's arguments, of which Cocoa gets to see the program's name only.
void startCocoa(char** arguments);

/// The shared application object. Where a window server is reached through a connection of our own,
/// it is made when the first window needs it.
void createApplication();

/// From now on a URL that the user wants opened is kept for latestRequestedUrl(), a file for
/// takeOpenedFiles(), and whoever quits the application ends it as SIGTERM does.
void registerOSXEventListener();

/// For Platform::requestedUrl: the URL of the latest event, those included that have come and wait
/// to be handled. Any thread, once the listener is registered.
const char* latestRequestedUrl();

/// Reads the application's name and gives it to the standard menu, where there is one.
void setUpApplicationMenu();

/// For a run that nobody is to see, once there is an application object: without an icon in the
/// Dock and without a menu.
void leaveDock();

/// For Platform::presence. Any thread.
PresenceCalls cocoaPresence();

/// Runs the application's events, for as long as the process lives.
void runApplication();

}  // namespace quillory
