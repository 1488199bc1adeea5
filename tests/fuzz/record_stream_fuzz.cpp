// Reads any bytes as a record stream. The first byte picks the reader and its capacity.
#include <cstring>

#include "formats/markers.h"
#include "formats/record_stream.h"
#include "support/owned.h"
#include "tests/fuzz/quiet.h"

using quillory::fuzz::promise;

namespace {

void readAll(std::FILE* stream, int capacity) {
  while (!quillory::isAtEnd(stream)) {
    const long before = std::ftell(stream);
    const quillory::OwnedText value(quillory::readString(stream, "value", capacity));
    const long taken = std::ftell(stream) - before;
    const long length = static_cast<long>(std::strlen(value.get()));
    promise(length < capacity && (taken == length || taken == length + 1) && taken > 0);
  }
}

void readNumbers(std::FILE* stream) {
  while (!quillory::isAtEnd(stream)) {
    quillory::readInt(stream, "number");
    quillory::readLong(stream, "number");
    quillory::readBoolean(stream, "flag");
  }
}

void scan(std::FILE* stream, const std::uint8_t* data, std::size_t size) {
  const std::string marker(reinterpret_cast<const char*>(data), size / 8);
  const std::uint32_t count =
      quillory::scanToMarker(stream, marker.data(), static_cast<int>(marker.size()), "fuzzed");
  if (count == quillory::kMarkerNotFound) return;
  promise(static_cast<long>(count) == std::ftell(stream) && count <= size);
  promise(std::memcmp(data + count - marker.size(), marker.data(), marker.size()) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  quillory::fuzz::silence();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const int choice = data[0];
  ++data, --size;
  const quillory::OwnedFile stream(fmemopen(const_cast<std::uint8_t*>(data), size, "rb"));
  if (choice == 0) {
    readNumbers(stream.get());
  } else if (choice == 1) {
    scan(stream.get(), data, size);
  } else {
    readAll(stream.get(), choice);
  }
  return 0;
}
