#include "protocol/camera_type.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "base/text_conversion.h"

namespace Tarn::CameraFinding {
namespace {

struct VendorMaskRow {
  std::uint64_t mask;
  CameraTypeCode type;
};

/// In the order of the masks; the codes follow no order.
constexpr auto kVendorMasks = std::to_array<VendorMaskRow>({
    {0x1, 3},         {0x2, 5},
    {0x4, 10},        {0x8, 4},
    {0x10, 8},        {0x20, 9},
    {0x40, 2},        {0x80, 7},
    {0x100, 11},      {0x200, 12},
    {0x400, 13},      {0x800, 14},
    {0x1000, 15},     {0x2000, 16},
    {0x4000, 6},      {0x8000, 17},
    {0x10000, 18},    {0x20000, 19},
    {0x40000, 1},     {0x80000, 20},
    {0x100000, 21},   {0x200000, 22},
    {0x400000, 23},   {0x20000000, 25},
    {0x40000000, 26}, {0xFFFFFFFFFFFFFFFF, 24},  // a camera that is known by its address alone
});
static_assert(std::ranges::is_sorted(kVendorMasks, std::ranges::less_equal{}, &VendorMaskRow::mask));

struct PluginNameRow {
  std::u16string_view name;
  CameraTypeCode type;
};

constexpr auto kPluginNames = std::to_array<PluginNameRow>({
    {u"ArecontVision IPC", 7},
    {u"Axis IPC", 2},
    {u"Summit IPC", 3},
    {u"R2 IPC", 4},
    {u"R3 IPC", 8},
    {u"R4 IPC", 25},
    {u"V1 IPC", 5},
    {u"Marten IPC", 9},
    {u"ONVIF IPC", 6},
    {u"Sony IPC", 1},
});

/// The code of the row whose key is exactly this one, or 0.
template <class Rows, class Key, class Value>
CameraTypeCode TypeOf(const Rows& rows, Key Value::*key, const Key& wanted) {
  const auto row = std::ranges::find(rows, wanted, key);
  return row == rows.end() ? 0 : row->type;
}

}  // namespace

CameraTypeCode TypeFromVendorBit(std::uint64_t mask) {
  return TypeOf(kVendorMasks, &VendorMaskRow::mask, mask);
}

CameraTypeCode TypeFromPluginName(std::string name) {
  const std::u16string wide = Kestrel::AnsiToWide(name);
  return TypeOf(kPluginNames, &PluginNameRow::name, std::u16string_view(wide));
}

}  // namespace Tarn::CameraFinding
