#include "simulator/json_document.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <utility>

namespace simulator {
namespace {

constexpr std::size_t kMostLevels = 8;
constexpr std::string_view kTopLevel = "top level";

std::string PathOfChild(const std::string& parent, const JsonNode& container, std::size_t index) {
  if (container.kind == JsonNode::Kind::kArray) return parent + "[" + std::to_string(index) + "]";
  return parent.empty() ? container.keys[index] : parent + "." + container.keys[index];
}

/// Hands the text to the parser and counts lines up to the last character that was read. A line break belongs to the
/// line that it ends, because the parser reads one character beyond a number to see where the number ends.
class CountingIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  CountingIterator(const char* position, std::size_t* line) : position_(position), line_(line) {}

  reference operator*() const { return *position_; }
  CountingIterator& operator++() {
    if (lineBreakPassed_) ++*line_;
    lineBreakPassed_ = *position_ == '\n';
    ++position_;
    return *this;
  }
  CountingIterator operator++(int) {
    CountingIterator before = *this;
    ++*this;
    return before;
  }
  friend bool operator==(const CountingIterator& a, const CountingIterator& b) { return a.position_ == b.position_; }

 private:
  const char* position_;
  std::size_t* line_;
  bool lineBreakPassed_ = false;
};

class TreeBuilder : public nlohmann::json_sax<nlohmann::json> {
 public:
  TreeBuilder(const std::string& path, const std::size_t& line) : path_(path), line_(line) {}

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
    if (twice) Fail("is given twice");
    return true;
  }
  bool parse_error(std::size_t, const std::string& lastToken, const nlohmann::json::exception&) override {
    Fail("this is not JSON, near '" + lastToken + "'");
  }

 private:
  JsonNode& Add(JsonNode::Kind kind) {
    JsonNode& node = open_.empty() ? root_ : open_.back()->items.emplace_back();
    node.kind = kind;
    node.line = line_;
    return node;
  }
  bool Open(JsonNode::Kind kind) {
    JsonNode& node = Add(kind);
    if (open_.size() == kMostLevels) Fail("is nested too deeply");
    // The address stays valid while the node is open, because only its own items grow.
    open_.push_back(&node);
    return true;
  }
  bool Close() {
    open_.pop_back();
    return true;
  }
  /// Reports the member or element that is being read.
  [[noreturn]] void Fail(std::string_view what) const {
    std::string place;
    for (const JsonNode* const node : open_) {
      const bool inObject = node->kind == JsonNode::Kind::kObject;
      const std::size_t known = inObject ? node->keys.size() : node->items.size();
      if (known > 0) place = PathOfChild(place, *node, known - 1);
    }
    throw ScenarioMistake(path_, line_, place, what);
  }

  const std::string& path_;
  const std::size_t& line_;
  JsonNode root_;
  std::vector<JsonNode*> open_;  ///< the containers around the place that is being read, outermost first
};

}  // namespace

ScenarioMistake::ScenarioMistake(const std::string& path, std::size_t line, const std::string& key,
                                 std::string_view what)
    : std::runtime_error(path + ":" + std::to_string(line) + ": " + (key.empty() ? std::string(kTopLevel) : key) +
                         ": " + std::string(what)) {}

JsonNode ParseJson(std::string_view text, const std::string& path) {
  std::size_t line = 1;
  TreeBuilder builder(path, line);
  nlohmann::json::sax_parse(CountingIterator(text.data(), &line), CountingIterator(text.data() + text.size(), &line),
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

bool JsonCursor::Flag() const {
  if (node_.kind != JsonNode::Kind::kFlag) Fail("must be true or false");
  return node_.flag;
}

const std::string& JsonCursor::Text() const {
  if (node_.kind != JsonNode::Kind::kText) Fail("must be a text");
  return node_.text;
}

std::uint64_t JsonCursor::Number(std::uint64_t lowest, std::uint64_t highest) const {
  if (node_.kind != JsonNode::Kind::kNumber || node_.number < lowest || node_.number > highest)
    Fail("must be a whole number from " + std::to_string(lowest) + " to " + std::to_string(highest));
  return node_.number;
}

std::string JsonCursor::KeyPath() const {
  return parent_ ? PathOfChild(parent_->KeyPath(), parent_->node_, index_) : std::string();
}

void JsonCursor::Fail(std::string_view what) const {
  throw ScenarioMistake(path_, node_.line, KeyPath(), what);
}

void JsonCursor::FailAt(std::string_view key, std::string_view what) const {
  const auto member = std::find(node_.keys.begin(), node_.keys.end(), key);
  if (member != node_.keys.end()) Child(static_cast<std::size_t>(member - node_.keys.begin())).Fail(what);
  const std::string parent = KeyPath();
  throw ScenarioMistake(path_, node_.line, parent.empty() ? std::string(key) : parent + "." + std::string(key), what);
}

}  // namespace simulator
