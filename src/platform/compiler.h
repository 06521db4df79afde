/// The attributes of the compiler that the tree uses, under names of its own, so that another compiler is taught here
/// alone. GCC and Clang know them all.
#pragma once

/// TARN_AVX2 compiles one function for processors with 256-bit integer vectors, whatever the rest is compiled for. Such
/// a function requires platform::HasAvx2(). Vector code stands inside #ifdef TARN_X64.
#if defined(__x86_64__)
#define TARN_X64
#define TARN_AVX2 [[gnu::target("avx2")]]
#else
#define TARN_AVX2
#endif

/// All calls in the function are inlined: then what is a local object of it lies in registers.
#define TARN_FLATTEN [[gnu::flatten]]

/// Of the function's arguments, counted from 1, one is a printf format, and those from firstValue on are its values.
#define TARN_PRINTF_FORMAT(formatText, firstValue) [[gnu::format(printf, formatText, firstValue)]]

/// The function is visible outside the library: all others are hidden. On Windows the module definition file decides.
#define TARN_EXPORT [[gnu::visibility("default")]]
