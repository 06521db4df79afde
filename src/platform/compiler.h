/// The attributes and built-in functions of the compiler that the tree uses, under names of its own, so that support
/// for another compiler is added in this file only. GCC and Clang know them all.
#pragma once

/// TARN_AVX2 compiles one function for processors with 256-bit integer vectors, whatever the rest is compiled for, and
/// TARN_AVX512 for those with 512-bit ones that look up bytes. Such functions require platform::HasAvx2() and
/// platform::HasAvx512Vbmi(). Vector code and the uses of the three macros below stand inside #ifdef TARN_X64:
/// TARN_CPU_HAS_AVX2() and TARN_CPU_HAS_AVX512VBMI() are true where processor and system have such vectors, and
/// TARN_CPU_PAUSE() is the processor's hint for loops that spin.
#if defined(__x86_64__)
#define TARN_X64
#define TARN_AVX2 [[gnu::target("avx2")]]
#define TARN_AVX512 [[gnu::target("avx512f,avx512bw,avx512vbmi")]]
#define TARN_CPU_HAS_AVX2() (__builtin_cpu_supports("avx2") != 0)
#define TARN_CPU_HAS_AVX512VBMI() (__builtin_cpu_supports("avx512vbmi") != 0 && __builtin_cpu_supports("avx512bw") != 0)
#define TARN_CPU_PAUSE() __builtin_ia32_pause()
#else
#define TARN_AVX2
#define TARN_AVX512
#endif

/// All calls in the function are inlined, so that its local objects can stay in registers.
#define TARN_FLATTEN [[gnu::flatten]]

/// Argument number formatText, counted from 1, is a printf format; the arguments from firstValue on are its values.
#define TARN_PRINTF_FORMAT(formatText, firstValue) [[gnu::format(printf, formatText, firstValue)]]

/// The function is visible outside the library: all others are hidden. On Windows the module definition file decides.
#define TARN_EXPORT [[gnu::visibility("default")]]

/// The function is called when the module is unloaded, before its static objects are destroyed. exit() calls it after
/// that, unless the program is linked with the module.
#define TARN_AT_UNLOAD [[gnu::destructor]]
