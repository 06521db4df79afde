/// The word that somebody probably meant.
#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace Kestrel {

/// Insertions, deletions, replacements and swaps of neighbours that make one word of the other (Damerau-Levenshtein,
/// each place changed at most once).
inline std::size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> beforeLast(b.size() + 1), last(b.size() + 1), row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    beforeLast.swap(last);
    last.swap(row);
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] != b[j - 1])});
      const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (swapped) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
    }
  }
  return row[b.size()];
}

/// The known word that is nearest to `word`; empty where none is near: a third of its letters may differ, at least one.
inline std::string_view NearestWord(std::string_view word, std::span<const std::string_view> known) {
  constexpr std::size_t kLongestWord = 64;  // bounds the time that a hostile word takes
  if (word.size() > kLongestWord) return {};
  std::string_view nearest;
  std::size_t least = std::max<std::size_t>(word.size() / 3, 1) + 1;
  for (const std::string_view candidate : known) {
    const std::size_t distance = EditDistance(word, candidate);
    if (distance >= least) continue;
    least = distance;
    nearest = candidate;
  }
  return nearest;
}

}  // namespace Kestrel
