// Classes that inherit from one of a library that is not loaded yet.
//
// A file that defines classes registers them before main(), and the Objective-C runtime ends the
// process over a superclass that it does not know. So the linker turns the registrations of this
// program's own files into calls of a function here (--wrap=__objc_exec_class), which puts off
// those that come too early.
#pragma once

namespace quillory::platform {

/// Registers what was put off and no longer has to be. To be called once a library is loaded,
/// before the first use of such a class.
void registerLateClasses();

}  // namespace quillory::platform
