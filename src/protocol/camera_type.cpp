#include "protocol/camera_type.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include "base/text_conversion.h"

namespace Tarn::CameraFinding {
namespace {

struct VendorMaskRow {
  std::uint64_t mask;
  CameraTypeCode type;
};

/// In the order of the masks; the codes follow no order. A number stands for a family without a name.
constexpr auto kVendorMasks = std::to_array<VendorMaskRow>({
    {0x1, ctcSummitIpc},
    {0x2, ctcV1Ipc},
    {0x4, 10},
    {0x8, ctcR2Ipc},
    {0x10, ctcR3Ipc},
    {0x20, ctcMartenIpc},
    {0x40, ctcAxisIpc},
    {0x80, ctcArecontVisionIpc},
    {0x100, 11},
    {0x200, 12},
    {0x400, 13},
    {0x800, 14},
    {0x1000, 15},
    {0x2000, 16},
    {0x4000, ctcOnvifIpc},
    {0x8000, 17},
    {0x10000, 18},
    {0x20000, 19},
    {0x40000, ctcSonyIpc},
    {0x80000, 20},
    {0x100000, 21},
    {0x200000, 22},
    {0x400000, 23},
    {0x20000000, ctcR4Ipc},
    {0x40000000, 26},
    {0xFFFFFFFFFFFFFFFF, ctcAddressOnly},
});
static_assert(std::ranges::is_sorted(kVendorMasks, std::ranges::less_equal{}, &VendorMaskRow::mask));

struct NameRow {
  std::u16string_view name;
  CameraTypeCode type;
};

/// CameraTypeNames with the names' lengths. To look for the ends of ten names takes longer than all the rest.
constexpr auto kNames = [] {
  std::array<NameRow, std::size(CameraTypeNames)> rows;
  std::ranges::transform(CameraTypeNames, rows.begin(), [](const CameraTypeName& row) {
    return NameRow{row.name, row.type};
  });
  return rows;
}();

/// The code of the row whose key is exactly `wanted`; ctcUnknown where there is none.
template <class Rows, class Key, class Wanted>
CameraTypeCode TypeOf(const Rows& rows, Key key, const Wanted& wanted) {
  const auto row = std::ranges::find(rows, wanted, key);
  return row == std::end(rows) ? ctcUnknown : row->type;
}

}  // namespace

CameraTypeCode TypeFromVendorBit(std::uint64_t mask) {
  return TypeOf(kVendorMasks, &VendorMaskRow::mask, mask);
}

CameraTypeCode TypeFromPluginName(std::string name) {
  const std::u16string wide = Kestrel::AnsiToWide(name);
  return TypeOf(kNames, &NameRow::name, std::u16string_view(wide));
}

}  // namespace Tarn::CameraFinding
