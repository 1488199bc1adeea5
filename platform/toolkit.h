// What the two Cocoas do differently, under one interface: platform/macos/ carries it out with
// Apple's frameworks, platform/gnustep/ with GNUstep and stand-ins. The code above has no
// condition.
#pragma once
#include <optional>
#include <string>

#import "cocoa.h"

namespace quillory::platform {

/// Before anything else of Cocoa, with the process's first argument. Cocoa gets to see no other:
/// arguments belong to the Java application. Signals keep what they were set to.
void startToolkit(char* programName);

/// Makes the application object, or arranges that the first window makes it, so that a start
/// without one never waits for a window server.
void prepareApplication();

/// Whether pictures can be loaded. To be asked before each; main thread only.
bool isReadyForPictures();

/// Whether there is a window server by the looks of it. Costs nothing; any thread.
bool mayHaveWindows();

/// Whether windows can be made; main thread only. Says once in the system log when not.
bool isReadyForWindows();

/// For a program that is no application bundle, once it is ready for windows: they come to the
/// front and can be clicked. Main thread only.
void comeToFront();

/// For a process that no user sees: it has no icon in the Dock and no menu from now on, where the
/// desktop gives every application those. Main thread only.
void leaveDock();

/// Runs the main thread's events, and never returns.
void runMainLoop();

/// The bundle's Info.plist, autoreleased; nil or empty without one.
NSDictionary* bundleInformation();

/// What it calls the bundle; nothing without one that says. Any thread.
std::optional<std::string> bundleName();

/// Has `listen` called before the first request of the desktop to open something comes, so that it
/// registers for them: at once, or with the first one, where most starts need no Cocoa. Once, on
/// the main thread, which calls it.
void beforeFirstRequest(void (*listen)());

/// Events that wait to be handled, the URLs and files to open among them, are handled before this
/// returns: those, too, for which the desktop has started the application, unless they take longer
/// than a second. Any thread.
void handleWaitingEvents();

/// From now on the user waits for this process, whether it has a window or not: the system does not
/// slow it down or put the machine to sleep. `reason` is for people who look for why. Returns what
/// endActivity() takes back, null where the system makes no such difference. Any thread.
void* beginActivity(const char* reason);
void endActivity(void* activity);

}  // namespace quillory::platform
