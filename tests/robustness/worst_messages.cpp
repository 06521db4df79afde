#include "robustness/worst_messages.h"

#include "base/base64.h"
#include "protocol/record_wire.h"

namespace wizard {
namespace {

using namespace std::string_literals;

constexpr std::uint32_t kReply = WorstMessage::kReply;

/// A little-endian number of at most 8 bytes.
std::string Number(std::uint64_t value, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> 8 * i);
  return text;
}

/// About that many bytes of one piece.
std::string Repeated(const std::string& piece, std::size_t size) {
  std::string pieces;
  for (std::size_t i = 0; i < size / piece.size(); ++i) pieces += piece;
  return pieces;
}

std::string Counted(const std::string& piece, std::size_t size) {
  return Number(size / piece.size(), 4) + Repeated(piece, size);
}

const std::string kUnnamed = "VLIS\0\0"s;
const std::string kEmptyRecord = kUnnamed + Number(0, 4);
const std::string kCameraChunk = Number(1, 4) + Number(0, 8);

/// A record with one entry: a list of records, or of texts, with these elements.
std::string RecordOf(const std::string& key, const std::string& element, std::size_t size) {
  const std::string list = Number(Tarn::CameraFinding::ListMarker, 4) + Counted(element, size);
  const std::string name = "\x0B" + Number(key.size() + 1, 4) + key + '\0';
  return kUnnamed + Number(1, 4) + name + '\x0D' + Number(list.size(), 4) + list;
}

/// A camera whose flag ICB is a text, which the exception quotes.
std::string CameraOfText(std::size_t size) {
  const std::string text = '\x0B' + Number(size + 1, 4) + std::string(size, 'x') + '\0';
  const std::string record = kUnnamed + Number(1, 4) + "\x0B\4\0\0\0ICB\0"s + text;
  return RecordOf("CAMERAINFOLIST", record, record.size());
}

std::string BlockOfEntries(const std::string& entry, std::size_t size) {
  return kCameraChunk + kUnnamed + Counted(entry, size);
}

/// A list as the server answers it: base64 in UTF-16, behind its tag and length.
std::string ReplyOf(const std::string& list) {
  std::string units;
  for (const char character : Kestrel::Base64Encode(list.data(), list.size())) units += {character, '\0'};
  return '\x0C' + Number(units.size() + 2, 4) + units + "\0\0"s;
}

std::string NarrowReplyOf(const std::string& list) {
  const std::string text = Kestrel::Base64Encode(list.data(), list.size());
  return '\x0B' + Number(text.size() + 1, 4) + text + '\0';
}

}  // namespace

const std::vector<WorstMessage> kWorstMessages = {
    {"SmallestEntries", 3, [](std::size_t n) { return BlockOfEntries("\0\0\0\0"s, n); }},
    {"EntriesOfOneByte", 3, [](std::size_t n) { return BlockOfEntries("\0\0\x0D\1\0\0\0\7"s, n); }},
    {"NamesOfLongDigits", 3,  // 1e308
     [](std::size_t n) { return BlockOfEntries("\x0A\xA0\xC8\xEB\x85\xF3\xCC\xE1\x7F\0\0"s, n); }},
    {"EmptyRecords", 3, [](std::size_t n) { return kCameraChunk + RecordOf("CAMERAINFOLIST", kEmptyRecord, n); }},
    {"EmptyTexts", 3,
     [](std::size_t n) {
       const std::string record = RecordOf("NI2", kEmptyRecord, n);
       return kCameraChunk + RecordOf("CAMERAINFOLIST", record, record.size());
     }},
    {"ACountThatLies", 3,
     [](std::size_t n) { return kCameraChunk + kUnnamed + Number(~0U, 4) + std::string(n, '\0'); }},
    {"ManyChunks", 7, [](std::size_t n) { return Repeated(Number(10, 4) + Number(0, 8) + Number(0, 2), n); }},
    {"ManySingleValues", 2,
     [](std::size_t n) {
       return Repeated(Number(7, 4) + Number(24, 8) + Number(1, 8) + Number(8, 8) + Number(1, 8), n);
     }},
    {"ReplyOfSmallestEntries", kReply, [](std::size_t n) { return ReplyOf(kUnnamed + Counted("\0\0\0\0"s, n)); }},
    {"ReplyOfEmptyRecords", kReply, [](std::size_t n) { return ReplyOf(RecordOf("CAMERAINFOLIST", kEmptyRecord, n)); }},
    {"NarrowReplyOfEmptyRecords", kReply,
     [](std::size_t n) { return NarrowReplyOf(RecordOf("CAMERAINFOLIST", kEmptyRecord, n)); }},
    {"NumberIsAText", 3, [](std::size_t n) { return kCameraChunk + CameraOfText(n); }},
    {"ReplyWhereANumberIsAText", kReply, [](std::size_t n) { return ReplyOf(CameraOfText(n)); }},
    {"BinaryAsText", 1,
     [](std::size_t n) { return Number(5, 4) + Number(0, 8) + '\x0D' + Number(n, 4) + std::string(n, 'x'); }},
};

Bytes WorstMessage::OfSize(std::size_t size) const {
  const std::string text = make(size);
  return Bytes(text.begin(), text.end());
}

void WorstMessage::Send(scripted::Dbi& dbi, const ComPtr<ICameraFinder>& finder, const Bytes& message) const {
  if (messageType != kReply) {
    dbi.Push(messageType, message);
    return;
  }
  dbi.SetReply(message);
  try {
    finder->ListFoundCameras(nullptr);
  } catch (const std::exception&) {  // a stated result
  }
}

}  // namespace wizard
