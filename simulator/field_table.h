/// Reading an object of a scenario file by a table of its keys.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "base/nearest_word.h"
#include "simulator/json_document.h"

namespace simulator {

/// Throws ScenarioMistake, which names the nearest known key, or all of them where none is near.
[[noreturn]] inline void FailAtUnknownKey(const JsonCursor& object, std::size_t index,
                                          const std::vector<std::string_view>& known) {
  const std::string_view nearest = Kestrel::NearestWord(object.Key(index), known);
  std::string text = "is no key of this object; ";
  if (!nearest.empty()) {
    text += "did you mean \"" + std::string(nearest) + "\"?";
  } else {
    text += "the keys are ";
    for (std::size_t i = 0; i < known.size(); ++i) text += (i > 0 ? ", " : "") + std::string(known[i]);
  }
  object.FailAtKey(index, text);
}

template <class Target>
struct Field {
  std::string_view key;
  void (*read)(const JsonCursor& value, Target& target);
  bool required = false;
};

/// Reads the members in the order of the table, not of the file, so that a row may use what the rows above it have
/// read. A member without a row goes to readOther before that; readOther returns whether it knows the key.
/// otherKeys: the keys that it knows. Throws ScenarioMistake for an unknown key, and where a required one is missing.
template <class Target, std::size_t kCount, class ReadOther>
void ReadObject(const JsonCursor& object, const std::array<Field<Target>, kCount>& fields, Target& target,
                ReadOther readOther, std::vector<std::string_view> otherKeys = {}) {
  const std::size_t count = object.MemberCount();
  const auto& keys = object.Node().keys;
  for (std::size_t i = 0; i < count; ++i) {
    const bool hasRow = std::any_of(fields.begin(), fields.end(), [&](const auto& row) { return row.key == keys[i]; });
    const JsonCursor value = object.Child(i);
    if (hasRow || readOther(keys[i], value, target)) continue;
    for (const Field<Target>& field : fields) otherKeys.push_back(field.key);
    FailAtUnknownKey(object, i, otherKeys);
  }
  for (const Field<Target>& field : fields) {
    const auto key = std::find(keys.begin(), keys.end(), field.key);
    if (key != keys.end()) {
      field.read(object.Child(static_cast<std::size_t>(key - keys.begin())), target);
    } else if (field.required) {
      object.FailAt(field.key, "is missing");
    }
  }
}

template <class Target, std::size_t kCount>
void ReadObject(const JsonCursor& object, const std::array<Field<Target>, kCount>& fields, Target& target) {
  ReadObject(object, fields, target, [](std::string_view, const JsonCursor&, Target&) { return false; });
}

}  // namespace simulator
