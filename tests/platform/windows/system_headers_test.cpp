/// A wizard that is written against the system's own COM headers: the real IUnknown and BSTR, and a marshaler behind
/// IMarshal.
#include <windows.h>

#include <gtest/gtest.h>

#include "tarn/camera_finding.h"
#include "dbi/dbi.h"

static_assert(sizeof(BSTR) == 8 && sizeof(OLECHAR) == 2 && sizeof(HRESULT) == 4);

namespace {

using Tarn::CameraFinding::ICameraFinder;

TEST(SystemHeaders, AFinderIsMarshalledFree) {
  const HMODULE module = LoadLibraryW(TARN_LIBRARY_FILE);
  ASSERT_NE(module, nullptr);
  const auto getFindingInterface = reinterpret_cast<decltype(&GetFindingInterface)>(
      reinterpret_cast<void*>(GetProcAddress(module, "GetFindingInterface")));
  ICameraFinder* finder = nullptr;
  int server = 0;
  getFindingInterface(&server, nullptr, &finder);
  ASSERT_NE(finder, nullptr);

  void* object = nullptr;
  ASSERT_EQ(finder->QueryInterface(IID_IMarshal, &object), S_OK);
  ASSERT_NE(object, nullptr);
  CLSID unmarshaler{};
  auto* const marshal = static_cast<IMarshal*>(object);
  EXPECT_EQ(marshal->GetUnmarshalClass(IID_IUnknown, nullptr, MSHCTX_INPROC, nullptr, MSHLFLAGS_NORMAL, &unmarshaler),
            S_OK);
  EXPECT_EQ(marshal->Release(), 1U);  // it counts on the finder

  EXPECT_EQ(finder->Release(), 0U);
  EXPECT_TRUE(FreeLibrary(module));
}

}  // namespace
