// A release list in the place of the one before, without a build: what "refresh", "rollout" and
// "withdraw" have in common.
#pragma once
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "formats/release_list.h"
#include "packager/commands/command.h"
#include "packager/commands/release_folder.h"
#include "packager/config/config.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

struct ListChangeOptions {
  std::string output;    ///< the folder whose release/ has the list
  std::string channel;   ///< "": that of the configuration
  std::int64_t now = 0;  ///< seconds since 1970
};

/// What is changed: the list in force, with the next number and a new time already.
using ListChange = std::function<void(ReleaseList& list, const ReleaseFolder& folder)>;

struct ChangedList {
  ReleaseList list;
  std::string path;
};

/// Signs the changed list with the keys of the configuration and puts it in place of the one in
/// force, which stays under its number. Throws RejectedInput when there is none, or when the keys
/// are to change, which takes a release; what `change` throws; and PackError. The earlier list is
/// in force then.
ChangedList changeList(const Config& config, const ListChangeOptions& options,
                       const ListChange& change, Reporter& reporter);

/// What every such command can be given behind its own argument.
struct ListArguments {
  std::string config = "quillory.toml";
  std::string output;  ///< "": where the configuration says
  std::string channel;
};
std::vector<Argument> listArguments(ListArguments& given);

/// Does it, and tells of the new list; the exit status.
int runListChange(const ListArguments& given, const ListChange& change, Reporter& reporter);

}  // namespace quillory::pack
