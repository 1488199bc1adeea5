// The log file of a start, or of another program of an installation: one a run, in the master
// folder.
#pragma once

namespace quillory {

/// Creates <masterFolder>/logs/<program>-<date>-<time>-<millis>.log and makes it the file sink.
/// Where another user has put something there, it gets the name of one of the next milliseconds.
/// When it cannot be opened the run goes on without a file sink.
void setupFileLogging(const char* masterFolder, const char* program = "Wrapper");

}  // namespace quillory
