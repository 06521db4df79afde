#include <benchmark/benchmark.h>

#include "base/base64.h"
#include "sample.h"

namespace {

using sample::Bytes;

void Base64Encode(benchmark::State& state) {
  const Bytes bytes = sample::SampleBytes(static_cast<std::size_t>(state.range(0)));
  Bytes back;
  sample::Require(Kestrel::Base64Decode(Kestrel::Base64Encode(bytes.data(), bytes.size()), back) && back == bytes,
                  "base64");
  for (auto _ : state) benchmark::DoNotOptimize(Kestrel::Base64Encode(bytes.data(), bytes.size()));
}

void Base64Decode(benchmark::State& state) {
  const Bytes bytes = sample::SampleBytes(static_cast<std::size_t>(state.range(0)));
  const std::string text = Kestrel::Base64Encode(bytes.data(), bytes.size());
  for (auto _ : state) {
    Bytes fresh;
    Kestrel::Base64Decode(text, fresh);
    benchmark::DoNotOptimize(fresh.data());
  }
}

void TextEncode(benchmark::State& state) {
  const Bytes bytes = sample::SampleBytes(static_cast<std::size_t>(state.range(0)));
  std::u16string text(Kestrel::Base64EncodedLength(bytes.size()), u'\0');
  for (auto _ : state) {
    Kestrel::Base64EncodeTo(bytes.data(), bytes.size(), text.data());
    benchmark::ClobberMemory();
  }
}

void TextDecode(benchmark::State& state) {
  const Bytes bytes = sample::SampleBytes(static_cast<std::size_t>(state.range(0)));
  std::u16string text(Kestrel::Base64EncodedLength(bytes.size()), u'\0');
  Kestrel::Base64EncodeTo(bytes.data(), bytes.size(), text.data());
  Bytes back(Kestrel::Base64DecodedBound(text.size()));
  const auto decoded = Kestrel::Base64DecodeTo(std::u16string_view(text), back.data());
  sample::Require(decoded.success && Bytes(back.begin(), back.begin() + static_cast<long>(decoded.byteCount)) == bytes,
                  "text");
  for (auto _ : state) {
    benchmark::DoNotOptimize(Kestrel::Base64DecodeTo(std::u16string_view(text), back.data()));
    benchmark::ClobberMemory();
  }
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgName("bytes")->Arg(64)->Arg(545)->Arg(4096)->Arg(1048576);
}
BENCHMARK(Base64Encode)->Apply(Sizes);
BENCHMARK(Base64Decode)->Apply(Sizes);
BENCHMARK(TextEncode)->Apply(Sizes);
BENCHMARK(TextDecode)->Apply(Sizes);

}  // namespace
