#include "update/state.h"

#include <algorithm>
#include <array>

#include "formats/release_list_format.h"
#include "formats/strict_records.h"
#include "support/log.h"
#include "support/output_file.h"
#include "support/paths.h"
#include "support/plain_file.h"
#include "support/utf8.h"
#include "update/update_folder.h"

namespace quillory::update {
namespace {

constexpr std::array<const char*, 8> kPhases = {"NONE",   "CHECKING", "AVAILABLE", "DOWNLOADING",
                                                "STAGED", "FAILED",   "FROZEN",    "OFF"};
constexpr std::size_t kMaxText = 1000;
constexpr std::size_t kMaxReason = 4000;
constexpr unsigned kStateMode = 0644;

// What a reader takes: others would have the whole state refused, and a server or a system's
// message can hold anything.
std::string readable(const std::string& value, std::size_t most, bool hasLines) {
  std::string text = value.substr(0, most);
  const bool isText = isUtf8(text);
  for (char& c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (hasLines && (c == '\n' || c == '\t')) continue;
    if (byte < 0x20 || byte == 0x7F || (byte > 0x7F && !isText)) c = '?';
  }
  return text;
}

class Writer {
 public:
  void text(const std::string& value, std::size_t most = kMaxText) {
    bytes_ += readable(value, most, false);
    bytes_ += '\0';
  }
  void lines(const std::string& value, std::size_t most) {
    bytes_ += readable(value, most, true);
    bytes_ += '\0';
  }
  void number(std::int64_t value) { text(std::to_string(std::max<std::int64_t>(value, 0))); }
  void texts(const std::vector<std::string>& values, std::size_t most) {
    number(static_cast<std::int64_t>(values.size()));
    for (const std::string& value : values) text(value, most);
  }
  std::string take() { return std::move(bytes_); }

 private:
  std::string bytes_;
};

std::vector<std::string> readTexts(StrictRecords& records, const char* name, std::int64_t most,
                                   std::size_t longest) {
  std::vector<std::string> texts;
  const std::int64_t count = records.number(name, most);
  for (std::int64_t i = 0; i < count && !records.isRefused(); ++i)
    texts.push_back(records.text(name, longest));
  return texts;
}

Phase readPhase(StrictRecords& records) {
  const std::string name = records.text("Phase", kMaxText);
  const auto* const found = std::find(kPhases.begin(), kPhases.end(), name);
  if (found == kPhases.end()) records.refuse("Phase", "it is no phase");
  return found == kPhases.end() ? Phase::kNone : static_cast<Phase>(found - kPhases.begin());
}

Offer readOffer(StrictRecords& records) {
  Offer offer;
  offer.release = records.number("Offered Release");
  offer.version = records.text("Offered Version", kMaxText);
  offer.shownVersion = records.text("Offered Shown Version", kMaxText);
  offer.size = records.number("Offered Size");
  offer.isCritical = records.number("Offered Critical", 1) == 1;
  offer.notes = records.lines("Offered Notes", kMaxNotesBytes);
  return offer;
}

void writeOffer(Writer& writer, const Offer& offer) {
  writer.number(offer.release);
  writer.text(offer.version);
  writer.text(offer.shownVersion);
  writer.number(offer.size);
  writer.number(offer.isCritical ? 1 : 0);
  writer.lines(offer.notes, kMaxNotesBytes);
}

void readChannels(StrictRecords& records, State& state) {
  state.chosenChannel = records.text("Chosen Channel", kMaxText);
  state.askedChannel = records.text("Asked Channel", kMaxText);
  const std::int64_t count = records.number("Channel Count", kMaxChannels);
  for (std::int64_t i = 0; i < count && !records.isRefused(); ++i) {
    std::string name = records.text("Channel Name", kMaxText);
    state.otherChannels.emplace_back(std::move(name), records.number("Channel Release"));
  }
}

}  // namespace

const char* nameOf(Phase phase) { return kPhases[static_cast<std::size_t>(phase)]; }

std::string bytesOf(const State& state) {
  Writer writer;
  writer.number(kStateVersion);
  writer.number(state.highestRelease);
  writer.text(state.draw);
  writer.number(state.lastCheck);
  writer.number(state.lastAnswer);
  writer.text(state.answerETag);
  writer.texts(state.keys, kMaxKeyDigits);
  writer.text(nameOf(state.phase));
  writer.lines(state.reason, kMaxReason);
  writeOffer(writer, state.offer);
  writer.text(state.stagedVersion);
  writer.text(state.previousVersion);
  writer.text(state.skippedVersion);
  writer.number(state.remindAfter);
  writer.texts(state.withdrawn, kMaxText);
  writer.number(state.failures);
  writer.number(state.nextCheck);
  writer.text(state.chosenChannel);
  writer.text(state.askedChannel);
  writer.number(static_cast<std::int64_t>(state.otherChannels.size()));
  for (const auto& [name, release] : state.otherChannels) {
    writer.text(name);
    writer.number(release);
  }
  return writer.take();
}

std::optional<State> stateOf(const std::string& bytes) {
  StrictRecords records(bytes);
  State state;
  // What a newer quillory-update adds stands behind these.
  if (records.number("Update State VER") != kStateVersion) return std::nullopt;
  state.highestRelease = records.number("Highest Release");
  state.draw = records.text("Draw", kMaxText);
  state.lastCheck = records.number("Last Check");
  state.lastAnswer = records.number("Last Answer");
  state.answerETag = records.text("Answer ETag", kMaxText);
  state.keys = readTexts(records, "Key", kMaxListKeys, kMaxKeyDigits);
  state.phase = readPhase(records);
  state.reason = records.lines("Reason", kMaxReason);
  state.offer = readOffer(records);
  state.stagedVersion = records.text("Staged Version", kMaxText);
  state.previousVersion = records.text("Previous Version", kMaxText);
  state.skippedVersion = records.text("Skipped Version", kMaxText);
  state.remindAfter = records.number("Remind After");
  state.withdrawn = readTexts(records, "Withdrawn Version", kMaxWithdrawn, kMaxText);
  state.failures = records.number("Failures");
  state.nextCheck = records.number("Next Check");
  readChannels(records, state);
  if (records.isRefused()) return std::nullopt;
  return state;
}

State readState(const std::string& updatesFolder) {
  const std::string path = joinPath(updatesFolder, kStateFile);
  const std::optional<std::string> bytes = readPlainFile(path, kMaxStateBytes);
  if (!bytes) return {};
  std::optional<State> state = stateOf(*bytes);
  if (state) return *std::move(state);
  logMessage("[Update] What was known about updates is damaged, and begins anew: %s\n",
             path.c_str());
  return {};
}

bool writeState(const State& state, const std::string& updatesFolder) {
  OutputFile file(joinPath(updatesFolder, kStateFile), ExactMode{kStateMode});
  const std::string bytes = bytesOf(state);
  if (file.isOpen() && file.write(bytes.data(), bytes.size()) && file.commit()) return true;
  logMessage("[Update] What is known about updates cannot be written: %s\n", file.error().c_str());
  return false;
}

void askFor(State& state, const std::string& channel) {
  if (state.askedChannel == channel) return;
  auto& others = state.otherChannels;
  const auto isThat = [&](const auto& other) { return other.first == channel; };
  const auto known = std::find_if(others.begin(), others.end(), isThat);
  const std::int64_t highest = known == others.end() ? 0 : known->second;
  if (known != others.end()) others.erase(known);
  if (!state.askedChannel.empty()) {
    if (others.size() == kMaxChannels) others.erase(others.begin());
    others.emplace_back(state.askedChannel, state.highestRelease);
  }
  state.askedChannel = channel;
  state.highestRelease = highest;
  state.answerETag.clear();
}

}  // namespace quillory::update
