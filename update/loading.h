// Loading: what a plan needs is fetched, restored, verified and unpacked beside its place.
#pragma once
#include <string>
#include <vector>

#include "update/fetch.h"
#include "update/installation.h"
#include "update/lines.h"
#include "update/plan.h"
#include "update/transport.h"

namespace quillory::update {

struct LoadRequest {
  const Installation& installation;
  const std::vector<std::string>& servers;
  const std::vector<std::string>& keys;  ///< one of which has signed each archive
  Transport& transport;
  const Lines& lines;
};

/// Stages every component of the plan (update/staged.h). What is staged already stays; what is
/// there of anything else goes. After a failure the downloads stay, and a later run goes on with
/// them.
///
/// No archive is unpacked whose SHA-256 is not the one that the signed list names, which is not
/// signed itself, or which is not what it should be.
FetchResult load(const LoadRequest& request, const Plan& plan);

}  // namespace quillory::update
