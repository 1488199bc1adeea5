#include <sys/stat.h>

#include <filesystem>

#include "packager/bytes/byte_sinks.h"
#include "packager/bytes/work_folder.h"
#include "packager/content/tool_runner.h"
#include "packager/report/findings.h"
#include "packager/writing/packed_folder.h"

namespace quillory::pack {

// The system's tar writes both formats. It stores the times of files, so all get the same one
// first.
void writePackedFolder(PackedFormat format, const std::vector<PackedEntry>& entries,
                       const std::string& output) {
  namespace fs = std::filesystem;
  const WorkFolder work(fs::path(output).parent_path().string());
  const std::string tree = work / "tree";
  for (const PackedEntry& entry : entries) {
    const fs::path place = fs::path(tree) / entry.path;
    fs::create_directories(place.parent_path());
    if (entry.source.empty()) {
      writeWholeFile(place.string(), entry.bytes, entry.mode);
    } else {
      fs::copy(entry.source, place, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    }
  }
  runTool(
      {"/usr/bin/find", tree, "-exec", "/usr/bin/touch", "-h", "-t", "198001010000", "{}", "+"});
  const std::string made = work / "made";
  const std::vector<std::string> kind = format == PackedFormat::kZip
                                            ? std::vector<std::string>{"--format", "zip"}
                                            : std::vector<std::string>{"--format", "gnutar", "-J"};
  std::vector<std::string> command = {
      "/usr/bin/tar", "-c", "-f", made, "--uid", "0", "--gid", "0", "--no-mac-metadata"};
  command.insert(command.end(), kind.begin(), kind.end());
  command.insert(command.end(), {"-C", tree, "."});
  runTool(command);
  std::error_code error;
  fs::rename(made, output, error);
  if (error) {
    throw PackError("cannot be put in place: " + error.message(), "", {output, 0});
  }
}

}  // namespace quillory::pack
