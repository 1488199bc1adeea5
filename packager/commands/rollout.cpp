#include "packager/commands/rollout.h"

#include <memory>

#include "packager/commands/list_change.h"
#include "packager/config/rollout.h"

namespace quillory::pack {
namespace {

struct RolloutArguments : ListArguments {
  std::string plan;
};

int runRollout(const RolloutArguments& given, Reporter& reporter) {
  const std::optional<RolloutPlan> plan = parseRollout(given.plan);
  if (!plan) {
    throw PackError('"' + given.plan + "\" is neither a part nor a time",
                    "quillory-pack rollout 25%, or: quillory-pack rollout 7d");
  }
  const int status = runListChange(
      given,
      [&](ReleaseList& list, const ReleaseFolder&) {
        list.rollout = {list.issued, plan->days, plan->percent};
      },
      reporter);
  reporter.value("percent", static_cast<std::uint64_t>(plan->percent));
  reporter.value("days", static_cast<std::uint64_t>(plan->days));
  reporter.line("offered to " + asText(*plan));
  return status;
}

}  // namespace

Command rolloutCommand() {
  const auto given = std::make_shared<RolloutArguments>();
  std::vector<Argument> arguments = listArguments(*given);
  arguments.insert(arguments.begin(), {.name = "PLAN",
                                       .description = "25% at once, or 7d for all within 7 days",
                                       .into = &given->plan,
                                       .isRequired = true});
  return {"rollout", "changes how many installations are offered the newest release",
          "quillory-pack rollout 50%", std::move(arguments),
          [given](Reporter& reporter) { return runRollout(*given, reporter); }};
}

}  // namespace quillory::pack
