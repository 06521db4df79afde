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
  record.loginUser = "user";
  record.ip = "ip";
  record.subnetMask = "!";
  const auto camera = MakeCameraInfo(CameraRecord(record));
  camera->SetCredentials(u"x", u"!");
  camera->SetNetworkSettings(u"x", u"x", 0, u"!");
  EXPECT_EQ(Kestrel::TakeBstrAsUtf8(camera->GetUserName()), "user");
  EXPECT_EQ(Kestrel::TakeBstrAsUtf8(camera->GetIpAddress()), "ip");
  EXPECT_EQ(camera->IsDhcpEnabled(), 1);
  const BSTR mask = camera->GetSubnetMask();
  EXPECT_TRUE(mask && SysStringByteLen(mask) == 0) << "not null, which means that memory is missing";
  SysFreeString(mask);
}

}  // namespace
}  // namespace Tarn::CameraFinding
