/// Making and taking BSTRs.
///
/// Ownership  A BSTR that is returned belongs to the caller, who frees it with SysFreeString.
/// Threads    Any.
/// Errors     std::bad_alloc. The conversions to UTF-8 also throw SystemException where the system refuses.
#pragma once

#include <string>
#include <string_view>

#include "tarn/com_types.h"

namespace Kestrel {

/// A new BSTR of the text up to its first NUL. An empty text gives an allocated empty BSTR, never null.
BSTR MakeBstr(const std::u16string& text);
/// As MakeBstr, of UTF-8 up to its first NUL. Empty where the system refuses the conversion.
BSTR MakeBstrFromUtf8(const std::string& utf8);

/// Takes ownership of a BSTR: returns its text, up to its first NUL, as UTF-8, and frees it, also where that throws.
/// Null counts as empty.
std::string TakeBstrAsUtf8(BSTR text);

/// UTF-8 of a NUL-terminated text; empty for null.
std::string Utf8FromNulTerminated(const OLECHAR* text);

}  // namespace Kestrel
