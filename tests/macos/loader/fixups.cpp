#include "tests/macos/loader/fixups.h"

#include <cstring>
#include <set>

#include "tests/macos/loader/load_error.h"
#include "tests/macos/loader/opcode_reader.h"

namespace quillory::loader {
namespace {

constexpr std::uint8_t kPointer = 1;
constexpr std::uint8_t kWeakImport = 1;

enum RebaseOpcode : std::uint8_t {
  kRebaseDone = 0x00,
  kRebaseType = 0x10,
  kRebaseSegment = 0x20,
  kRebaseAdvance = 0x30,
  kRebaseAdvanceScaled = 0x40,
  kRebaseTimes = 0x50,
  kRebaseTimesLong = 0x60,
  kRebaseAndAdvance = 0x70,
  kRebaseTimesSkipping = 0x80,
};

enum BindOpcode : std::uint8_t {
  kBindDone = 0x00,
  kBindLibrary = 0x10,
  kBindLibraryLong = 0x20,
  kBindLibrarySpecial = 0x30,
  kBindSymbol = 0x40,
  kBindType = 0x50,
  kBindAddend = 0x60,
  kBindSegment = 0x70,
  kBindAdvance = 0x80,
  kBindOnce = 0x90,
  kBindAndAdvance = 0xA0,
  kBindAndAdvanceScaled = 0xB0,
  kBindTimesSkipping = 0xC0,
};

class Rebasing {
 public:
  explicit Rebasing(const Image& image) : image_(image) {}

  void run(OpcodeReader reader) {
    while (!reader.isAtEnd()) {
      const auto [opcode, immediate] = reader.next();
      switch (opcode) {
        case kRebaseDone:
          return;
        case kRebaseType:
          if (immediate != kPointer) throw LoadError("a rebase of an unknown type");
          break;
        case kRebaseSegment:
          segment_ = immediate;
          offset_ = reader.number();
          break;
        case kRebaseAdvance:
          offset_ += reader.number();
          break;
        case kRebaseAdvanceScaled:
          offset_ += immediate * sizeof(void*);
          break;
        case kRebaseTimes:
          times(immediate, 0);
          break;
        case kRebaseTimesLong:
          times(reader.number(), 0);
          break;
        case kRebaseAndAdvance:
          times(1, reader.number());
          break;
        case kRebaseTimesSkipping: {
          const std::uint64_t count = reader.number();
          times(count, reader.number());
          break;
        }
        default:
          throw LoadError("unknown rebase opcode " + std::to_string(opcode));
      }
    }
  }

 private:
  void times(std::uint64_t count, std::uint64_t skipped) {
    for (std::uint64_t i = 0; i < count; ++i) {
      std::uint8_t* const place = image_.inSegment(segment_, offset_, sizeof(std::uint64_t));
      std::uint64_t value;
      std::memcpy(&value, place, sizeof value);
      value += static_cast<std::uint64_t>(image_.slide());
      std::memcpy(place, &value, sizeof value);
      offset_ += sizeof(void*) + skipped;
    }
  }

  const Image& image_;
  std::size_t segment_ = 0;
  std::uint64_t offset_ = 0;
};

class Binding {
 public:
  Binding(const Image& image, const SymbolFinder& find) : image_(image), find_(find) {}

  // `endsAtDone`: lazy bindings have a "done" behind each of them.
  void run(OpcodeReader reader, bool endsAtDone) {
    segment_ = 0;
    offset_ = 0;
    addend_ = 0;
    library_.clear();
    while (!reader.isAtEnd()) {
      const auto [opcode, immediate] = reader.next();
      if (opcode == kBindDone && endsAtDone) return;
      step(opcode, immediate, reader);
    }
  }

  const std::set<std::string>& missing() const { return missing_; }

 private:
  void step(std::uint8_t opcode, std::uint8_t immediate, OpcodeReader& reader) {
    switch (opcode) {
      case kBindDone:
        break;
      case kBindLibrary:
        setLibrary(immediate);
        break;
      case kBindLibraryLong:
        setLibrary(reader.number());
        break;
      case kBindLibrarySpecial:
        library_ = "(any)";
        break;
      case kBindSymbol:
        symbol_ = reader.text();
        isWeakImport_ = (immediate & kWeakImport) != 0;
        break;
      case kBindType:
        if (immediate != kPointer) throw LoadError(symbol_ + ": a binding of an unknown type");
        break;
      case kBindAddend:
        addend_ = reader.signedNumber();
        break;
      case kBindSegment:
        segment_ = immediate;
        offset_ = reader.number();
        break;
      case kBindAdvance:
        offset_ += reader.number();
        break;
      case kBindOnce:
        times(1, 0);
        break;
      case kBindAndAdvance:
        times(1, reader.number());
        break;
      case kBindAndAdvanceScaled:
        times(1, immediate * sizeof(void*));
        break;
      case kBindTimesSkipping: {
        const std::uint64_t count = reader.number();
        times(count, reader.number());
        break;
      }
      default:
        throw LoadError("unknown bind opcode " + std::to_string(opcode));
    }
  }

  void setLibrary(std::uint64_t number) {
    if (number == 0 || number > image_.libraries().size())
      throw LoadError("a symbol of library " + std::to_string(number) + ", which is not loaded");
    library_ = image_.libraries()[number - 1];
  }

  void times(std::uint64_t count, std::uint64_t skipped) {
    const auto value = reinterpret_cast<std::uint64_t>(find_(symbol_, library_));
    if (value == 0 && !isWeakImport_) missing_.insert(symbol_ + " (" + library_ + ")");
    for (std::uint64_t i = 0; i < count; ++i) {
      const std::uint64_t bound = value == 0 ? 0 : value + static_cast<std::uint64_t>(addend_);
      std::memcpy(image_.inSegment(segment_, offset_, sizeof bound), &bound, sizeof bound);
      offset_ += sizeof(void*) + skipped;
    }
  }

  const Image& image_;
  const SymbolFinder& find_;
  std::string symbol_;
  std::string library_;
  bool isWeakImport_ = false;
  std::size_t segment_ = 0;
  std::uint64_t offset_ = 0;
  std::int64_t addend_ = 0;
  std::set<std::string> missing_;
};

}  // namespace

void rebasePointers(const Image& image) {
  const FixupsCommand& fixups = image.fixups();
  Rebasing(image).run(OpcodeReader(image.filePart(fixups.rebaseOffset, fixups.rebaseSize)));
}

void bindSymbols(const Image& image, const SymbolFinder& find) {
  const FixupsCommand& fixups = image.fixups();
  Binding binding(image, find);
  binding.run(OpcodeReader(image.filePart(fixups.bindOffset, fixups.bindSize)), true);
  binding.run(OpcodeReader(image.filePart(fixups.lazyBindOffset, fixups.lazyBindSize)), false);
  // A weak definition is the image's own unless another image has one, too; there is none here.
  if (binding.missing().empty()) return;
  std::string text = "symbols that the loader does not have:";
  for (const std::string& symbol : binding.missing()) text += "\n  " + symbol;
  throw LoadError(text);
}

}  // namespace quillory::loader
