// Usage: delta_tool make NAME FROM TO OLD.p2 NEW.p2 WHOLE.p2.l2 DELTA
//        delta_tool undo DELTA FOLDER OUT
//
// For bench/compare_update.sh. "make" writes a delta and prints its bytes; "undo" restores the
// archive from the installed folder, and prints the seconds that took and the peak memory, less
// what the process had before, beside the window, in bytes.
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "formats/release_list_format.h"
#include "packager/reading/plain_archive.h"
#include "packager/writing/delta_writer.h"
#include "update/delta.h"

namespace quillory {
namespace {

int make(const std::vector<std::string>& given) {
  pack::DeltaRequest request;
  request.role = kApplicationRole;
  request.component = given[0];
  request.from = given[1];
  request.to = given[2];
  request.oldArchive = given[3];
  request.newArchive = given[4];
  request.wholeLength = pack::wholeFile(given[5]).length;
  const pack::MadeDelta made = pack::writeDelta(request, given[6]);
  if (made.isMade) std::printf("%lld\n", static_cast<long long>(made.length));
  if (!made.isMade) std::fprintf(stderr, "no delta: %s\n", made.reason.c_str());
  return made.isMade ? 0 : 1;
}

long peakKibibytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

int undo(const std::vector<std::string>& given) {
  const DeltaHeaderResult read = readDeltaHeader(given[0]);
  if (!read.header) return 1;
  update::DeltaTask task;
  task.delta = given[0];
  task.installedFolder = given[1];
  task.out = given[2];
  task.component = read.header->component;
  task.from = read.header->from;
  task.to = read.header->to;
  task.restoredLength = read.header->restoredLength;
  task.restoredSha256 = read.header->restoredSha256;
  const long before = peakKibibytes();
  const auto start = std::chrono::steady_clock::now();
  const update::DeltaResult result = update::undoDelta(task);
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
  if (!result.isRestored()) {
    std::fprintf(stderr, "not restored: %s\n", result.reason.c_str());
    return 1;
  }
  std::printf("%.3f %ld %lld\n", took.count(), (peakKibibytes() - before) * 1024,
              static_cast<long long>(read.header->window));
  return 0;
}

}  // namespace
}  // namespace quillory

int main(int count, char** arguments) {
  const std::vector<std::string> given(arguments + (count < 2 ? count : 2), arguments + count);
  try {
    if (count == 9 && std::strcmp(arguments[1], "make") == 0) return quillory::make(given);
    if (count == 5 && std::strcmp(arguments[1], "undo") == 0) return quillory::undo(given);
    std::fprintf(stderr, "delta_tool.cpp has the usage\n");
  } catch (const std::exception& e) {
    std::fprintf(stderr, "%s\n", e.what());
  }
  return 2;
}
