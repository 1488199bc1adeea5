#include "launcher/dynamic_params.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "formats/markers.h"
#include "formats/params_format.h"
#include "formats/record_stream.h"
#include "formats/text_encodings.h"
#include "java/launch_flow.h"
#include "support/files.h"
#include "support/log.h"
#include "support/owned.h"
#include "ui/splash.h"

namespace quillory {
namespace {

constexpr std::size_t kLoggedValueLength = 100;
constexpr std::size_t kScratchLength = 99;
constexpr int kJreOverrideCapacity = 500;
constexpr char kRule[] = "++++++++++++++++++++++++++++++++++++++++++++++++\n";

int toInt(const std::string& text) {
  const long value = std::strtol(text.c_str(), nullptr, 10);
  return static_cast<int>(std::clamp<long>(value, INT_MIN, INT_MAX));
}

/// Takes in the pairs one by one.
class ParamInterpreter {
 public:
  explicit ParamInterpreter(PropertyBlock& properties) : properties_(properties) {}

  void take(int index, const std::string& name, const std::string& value) {
    logPair(index, name, value);
    addDynamicProperty(properties_, name, value);
    interpret(name, value);
  }

  DynamicParams result() { return std::move(params_); }

 private:
  void logPair(int index, const std::string& name, const std::string& value) const {
    if (value.size() <= kLoggedValueLength) {
      logMessage("[DynProps] Dynamic Param %d: %s=[%s]\n", index, name.c_str(), value.c_str());
      return;
    }
    // Not the value: by intent a long one shows what the last long picture left in the scratch
    // text, or nothing.
    logMessage("[DynProps] Dynamic Param %d: %s=[%s...]\n", index, name.c_str(), scratch_.c_str());
  }

  void interpret(const std::string& name, const std::string& value) {
    if (name == "update_url") {
      logMessage("[DynProps] Dynamic Update URL: %s\n", value.c_str());
      params_.updateUrl = value;
    } else if (name == "wrapper_autotest") {
      params_.isAutoTest = true;
    } else if (name == "show_no_ui") {
      // Never switched off again.
      if (value == "true") params_.isSilent = true;
    } else if (name == "force_spawn") {
      forceSpawn = value == "true";
    } else if (name == "hardened") {
      params_.isHardened = value == "true";
    } else if (name == "error_dialog") {
      params_.showsFailures = value == "true";
    } else if (name == "splash_buffer") {
      if (!value.empty()) splash::setSplashBuffer(toInt(value));
    } else if (name == "splash_image") {
      takeSplashImage(value);
    } else if (name == "jre_name") {
      logMessage("[DynProps] JRE name from dynamic launch properties is %s\n", value.c_str());
      params_.jreName = value;
    }
  }

  void takeSplashImage(const std::string& value) {
    if (value.size() <= kScratchLength) {
      logMessage("[DynProps] Splash Image is %s\n", value.c_str());
    } else {
      scratch_ = value.substr(0, kScratchLength);
      logMessage("[DynProps] Splash Image is %s...\n", scratch_.c_str());
    }
    logMessage("[DynProps] Base64 decoding image...\n");
    std::size_t length = 0;
    const OwnedText image(base64_decode(value.c_str(), value.size(), &length));
    params_.splashImage.reset();
    if (image != nullptr) params_.splashImage.emplace(image.get(), length);
    logMessage("[DynProps] Decode complete [image size is %d]\n",
               image != nullptr ? static_cast<int>(length) : 0);
  }

  PropertyBlock& properties_;
  DynamicParams params_;
  std::string scratch_;
};

std::string chooseParamsFile(const Executable& exe) {
  const std::string outsideSignature = exe.resource(kParamsFileName);
  if (doesFileExist(outsideSignature.c_str())) return outsideSignature;
  return exe.resource(kLocalizedParamsFolder, kLocalizedParamsFileName);
}

}  // namespace

std::optional<DynamicParams> readDynamicParams(const Executable& exe, bool prepareOnly,
                                               PropertyBlock& properties) {
  const OwnedFile file(std::fopen(chooseParamsFile(exe).c_str(), "rb"));
  if (file == nullptr) {
    logMessage(
        "[Extractor] *********************** Failed to extract wrapper params - couldn't open "
        "params file\n");
    return std::nullopt;
  }
  const OwnedText marker(allocAndInitParamsMarker());
  if (scanToMarker(file.get(), marker.get(), kParamsMarkerLength, "Params") == kMarkerNotFound)
    return std::nullopt;

  logMessage("[Extractor] Found Params marker. Extracting now...\n");
  DynamicParams params = readParamPairs(file.get(), properties);
  if (prepareOnly) {
    logMessage(
        "[Extractor] This is an elevated run purely to prepare an installation. Will not show UI "
        "or launch an app\n");
  }
  return params;
}

DynamicParams readParamPairs(std::FILE* stream, PropertyBlock& properties) {
  const int count = readInt(stream, kParamsCountRecord);
  logMessage("\n");
  logMessage("%s", kRule);
  logMessage("+++ Processing %d dynamic properties\n", count);
  logMessage("%s", kRule);

  ParamInterpreter interpreter(properties);
  for (int i = 0; i < count && !isAtEnd(stream); ++i) {
    const std::string name = readText(stream, kParamNameRecord);
    const std::string value = readText(stream, kParamValueRecord, kParamValueCapacity);
    interpreter.take(i, name, value);
  }
  logEndSection("Processing dynamic properties\n");
  return interpreter.result();
}

std::string overrideJreName(const std::string& masterFolder, const std::string& jreName) {
  const std::string path = joinPath(masterFolder, "QYApps", "JreNameOverride");
  const OwnedFile file(std::fopen(path.c_str(), "rb"));
  if (file == nullptr) {
    logMessage("[JREOverride] No JRE name override, will continue to use %s\n", jreName.c_str());
    return jreName;
  }
  logMessage("[JREOverride] Processing JRE Override file (JreNameOverride)\n");
  const std::string name = readText(file.get(), "JRE Override App Name", kJreOverrideCapacity);
  if (name == "-") {
    logMessage("[JREOverride] Ignoring JRE name -, keeping %s\n", jreName.c_str());
    return jreName;
  }
  logMessage("[JREOverride] JRE name overriden to %s\n", name.c_str());
  return name;
}

}  // namespace quillory
