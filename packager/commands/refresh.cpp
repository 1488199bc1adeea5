#include "packager/commands/refresh.h"

#include <memory>

#include "packager/commands/list_change.h"

namespace quillory::pack {

Command refreshCommand() {
  const auto given = std::make_shared<ListArguments>();
  return {"refresh", "issues the release list anew before it expires, without a build",
          "quillory-pack refresh", listArguments(*given), [given](Reporter& reporter) {
            return runListChange(
                *given, [](ReleaseList&, const ReleaseFolder&) {}, reporter);
          }};
}

}  // namespace quillory::pack
