#include "tools/decode/meanings.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "base/text_conversion.h"
#include "protocol/block_format.h"
#include "protocol/camera_record.h"
#include "protocol/camera_type.h"
#include "protocol/finder_messages.h"
#include "valuelist/variant_types.h"

namespace tarnfind {
namespace {

using namespace Tarn::CameraFinding;

/// Row number = tag.
constexpr std::array<std::string_view, Kestrel::kVariantTypeCount> kTagNames = {
    "vtBool",    "vtChar",       "vtUChar",   "vtSChar",    "vtShort",    "vtUShort",
    "vtUInt",    "vtInt",        "vtInt64",   "vtFloat",    "vtDouble",   "vtString",
    "vtWString", "vtBinaryData", "vtBlobPtr", "vtFileTime", "vtDateTime", "vtReferencePointer",
    "vtGuid",    "vtLong",       "vtUInt64",
};

struct CommandRow {
  std::uint32_t code;
  std::string_view meaning;
};
constexpr auto kCommands = std::to_array<CommandRow>({
    {fcSendMacAddress, "tells a hardware address"},
    {fcListFoundCameras, "asks for the cameras found so far"},
    {fcCameraInfoList, "a list of cameras"},
    {fcGetInfoByIp, "asks about the camera at an address"},
    {fcBare, "carries nothing"},
    {fcSetNetwork, "sends a camera's settings"},
});

std::string MeaningOfCommand(std::uint64_t code) {
  const auto row = std::ranges::find(kCommands, code, &CommandRow::code);
  return row == kCommands.end() ? "a command that the finder does not know" : std::string(row->meaning);
}

std::string MeaningOfFlags(std::uint64_t flags) {
  std::string bits;
  for (int bit = 0; bit < 32; ++bit)
    if (flags >> bit & 1) bits += fmt::format("{}{}", bits.empty() ? "bit " : ", ", bit);
  if (flags & CameraRecord::kDeviceFlag17) bits += "; bit 17 is the one that wizards ask for";
  return flags == 0xFFFFFFFF ? "device flags: all bits" : bits.empty() ? "device flags: none" : "device flags: " + bits;
}

std::string MeaningOfMask(std::uint64_t mask) {
  if (mask == 0) return "vendor mask: none, the plug-in name decides the type";
  const CameraTypeCode type = TypeFromVendorBit(mask);
  return type == 0 ? fmt::format("vendor mask {:#x}: no known type", mask)
                   : fmt::format("vendor mask {:#x}: camera type {}", mask, type);
}

std::string MeaningOfDhcp(std::uint64_t mode) {
  return mode == 1 ? "address from DHCP" : "fixed address";
}

struct KeyRow {
  std::string_view key;
  std::string_view meaning;
  std::string (*explain)(std::uint64_t number) = nullptr;
};
constexpr auto kKeys = std::to_array<KeyRow>({
    {"CMD", "command", MeaningOfCommand},
    {"ListResendPrevPictures", "whether earlier pictures are to be pushed again"},
    {"GetInfoByIp", "the address asked about"},
    {"SetNetworkCommandType", "type of the network command, 1 or 4"},
    {"CAMERAINFOLIST", "list of cameras"},
    {"LUN", "login user"},
    {"LPD", "login password"},
    {"CTT", "CTT code, handed on unread"},
    {"MAC", "hardware address"},
    {"NIP", "NIP, carried unread"},
    {"NI2", "NI2, carried unread"},
    {"IP", "IP address"},
    {"SIP", "subnet mask"},
    {"GIP", "gateway"},
    {"DHC", "DHCP mode", MeaningOfDhcp},
    {"ICB", "ICB flag, handed on unread"},
    {"GCB", "GCB flag, handed on unread"},
    {"RBL", "RBL, carried unread"},
    {"PCL", "PCL, carried unread"},
    {"DCV", "device flags", MeaningOfFlags},
    {"CVT", "vendor mask", MeaningOfMask},
    {"PLN", "plug-in names"},
    {"PDN", "vendor"},
    {"FVN", "firmware version"},
    {"SER", "serial number"},
    {"MDL", "model"},
    {"mac", "an element of a list of texts"},
});

struct MessageRow {
  std::string_view meaning;
};
/// Row number = message type - 1.
constexpr auto kMessages = std::to_array<MessageRow>({
    {"a picture"},
    {"values"},
    {"a camera, event kind 3"},
    {"a camera, event kind 1"},
    {"a camera, event kind 0"},
    {"a camera, event kind 2"},
    {"a camera put together from single fields, event kind 3"},
    {"a camera known by its address alone, event kind 4"},
});

struct ChunkRow {
  std::uint32_t tag;
  std::string_view meaning;
};
constexpr auto kChunks = std::to_array<ChunkRow>({
    {ctEnd, "end of the block"},
    {ctRecordsKind3, "camera record, for message type 3"},
    {ctRecordsKind1, "camera record, for message type 4"},
    {ctRecordsKind0, "camera record, for message type 5"},
    {ctRecordsKind2, "camera record, for message type 6"},
    {ctText, "which camera"},
    {ctPicture, "picture"},
    {ctValues, "values"},
    {ctIpAddress, "IP address"},
    {ctVendorDisplayName, "vendor"},
    {ctPluginName, "plug-in name"},
    {ctCtt, "CTT code, handed on unread"},
});

}  // namespace

std::string_view NameOfTag(std::uint8_t tag) {
  return tag < kTagNames.size() ? kTagNames[tag] : "";
}

std::uint8_t TagOfName(std::string_view name) {
  return static_cast<std::uint8_t>(std::ranges::find(kTagNames, name) - kTagNames.begin());
}

std::string MeaningOfEntry(std::string_view key, std::uint64_t number, std::string_view text) {
  const auto row = std::ranges::find(kKeys, key, &KeyRow::key);
  if (row == kKeys.end()) return {};
  static const std::string unset = Kestrel::WideToUtf8(UnsetCredential);
  if ((key == "LUN" || key == "LPD") && text == unset) return std::string(row->meaning) + ": never supplied";
  return row->explain ? row->explain(number) : std::string(row->meaning);
}

std::string MeaningOfMessageType(std::uint32_t messageType) {
  return messageType >= 1 && messageType <= kMessages.size() ? std::string(kMessages[messageType - 1].meaning)
                                                             : "a type that the finder ignores";
}

std::string MeaningOfChunk(std::uint32_t tag, std::uint32_t messageType) {
  const auto row = std::ranges::find(kChunks, tag, &ChunkRow::tag);
  if (row == kChunks.end()) return "unknown";
  const bool isAddress = tag == ctText && messageType >= fmtCameraKind3 && messageType <= fmtCameraKind4;
  return isAddress ? "hardware address" : std::string(row->meaning);
}

}  // namespace tarnfind
