#include <benchmark/benchmark.h>

#include "protocol/camera_reply.h"
#include "protocol/finder_messages.h"
#include "protocol/record_equality.h"
#include "protocol/record_wire.h"
#include "protocol/request_wire.h"
#include "sample.h"
#include "valuelist/buffer_pool.h"

namespace {

using namespace Tarn::CameraFinding;
using Kestrel::ValueList;
using sample::Bytes;

ValueList RecordList(const CameraRecord& record) {
  ValueList list;
  WriteRecord(list, record);
  return list;
}

void ValueListBuild(benchmark::State& state) {
  const CameraRecord record = sample::Camera(33);
  CameraRecord back;
  ReadRecord(RecordList(record), back);
  sample::Require(back == record, "record");
  for (auto _ : state) benchmark::DoNotOptimize(RecordList(record));
}

void ValueListWrite(benchmark::State& state) {
  const ValueList list = RecordList(sample::Camera(33));
  for (auto _ : state) {
    const auto buffer = Kestrel::GetBuffer(Kestrel::SmallBufferList);
    list.Write(*buffer);
    benchmark::DoNotOptimize(buffer->GetData());
  }
}

void ValueListRead(benchmark::State& state) {
  const auto buffer = Kestrel::GetBuffer(Kestrel::SmallBufferList);
  RecordList(sample::Camera(33)).Write(*buffer);
  const Bytes bytes(buffer->GetBytes().begin(), buffer->GetBytes().end());
  buffer->Reset();
  for (auto _ : state) {
    buffer->Reset();
    buffer->Append(bytes.data(), bytes.size());
    ValueList list;
    list.Read(*buffer);
    benchmark::DoNotOptimize(&list);
  }
}

void ValueListGet(benchmark::State& state) {
  const ValueList list = RecordList(sample::Camera(33));
  for (auto _ : state) {
    CameraRecord record;
    ReadRecord(list, record);
    benchmark::DoNotOptimize(&record);
  }
}

void RecordsWrite(benchmark::State& state) {
  const auto cameras = sample::Cameras(static_cast<std::size_t>(state.range(0)));
  const auto poolList = Kestrel::BufferPool::ListFor(cameras.size() * sizeof cameras[0]);
  for (auto _ : state) {
    ValueList list;
    WriteRecordList(list, kCameraInfoListKey, cameras);
    const auto buffer = Kestrel::GetBuffer(poolList);
    list.Write(*buffer);
    benchmark::DoNotOptimize(buffer->GetData());
  }
}

std::vector<CameraRecord> ReadCameras(const Bytes& bytes) {
  const auto buffer = Kestrel::CreateBuffer(bytes.data(), bytes.size());
  ValueList list;
  list.Read(*buffer);
  std::vector<CameraRecord> cameras;
  ReadRecordList(list, kCameraInfoListKey, cameras);
  return cameras;
}

void RecordsRead(benchmark::State& state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  const Bytes bytes = sample::CameraList(count);
  sample::Require(ReadCameras(bytes) == sample::Cameras(count), "records");
  for (auto _ : state) benchmark::DoNotOptimize(ReadCameras(bytes));
}

void ReplyDecode(benchmark::State& state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  const Bytes reply = sample::Reply(count);
  sample::Require(ReadCameraReply(reply) == sample::Cameras(count), "reply");
  for (auto _ : state) benchmark::DoNotOptimize(ReadCameraReply(reply));
}

template <class Message>
void Encode(benchmark::State& state, Message message) {
  for (auto _ : state) benchmark::DoNotOptimize(EncodeRequest(message)->GetData());
}

NetworkCommand SampleNetworkCommand() {
  NetworkCommand command;
  static_cast<CameraRecord&>(command) =
      CameraRecord(CameraLogin("operator", "päss€7", 2), {},
                   CameraProduct({"PluginnamePlatzHalter"}, "VendorDisplayName", "M-7", "5.7.1", ""));
  command.mac = "00:40:8C:00:00:07";
  command.nip = "0.0.0.0";
  command.ni2 = {"0.0.0.0"};
  command.ip = "192.168.0.9";
  command.subnetMask = "255.255.0.0";
  command.gateway = "192.168.0.1";
  command.icb = command.gcb = command.rbl = command.pcl = true;
  command.networkCommandType = 1;
  return command;
}

void Counts(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgName("cameras")->Arg(1)->Arg(100)->Arg(10000);
}
BENCHMARK(ValueListBuild)->Name("ValueListBuild/record");
BENCHMARK(ValueListWrite)->Name("ValueListWrite/record");
BENCHMARK(ValueListRead)->Name("ValueListRead/record");
BENCHMARK(ValueListGet)->Name("ValueListGet/record");
BENCHMARK(RecordsWrite)->Apply(Counts);
BENCHMARK(RecordsRead)->Apply(Counts);
BENCHMARK(ReplyDecode)->ArgName("cameras")->RangeMultiplier(10)->Range(1, 100000);
BENCHMARK_CAPTURE(Encode, networkCommand, SampleNetworkCommand())->Name("CommandEncode/networkCommand");
BENCHMARK_CAPTURE(Encode, infoByIp, InfoByIpMessage{"10.0.0.5"})->Name("CommandEncode/infoByIp");

}  // namespace
