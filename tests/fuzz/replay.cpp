// Runs a fuzz target without its fuzzer: replay_NAME SECONDS FOLDER. Every file of the folder goes
// through the target as it is, cut at many lengths, and with single bytes changed, until the time
// is over. The changes are the same each time.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

// Not every target has one.
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<std::string> corpusIn(const std::string& folder) {
  std::vector<std::string> names, inputs;
  for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().string());
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) {
    std::ifstream file(name, std::ios::binary);
    inputs.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  return inputs;
}

void run(const std::string& input) {
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

// The numbers of a generator that everybody knows: nothing here depends on luck.
std::size_t next(std::uint64_t& state) {
  state = state * 6364136223846793005U + 1442695040888963407U;
  return static_cast<std::size_t>(state >> 33);
}

std::string changed(std::string input, std::uint64_t& state) {
  if (input.empty()) return input;
  const std::size_t at = next(state) % input.size();
  switch (next(state) % 3) {
    case 0:
      input.resize(at);
      break;
    case 1:
      input[at] = static_cast<char>(next(state));
      break;
    default:
      input.insert(at, input.substr(next(state) % input.size(), next(state) % 64));
      break;
  }
  return input;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  if (LLVMFuzzerInitialize != nullptr && LLVMFuzzerInitialize(&argc, &argv) != 0) return 2;
  const std::vector<std::string> corpus = corpusIn(argv[2]);
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(std::atoi(argv[1]));
  for (const std::string& input : corpus) run(input);
  std::uint64_t state = 1;
  std::size_t runs = 0;
  while (!corpus.empty() && std::chrono::steady_clock::now() < end) {
    std::string input = corpus[runs++ % corpus.size()];
    for (std::size_t i = next(state) % 4; i > 0; --i) input = changed(input, state);
    run(input);
  }
  std::fprintf(stderr, "%zu inputs, and %zu that were made of them\n", corpus.size(), runs);
  return corpus.empty() ? 1 : 0;
}
