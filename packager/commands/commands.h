// The commands of quillory-pack, each a function from what was asked for to an exit status.
#pragma once
#include <string>
#include <vector>

#include "packager/reading/file_kind.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

/// What the command line asked for; each command uses some of it.
struct Request {
  ReporterOptions reporter;
  std::string file;
  std::string output;
  std::string key;
  std::string kind;
  std::vector<std::string> texts;
  std::vector<std::string> removed;
  std::string target;  ///< "" for this system
  int bits = 3072;
  int compression = -1;  ///< -1: as the configuration says
  bool unsignedArchives = false;
};

using Command = int (*)(const Request&, Reporter&);

int runInit(const Request& request, Reporter& reporter);
int runKeygen(const Request& request, Reporter& reporter);
int runBundle(const Request& request, Reporter& reporter);
int runInspect(const Request& request, Reporter& reporter);
int runVerify(const Request& request, Reporter& reporter);
int runExtract(const Request& request, Reporter& reporter);
int runSet(const Request& request, Reporter& reporter);
int runDoctor(const Request& request, Reporter& reporter);
int runCompletion(const Request& request, Reporter& reporter);

}  // namespace quillory::pack
