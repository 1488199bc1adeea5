#include "packager/commands/packed_parts.h"

#include <utility>

#include "formats/tail_format.h"
#include "packager/bytes/byte_sinks.h"

namespace quillory::pack {
namespace {

PackedPart placeFor(const BundlePart& part, const std::string& archive) {
  return {part.name, part.version, archive};
}

PackingJob jobFor(const BundlePart& part, const PackedPart& packed, const std::string& platform) {
  PackingJob job{&part.content, packed.archive};
  if (!platform.empty()) {
    job.identity = ArchiveIdentity{part.name, part.version, platform};
  }
  return job;
}

// All of them are looked up before the first is copied: what `earlier` throws leaves nothing.
void copyEarlier(std::vector<PackingJob>& jobs, const ArchiveSource& earlier, Reporter& reporter) {
  std::vector<std::string> sources;
  for (const PackingJob& job : jobs) {
    sources.push_back(earlier(job));
  }
  std::vector<PackingJob> rest;
  for (std::size_t i = 0; i < jobs.size(); ++i) {
    if (sources[i].empty()) {
      rest.push_back(jobs[i]);
      continue;
    }
    FileSink copy(jobs[i].output, 0666, Durability::kLeftToTheSystem);
    copyFileInto(copy, sources[i]);
    copy.commit();
    reporter.line("the " + jobs[i].content->name() + " is the one of an earlier release");
  }
  jobs = std::move(rest);
}

}  // namespace

PackedParts packParts(const BundleParts& parts, const PackingOptions& options,
                      const std::string& folder, Reporter& reporter, const std::string& platform,
                      const ArchiveSource& earlier) {
  PackedParts packed{
      placeFor(parts.updater, folder + '/' + packedArchiveName(kUpdaterPart)),
      placeFor(parts.application, folder + '/' + packedArchiveName(kApplicationPart)), std::nullopt,
      !platform.empty()};
  std::vector<PackingJob> jobs;
  if (parts.runtime) {
    packed.runtime = placeFor(*parts.runtime, folder + '/' + packedArchiveName(kJrePart));
    jobs.push_back(jobFor(*parts.runtime, *packed.runtime, platform));
  }
  // What is beside the jars of an application may be for one system. An updater is Java alone
  // unless it has programs.
  const bool isAllJava = !parts.updater.content.contains(kUpdateProgramName);
  jobs.push_back(jobFor(parts.updater, packed.updater,
                        platform.empty() || !isAllJava ? platform : kAnyPlatform));
  jobs.push_back(jobFor(parts.application, packed.application, platform));
  if (earlier) {
    copyEarlier(jobs, earlier, reporter);
  }
  std::uint64_t total = 0;
  for (const PackingJob& job : jobs) {
    total += job.content->totalBytes();
  }
  reporter.line("packing " + readableSize(total));
  packAll(jobs, options, reporter);
  return packed;
}

}  // namespace quillory::pack
