// An installation in a folder for temporary files, which takes a release with the code of
// quillory-update: what it refuses, an installation refuses.
#pragma once
#include <string>
#include <vector>

#include "formats/release_list.h"
#include "packager/bytes/work_folder.h"
#include "update/installation.h"
#include "update/plan.h"
#include "update/transport.h"

namespace quillory::pack {

struct SimulatedStep {
  std::string component;  ///< its name
  std::string version;
  std::string from;        ///< the version that a delta led from; "" for the whole archive
  std::int64_t bytes = 0;  ///< to load
  std::string archive;     ///< the file that has all of it
};

class SimulatedClient {
 public:
  /// An installation without anything, of an application whose archives these keys have signed.
  SimulatedClient(const std::string& application, std::string base, std::vector<std::string> keys);

  /// Keys that a list has brought: archives of theirs are taken as well.
  void trust(const std::vector<std::string>& keys);

  /// Loads, restores, verifies, unpacks and puts in place what the list has and the installation
  /// has not; the steps in their order. Throws PackError with the client's reason.
  std::vector<SimulatedStep> take(const ReleaseList& list, update::Transport& transport);

 private:
  WorkFolder work_;
  update::Installation installation_;
  std::vector<std::string> servers_;
  std::vector<std::string> keys_;
};

}  // namespace quillory::pack
