#include <benchmark/benchmark.h>

#include "base/guid.h"
#include "base/text_conversion.h"
#include "diagnostics/text_format.h"
#include "sample.h"
#include "time/date_time_parser.h"
#include "time/date_time_text.h"
#include "valuelist/buffer_pool.h"

namespace {

void BufferPoolCycle(benchmark::State& state) {
  const sample::Bytes bytes = sample::SampleBytes(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(Kestrel::CreateBuffer(bytes.data(), bytes.size())->GetData());
}
void PoolSizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgName("bytes")->Arg(1024)->Arg(102400)->Arg(1048576)->UseRealTime();
}
BENCHMARK(BufferPoolCycle)->Apply(PoolSizes);
BENCHMARK(BufferPoolCycle)->Apply(PoolSizes)->ThreadRange(2, 8);

constexpr char kAscii[] = "Camera front door 12";
constexpr char kMixed[] = "Tür Große Halle 12 П東";

/// The text, repeated as often as it fits into 4096 bytes of UTF-8.
std::string Repeated(const std::string& text) {
  std::string repeated;
  while (repeated.size() + text.size() <= 4096) repeated += text;
  return repeated;
}

void Utf8ToWide(benchmark::State& state, const std::string& text) {
  std::u16string wide;
  for (auto _ : state) {
    Kestrel::MultiToWide(wide, platform::CP_UTF8, 0, text.data(), static_cast<int>(text.size()));
    benchmark::DoNotOptimize(wide.data());
  }
  sample::Require(Kestrel::WideToUtf8(wide) == text, "UTF-8");
}

void WideToUtf8(benchmark::State& state, const std::string& text) {
  const std::u16string wide = Kestrel::Utf8ToWide(text);
  std::string narrow;
  for (auto _ : state) {
    Kestrel::WideToMulti(narrow, platform::CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()));
    benchmark::DoNotOptimize(narrow.data());
  }
  sample::Require(narrow == text, "UTF-8");
}

#define CONVERSION(function)                                                               \
  BENCHMARK_CAPTURE(function, ascii_20, std::string(kAscii))->Name(#function "/ascii-20"); \
  BENCHMARK_CAPTURE(function, mixed_20, std::string(kMixed))->Name(#function "/mixed-20"); \
  BENCHMARK_CAPTURE(function, ascii_4K, Repeated(kAscii))->Name(#function "/ascii-4K");    \
  BENCHMARK_CAPTURE(function, mixed_4K, Repeated(kMixed))->Name(#function "/mixed-4K")
CONVERSION(Utf8ToWide);
CONVERSION(WideToUtf8);

void TextFormat(benchmark::State& state) {
  const std::u16string arguments[] = {u"0x80070005", u"camera list"};
  std::u16string text;
  Kestrel::Text::Format(u"Load result: {0} of {1}", text, arguments);
  sample::Require(text == u"Load result: 0x80070005 of camera list", "format");
  for (auto _ : state) {
    std::u16string fresh;
    Kestrel::Text::Format(u"Load result: {0} of {1}", fresh, arguments);
    benchmark::DoNotOptimize(fresh.data());
  }
}
BENCHMARK(TextFormat)->Name("TextFormat/twoArguments");

constexpr std::u16string_view kTime = u"2024-05-01 10:20:30.123 UTC+02:00";

void DateTimeParse(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Kestrel::ParseDateTime(kTime));
}
BENCHMARK(DateTimeParse)->Name("DateTimeParse/zone");

void DateTimeFormat(benchmark::State& state) {
  const Kestrel::TKestrelDateTime time = Kestrel::ParseDateTime(kTime);
  const auto format = [&] { return Kestrel::SystemTimeToStr(time.ToLocalSystemTime(), Kestrel::dtsmDashes); };
  sample::Require(format() == "2024-05-01 10:20:30.123", "date and time");
  for (auto _ : state) benchmark::DoNotOptimize(format());
}
BENCHMARK(DateTimeFormat)->Name("DateTimeFormat/dashes");

constexpr char kGuid[] = "6f9619ff-8b86-d011-b42d-00cf4fc964ff";

void GuidParse(benchmark::State& state) {
  Kestrel::Guid guid;
  for (auto _ : state) {
    benchmark::DoNotOptimize(Kestrel::StringToGuid(kGuid, guid));
    benchmark::DoNotOptimize(guid);
  }
  sample::Require(guid.data1 == 0x6F9619FF && guid.data4[7] == 0xFF, "guid");
}
BENCHMARK(GuidParse);

/// Writes into the same buffer each time, because a fresh text would measure its allocation.
void GuidFormat(benchmark::State& state) {
  const Kestrel::Guid guid = Kestrel::GuidFromString(kGuid);
  char text[Kestrel::GuidTools::kGuidBufferBytes];
  for (auto _ : state) {
    Kestrel::GuidTools::GuidToStringCbA(text, guid);
    benchmark::ClobberMemory();
  }
  sample::Require(std::string_view(text) == kGuid, "guid");
}
BENCHMARK(GuidFormat);

}  // namespace
