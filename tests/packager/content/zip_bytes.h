// Jars, and what is in them, by Python's zipfile: another reader and writer than ours.
#pragma once
#include <gtest/gtest.h>

#include <string>

#include "tests/harness/child_process.h"

namespace quillory::testing {

/// Runs a script in which `z` is the jar at `path`, opened in `mode` ("r", "w"); its output.
inline std::string withZip(const std::string& path, const std::string& mode,
                           const std::string& script) {
  const ChildResult result =
      runChild({"/usr/bin/python3", "-c",
                "import sys, zipfile, io, zlib\n"
                "from zipfile import ZipInfo, ZIP_DEFLATED as D, ZIP_STORED as S\n"
                "with zipfile.ZipFile(sys.argv[1], sys.argv[2], D) as z:\n" +
                    script,
                path, mode});
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  return result.out;
}

/// A line for each entry in the order of the directory: name, method, size, checksum, time.
inline std::string entriesOf(const std::string& path) {
  return withZip(path, "r",
                 "  assert z.testzip() is None\n"
                 "  for i in z.infolist():\n"
                 "    print(i.filename, i.compress_type, i.file_size, '%08x' % i.CRC,\n"
                 "          '%d-%d-%d' % i.date_time[:3])\n");
}

}  // namespace quillory::testing
