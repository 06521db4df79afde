/// Ten operations that a wizard's time goes into, for scripts/instructions, which counts the processor's instructions.
/// Use: core_operations NAME COUNT does one of them COUNT times; without arguments the names are printed.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/base64.h"
#include "base/guid.h"
#include "base/text_conversion.h"
#include "protocol/camera_reply.h"
#include "protocol/finder_messages.h"
#include "protocol/record_wire.h"
#include "protocol/request_wire.h"
#include "sample.h"
#include "time/date_time_parser.h"
#include "time/date_time_text.h"
#include "valuelist/buffer_pool.h"

namespace {

using namespace Tarn::CameraFinding;
using Kestrel::ValueList;
using sample::Bytes;
using sample::Require;

/// The result is used, so that the compiler keeps the work.
volatile std::size_t used;

void ReadReply(long count) {
  static const Bytes reply = sample::Reply(100);
  for (long i = 0; i < count; ++i) Require(ReadCameraReply(reply).size() == 100, "reply");
}

void ReadList(long count) {
  static const Bytes bytes = sample::CameraList(1);
  for (long i = 0; i < count; ++i) {
    const auto buffer = Kestrel::CreateBuffer(bytes.data(), bytes.size());
    ValueList list;
    list.Read(*buffer);
    std::vector<CameraRecord> cameras;
    ReadRecordList(list, kCameraInfoListKey, cameras);
    Require(cameras.size() == 1, "record");
  }
}

void WriteList(long count) {
  static const std::vector<CameraRecord> cameras = sample::Cameras(1);
  for (long i = 0; i < count; ++i) {
    ValueList list;
    WriteRecordList(list, kCameraInfoListKey, cameras);
    const auto buffer = Kestrel::GetBuffer(Kestrel::SmallBufferList);
    list.Write(*buffer);
    used = buffer->GetBytes().size();
  }
}

void EncodeCommand(long count) {
  const InfoByIpMessage message{"10.0.0.5"};
  for (long i = 0; i < count; ++i) used = EncodeRequest(message)->GetBytes().size();
}

void CyclePool(long count) {
  static const Bytes bytes = sample::SampleBytes(1024);
  for (long i = 0; i < count; ++i) used = Kestrel::CreateBuffer(bytes.data(), bytes.size())->GetBytes().size();
}

void DecodeBase64(long count) {
  static const Bytes bytes = sample::SampleBytes(4096);
  static const std::string text = Kestrel::Base64Encode(bytes.data(), bytes.size());
  for (long i = 0; i < count; ++i) {
    Bytes back;
    Require(Kestrel::Base64Decode(text, back) && back.size() == bytes.size(), "base64");
  }
}

void ConvertText(long count) {
  for (long i = 0; i < count; ++i) used = Kestrel::WideToUtf8(Kestrel::Utf8ToWide("Tür Große Halle 12 П東")).size();
}

void ParseTime(long count) {
  for (long i = 0; i < count; ++i)
    Require(Kestrel::ParseDateTime(u"2024-05-01 10:20:30.123 UTC+02:00") != Kestrel::TKestrelDateTime{}, "time");
}

void FormatTime(long count) {
  const auto time = Kestrel::ParseDateTime(u"2024-05-01 10:20:30.123 UTC+02:00").ToLocalSystemTime();
  for (long i = 0; i < count; ++i) used = Kestrel::SystemTimeToStr(time, Kestrel::dtsmDashes).size();
}

void ParseGuid(long count) {
  Kestrel::Guid guid;
  for (long i = 0; i < count; ++i) Require(Kestrel::StringToGuid("6f9619ff-8b86-d011-b42d-00cf4fc964ff", guid), "guid");
}

constexpr struct {
  const char* name;
  void (*run)(long count);
} kOperations[] = {
    {"reply of 100 cameras, read", ReadReply},
    {"record, read", ReadList},
    {"record, written", WriteList},
    {"command, encoded", EncodeCommand},
    {"pooled buffer", CyclePool},
    {"base64, decoded", DecodeBase64},
    {"text, there and back", ConvertText},
    {"time, parsed", ParseTime},
    {"time, formatted", FormatTime},
    {"GUID, parsed", ParseGuid},
};

}  // namespace

int main(int argc, char** argv) {
  for (const auto& operation : kOperations) {
    if (argc == 1) std::puts(operation.name);
    if (argc == 3 && std::strcmp(argv[1], operation.name) == 0) operation.run(std::atol(argv[2]));
  }
}
