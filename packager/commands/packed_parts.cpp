#include "packager/commands/packed_parts.h"

#include "formats/tail_format.h"

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

}  // namespace

PackedParts packParts(const BundleParts& parts, const PackingOptions& options,
                      const std::string& folder, Reporter& reporter, const std::string& platform) {
  PackedParts packed{
      placeFor(parts.updater, folder + '/' + packedArchiveName(kUpdaterPart)),
      placeFor(parts.application, folder + '/' + packedArchiveName(kApplicationPart)), std::nullopt,
      !platform.empty()};
  std::vector<PackingJob> jobs;
  if (parts.runtime) {
    packed.runtime = placeFor(*parts.runtime, folder + '/' + packedArchiveName(kJrePart));
    jobs.push_back(jobFor(*parts.runtime, *packed.runtime, platform));
  }
  // The updater is Java alone; what is beside the jars of an application may be for one system.
  jobs.push_back(jobFor(parts.updater, packed.updater, platform.empty() ? "" : kAnyPlatform));
  jobs.push_back(jobFor(parts.application, packed.application, platform));
  std::uint64_t total = 0;
  for (const PackingJob& job : jobs) {
    total += job.content->totalBytes();
  }
  reporter.line("packing " + readableSize(total));
  packAll(jobs, options, reporter);
  return packed;
}

}  // namespace quillory::pack
