#include "tools/capture/block_outcome.h"

#include <fmt/format.h>

#include <vector>

#include "protocol/block_format.h"
#include "protocol/block_parser.h"
#include "tarn/camera_finding.h"
#include "tools/decode/decoder.h"
#include "tools/text.h"
#include "valuelist/buffer_pool.h"

namespace tarnfind {
namespace {

namespace wire = Tarn::CameraFinding;

/// Lives on the stack for one block, so references are not counted.
class NotingWizard final : public wire::INewCameraDataCallback {
 public:
  explicit NotingWizard(BlockOutcome& outcome) : outcome_(outcome) {}

  HRESULT QueryInterface(const IID&, void** object) override {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  std::uint32_t AddRef() override { return 1; }
  std::uint32_t Release() override { return 1; }

  HRESULT PictureReceived(const std::uint8_t*, std::uint64_t byteCount, BSTR text) override {
    outcome_.mac = TakeBstr(text);
    return Note(fmt::format("picture of {} bytes for \"{}\"", byteCount, Printable(outcome_.mac)));
  }
  HRESULT ValuesReceived(BSTR text, const std::uint64_t*, std::uint64_t count) override {
    outcome_.mac = TakeBstr(text);
    return Note(fmt::format("{} for \"{}\"", Counted(count, "value"), Printable(outcome_.mac)));
  }
  HRESULT CameraInfoReceived(std::uint32_t kind, wire::ICameraInfo* info, std::int32_t type) override {
    CameraSnapshot camera = SnapshotOf(*info);
    camera.told = ToldBy(kind, camera);
    outcome_.mac = camera.mac;
    outcome_.ip = camera.ip;
    const auto result = Note(fmt::format("camera {} {} \"{}\", event kind {}, camera type {}", Printable(camera.mac),
                                         Printable(camera.ip), Printable(camera.model), kind, type));
    outcome_.camera = std::move(camera);
    return result;
  }

 private:
  HRESULT Note(std::string what) {
    outcome_.delivered = true;
    outcome_.what = std::move(what);
    return S_OK;
  }

  BlockOutcome& outcome_;
};

/// The parts of a block that tell why it was dropped.
struct Contents {
  std::string text;  ///< of the last chunk that says which camera, or the record's MAC
  std::string ip;
  std::string damage;
};

void Collect(const Node& node, Contents& contents) {
  const bool isText = node.value.is_string();
  if (node.name == "MAC" && isText) contents.text = node.value.get<std::string>();
  if (node.name == "IP" && isText) contents.ip = node.value.get<std::string>();
  if (node.type == "chunk" && node.value == static_cast<std::uint32_t>(wire::ctText) && !node.children.empty() &&
      node.children[0].value.is_string())
    contents.text = node.children[0].value.get<std::string>();
  for (const Node& child : node.children) Collect(child, contents);
  if (node.damage && contents.damage.empty())
    contents.damage = fmt::format("damaged at offset {}: expected {}, found {}", node.damage->offset,
                                  node.damage->expected, node.damage->found);
}

std::string WhyDropped(std::uint32_t messageType, const Contents& contents) {
  const bool wrongElements = contents.damage.find("expected elements of 8 bytes") != std::string::npos;
  if (!contents.damage.empty() && !wrongElements) return contents.damage;
  const bool named = !contents.text.empty();
  if (messageType == wire::fmtPicture) return named ? "text without picture" : "picture without text";
  if (messageType == wire::fmtValues) {
    if (!named) return "values without text";
    return wrongElements ? "text without values: " + contents.damage.substr(contents.damage.find("expected"))
                         : "text without values";
  }
  return named ? "refused by the parser" : "empty hardware address";
}

}  // namespace

BlockOutcome OutcomeOf(std::int32_t blockKind, std::uint32_t messageType, std::span<const std::uint8_t> block,
                       bool hasCallback) {
  BlockOutcome outcome;
  NotingWizard wizard(outcome);
  const wire::CurrentWizard current(&wizard);
  if (blockKind == wire::kFinderBlockKind && hasCallback)
    wire::ParseFinderBlock(current, *Kestrel::CreateBuffer(block.data(), block.size()), messageType);
  outcome.isGone = outcome.camera && messageType == wire::fmtCameraKind4;
  if (outcome.delivered) return outcome;

  Contents contents;
  Collect(Decode({block.begin(), block.end()}, {Form::kBlock, messageType}).root, contents);
  outcome.mac = contents.text;
  outcome.ip = contents.ip;
  if (blockKind != wire::kFinderBlockKind)
    outcome.what = fmt::format("block kind {} is not for the finder", blockKind);
  else if (!hasCallback)
    outcome.what = "no callback takes it";
  else if (messageType < wire::fmtPicture || messageType > wire::fmtCameraKind4)
    outcome.what = fmt::format("unknown message type {}", messageType);
  else
    outcome.what = WhyDropped(messageType, contents);
  return outcome;
}

}  // namespace tarnfind
