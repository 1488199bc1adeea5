// Whose releases are looked at: application, channel and keys, as the installations of a
// configuration have them.
#pragma once
#include <string>
#include <vector>

#include "packager/commands/command.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

struct TrustArguments {
  std::string config = "quillory.toml";
  std::string channel;            ///< "": that of the configuration
  std::vector<std::string> keys;  ///< files; none: those of the configuration
};
std::vector<Argument> trustArguments(TrustArguments& given);

struct Trusted {
  std::string application;
  std::string channel;
  std::vector<std::string> keys;  ///< in hexadecimal
};

/// Throws RejectedInput and PackError for a configuration or a key that cannot be read.
Trusted trustedBy(const TrustArguments& given, Reporter& reporter);

}  // namespace quillory::pack
