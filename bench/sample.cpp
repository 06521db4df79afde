#include "sample.h"

#include <cstdio>
#include <cstring>

#include "protocol/finder_messages.h"
#include "protocol/record_wire.h"
#include "protocol/request_wire.h"
#include "valuelist/buffer_pool.h"

namespace sample {

using namespace Tarn::CameraFinding;

Bytes SampleBytes(std::size_t count) {
  Bytes bytes(count);
  std::uint32_t x = 2463534242U;
  for (auto& byte : bytes) {
    x ^= x << 13;
    x ^= x >> 17;
    x ^= x << 5;
    byte = static_cast<std::uint8_t>(x);
  }
  return bytes;
}

CameraRecord Camera(unsigned i) {
  struct Product {
    std::uint64_t mask;
    const char *plugin, *vendor, *model;
  };
  static constexpr Product kProducts[] = {{0x40, "Axis IPC", "North Optics", "NX-210 Überblick"},
                                          {0x4000, "Sony IPC", "Meridian", "MD-40"},
                                          {0, "ONVIF IPC", "Generic", "OV-1"},
                                          {0x40040, "R2 IPC", "Twobit", "TB"},
                                          {0x20000000, "R4 IPC", "Fourth", "R4-9"},
                                          {0x800000, "", "Unlisted", "京-1"}};
  const Product& product = kProducts[(i - 1) % 6];
  CameraRecord camera;
  camera.loginUser = i % 3 ? "operator" : "&!*KVMR*9%";
  camera.loginPassword = i % 3 ? "päss€" + std::to_string(i) : "&!*KVMR*9%";
  camera.ctt = static_cast<std::uint8_t>(i % 5);
  char mac[18];
  std::snprintf(mac, sizeof mac, "00:40:8C:%02X:%02X:%02X", i >> 16 & 0xFF, i >> 8 & 0xFF, i & 0xFF);
  camera.mac = mac;
  camera.nip = "0.0.0.0";
  camera.ni2 = {"0.0.0.0", "10.9." + std::to_string(i % 250) + ".1"};
  camera.ip = "192.168." + std::to_string(i / 250 % 250) + "." + std::to_string(i % 250 + 2);
  camera.subnetMask = "255.255.0.0";
  camera.gateway = "192.168.0.1";
  camera.dhcpMode = i % 2;
  camera.icb = i % 2;
  camera.gcb = i % 4 == 1;
  camera.rbl = true;
  camera.pcl = i % 3 == 0;
  camera.deviceFlags = i % 2 ? 0x20000 : 5;
  camera.vendorTypeMask = product.mask;
  camera.pluginNames = {product.plugin};
  if (i % 4 == 2) camera.pluginNames.push_back("ONVIF IPC");
  camera.vendorDisplayName = product.vendor;
  camera.model = product.model;
  camera.firmwareVersion = "5." + std::to_string(i % 90) + ".1";
  camera.serialNumber = "S" + std::to_string(1000000 + i);
  return camera;
}

std::vector<CameraRecord> Cameras(std::size_t count) {
  std::vector<CameraRecord> cameras;
  cameras.reserve(count);
  for (unsigned i = 1; i <= count; ++i) cameras.push_back(Camera(i));
  return cameras;
}

namespace {

Bytes BytesOf(const Kestrel::ReferencePointer<Kestrel::Buffer>& buffer) {
  return Bytes(buffer->GetBytes().begin(), buffer->GetBytes().end());
}

Kestrel::ValueList ListOf(const std::vector<CameraRecord>& cameras) {
  Kestrel::ValueList list;
  WriteRecordList(list, kCameraInfoListKey, cameras);
  return list;
}

void Append(Bytes& block, const void* bytes, std::size_t count) {
  const std::size_t before = block.size();
  block.resize(before + count);
  std::memcpy(block.data() + before, bytes, count);
}

void AppendChunk(Bytes& block, std::uint32_t tag, const Bytes& payload) {
  const std::uint64_t length = payload.size();
  Append(block, &tag, sizeof tag);
  Append(block, &length, sizeof length);
  Append(block, payload.data(), payload.size());
}

Bytes ListBytes(const std::vector<CameraRecord>& cameras) {
  const auto buffer = Kestrel::GetBuffer(Kestrel::MediumBufferList);
  ListOf(cameras).Write(*buffer);
  return BytesOf(buffer);
}

}  // namespace

Bytes CameraList(std::size_t count) {
  return ListBytes(Cameras(count));
}

Bytes Reply(std::size_t count) {
  return BytesOf(EncodeReply(ListOf(Cameras(count))));
}

Bytes CameraBlock() {
  Bytes block;
  AppendChunk(block, 1, ListBytes({Camera(33)}));
  return block;
}

Bytes PictureBlock(std::size_t pictureBytes) {
  constexpr char16_t kText[] = u"Camera Küche";
  const std::uint32_t textBytes = sizeof kText;
  Bytes text(1 + sizeof textBytes + textBytes, 12);
  std::memcpy(text.data() + 1, &textBytes, sizeof textBytes);
  std::memcpy(text.data() + 1 + sizeof textBytes, kText, textBytes);
  Bytes block;
  AppendChunk(block, 5, text);
  AppendChunk(block, 6, SampleBytes(pictureBytes));
  block.resize(block.size() + 4);
  return block;
}

void Require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "wrong result: %s\n", what);
  std::exit(1);
}

}  // namespace sample
