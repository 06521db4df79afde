#include <gtest/gtest.h>

#include <new>
#include <thread>

#include "com/bstr.h"
#include "com/com_wrapper.h"
#include "platform/com.h"
#include "tarn/camera_finding.h"
#include "tarn/dbi.h"

namespace {

int liveBstrs = 0;
int failingBstr = 0;  ///< the n-th from here on cannot be made
IUnknown* nextMarshaler = nullptr;

char16_t* Counted(char16_t* text) {
  ++liveBstrs;
  return text;
}

}  // namespace

namespace platform {

char16_t* SysAllocString(const char16_t* text) {
  return --failingBstr == 0 ? nullptr : Counted(::SysAllocString(text));
}
char16_t* SysAllocStringByteLen(const void* bytes, std::uint32_t byteLength) {
  return --failingBstr == 0 ? nullptr : Counted(::SysAllocStringByteLen(static_cast<const char*>(bytes), byteLength));
}
std::uint32_t SysStringByteLen(const char16_t* text) {
  return ::SysStringByteLen(const_cast<char16_t*>(text));
}
void SysFreeString(char16_t* text) {
  if (text) --liveBstrs;
  ::SysFreeString(text);
}
std::int32_t CoCreateFreeThreadedMarshaler(void*, void** marshaler) {
  *marshaler = nextMarshaler;
  return nextMarshaler ? S_OK : E_NOINTERFACE;
}

}  // namespace platform

namespace {

using namespace std::string_literals;

TEST(Bstr, HoldsTheTextUpToTheFirstNulAndIsTheOnlyOneLeft) {
  const struct {
    std::string utf8;
    std::u16string wide;
  } rows[] = {{"", u""},
              {"p\xC3\xA4ss\xE2\x82\xAC\xF0\x9F\x93\xB7", u"p\u00E4ss\u20AC\U0001F4F7"},
              {"ab\0cd"s, u"ab\0cd"s},
              {"\0ab"s, u"\0ab"s}};
  for (const auto& row : rows) {
    for (const BSTR text : {Kestrel::MakeBstr(row.wide), Kestrel::MakeBstrFromUtf8(row.utf8)}) {
      ASSERT_NE(text, nullptr);
      EXPECT_EQ(std::u16string(text, SysStringByteLen(text) / sizeof(OLECHAR)), row.wide.c_str());
      EXPECT_EQ(Kestrel::TakeBstrAsUtf8(text), row.utf8.c_str());
    }
  }
  EXPECT_EQ(Kestrel::TakeBstrAsUtf8(nullptr), "");
  EXPECT_EQ(Kestrel::Utf8FromNulTerminated(nullptr), "");
  for (const int failing : {1, 2}) {
    failingBstr = failing;
    EXPECT_THROW(Kestrel::MakeBstrFromUtf8("camera"), std::bad_alloc);
  }
  EXPECT_EQ(liveBstrs, 0);
}

struct Probe : IUnknown {
  explicit Probe(bool& flag) : destroyed(flag) {}
  bool& destroyed;

 protected:
  ~Probe() { destroyed = true; }
};
constexpr IID kIidProbe = {0x12345678, 0x9ABC, 0xDEF0, {1, 2, 3, 4, 5, 6, 7, 8}};

/// Refuses every query.
struct Marshaler : IUnknown {
  HRESULT QueryInterface(const IID&, void** object) override {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  std::uint32_t AddRef() override { return ++references; }
  std::uint32_t Release() override { return --references; }
  std::uint32_t references = 1;
};

}  // namespace

template <>
inline constexpr IID Kestrel::kInterfaceId<Probe> = kIidProbe;

namespace {

TEST(ComWrapper, AnswersUnknownAndItsOwnInterfaceOnly) {
  const struct {
    IID id;
    HRESULT result;
  } rows[] = {
      {IID_IUnknown, S_OK},
      {kIidProbe, S_OK},
      {{0x12345678, 0x9ABC, 0xDEF0, {1, 2, 3, 4, 5, 6, 7, 9}}, E_NOINTERFACE},
      {Tarn::CameraFinding::IID_ICameraInfo, E_NOINTERFACE},
      {Kestrel::kIidMarshal, E_NOINTERFACE},  // it could not be made
  };
  bool destroyed = false;
  auto* const probe = Kestrel::MakeComObject<Probe, Probe>(destroyed).Detach();
  for (const auto& row : rows) {
    SCOPED_TRACE(row.id.Data1);
    void* object = &destroyed;
    EXPECT_EQ(probe->QueryInterface(row.id, &object), row.result);
    EXPECT_EQ(object, row.result == S_OK ? static_cast<Probe*>(probe) : nullptr);
    EXPECT_EQ(probe->AddRef(), object ? 3U : 2U);
    for (int i = object ? 2 : 1; i > 0; --i) probe->Release();
  }
  EXPECT_EQ(probe->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
  EXPECT_FALSE(destroyed);
  EXPECT_EQ(probe->Release(), 0U);
  EXPECT_TRUE(destroyed);
}

TEST(ComWrapper, ForwardsToTheMarshalerDiscardsItsAnswerAndReleasesIt) {
  Marshaler marshaler;
  nextMarshaler = &marshaler;
  bool destroyed = false;
  auto* const probe = Kestrel::MakeComObject<Probe, Probe>(destroyed).Detach();
  nextMarshaler = nullptr;
  void* object = &destroyed;
  EXPECT_EQ(probe->QueryInterface(Kestrel::kIidMarshal, &object), S_OK);
  EXPECT_EQ(object, nullptr);
  const auto takeAndDrop = [probe] {
    for (int i = 0; i < 10000; ++i) {
      probe->AddRef();
      probe->Release();
    }
  };
  std::thread other(takeAndDrop);
  takeAndDrop();
  other.join();
  EXPECT_EQ(marshaler.references, 1U);
  EXPECT_EQ(probe->Release(), 0U);
  EXPECT_EQ(marshaler.references, 0U);
}

}  // namespace
