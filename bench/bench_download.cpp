// A download of 200 MB from the loopback against the command-line tool curl, turn by turn, with the
// growth of this process's memory. Usage: bench_download
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "formats/downloads.h"
#include "formats/downloads_cocoa.h"
#include "support/platform.h"
#include "tests/harness/child_process.h"
#include "tests/harness/http_server.h"
#include "tests/harness/temp_dir.h"

namespace {

using namespace quillory::testing;

constexpr std::size_t kPieceBytes = 1 << 20;
constexpr std::size_t kPieces = 200;
constexpr int kRounds = 7;

template <typename Work>
double secondsOf(Work&& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double medianOf(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

long peakKilobytes() {
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

}  // namespace

int main() {
  // The platform's log has a line for every report of progress.
  if (std::freopen("/dev/null", "w", stderr) == nullptr) return 1;
  const TempDir folder;
  HttpServer server;
  server.answer("/small", answerFile("x"));
  server.answer("/big", answerInPieces(std::string(kPieceBytes, 'x'), kPieces));
  quillory::platformCalls.downloadFile = quillory::downloadThroughCocoa;

  const std::string ours = folder / "ours";
  const std::string theirs = folder / "theirs";
  quillory::downloadFile(server.url("/small").c_str(), ours.c_str());
  const long before = peakKilobytes();

  std::vector<double> ratios;
  std::vector<double> rates;
  for (int round = 0; round < kRounds; ++round) {
    const double ourTime =
        secondsOf([&] { quillory::downloadFile(server.url("/big").c_str(), ours.c_str()); });
    if (std::filesystem::file_size(ours) != kPieceBytes * kPieces) return 1;
    const double theirTime = secondsOf([&] {
      runChild({"curl", "-s", "-o", theirs, server.url("/big")});
    });
    ratios.push_back(theirTime / ourTime);
    rates.push_back(kPieceBytes * kPieces / ourTime / 1e6);
  }
  std::printf("download of %zu MiB: %.0f MB/s, speed ratio to curl %.2f, memory grew by %ld KiB\n",
              kPieces, medianOf(rates), medianOf(ratios), peakKilobytes() - before);
  return 0;
}
