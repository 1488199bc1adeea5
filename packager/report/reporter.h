// How a command talks: results on standard output, everything else on standard error.
#pragma once
#include <atomic>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "packager/report/findings.h"

namespace quillory::pack {

enum class Verbosity { kQuiet, kNormal, kVerbose };

struct ReporterOptions {
  Verbosity verbosity = Verbosity::kNormal;
  bool json = false;
  bool terminal = false;  ///< standard error is one: a progress bar may be drawn
};

/// Bytes done, counted by working threads, and shown by the one that waits for them.
struct Progress {
  std::uint64_t total = 0;
  std::atomic<std::uint64_t> done{0};
  std::string rest{};  ///< how long it takes still, for people; by the one that waits
};

class Reporter {
 public:
  /// Both streams are borrowed.
  Reporter(std::ostream& out, std::ostream& err, ReporterOptions options);
  ~Reporter();
  Reporter(const Reporter&) = delete;
  Reporter& operator=(const Reporter&) = delete;

  /// A result for people: always shown, but not with --json.
  void result(const std::string& text);
  /// A result for scripts, in the document of --json. Who gives another type than these includes
  /// nlohmann/json.hpp.
  void value(const std::string& name, const std::string& text);
  void value(const std::string& name, const char* text) { value(name, std::string(text)); }
  void value(const std::string& name, std::uint64_t number);
  void value(const std::string& name, bool flag);
  void value(const std::string& name, const nlohmann::ordered_json& value);
  /// A line about what is going on; not with --quiet or --json.
  void line(const std::string& text);
  /// One more, for those who asked with --verbose.
  void detail(const std::string& text);
  /// Whether detail() lines are shown.
  bool showsDetail() const;
  /// Errors are always shown, warnings not with --quiet, notes only with --verbose. With --json
  /// they are kept for the document instead.
  void finding(const Finding& finding);
  /// Each of them, in their order.
  void findings(const Findings& all);

  /// Draws the bar over itself, on a terminal only; call it again and again, then endProgress().
  /// Whatever is said meanwhile wipes the bar first.
  void progress(const std::string& what, const Progress& progress);
  void endProgress();

  /// Ends the command: writes the document of --json, with every value and finding so far. Names
  /// that are not UTF-8 get replacement characters there.
  void finish(const std::string& command, int status);

 private:
  std::ostream& out_;
  std::ostream& err_;
  ReporterOptions options_;
  Findings kept_;
  std::unique_ptr<nlohmann::ordered_json> values_;
  bool barShown_ = false;
};

/// "12.3 MB" and the like, for people.
std::string readableSize(std::uint64_t bytes);

}  // namespace quillory::pack
