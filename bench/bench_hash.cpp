// Our Keccak against OpenSSL's (SHA3-256 has the same rate and the same permutation), and the mixed
// digest against its two halves. The two sides of a comparison take turns within one benchmark, so
// that a busy machine slows both; the counter "ratio" is the median of the rounds.
#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

#include "formats/keccak.h"
#include "formats/mixed_hash.h"

namespace {

using Bytes = std::vector<unsigned char>;

template <typename Work>
double secondsOf(Work&& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double medianOf(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// Times both sides turn by turn; "ratio" is time of `other` / time of `ours`, above 1 when ours is
/// faster.
template <typename Ours, typename Other>
void compare(benchmark::State& state, std::size_t bytes, Ours&& ours, Other&& other) {
  std::vector<double> ratios;
  double ourSeconds = 0;
  double otherSeconds = 0;
  for (auto _ : state) {
    const double ourTime = secondsOf(ours);
    const double otherTime = secondsOf(other);
    ratios.push_back(otherTime / ourTime);
    ourSeconds += ourTime;
    otherSeconds += otherTime;
    state.SetIterationTime(ourTime);
  }
  const double megabytes =
      static_cast<double>(state.iterations()) * static_cast<double>(bytes) / 1e6;
  state.counters["MB/s"] = megabytes / ourSeconds;
  state.counters["other MB/s"] = megabytes / otherSeconds;
  state.counters["ratio"] = medianOf(std::move(ratios));
}

void hashWith(const ltc_hash_descriptor& hash, const Bytes& data) {
  hash_state md;
  unsigned char digest[MAXBLOCKSIZE];
  hash.init(&md);
  hash.process(&md, data.data(), data.size());
  hash.done(&md, digest);
  benchmark::DoNotOptimize(digest);
}

void keccakAgainstOpenSsl(benchmark::State& state) {
  const Bytes data(static_cast<std::size_t>(state.range(0)), 0x5a);
  const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(),
                                                                        EVP_MD_CTX_free);
  // Fetched once: looking an algorithm up is slow and is no part of hashing.
  const std::unique_ptr<EVP_MD, decltype(&EVP_MD_free)> sha3(
      EVP_MD_fetch(nullptr, "SHA3-256", nullptr), EVP_MD_free);
  compare(
      state, data.size(), [&] { hashWith(quillory::sha3_256_descriptor, data); },
      [&] {
        unsigned char digest[EVP_MAX_MD_SIZE];
        EVP_DigestInit_ex2(context.get(), sha3.get(), nullptr);
        EVP_DigestUpdate(context.get(), data.data(), data.size());
        EVP_DigestFinal_ex(context.get(), digest, nullptr);
        benchmark::DoNotOptimize(digest);
      });
}

void mixedAgainstItsHalves(benchmark::State& state) {
  const Bytes data(static_cast<std::size_t>(state.range(0)), 0x5a);
  compare(
      state, data.size(), [&] { hashWith(quillory::mixed_descriptor, data); },
      [&] {
        hashWith(sha256_desc, data);
        hashWith(quillory::sha3_256_descriptor, data);
      });
}

BENCHMARK(keccakAgainstOpenSsl)->Arg(16384)->Arg(1 << 20)->Arg(64 << 20)->UseManualTime();
BENCHMARK(mixedAgainstItsHalves)->Arg(16384)->Arg(1 << 20)->Arg(64 << 20)->UseManualTime();

}  // namespace

BENCHMARK_MAIN();
