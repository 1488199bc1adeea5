// What starts that were killed have left in an installation. With the lock held
// (install/installation_lock.h) nobody is working on any of it.
//
//   QuilloryTemp-<seconds>-<count>-app/                     a component, in part
//   .replaced/                                              see install/replacement.h
//   <a component>/bin, lib/security: .unfinished-<random>, .java-<process>
//   <an updater>/Quillory-<JRE name>-version.txt.<process>.part
#pragma once
#include <string>

namespace quillory {

/// Whether the listing of `masterFolder` shows something of that; its components are not looked
/// into. For every start: without a log line, and quick.
bool hasLeftovers(const std::string& masterFolder);

/// Brings back what was set aside and removes the rest, with a log line each. It follows no link,
/// and removes nothing that has another name.
void clearLeftovers(const std::string& masterFolder);

/// Removes the files in `folder` that were to become others and were cut short.
void clearUnfinishedFiles(const std::string& folder);

}  // namespace quillory
