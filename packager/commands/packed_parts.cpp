#include "packager/commands/packed_parts.h"

namespace quillory::pack {
namespace {

PackedPart placeFor(const BundlePart& part, const std::string& archive) {
  return {part.name, part.version, archive};
}

}  // namespace

PackedParts packParts(const BundleParts& parts, const PackingOptions& options,
                      const std::string& folder, Reporter& reporter) {
  PackedParts packed{placeFor(parts.updater, folder + "/GU.p2.l2"),
                     placeFor(parts.application, folder + "/App.p2.l2"), std::nullopt};
  std::vector<PackingJob> jobs;
  if (parts.runtime) {
    packed.runtime = placeFor(*parts.runtime, folder + "/JRE.p2.l2");
    jobs.push_back({&parts.runtime->content, packed.runtime->archive});
  }
  jobs.push_back({&parts.updater.content, packed.updater.archive});
  jobs.push_back({&parts.application.content, packed.application.archive});
  std::uint64_t total = 0;
  for (const PackingJob& job : jobs) {
    total += job.content->totalBytes();
  }
  reporter.line("packing " + readableSize(total));
  packAll(jobs, options, reporter);
  return packed;
}

}  // namespace quillory::pack
