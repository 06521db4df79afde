#include "fakes/fake_com.h"

#include "platform/com.h"

namespace {

int live = 0;
int failing = 0;
fakes::Marshaler* currentMarshaler = nullptr;

char16_t* Counted(char16_t* text) {
  if (text) ++live;
  return text;
}

bool Refused() {
  return failing != 0 && --failing == 0;
}

}  // namespace

namespace platform {

char16_t* SysAllocString(const char16_t* text) {
  return Refused() ? nullptr : Counted(::SysAllocString(text));
}

char16_t* SysAllocStringByteLen(const void* bytes, std::uint32_t byteLength) {
  return Refused() ? nullptr : Counted(::SysAllocStringByteLen(static_cast<const char*>(bytes), byteLength));
}

std::uint32_t SysStringByteLen(const char16_t* text) {
  return ::SysStringByteLen(const_cast<char16_t*>(text));
}

void SysFreeString(char16_t* text) {
  if (text) --live;
  ::SysFreeString(text);
}

std::int32_t CoCreateFreeThreadedMarshaler(void*, void** marshaler) {
  if (!currentMarshaler) return static_cast<std::int32_t>(0x80004001U);
  currentMarshaler->AddRef();
  *marshaler = currentMarshaler;
  return S_OK;
}

}  // namespace platform

namespace fakes {

int LiveBstrs() {
  return live;
}

void FailBstr(int n) {
  failing = n;
}

HRESULT Marshaler::QueryInterface(const IID&, void** object) {
  ++queries;
  *object = nullptr;
  return E_NOINTERFACE;
}

void UseMarshaler(Marshaler* marshaler) {
  currentMarshaler = marshaler;
}

}  // namespace fakes
