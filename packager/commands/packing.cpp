#include "packager/commands/packing.h"

#include <chrono>
#include <future>

#include "packager/bytes/byte_sinks.h"
#include "packager/bytes/pipelined_sink.h"
#include "packager/bytes/work_folder.h"
#include "packager/report/findings.h"
#include "packager/writing/archive_writer.h"

namespace quillory::pack {
namespace {

using namespace std::chrono_literals;

// Ends the work of a job when another one has failed. Of two failures it is never the reason.
struct Stopped {};

// Counts what goes by, and ends the work when it should stop.
class CountingSink : public ByteSink {
 public:
  CountingSink(ByteSink& next, Progress& progress, const std::atomic<bool>& stop)
      : next_(next), progress_(progress), stop_(stop) {}

  void write(std::string_view bytes) override {
    stopIfInterrupted();
    if (stop_) {
      throw Stopped();
    }
    next_.write(bytes);
    progress_.done += bytes.size();
  }

 private:
  ByteSink& next_;
  Progress& progress_;
  const std::atomic<bool>& stop_;
};

void packOne(const PackingJob& job, const PackingOptions& options, FileSink& file,
             Progress& progress, const std::atomic<bool>& stop) {
  LzmaSinkAdapter compressed(options.level, file);
  CountingSink counted(compressed, progress, stop);
  PipelinedSink pipe(counted);
  ArchiveWriter archive(pipe);
  if (job.identity) {
    archive.identity(*job.identity);
  }
  archive.tree(*job.content);
  if (options.key != nullptr) {
    archive.endSigned(*options.key, options.salt);
  } else {
    archive.end();
  }
  pipe.finish();
  compressed.finish();
}

}  // namespace

void packAll(const std::vector<PackingJob>& jobs, const PackingOptions& options,
             Reporter& reporter) {
  Progress progress;
  std::atomic<bool> stop = false;
  std::vector<std::unique_ptr<FileSink>> files;
  std::vector<std::future<void>> running;
  for (const PackingJob& job : jobs) {
    progress.total += job.content->totalBytes();
    files.push_back(std::make_unique<FileSink>(job.output, 0666, Durability::kLeftToTheSystem));
  }
  for (std::size_t i = 0; i < jobs.size(); ++i) {
    running.push_back(std::async(std::launch::async, [&, i] {
      try {
        packOne(jobs[i], options, *files[i], progress, stop);
      } catch (...) {
        stop = true;
        throw;
      }
    }));
  }
  std::exception_ptr failure;
  for (std::future<void>& job : running) {
    while (job.wait_for(100ms) != std::future_status::ready) {
      reporter.progress("packing", progress);
    }
    try {
      job.get();
    } catch (const Stopped&) {
      // Whatever stopped it is, or will be, in `failure`.
    } catch (...) {
      failure = failure ? failure : std::current_exception();
    }
  }
  reporter.endProgress();
  if (failure) {
    std::rethrow_exception(failure);
  }
  for (const auto& file : files) {
    file->commit();
  }
}

}  // namespace quillory::pack
