/// What keys, codes and numbers of messages mean, in words.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarnfind {

/// The name of a variant's tag, "vtUInt"; empty for 21 and more.
std::string_view NameOfTag(std::uint8_t tag);
/// 21 where there is no such type.
std::uint8_t TagOfName(std::string_view name);

/// Of an entry by its key, with its number where it has one; empty where nothing is known of it.
std::string MeaningOfEntry(std::string_view key, std::uint64_t number, std::string_view text);
std::string MeaningOfMessageType(std::uint32_t messageType);
std::string MeaningOfChunk(std::uint32_t tag, std::uint32_t messageType);

}  // namespace tarnfind
