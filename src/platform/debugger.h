/// Text for an attached debugger. Nothing is added to it, no line end either. Callable at any time, also during load
/// and unload, on any thread.
#pragma once

namespace platform {

void OutputDebugStringW(const char16_t* text);
void OutputDebugStringA(const char* text);

}  // namespace platform
