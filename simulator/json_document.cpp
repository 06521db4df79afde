#include "simulator/json_document.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <utility>

namespace simulator {
namespace {

constexpr std::size_t kMostLevels = 8;
constexpr std::string_view kTopLevel = "top level";
/// 2^53: above it not every whole number is a double.
constexpr double kLargestWholeReal = 9007199254740992.0;

std::string PathOfChild(const std::string& parent, const JsonNode& container, std::size_t index) {
  if (container.kind == JsonNode::Kind::kArray) return parent + "[" + std::to_string(index) + "]";
  return parent.empty() ? container.keys[index] : parent + "." + container.keys[index];
}

/// Hands the text to the parser and knows where the last value or key began. The parser reads one character beyond a
/// number, but that one begins no value.
class PlaceIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  /// What the parser's copies of the iterator share.
  struct State {
    TextPlace next;   ///< of the next character
    TextPlace token;  ///< where the last value or key began
    bool inText = false;
    bool escaped = false;
    bool inWord = false;  ///< a number, true, false or null
  };

  PlaceIterator(const char* position, State* state) : position_(position), state_(state) {}

  reference operator*() const { return *position_; }
  PlaceIterator& operator++() {
    Pass(*position_++);
    return *this;
  }
  PlaceIterator operator++(int) {
    PlaceIterator before = *this;
    ++*this;
    return before;
  }
  friend bool operator==(const PlaceIterator& a, const PlaceIterator& b) { return a.position_ == b.position_; }

 private:
  void Pass(char c) {
    State& state = *state_;
    if (state.inText) {
      state.inText = state.escaped || c != '"';
      state.escaped = !state.escaped && c == '\\';
    } else {
      const bool wordCharacter = std::string_view(" \t\r\n,:{}[]\"").find(c) == std::string_view::npos;
      if (c == '{' || c == '[' || c == '"' || (wordCharacter && !state.inWord)) state.token = state.next;
      state.inWord = wordCharacter;
      state.inText = c == '"';
    }
    Advance(c, state.next);
  }

 public:
  static void Advance(char c, TextPlace& place) {
    const bool continues = (static_cast<unsigned char>(c) & 0xC0) == 0x80;  // of a character of several bytes
    if (c == '\n')
      place = {place.line + 1, 1};
    else if (!continues)
      ++place.column;
  }

 private:
  const char* position_;
  State* state_;
};

/// Why the parser gave up, without its own prefix and place.
std::string ReasonOf(const std::string& text) {
  const std::size_t place = text.find("column ");
  const std::size_t colon = text.find(": ", place == std::string::npos ? 0 : place);
  const std::size_t bracket = text.find("] ");
  if (place != std::string::npos && colon != std::string::npos) return text.substr(colon + 2);
  return bracket != std::string::npos ? text.substr(bracket + 2) : text;
}

class TreeBuilder : public nlohmann::json_sax<nlohmann::json> {
 public:
  TreeBuilder(std::string_view text, const std::string& path, const TextPlace& place)
      : text_(text), path_(path), place_(place) {}

  JsonNode TakeRoot() { return std::move(root_); }

  bool null() override {
    Add(JsonNode::Kind::kNull);
    return true;
  }
  bool boolean(bool value) override {
    Add(JsonNode::Kind::kFlag).flag = value;
    return true;
  }
  bool number_integer(number_integer_t value) override {
    Add(JsonNode::Kind::kNegativeNumber).real = static_cast<double>(value);
    return true;
  }
  bool number_unsigned(number_unsigned_t value) override {
    JsonNode& node = Add(JsonNode::Kind::kNumber);
    node.number = value;
    node.real = static_cast<double>(value);
    return true;
  }
  bool number_float(number_float_t value, const string_t&) override {
    Add(JsonNode::Kind::kReal).real = value;
    return true;
  }
  bool string(string_t& value) override {
    Add(JsonNode::Kind::kText).text = std::move(value);
    return true;
  }
  bool binary(binary_t&) override { return false; }
  bool start_object(std::size_t) override { return Open(JsonNode::Kind::kObject); }
  bool start_array(std::size_t) override { return Open(JsonNode::Kind::kArray); }
  bool end_object() override { return Close(); }
  bool end_array() override { return Close(); }
  bool key(string_t& value) override {
    std::vector<std::string>& keys = open_.back()->keys;
    const bool twice = std::find(keys.begin(), keys.end(), value) != keys.end();
    keys.push_back(std::move(value));
    open_.back()->keyPlaces.push_back(place_);
    if (twice) Fail(place_, "is given twice");
    return true;
  }
  bool parse_error(std::size_t position, const std::string&, const nlohmann::json::exception& error) override {
    TextPlace place;
    const std::size_t before = std::min(position > 0 ? position - 1 : 0, text_.size());
    for (const char c : text_.substr(0, before)) PlaceIterator::Advance(c, place);
    Fail(place, "this is not JSON: " + ReasonOf(error.what()));
  }

 private:
  JsonNode& Add(JsonNode::Kind kind) {
    JsonNode& node = open_.empty() ? root_ : open_.back()->items.emplace_back();
    node.kind = kind;
    node.place = place_;
    return node;
  }
  bool Open(JsonNode::Kind kind) {
    JsonNode& node = Add(kind);
    if (open_.size() == kMostLevels) Fail(place_, "is nested too deeply; no scenario has more than 5 levels");
    // The address stays valid while the node is open, because only its own items grow.
    open_.push_back(&node);
    return true;
  }
  bool Close() {
    open_.pop_back();
    return true;
  }
  /// Reports the member or element that is being read.
  [[noreturn]] void Fail(TextPlace place, std::string_view what) const {
    std::string key;
    for (const JsonNode* const node : open_) {
      const bool inObject = node->kind == JsonNode::Kind::kObject;
      const std::size_t known = inObject ? node->keys.size() : node->items.size();
      if (known > 0) key = PathOfChild(key, *node, known - 1);
    }
    throw ScenarioMistake(path_, place, key, what);
  }

  std::string_view text_;
  const std::string& path_;
  const TextPlace& place_;  ///< of the value or key that the parser has just read
  JsonNode root_;
  std::vector<JsonNode*> open_;  ///< the containers around the place that is being read, outermost first
};

}  // namespace

ScenarioMistake::ScenarioMistake(const std::string& path, TextPlace place, const std::string& key,
                                 std::string_view what)
    : std::runtime_error(path + ":" + std::to_string(place.line) + ":" + std::to_string(place.column) + ": " +
                         (key.empty() ? std::string(kTopLevel) : key) + ": " + std::string(what)) {}

JsonNode ParseJson(std::string_view text, const std::string& path) {
  PlaceIterator::State state;
  TreeBuilder builder(text, path, state.token);
  nlohmann::json::sax_parse(PlaceIterator(text.data(), &state), PlaceIterator(text.data() + text.size(), &state),
                            &builder);
  return builder.TakeRoot();
}

std::size_t JsonCursor::ElementCount() const {
  if (node_.kind != JsonNode::Kind::kArray) Fail("must be a list");
  return node_.items.size();
}

std::size_t JsonCursor::MemberCount() const {
  if (node_.kind != JsonNode::Kind::kObject) Fail("must be an object");
  return node_.items.size();
}

bool JsonCursor::IsNumber() const {
  using Kind = JsonNode::Kind;
  return node_.kind == Kind::kNumber || node_.kind == Kind::kNegativeNumber || node_.kind == Kind::kReal;
}

bool JsonCursor::Flag() const {
  if (node_.kind != JsonNode::Kind::kFlag) Fail("must be true or false");
  return node_.flag;
}

const std::string& JsonCursor::Text() const {
  if (node_.kind != JsonNode::Kind::kText) Fail("must be a text");
  return node_.text;
}

std::uint64_t JsonCursor::Number(std::uint64_t lowest, std::uint64_t highest) const {
  std::uint64_t number = node_.number;
  bool whole = node_.kind == JsonNode::Kind::kNumber;
  if (node_.kind == JsonNode::Kind::kReal && node_.real >= 0 && node_.real <= kLargestWholeReal) {
    number = static_cast<std::uint64_t>(node_.real);
    whole = static_cast<double>(number) == node_.real;
  }
  if (!whole || number < lowest || number > highest)
    Fail("must be a whole number from " + std::to_string(lowest) + " to " + std::to_string(highest));
  return number;
}

std::string JsonCursor::KeyPath() const {
  return parent_ ? PathOfChild(parent_->KeyPath(), parent_->node_, index_) : std::string();
}

void JsonCursor::Fail(std::string_view what) const {
  throw ScenarioMistake(path_, node_.place, KeyPath(), what);
}

void JsonCursor::FailAtKey(std::size_t index, std::string_view what) const {
  throw ScenarioMistake(path_, node_.keyPlaces[index], Child(index).KeyPath(), what);
}

void JsonCursor::FailAt(std::string_view key, std::string_view what) const {
  const auto member = std::find(node_.keys.begin(), node_.keys.end(), key);
  if (member != node_.keys.end()) Child(static_cast<std::size_t>(member - node_.keys.begin())).Fail(what);
  const std::string parent = KeyPath();
  throw ScenarioMistake(path_, node_.place, parent.empty() ? std::string(key) : parent + "." + std::string(key), what);
}

}  // namespace simulator
