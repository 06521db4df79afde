/// JSON with the places of its values, and a cursor that reports each mistake with its place.
///
/// Every mistake is one line: "path:line:column: key: what is wrong".
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace simulator {

/// Counted from 1; columns are characters, not bytes.
struct TextPlace {
  std::size_t line = 1;
  std::size_t column = 1;
};

class ScenarioMistake : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  ScenarioMistake(const std::string& path, TextPlace place, const std::string& key, std::string_view what);
};

struct JsonNode {
  enum class Kind { kNull, kFlag, kNumber, kNegativeNumber, kReal, kText, kArray, kObject };

  Kind kind = Kind::kNull;
  TextPlace place;  ///< where it begins
  bool flag = false;
  std::uint64_t number = 0;  ///< of kNumber
  double real = 0;           ///< of every kind of number
  std::string text;
  std::vector<JsonNode> items;    ///< elements, or values of members
  std::vector<std::string> keys;  ///< of an object, one per item
  std::vector<TextPlace> keyPlaces;
};

/// Throws ScenarioMistake for text that is not JSON, nested more than a few levels deep, or with a key given twice.
JsonNode ParseJson(std::string_view text, const std::string& path);

/// A place in a document. A cursor must not outlive its parent cursor.
class JsonCursor {
 public:
  JsonCursor(const JsonNode& root, const std::string& path) : node_(root), path_(path) {}

  /// Elements of an array, members of an object. Each throws ScenarioMistake for a node of another kind.
  std::size_t ElementCount() const;
  std::size_t MemberCount() const;
  JsonCursor Child(std::size_t index) const { return JsonCursor(node_.items[index], path_, this, index); }
  const std::string& Key(std::size_t index) const { return node_.keys[index]; }

  const JsonNode& Node() const { return node_; }
  bool IsNumber() const;
  /// Flag and Text throw ScenarioMistake for a node of another kind.
  bool Flag() const;
  const std::string& Text() const;
  /// A whole number; also one that is written with a decimal point or an exponent, up to 2^53. Throws ScenarioMistake
  /// for anything else, and for a number below lowest or above highest.
  std::uint64_t Number(std::uint64_t lowest, std::uint64_t highest) const;

  [[noreturn]] void Fail(std::string_view what) const;
  /// Reports the key of a member of this object.
  [[noreturn]] void FailAtKey(std::size_t index, std::string_view what) const;
  /// Reports a member of this object. The member may be missing; the place is then that of the object.
  [[noreturn]] void FailAt(std::string_view key, std::string_view what) const;

 private:
  JsonCursor(const JsonNode& node, const std::string& path, const JsonCursor* parent, std::size_t index)
      : node_(node), path_(path), parent_(parent), index_(index) {}
  std::string KeyPath() const;

  const JsonNode& node_;
  const std::string& path_;
  const JsonCursor* parent_ = nullptr;
  std::size_t index_ = 0;
};

}  // namespace simulator
