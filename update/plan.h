// What an installation lacks of a release, and by which road each component comes.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "formats/release_list.h"
#include "update/installation.h"
#include "update/versions.h"

namespace quillory::update {

/// A delta, and the installed folder that it restores the new archive from.
struct DeltaRoad {
  ReleaseDelta delta;
  std::string baseFolder;  ///< its name; of a runtime that of its bundle
  std::string home{};      ///< of a runtime, what is behind the bundle's home; else ""
};

struct PlannedComponent {
  ReleaseComponent component;
  std::string folder;             ///< its final name in the master folder
  std::optional<DeltaRoad> road;  ///< nothing: the whole archive
  bool isStaged = false;          ///< it is here already, unpacked and verified

  /// Bytes to load; 0 of what is staged.
  std::int64_t size() const;
};

struct Plan {
  std::vector<PlannedComponent> components;  ///< in the order of the list; none: all is there

  bool isEmpty() const { return components.empty(); }
  bool isStaged() const;
  std::int64_t size() const;
  /// What the file system must have room for: archives, and what they hold.
  std::int64_t room() const;
};

/// What is installed, looked up once.
struct Inventory {
  std::vector<InstalledVersion> applications;
  std::vector<InstalledVersion> runtimes;
  std::vector<InstalledVersion> updaters;
  std::vector<Trial> trials;
};
Inventory takeInventory(const Installation& installation);

/// Whether a version of the application is withdrawn by the list.
bool isWithdrawn(const ReleaseList& list, const InstalledVersion& version);

/// The version of the application that is started when it is left to itself: the newest that is
/// neither withdrawn nor blocked; null where there is none.
const InstalledVersion* startedVersion(const ReleaseList& list, const Inventory& inventory);

/// Why the release cannot be put into folders here, in words; "" when it can.
std::string whyNotUsable(const ReleaseList& list, const Installation& installation);

/// An application that has been blocked here is not planned again, nor is what comes with it.
Plan planFor(const ReleaseList& list, const Installation& installation, const Inventory& inventory);

}  // namespace quillory::update
