/// The file of a recorded conversation, shared by everything that writes or reads one. docs/capture.md has an example.
///
/// The file is pcapng: little-endian sections of one interface with link type USER0 and nanoseconds. Each process that
/// records appends a section of its own. One Enhanced Packet Block holds one frame, or a piece of a frame that is too
/// large for the readers of such files:
///
///     packet := header bytes            bytes bodyOffset … of the frame's body
///     body   := part*                   bodySize bytes
///     part   := kind:u32 length:u64 payload[length]        numbers are little-endian, nothing is aligned
///
///     offset  size  header
///     0       1     version, 1
///     1       1     size of the header, 48; the bytes begin behind it, so that later versions can add fields
///     2       1     event: FrameEvent
///     3       1     function: row of kFunctionNames, kNoFunction for other events
///     4       1     direction: 0 from the finder to the platform library, 1 the other way
///     5       1     result: the byte that the function returned; 1 where it returns nothing
///     6       2     flags: FrameFlags
///     8       4     thread that made the call
///     12      4     message type of a block, else 0
///     16      8     duration in nanoseconds; 0 for a block, whose kDelivered follows
///     24      8     stream, as the handle's address; 0 where the call has none
///     32      8     bodySize
///     40      8     bodyOffset: 0 in the first packet of a frame; its other pieces follow at once
///
///     part              payload
///     1 arguments       u64[]; which ones: kArgumentNames
///     2 request         as given to TarnLiveStream_SendSynchDSPCommand
///     3 reply           as it came back
///     4 block           as given to OnGenericData
///     5 error record    class:u32 code:u32, then three texts, each with its length in bytes before it as a u32:
///                       class name, description (UTF-16), additional text
///
/// The time of a packet is when the call had returned, or when the block had arrived.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace capture {

inline constexpr std::uint8_t kVersion = 1;

/// Rows of kFunctionNames; the numbers stand in files.
enum class Function : std::uint8_t {
  kCreateLiveStream = 0,
  kOpen = 1,
  kStart = 2,
  kSetGenericDataCallback = 3,
  kSendSynchDSPCommand = 4,
  kReleaseReference = 5,
  kDestroy = 6,
  kGetLastError = 7,
};
inline constexpr std::size_t kFunctionCount = 8;
inline constexpr std::uint8_t kNoFunction = 0xFF;
/// In the order of the platform library's own list; made by the build.
extern const std::array<std::string_view, kFunctionCount> kFunctionNames;

enum class FrameEvent : std::uint8_t {
  kCall = 0,       ///< a function has returned
  kBlock = 1,      ///< OnGenericData was entered
  kDelivered = 2,  ///< OnGenericData has returned: result 0 means by an exception
  kDetach = 3,     ///< OnDetach has returned
};
inline constexpr auto kEventNames = std::to_array<std::string_view>({"call", "block", "delivered", "detach"});

enum class FrameDirection : std::uint8_t { kToPlatform = 0, kToFinder = 1 };

enum FrameFlags : std::uint16_t {
  kCredentialsReplaced = 1,  ///< credentials stood in the bytes and were replaced
};

enum class PartKind : std::uint32_t { kArguments = 1, kRequest = 2, kReply = 3, kBlock = 4, kError = 5 };

/// Names of what the part "arguments" of a call holds, by function; then those of a block.
inline constexpr std::array<std::array<std::string_view, 7>, kFunctionCount> kArgumentNames = {{
    {"server"},
    {"size", "reserved", "channel", "reserved1", "output1", "output2", "reserved2"},
    {},
    {"mode", "callback"},
    {"reply"},
    {"reply"},
    {},
    {},
}};
inline constexpr std::array<std::string_view, 7> kBlockArgumentNames = {"kind"};

struct FrameHeader {
  std::uint8_t version = kVersion;
  std::uint8_t headerSize = 48;
  FrameEvent event = FrameEvent::kCall;
  std::uint8_t function = kNoFunction;
  FrameDirection direction = FrameDirection::kToPlatform;
  std::uint8_t result = 1;
  std::uint16_t flags = 0;
  std::uint32_t thread = 0;
  std::uint32_t messageType = 0;
  std::uint64_t duration = 0;
  std::uint64_t stream = 0;
  std::uint64_t bodySize = 0;
  std::uint64_t bodyOffset = 0;
};
static_assert(sizeof(FrameHeader) == 48 && offsetof(FrameHeader, thread) == 8 && offsetof(FrameHeader, duration) == 16);

struct PartHead {
  PartKind kind;
  std::uint32_t lengthLow;
  std::uint32_t lengthHigh;
};
static_assert(sizeof(PartHead) == 12);

// The blocks of pcapng that are written. Each begins with its type and its length, and ends with its length again.
inline constexpr std::uint32_t kSectionHeader = 0x0A0D0D0A;
/// The bytes that a capture file begins with: kSectionHeader, which is the same in both byte orders.
inline constexpr std::string_view kFileBegin = "\x0A\x0D\x0D\x0A";
inline constexpr std::uint32_t kInterfaceDescription = 1;
inline constexpr std::uint32_t kEnhancedPacket = 6;
inline constexpr std::uint32_t kByteOrderMagic = 0x1A2B3C4D;
inline constexpr std::uint16_t kLinkTypeUser0 = 147;
/// Type and length in front, the length behind.
inline constexpr std::size_t kBlockHeadSize = 8;
inline constexpr std::size_t kBlockTailSize = 4;
/// More than the largest packet with all its options; a larger one of these blocks is damage.
inline constexpr std::uint32_t kLargestBlock = 1 << 20;

/// An Enhanced Packet Block up to the packet's bytes, which are padded to a multiple of 4.
struct PacketHead {
  std::uint32_t type = kEnhancedPacket;
  std::uint32_t blockLength = 0;
  std::uint32_t interfaceNumber = 0;
  std::uint32_t timeHigh = 0;  ///< nanoseconds since 1970, the upper half
  std::uint32_t timeLow = 0;
  std::uint32_t capturedSize = 0;
  std::uint32_t originalSize = 0;
};
static_assert(sizeof(PacketHead) == 28);

/// The largest packet that libpcap and Wireshark accept; a larger frame goes into several.
inline constexpr std::size_t kLargestPacket = 262144;

}  // namespace capture
