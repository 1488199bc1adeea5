// Finding and running the system's tools that give rights.
#pragma once
#include <string>
#include <vector>

namespace quillory {

/// A line on standard error, with the name of this tool before it.
void complain(const std::string& message);

/// Whether real and effective user are root. A copy that someone made setuid is not: it would run
/// any program for anybody.
bool isRootForReal();

/// The first executable file of that name; "" when no folder has one.
std::string findTool(const std::vector<std::string>& folders, const std::string& name);

/// Runs command[0], which is a path, and waits: its exit status, 128 and the number of the signal
/// that ended it, or -1 with a message when it could not be started.
int runToolForStatus(const std::vector<std::string>& command);

/// The same with its standard output as a text: it comes in `output`, and not on our own.
int runToolForOutput(const std::vector<std::string>& command, std::string& output);

/// The same with nothing of what it writes.
int runToolQuietly(const std::vector<std::string>& command);

}  // namespace quillory
