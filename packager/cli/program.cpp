#include "packager/cli/program.h"

#include "packager/cli/completion.h"
#include "packager/cli/manual.h"
#include "packager/commands/bundle.h"
#include "packager/commands/doctor.h"
#include "packager/commands/extract.h"
#include "packager/commands/init.h"
#include "packager/commands/inspect.h"
#include "packager/commands/keygen.h"
#include "packager/commands/refresh.h"
#include "packager/commands/release.h"
#include "packager/commands/rollout.h"
#include "packager/commands/set_params.h"
#include "packager/commands/train.h"
#include "packager/commands/verify.h"
#include "packager/commands/verify_release.h"
#include "packager/commands/withdraw.h"

namespace quillory::pack {

std::vector<Command> allCommands() {
  return {initCommand(),    keygenCommand(),  trainCommand(),         bundleCommand(),
          releaseCommand(), refreshCommand(), rolloutCommand(),       withdrawCommand(),
          inspectCommand(), verifyCommand(),  verifyReleaseCommand(), extractCommand(),
          setCommand(),     doctorCommand(),  completionCommand(),    manualCommand()};
}

Argument helpArgument() {
  return {.name = "-h,--help", .description = "Print this help message and exit"};
}

std::vector<Argument> talkArguments(TalkOptions& options) {
  return {
      {.name = "-q,--quiet", .description = "only results and errors", .into = &options.isQuiet},
      {.name = "-v,--verbose",
       .description = "everything that is worth knowing",
       .into = &options.isVerbose},
      {.name = "--json",
       .description = "one JSON document on standard output, with all findings",
       .into = &options.isJson}};
}

}  // namespace quillory::pack
