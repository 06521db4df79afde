#include "com/bstr.h"

#include <memory>
#include <new>

#include "base/exceptions.h"
#include "base/text_conversion.h"
#include "platform/com.h"

namespace Kestrel {
namespace {

struct FreeBstr {
  void operator()(OLECHAR* text) const { platform::SysFreeString(text); }
};
using OwnedBstr = std::unique_ptr<OLECHAR, FreeBstr>;

}  // namespace

// SysAllocString cuts the text at its first NUL.
BSTR MakeBstr(const std::u16string& text) {
  const OwnedBstr temporary(platform::SysAllocString(text.c_str()));
  if (!temporary) throw std::bad_alloc();
  const BSTR copy = platform::SysAllocStringByteLen(temporary.get(), platform::SysStringByteLen(temporary.get()));
  if (!copy) throw std::bad_alloc();
  return copy;
}

BSTR MakeBstrFromUtf8(const std::string& utf8) {
  std::u16string wide;
  try {
    MultiToWide(wide, platform::CP_UTF8, 0, utf8.c_str(), platform::kNulTerminated);
  } catch (const KestrelException&) {
    wide.clear();
  }
  return MakeBstr(wide);
}

std::string TakeBstrAsUtf8(BSTR text) {
  const OwnedBstr owned(text);
  return Utf8FromNulTerminated(text);
}

std::string Utf8FromNulTerminated(const OLECHAR* text) {
  std::string utf8;
  WideToMulti(utf8, platform::CP_UTF8, 0, text, platform::kNulTerminated);
  return utf8;
}

}  // namespace Kestrel
