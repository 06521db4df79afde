/// The platform library TarnDBI as the finder uses it: eight functions, two blocks and the interface it calls back.
///
/// Results   A boolean is one byte, non-zero on success. After a failure TarnDBIGetLastError tells why, on the same
///           thread. The finder takes a failure without a record for a success.
/// Threads   Every function may be called on any thread; data arrives on delivery threads of the platform library.
/// Memory    A reply belongs to the platform library until TarnDBI_ReleaseReference. Texts of an error record belong
///           to the platform library; copy them before the next call on that thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tarn/com_types.h"

/// Implemented by the finder, called by the platform library on its delivery threads.
struct IGenericDataReceivedCallback : IUnknown {
  /// Position 3. A block arrived: size bytes at data, valid during the call. Only blockKind 2 is for the finder;
  /// messageType is a FinderMessageType, 1 to 8. Returns after the wizard's callback has returned. Throws
  /// where the finder has no memory or no worker for it; all that it throws is derived from std::exception.
  virtual void OnGenericData(std::int32_t blockKind, std::uint32_t messageType, const std::uint8_t* data,
                             std::uint64_t size) = 0;
  /// Position 4. The stream lets go: blocks that arrive from here on are dropped.
  virtual void OnDetach() = 0;

 protected:
  ~IGenericDataReceivedCallback() = default;
};

/// {FFFFFFFF-AAAA-2202-2014-133400000000}
inline constexpr IID IID_IGenericDataReceivedCallback = {
    0xFFFFFFFF, 0xAAAA, 0x2202, {0x20, 0x14, 0x13, 0x34, 0x00, 0x00, 0x00, 0x00}};

namespace Tarn {
/// A live stream of the platform library; opaque.
struct TTarnLiveStream;
}  // namespace Tarn

/// Parameters of TarnLiveStream_Open; three 64-bit words.
struct StreamOpenParameters {
  std::uint64_t sizeInBytes;  ///< 24
  std::uint64_t reserved;     ///< 0
  void* channelArgument;      ///< third word; what GetFindingInterface was given
};
static_assert(sizeof(StreamOpenParameters) == 24 && offsetof(StreamOpenParameters, channelArgument) == 16);

/// What TarnDBIGetLastError fills; all three texts are non-null, the narrow ones in the ANSI code page.
struct DBIErrorRecord {
  std::uint32_t errorClass;
  std::uint32_t errorCode;
  const char* className;       ///< the platform's name for the error's class
  const void* reserved;        ///< not read
  const OLECHAR* description;  ///< UTF-16
  const char* additionalText;
};
static_assert(sizeof(DBIErrorRecord) == 40 && offsetof(DBIErrorRecord, className) == 8 &&
              offsetof(DBIErrorRecord, description) == 24 && offsetof(DBIErrorRecord, additionalText) == 32);

/// Modes of TarnLiveStream_SetGenericDataCallback.
inline constexpr std::uint32_t kRegisterDataCallback = 0;
inline constexpr std::uint32_t kUnregisterDataCallback = 1;

extern "C" {
/// *stream receives a new stream, which the caller ends with TarnLiveStream_Destroy.
std::uint8_t TarnServer_CreateLiveStream(void* server, Tarn::TTarnLiveStream** stream);
/// The two zeroes and the two outputs have no meaning for the finder.
std::uint8_t TarnLiveStream_Open(Tarn::TTarnLiveStream* stream, const StreamOpenParameters* parameters,
                                 std::uint64_t reserved1, void** output1, void** output2, std::uint64_t reserved2);
std::uint8_t TarnLiveStream_Start(Tarn::TTarnLiveStream* stream);
/// Registering takes a reference on the callback; unregistering the same pointer lets it go.
std::uint8_t TarnLiveStream_SetGenericDataCallback(Tarn::TTarnLiveStream* stream, std::uint32_t mode,
                                                   IGenericDataReceivedCallback* callback);
/// Sends a request and blocks until the server has answered. *reply stays valid until TarnDBI_ReleaseReference.
std::uint8_t TarnLiveStream_SendSynchDSPCommand(Tarn::TTarnLiveStream* stream, const void* request,
                                                std::uint32_t requestSize, void** reply, std::uint32_t* replySize);
std::uint8_t TarnDBI_ReleaseReference(void* reply);
/// Ends the stream. A block that is being delivered completes, no further one starts. Does not wait: the call may come
/// from inside a delivery.
void TarnLiveStream_Destroy(Tarn::TTarnLiveStream* stream);
/// True when a record was filled: the last failure of the calling thread.
std::uint8_t TarnDBIGetLastError(DBIErrorRecord* record);
}
