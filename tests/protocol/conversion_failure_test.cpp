/// A camera whose texts the system refuses to convert.
#include <gtest/gtest.h>

#include "com/bstr.h"
#include "platform/code_pages.h"
#include "protocol/camera_info.h"

namespace {

/// Converts ASCII, and refuses what begins with "!".
template <class Source, class Target>
int Convert(const Source* source, int length, Target* target) {
  if (*source == '!') return 0;
  std::basic_string<Source> text(
      source, length < 0 ? std::char_traits<Source>::length(source) + 1 : static_cast<std::size_t>(length));
  for (std::size_t i = 0; target && i < text.size(); ++i) target[i] = static_cast<Target>(text[i]);
  return static_cast<int>(text.size());
}

}  // namespace

int platform::MultiByteToWideChar(std::uint32_t, std::uint32_t, const char* source, int length, char16_t* target, int) {
  return Convert(source, length, target);
}
int platform::WideCharToMultiByte(std::uint32_t, std::uint32_t, const char16_t* source, int length, char* target, int) {
  return Convert(source, length, target);
}

namespace Tarn::CameraFinding {
namespace {

TEST(CameraInfo, ShowsAnEmptyTextAndChangesNothingWhereAConversionIsRefused) {
  CameraRecord record;
  record.model = "!";
  const auto camera = MakeCameraInfo(record);
  camera->SetCredentials(u"user", u"password");
  camera->SetNetworkSettings(u"ip", u"mask", 1, u"gate");
  camera->SetCredentials(u"!", u"x");
  camera->SetCredentials(u"x", u"!");
  camera->SetNetworkSettings(u"!", u"x", 0, u"x");
  camera->SetNetworkSettings(u"x", u"!", 0, u"x");
  camera->SetNetworkSettings(u"x", u"x", 0, u"!");
  std::string texts;
  for (const auto get : {&ICameraInfo::GetUserName, &ICameraInfo::GetPassword, &ICameraInfo::GetIpAddress,
                         &ICameraInfo::GetSubnetMask, &ICameraInfo::GetGateway})
    texts += Kestrel::TakeBstrAsUtf8((camera.Get()->*get)()) + "|";
  EXPECT_EQ(texts + std::to_string(camera->IsDhcpEnabled()), "user|password|ip|mask|gate|1");
  const BSTR model = camera->GetModel();
  EXPECT_TRUE(model && SysStringByteLen(model) == 0) << "not null, which means that memory is missing";
  SysFreeString(model);
}

}  // namespace
}  // namespace Tarn::CameraFinding
