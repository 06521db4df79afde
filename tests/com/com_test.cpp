#include <gtest/gtest.h>

#include <new>
#include <utility>

#include "com/bstr.h"
#include "com/com_wrapper.h"
#include "platform/com.h"
#include "tarn/com_types.h"

namespace {

int liveBstrs = 0;
int failingBstr = 0;  ///< the n-th BSTR from here on cannot be made; 0: none
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
  const std::pair<std::string, std::u16string> rows[] = {
      {"", u""}, {"p\xC3\xA4ss\xE2\x82\xAC\xF0\x9F\x93\xB7", u"p\u00E4ss\u20AC\U0001F4F7"}, {"ab\0cd"s, u"ab\0cd"s}};
  for (const auto& [utf8, wide] : rows) {
    for (const BSTR text : {Kestrel::MakeBstr(wide), Kestrel::MakeBstrFromUtf8(utf8)}) {
      ASSERT_NE(text, nullptr);
      EXPECT_EQ(std::u16string(text, SysStringByteLen(text) / sizeof(OLECHAR)), wide.c_str());
      EXPECT_EQ(Kestrel::TakeBstrAsUtf8(text), utf8.c_str());
    }
  }
  EXPECT_EQ(Kestrel::TakeBstrAsUtf8(nullptr), "");
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
constexpr IID kIidOther = {0x12345678, 0x9ABC, 0xDEF0, {1, 2, 3, 4, 5, 6, 7, 9}};

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

TEST(ComWrapper, AnswersUnknownItsOwnInterfaceAndTheMarshalerWhereThereIsOne) {
  Marshaler marshaler;
  for (IUnknown* const aggregated : {static_cast<IUnknown*>(nullptr), static_cast<IUnknown*>(&marshaler)}) {
    nextMarshaler = aggregated;
    bool destroyed = false;
    auto* const probe = Kestrel::MakeComObject<Probe, Probe>(destroyed).Detach();
    const std::pair<IID, HRESULT> rows[] = {{IID_IUnknown, S_OK},
                                            {kIidProbe, S_OK},
                                            {kIidOther, E_NOINTERFACE},
                                            {Kestrel::kIidMarshal, aggregated ? S_OK : E_NOINTERFACE}};
    for (const auto& [id, result] : rows) {
      void* object = &destroyed;
      EXPECT_EQ(probe->QueryInterface(id, &object), result);
      const bool isTheProbe = id == IID_IUnknown || id == kIidProbe;
      EXPECT_EQ(object, isTheProbe ? static_cast<Probe*>(probe) : nullptr) << "the marshaler's answer is discarded";
      if (object) {
        EXPECT_EQ(probe->Release(), 1U);
      }
    }
    EXPECT_EQ(probe->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_FALSE(destroyed);
    EXPECT_EQ(probe->Release(), 0U);
    EXPECT_TRUE(destroyed);
  }
  EXPECT_EQ(marshaler.references, 0U);
}

}  // namespace
