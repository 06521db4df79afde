/// The place in a message that is being decoded.
#pragma once

#include <fmt/format.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>

#include "base/byte_order.h"
#include "tools/decode/node.h"

namespace tarnfind {

/// Thrown where a layer stops making sense; the node that it happened in holds the damage.
struct Stop {};

inline std::string Counted(std::size_t bytes) {
  return fmt::format("{} byte{}", bytes, bytes == 1 ? "" : "s");
}

/// Reads forward over a part of a layer. Where something is missing, the node gets the damage and Stop is thrown.
class Cursor {
 public:
  Cursor(std::span<const std::uint8_t> bytes, std::size_t layer, std::size_t offset, std::size_t end)
      : bytes_(bytes), layer_(layer), at_(offset), end_(end) {}

  std::size_t GetLayer() const { return layer_; }
  std::size_t GetOffset() const { return at_; }
  std::size_t GetRemaining() const { return end_ - at_; }
  std::span<const std::uint8_t> Peek() const { return bytes_.subspan(at_, GetRemaining()); }

  /// Takes that many bytes; where they are not there, the node gets the damage.
  std::span<const std::uint8_t> Take(std::size_t size, Node& node, const std::string& what) {
    if (size > GetRemaining()) Fail(node, fmt::format("{}, {}", what, Counted(size)), Counted(GetRemaining()));
    const std::span<const std::uint8_t> taken = bytes_.subspan(at_, size);
    at_ += size;
    return taken;
  }
  /// The same, and notes it as a field of the node.
  std::span<const std::uint8_t> TakeField(std::size_t size, Node& node, const std::string& what) {
    const std::size_t offset = at_;
    const std::span<const std::uint8_t> taken = Take(size, node, what);
    if (size > 0) node.fields.push_back({offset, size, what});
    return taken;
  }
  template <class Number>
  Number TakeNumber(Node& node, const std::string& what) {
    const std::size_t offset = at_;
    const auto number = Kestrel::LoadLittleEndian<Number>(Take(sizeof(Number), node, what).data());
    node.fields.push_back({offset, sizeof number, fmt::format("{} {}", what, number)});
    return number;
  }
  /// The next bytes as a cursor of their own, which need not be used up. Requires that so many bytes remain.
  Cursor Split(std::size_t size) {
    const Cursor part(bytes_, layer_, at_, at_ + size);
    at_ += size;
    return part;
  }
  [[noreturn]] void Fail(Node& node, std::string expected, std::string found) const {
    node.damage = Damage{at_, std::move(expected), std::move(found)};
    node.size = at_ - node.offset;
    throw Stop();
  }

 private:
  std::span<const std::uint8_t> bytes_;
  std::size_t layer_;
  std::size_t at_;
  std::size_t end_;
};

}  // namespace tarnfind
