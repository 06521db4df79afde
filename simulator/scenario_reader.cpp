#include "simulator/scenario_reader.h"

#include <algorithm>
#include <limits>
#include <unordered_map>
#include <utility>

#include "simulator/field_table.h"
#include "simulator/generated_world.h"
#include "simulator/record_fields.h"

namespace simulator {
namespace {

using namespace Tarn::CameraFinding;

/// Ten days, so that sums of times stay far below the clock's limit.
constexpr std::uint64_t kLongestMs = 864'000'000;
constexpr double kSlowest = 0.001;
constexpr double kFastest = 1000;

std::uint32_t ReadDuration(const JsonCursor& value) {
  return static_cast<std::uint32_t>(value.Number(0, kLongestMs));
}

struct CameraForm {
  CameraPlan plan;
  CameraRecord record;
};

constexpr auto kCameraFields = std::to_array<Field<CameraForm>>({
    {"name", [](const JsonCursor& value, CameraForm& camera) { camera.plan.name = value.Text(); }, true},
    {"mac", [](const JsonCursor& value, CameraForm& camera) { camera.record.mac = ReadMac(value); }, true},
    {"present", [](const JsonCursor& value, CameraForm& camera) { camera.plan.present = value.Flag(); }},
    {"text", [](const JsonCursor& value, CameraForm& camera) { camera.plan.text = value.Text(); }},
});

struct EventForm {
  Event event;
  std::string cameraName;
  bool hasValues = false;
};

void ReadEventType(const JsonCursor& value, EventForm& form) {
  const std::string& name = value.Text();
  const auto row =
      std::find_if(kMessageTypes.begin(), kMessageTypes.end(), [&](const auto& r) { return r.event == name; });
  if (row == kMessageTypes.end()) {
    std::string known;
    for (const MessageTypeRow& type : kMessageTypes) known += (known.empty() ? "" : ", ") + std::string(type.event);
    value.Fail("must be one of " + known);
  }
  form.event.type = row->type;
}

void ReadEventChanges(const JsonCursor& value, EventForm& form) {
  const std::size_t count = value.MemberCount();
  for (std::size_t i = 0; i < count; ++i) {
    const JsonCursor member = value.Child(i);
    std::optional<RecordChange> change = ReadRecordMember(value.Key(i), member);
    if (!change) FailAtUnknownKey(value, i, RecordMemberKeys());
    form.event.set.push_back(std::move(*change));
  }
}

void ReadEventValues(const JsonCursor& value, EventForm& form) {
  form.hasValues = true;
  const std::size_t count = value.ElementCount();
  if (count == 0) value.Fail("must hold at least one number");
  for (std::size_t i = 0; i < count; ++i)
    form.event.values.push_back(value.Child(i).Number(0, std::numeric_limits<std::uint64_t>::max()));
}

constexpr auto kEventFields = std::to_array<Field<EventForm>>({
    {"atMs", [](const JsonCursor& value, EventForm& form) { form.event.atMs = ReadDuration(value); }, true},
    {"camera", [](const JsonCursor& value, EventForm& form) { form.cameraName = value.Text(); }, true},
    {"event", ReadEventType, true},
    {"set", ReadEventChanges},
    {"values", ReadEventValues},
});

Occurrence ReadOccurrence(const JsonCursor& value) {
  if (value.Node().kind == JsonNode::Kind::kText && value.Text() == "every") return {0, true};
  if (!value.IsNumber()) value.Fail("must be a number from 1 on, or \"every\"");
  return {value.Number(1, std::numeric_limits<std::uint64_t>::max()), false};
}

std::uint32_t ReadErrorNumber(const JsonCursor& value) {
  return static_cast<std::uint32_t>(value.Number(0, std::numeric_limits<std::uint32_t>::max()));
}

constexpr auto kFailureFields = std::to_array<Field<FunctionFault>>({
    {"class", [](const JsonCursor& value, FunctionFault& fault) { fault.failure.errorClass = ReadErrorNumber(value); }},
    {"code", [](const JsonCursor& value, FunctionFault& fault) { fault.failure.errorCode = ReadErrorNumber(value); }},
    {"className", [](const JsonCursor& value, FunctionFault& fault) { fault.failure.className = value.Text(); }},
    {"description", [](const JsonCursor& value, FunctionFault& fault) { fault.failure.description = value.Text(); }},
    {"additionalText",
     [](const JsonCursor& value, FunctionFault& fault) { fault.failure.additionalText = value.Text(); }},
});

void ReadFaultFunction(const JsonCursor& value, FunctionFault& fault) {
  const std::string& name = value.Text();
  const auto row = std::find_if(kFunctions.begin(), kFunctions.end(), [&](const auto& r) { return r.name == name; });
  if (row == kFunctions.end()) {
    std::string known;
    for (const FunctionRow& function : kFunctions) known += (known.empty() ? "" : ", ") + std::string(function.name);
    value.Fail("must be one of " + known);
  }
  fault.function = row->function;
}

/// true or an object: the function fails and leaves an error record; false: it fails without one.
void ReadFaultError(const JsonCursor& value, FunctionFault& fault) {
  fault.outcome = Outcome::kFailsWithRecord;
  if (value.Node().kind == JsonNode::Kind::kFlag) {
    if (!value.Flag()) fault.outcome = Outcome::kFailsWithoutRecord;
    return;
  }
  if (value.Node().kind != JsonNode::Kind::kObject) value.Fail("must be true, false or an object");
  ReadObject(value, kFailureFields, fault);
}

constexpr auto kFunctionFaultFields = std::to_array<Field<FunctionFault>>({
    {"function", ReadFaultFunction, true},
    {"call", [](const JsonCursor& value, FunctionFault& fault) { fault.call = ReadOccurrence(value); }, true},
    {"error", ReadFaultError},
    {"delayMs", [](const JsonCursor& value, FunctionFault& fault) { fault.delayMs = ReadDuration(value); }},
});

std::uint64_t ReadBlockPosition(const JsonCursor& value) {
  return value.Number(0, std::numeric_limits<std::uint32_t>::max());
}

constexpr auto kBlockFaultFields = std::to_array<Field<BlockFault>>({
    {"block", [](const JsonCursor& value, BlockFault& fault) { fault.block = ReadOccurrence(value); }, true},
    {"cutAt", [](const JsonCursor& value, BlockFault& fault) { fault.cutAt = ReadBlockPosition(value); }},
    {"alterAt", [](const JsonCursor& value, BlockFault& fault) { fault.alterAt = ReadBlockPosition(value); }},
    {"alterMask", [](const JsonCursor& value,
                     BlockFault& fault) { fault.alterMask = static_cast<std::uint8_t>(value.Number(1, 255)); }},
    {"delayMs", [](const JsonCursor& value, BlockFault& fault) { fault.delayMs = ReadDuration(value); }},
});

std::uint32_t ReadPercent(const JsonCursor& value) {
  return static_cast<std::uint32_t>(value.Number(0, 100));
}

constexpr auto kGenerateFields = std::to_array<Field<GenerateOrder>>({
    {"count", [](const JsonCursor& value, GenerateOrder& order) { order.count = value.Number(1, kMostCameras); }, true},
    {"withinMs", [](const JsonCursor& value, GenerateOrder& order) { order.withinMs = ReadDuration(value); }},
    {"pictures", [](const JsonCursor& value, GenerateOrder& order) { order.pictures = value.Flag(); }},
    {"changedPercent",
     [](const JsonCursor& value, GenerateOrder& order) { order.changedPercent = ReadPercent(value); }},
    {"gonePercent", [](const JsonCursor& value, GenerateOrder& order) { order.gonePercent = ReadPercent(value); }},
});

struct ScenarioForm {
  Scenario scenario;
  GenerateOrder generate;
  std::unordered_map<std::string, std::size_t> camerasByName;
  std::unordered_map<std::string, std::size_t> camerasByMac;
};

void ReadCameras(const JsonCursor& value, ScenarioForm& form) {
  const std::size_t count = value.ElementCount();
  if (count > kMostCameras) value.Fail("must not hold more than " + std::to_string(kMostCameras) + " cameras");
  for (std::size_t i = 0; i < count; ++i) {
    const JsonCursor element = value.Child(i);
    CameraForm camera;
    ReadObject(
        element, kCameraFields, camera,
        [](std::string_view key, const JsonCursor& member, CameraForm& target) {
          const std::optional<RecordChange> change = ReadRecordMember(key, member);
          if (change) (*change)(target.record);
          return change.has_value();
        },
        RecordMemberKeys());
    if (!form.camerasByName.emplace(camera.plan.name, i).second)
      element.FailAt("name", "another camera has the name " + camera.plan.name + "; names are unique");
    if (!form.camerasByMac.emplace(camera.record.mac, i).second)
      element.FailAt("mac", "another camera has the hardware address " + camera.record.mac);
    camera.plan.record = std::make_shared<const CameraRecord>(std::move(camera.record));
    form.scenario.cameras.push_back(std::move(camera.plan));
  }
}

Event ReadEvent(const JsonCursor& element, const ScenarioForm& form) {
  EventForm event;
  ReadObject(element, kEventFields, event);
  const auto camera = form.camerasByName.find(event.cameraName);
  if (camera == form.camerasByName.end())
    element.FailAt("camera", "there is no camera of the name " + event.cameraName);
  if (!event.event.set.empty() && RowOf(event.event.type).recordTag == ctEnd)
    element.FailAt("set", "only events that carry a camera's record can change it");
  if (event.hasValues && event.event.type != fmtValues)
    element.FailAt("values", "only events of the kind values have any");
  event.event.camera = camera->second;
  return std::move(event.event);
}

void ReadEvents(const JsonCursor& value, ScenarioForm& form) {
  const std::size_t count = value.ElementCount();
  for (std::size_t i = 0; i < count; ++i) form.scenario.events.push_back(ReadEvent(value.Child(i), form));
}

bool Delays(std::uint32_t delayMs, const ScenarioForm& form) {
  return delayMs > 0 && form.scenario.speed != 0;
}

template <class Fault, std::size_t kCount>
std::vector<Fault> ReadFaults(const JsonCursor& value, const std::array<Field<Fault>, kCount>& fields) {
  std::vector<Fault> faults(value.ElementCount());
  for (std::size_t i = 0; i < faults.size(); ++i) ReadObject(value.Child(i), fields, faults[i]);
  return faults;
}

void ReadFunctionFaults(const JsonCursor& value, ScenarioForm& form) {
  form.scenario.functionFaults = ReadFaults(value, kFunctionFaultFields);
  for (std::size_t i = 0; i < form.scenario.functionFaults.size(); ++i) {
    FunctionFault& fault = form.scenario.functionFaults[i];
    if (fault.outcome == Outcome::kAsUsual && !Delays(fault.delayMs, form))
      value.Child(i).Fail("does nothing; give \"error\", or \"delayMs\" in a scenario that is not instant");
    if (fault.failure.description.empty()) fault.failure.description = RowOf(fault.function).failure;
  }
}

void ReadBlockFaults(const JsonCursor& value, ScenarioForm& form) {
  form.scenario.blockFaults = ReadFaults(value, kBlockFaultFields);
  for (std::size_t i = 0; i < form.scenario.blockFaults.size(); ++i) {
    const BlockFault& fault = form.scenario.blockFaults[i];
    if (!fault.cutAt && !fault.alterAt && !Delays(fault.delayMs, form))
      value.Child(i).Fail(
          "does nothing; give \"cutAt\", \"alterAt\", or \"delayMs\" in a scenario that is not instant");
    if (fault.alterMask && !fault.alterAt) value.Child(i).FailAt("alterMask", "does nothing without \"alterAt\"");
  }
}

void ReadSpeed(const JsonCursor& value, ScenarioForm& form) {
  const JsonNode& node = value.Node();
  const bool number = value.IsNumber() && node.real >= 0;
  const bool instant = node.kind == JsonNode::Kind::kText && node.text == "instant";
  const bool inRange = number && (node.real == 0 || (node.real >= kSlowest && node.real <= kFastest));
  if (!instant && !inRange) value.Fail("must be a number from 0.001 to 1000, or \"instant\"");
  form.scenario.speed = instant ? 0 : node.real;
}

/// In this order, because events refer to cameras by name, and a fault that only delays is checked against the speed.
constexpr auto kScenarioFields = std::to_array<Field<ScenarioForm>>({
    {"$schema", [](const JsonCursor& value, ScenarioForm&) { value.Text(); }},
    {"seed",
     [](const JsonCursor& value, ScenarioForm& form) {
       form.scenario.seed = value.Number(0, std::numeric_limits<std::uint64_t>::max());
     }},
    {"speed", ReadSpeed},
    {"cameras", ReadCameras},
    {"generate",
     [](const JsonCursor& value, ScenarioForm& form) { ReadObject(value, kGenerateFields, form.generate); }},
    {"events", ReadEvents},
    {"functionFaults", ReadFunctionFaults},
    {"blockFaults", ReadBlockFaults},
});

}  // namespace

Scenario ReadScenario(std::string_view json, const std::string& path) {
  const JsonNode document = ParseJson(json, path);
  const JsonCursor root(document, path);
  ScenarioForm form;
  ReadObject(root, kScenarioFields, form);
  Scenario& scenario = form.scenario;
  if (scenario.cameras.size() + form.generate.count > kMostCameras)
    root.FailAt("generate", "there are more than " + std::to_string(kMostCameras) + " cameras in all");
  AppendGenerated(form.generate, scenario);
  std::stable_sort(scenario.events.begin(), scenario.events.end(),
                   [](const Event& a, const Event& b) { return a.atMs < b.atMs; });
  return std::move(form.scenario);
}

}  // namespace simulator
