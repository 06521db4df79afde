/// Text on its way between UTF-16 and UTF-8, and made fit for a terminal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "tarn/com_types.h"

namespace tarnfind {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

/// The code point at `position`, which moves behind it; a byte that begins no valid sequence gives
/// kReplacementCharacter. Requires position < text.size().
char32_t NextCodePoint(std::string_view utf8, std::size_t& position);
/// Requires a Unicode scalar value.
void AppendUtf8(std::string& utf8, char32_t codePoint);
bool IsValidUtf8(std::string_view text);

/// A unit or byte without meaning becomes U+FFFD.
std::string Utf8FromUtf16(std::u16string_view text);
std::u16string Utf16FromUtf8(std::string_view text);
/// From the system's code page, which is that of the library's exceptions; the same setting decides.
std::string Utf8FromSystemText(std::string_view text);
std::filesystem::path PathFromUtf8(std::string_view text);
std::string Utf8FromPath(const std::filesystem::path& path);
/// Takes the BSTR over and frees it on every path. Returns its text, NULs included. Null counts as empty.
std::string TakeBstr(BSTR text);

/// Whether a terminal obeys the character, draws nothing for it, or reorders the characters around it.
bool IsControl(char32_t codePoint);
/// Valid UTF-8 for one line of a terminal: invalid bytes and control characters become U+FFFD, so that a camera's name
/// cannot move the cursor or hide in another name.
std::string Printable(std::string_view text);
/// An error's text for one line: as Printable, with runs of white space and line ends as one blank.
std::string OneLine(std::string_view text);
/// ASCII letters in capitals.
std::string Upper(std::string text);
/// "1 camera", "2 cameras"
std::string Counted(std::uint64_t count, std::string_view what);

}  // namespace tarnfind
