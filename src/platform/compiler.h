/// The attributes and built-in functions of the compiler that the tree uses, under names of its own, so that another
/// compiler is taught here alone. GCC and Clang know them all.
#pragma once

/// TARN_AVX2 compiles one function for processors with 256-bit integer vectors, whatever the rest is compiled for. Such
/// a function requires platform::HasAvx2(). Vector code stands inside #ifdef TARN_X64. So do TARN_CPU_HAS_AVX2(), true
/// where processor and system have such vectors, and TARN_CPU_PAUSE(), the processor's hint for loops that spin.
#if defined(__x86_64__)
#define TARN_X64
#define TARN_AVX2 [[gnu::target("avx2")]]
#define TARN_CPU_HAS_AVX2() (__builtin_cpu_supports("avx2") != 0)
#define TARN_CPU_PAUSE() __builtin_ia32_pause()
#else
#define TARN_AVX2
#endif

/// All calls in the function are inlined: then what is a local object of it lies in registers.
#define TARN_FLATTEN [[gnu::flatten]]

/// Of the function's arguments, counted from 1, one is a printf format, and those from firstValue on are its values.
#define TARN_PRINTF_FORMAT(formatText, firstValue) [[gnu::format(printf, formatText, firstValue)]]

/// The function is visible outside the library: all others are hidden. On Windows the module definition file decides.
#define TARN_EXPORT [[gnu::visibility("default")]]

/// The function is called when the module is unloaded, before its static objects are destroyed.
#define TARN_AT_UNLOAD [[gnu::destructor]]
