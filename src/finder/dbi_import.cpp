/// Stands in for the platform library when the finder library is linked, and only then: it gives the eight names and
/// the file name to look for at load.
#include "tarn/dbi.h"

#define TARN_IMPORT extern "C" __attribute__((visibility("default"), used))

TARN_IMPORT std::uint8_t TarnServer_CreateLiveStream(void*, Tarn::TTarnLiveStream**) {
  return 0;
}
TARN_IMPORT std::uint8_t TarnLiveStream_Open(Tarn::TTarnLiveStream*, const StreamOpenParameters*, std::uint64_t, void**,
                                             void**, std::uint64_t) {
  return 0;
}
TARN_IMPORT std::uint8_t TarnLiveStream_Start(Tarn::TTarnLiveStream*) {
  return 0;
}
TARN_IMPORT std::uint8_t TarnLiveStream_SetGenericDataCallback(Tarn::TTarnLiveStream*, std::uint32_t,
                                                               IGenericDataReceivedCallback*) {
  return 0;
}
TARN_IMPORT std::uint8_t TarnLiveStream_SendSynchDSPCommand(Tarn::TTarnLiveStream*, const void*, std::uint32_t, void**,
                                                            std::uint32_t*) {
  return 0;
}
TARN_IMPORT std::uint8_t TarnDBI_ReleaseReference(void*) {
  return 0;
}
TARN_IMPORT void TarnLiveStream_Destroy(Tarn::TTarnLiveStream*) {}
TARN_IMPORT std::uint8_t TarnDBIGetLastError(DBIErrorRecord*) {
  return 0;
}
