/// A decoded message as a tree: what each byte is, what it means, and where it stops making sense.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace tarnfind {

/// Where decoding stopped.
struct Damage {
  std::size_t offset = 0;  ///< in the node's layer
  std::string expected;
  std::string found;
};

/// Bytes inside a node that are no node of their own: a length, a terminator, a name.
struct Field {
  std::size_t offset;
  std::size_t size;
  std::string meaning;
};

struct Node {
  std::string type;                           ///< how its bytes are read; the encoder goes by it
  std::optional<std::string> name;            ///< of an entry, a list, a frame or an argument; valid UTF-8
  nlohmann::ordered_json value;               ///< null where the children are the value
  std::optional<std::uint64_t> statedLength;  ///< of a chunk whose length is not the size of its payload
  std::string meaning;                        ///< for people; empty where the value says it all
  std::size_t layer = 0;  ///< which bytes: 0 what was given, the others what base64 texts in it decode to
  std::size_t offset = 0;
  std::size_t size = 0;
  std::vector<Field> fields;
  std::vector<Node> children;
  std::optional<Damage> damage;
};

struct Decoded {
  std::deque<std::vector<std::uint8_t>> layers;
  Node root;
};

}  // namespace tarnfind
