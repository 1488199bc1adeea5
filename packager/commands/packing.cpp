#include "packager/commands/packing.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <filesystem>
#include <future>
#include <memory>
#include <optional>
#include <system_error>
#include <thread>

#include "formats/sha256.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/bytes/piecewise_lzma_sink.h"
#include "packager/bytes/pipelined_sink.h"
#include "packager/bytes/work_folder.h"
#include "packager/content/compression_tuning.h"
#include "packager/content/content_cuts.h"
#include "packager/report/findings.h"
#include "packager/report/rest_time.h"
#include "packager/writing/archive_writer.h"

namespace quillory::pack {
namespace {

using namespace std::chrono_literals;

// Ends the work of a job when another one has failed. Of two failures it is never the reason.
struct Stopped {};

// Ends the work when it should stop.
void stopIfAsked(const std::atomic<bool>& stop) {
  stopIfInterrupted();
  if (stop) {
    throw Stopped();
  }
}

// Hands on what goes by until the work should stop.
class WatchedSink : public ByteSink {
 public:
  WatchedSink(ByteSink& next, const std::atomic<bool>& stop) : next_(next), stop_(stop) {}

  void write(std::string_view bytes) override {
    stopIfAsked(stop_);
    next_.write(bytes);
  }

 private:
  ByteSink& next_;
  const std::atomic<bool>& stop_;
};

// Hands on what comes, and knows the digest of what came until it was asked for that.
class DigestingSink : public ByteSink {
 public:
  explicit DigestingSink(ByteSink* next) : next_(next) {}
  void write(std::string_view bytes) override {
    if (digest_) {
      digest_->update(bytes);
    }
    if (next_ != nullptr) {
      next_->write(bytes);
    }
  }
  std::string hex() {
    const std::string hex = digest_->hex();
    digest_.reset();
    return hex;
  }

 private:
  ByteSink* next_;
  std::optional<Sha256> digest_ = Sha256();
};

// All of an archive but its end, which is a signature.
void writeContent(const PackingJob& job, ArchiveWriter& archive) {
  if (job.identity) {
    archive.identity(*job.identity);
  }
  archive.tree(*job.content);
}

// What an archive begins with.
std::uint64_t bytesBefore(const PackingJob& job) {
  StringSink begun;
  ArchiveWriter archive(begun);
  if (job.identity) {
    archive.identity(*job.identity);
  }
  return begun.bytes().size();
}

// Everything that its bytes are made of, but for the lot that a signature draws.
std::string cacheKeyOf(const std::string& content, const PackingOptions& options,
                       const LzmaTuning& tuning) {
  CacheKey key("archive 3");
  key.add(content);
  for (const int number : {options.level, tuning.literalContextBits, tuning.literalPositionBits,
                           tuning.positionBits, static_cast<int>(tuning.dictionary >> 10),
                           tuning.searchDepth, static_cast<int>(options.salt)}) {
    key.add(std::to_string(number));
  }
  key.add(options.key != nullptr ? options.key->publicHex() : "");
  return key.hex();
}

// Everything that a compressed piece is made of.
std::string pieceKeyOf(const LzmaPiece& piece, int level, const LzmaTuning& tuning) {
  CacheKey key("piece 1");
  key.add(piece.bytes);
  for (const std::size_t number : {piece.known, piece.reach, static_cast<std::size_t>(level),
                                   static_cast<std::size_t>(tuning.literalContextBits),
                                   static_cast<std::size_t>(tuning.literalPositionBits),
                                   static_cast<std::size_t>(tuning.positionBits),
                                   // What is as large as the piece does as well.
                                   std::min(tuning.dictionary, piece.bytes.size()),
                                   static_cast<std::size_t>(tuning.searchDepth)}) {
    key.add(std::to_string(number));
  }
  return key.hex();
}

// One archive on its way: copied from the cache, or made and then kept there.
class OneArchive {
 public:
  // Its pieces become parts of the work.
  OneArchive(const PackingJob& job, const PackingOptions& options, PieceSlots& slots,
             std::deque<WorkPart>& work)
      : job_(job),
        options_(options),
        slots_(slots),
        cuts_(cutsFor(*job.content, bytesBefore(job))),
        tuning_(tuningFor(*job.content, options.level, cuts_)) {
    std::uint64_t start = 0;
    for (std::size_t i = 0; i <= cuts_.size(); ++i) {
      const std::uint64_t end =
          i < cuts_.size() ? cuts_[i].start : std::max(start, job.content->totalBytes());
      const std::size_t known = i > 0 ? cuts_[i - 1].known : 0;
      parts_.push_back(
          &work.emplace_back(known / kKnownShare + end - start + (end - start) / kSplicedShare));
      start = end;
    }
  }

  void make(const std::atomic<bool>& stop) {
    if (options_.cache != nullptr) {
      DigestingSink digest(nullptr);
      WatchedSink watched(digest, stop);
      ArchiveWriter archive(watched);
      writeContent(job_, archive);
      expected_ = digest.hex();
      isFromCache_ =
          options_.cache->fetchFile(cacheKeyOf(expected_, options_, tuning_), job_.output);
    }
    if (isFromCache_) {
      for (WorkPart* part : parts_) {
        part->isSkipped = true;
      }
    } else {
      pack(stop);
    }
  }

  // Gives it its name.
  void finish() {
    if (file_) {
      file_->commit();
    }
    // A file that changed meanwhile is in an archive of another name than it was looked for.
    if (options_.cache != nullptr && !isFromCache_ && packed_ == expected_) {
      options_.cache->keepFile(cacheKeyOf(packed_, options_, tuning_), job_.output);
    }
  }

  void giveUp() {
    if (isFromCache_) {
      std::error_code ignored;
      std::filesystem::remove(job_.output, ignored);
    }
  }

  bool isFromCache() const { return isFromCache_; }
  const std::string& name() const { return job_.content->name(); }

 private:
  void pack(const std::atomic<bool>& stop) {
    file_ = std::make_unique<FileSink>(job_.output, 0666, Durability::kLeftToTheSystem);
    PiecewiseLzmaSink compressed(
        options_.level, *file_, tuning_, cuts_, slots_,
        [&](std::size_t piece, std::size_t bytes) {
          stopIfAsked(stop);
          parts_.at(piece)->done += bytes;
        },
        store());
    PipelinedSink pipe(compressed);
    DigestingSink digest(&pipe);
    {
      ArchiveWriter archive(digest);
      writeContent(job_, archive);
      packed_ = options_.cache != nullptr ? digest.hex() : "";
      if (options_.key != nullptr) {
        archive.endSigned(*options_.key, options_.salt);
      } else {
        archive.end();
      }
    }
    pipe.finish();
    compressed.finish();
  }

  // What a change elsewhere in the archive leaves as it is.
  PieceStore store() {
    if (options_.cache == nullptr) {
      return {};
    }
    return {[this](std::size_t number, const LzmaPiece& piece, ByteSink& packed) {
              const auto kept =
                  options_.cache->fetchBytes(pieceKeyOf(piece, options_.level, tuning_));
              if (kept) {
                packed.write(*kept);
                parts_.at(number)->isSkipped = true;
              }
              return kept.has_value();
            },
            [this](const LzmaPiece& piece, const std::string& packed) {
              options_.cache->keepBytes(pieceKeyOf(piece, options_.level, tuning_), packed);
            }};
  }

  const PackingJob& job_;
  const PackingOptions& options_;
  PieceSlots& slots_;
  std::vector<LzmaCut> cuts_;
  LzmaTuning tuning_;
  std::vector<WorkPart*> parts_;
  std::unique_ptr<FileSink> file_;
  std::string expected_;  // digests of the content, before and while it is packed
  std::string packed_;
  bool isFromCache_ = false;
};

// The bar, and how long it takes still.
class ShownWork {
 public:
  ShownWork(const std::deque<WorkPart>& work, std::uint64_t contentBytes)
      : work_(work), contentBytes_(contentBytes) {}

  void show(Reporter& reporter) {
    Progress progress;
    std::uint64_t total = 0;
    std::uint64_t done = 0;
    for (const WorkPart& part : work_) {
      total += part.total;
      done += part.isSkipped ? part.total : std::min<std::uint64_t>(part.done, part.total);
    }
    progress.total = contentBytes_;
    progress.done =
        static_cast<std::uint64_t>(static_cast<double>(contentBytes_) * static_cast<double>(done) /
                                   static_cast<double>(std::max<std::uint64_t>(total, 1)));
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start_;
    rest_.look(elapsed.count(), work_);
    progress.rest = readableRest(rest_.rest());
    reporter.progress("packing", progress);
  }

 private:
  const std::deque<WorkPart>& work_;
  std::uint64_t contentBytes_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  RestTime rest_{std::max(std::thread::hardware_concurrency(), 1u)};
};

}  // namespace

void packAll(const std::vector<PackingJob>& jobs, const PackingOptions& options,
             Reporter& reporter) {
  std::deque<WorkPart> work;
  std::atomic<bool> stop = false;
  PieceSlots slots(usualPieceSlots());
  std::vector<std::unique_ptr<OneArchive>> archives;
  std::vector<std::future<void>> running;
  std::uint64_t contentBytes = 0;
  for (const PackingJob& job : jobs) {
    contentBytes += job.content->totalBytes();
    archives.push_back(std::make_unique<OneArchive>(job, options, slots, work));
  }
  for (const auto& archive : archives) {
    running.push_back(std::async(std::launch::async, [&stop, one = archive.get()] {
      try {
        one->make(stop);
      } catch (...) {
        stop = true;
        throw;
      }
    }));
  }
  std::exception_ptr failure;
  ShownWork shown(work, contentBytes);
  for (std::future<void>& job : running) {
    while (job.wait_for(100ms) != std::future_status::ready) {
      shown.show(reporter);
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
  for (const auto& archive : archives) {
    failure ? archive->giveUp() : archive->finish();
    if (archive->isFromCache()) {
      reporter.detail("the " + archive->name() + " is in the cache as it was packed before");
    }
  }
  if (failure) {
    std::rethrow_exception(failure);
  }
}

}  // namespace quillory::pack
