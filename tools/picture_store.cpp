#include "tools/picture_store.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <system_error>

#include "tools/failure.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

constexpr std::string_view kReservedCharacters = "/\\<>:\"|?*";
constexpr std::string_view kTrimmedCharacters = ". ";

/// The bytes that a picture of a format begins with.
struct PictureFormat {
  std::string_view beginning;
  std::string_view extension;
};
constexpr PictureFormat kPictureFormats[] = {
    {"\x89PNG\r\n\x1A\n", "png"},
    {"\xFF\xD8\xFF", "jpg"},
    {"BM", "bmp"},
};

}  // namespace

PictureStore::PictureStore(const PictureFolder& folder)
    : folder_(PathFromUtf8(folder.path)), mostBytes_(folder.mostBytes) {
  std::error_code failed;
  std::filesystem::create_directories(folder_, failed);
  if (!failed && !std::filesystem::is_directory(folder_, failed))
    failed = std::make_error_code(std::errc::not_a_directory);
  if (failed) throw Failure(fmt::format("cannot make the folder \"{}\": {}", folder.path, failed.message()));
}

PictureStore::Kept PictureStore::Keep(std::span<const std::uint8_t> picture, std::string_view cameraText) {
  const std::lock_guard lock(mutex_);
  Kept kept;
  std::filesystem::path path;
  std::error_code unknown;
  do {
    kept.file = fmt::format("{}-{:04}.{}", SafeFileName(cameraText, kMostCameraTextBytes), ++lastNumber_,
                            PictureExtension(picture));
    path = folder_ / PathFromUtf8(kept.file);
  } while (std::filesystem::exists(path, unknown));

  errno = 0;
  std::ofstream file(path, std::ios::binary);
  const bool opened = file.is_open();
  file.write(reinterpret_cast<const char*>(picture.data()), static_cast<std::streamsize>(picture.size()));
  file.close();
  if (file) {
    RemoveOldest(path, picture.size());
    return kept;
  }
  const std::string reason = FileFailureReason();
  if (opened) std::filesystem::remove(path, unknown);
  return {"", fmt::format("cannot keep pictures in \"{}\": {}", Utf8FromPath(folder_), reason)};
}

void PictureStore::RemoveOldest(const std::filesystem::path& newest, std::uint64_t size) {
  if (mostBytes_ == PictureFolder().mostBytes) return;
  keptBytes_ += size;
  kept_.emplace_back(newest, size);
  for (; keptBytes_ > mostBytes_ && kept_.size() > 1; kept_.pop_front()) {
    std::error_code left;
    std::filesystem::remove(kept_.front().first, left);
    keptBytes_ -= kept_.front().second;
  }
}

std::string SafeFileName(std::string_view text, std::size_t mostBytes) {
  std::string name;
  for (std::size_t position = 0; position < text.size();) {
    const char32_t codePoint = NextCodePoint(text, position);
    const bool reserved =
        codePoint < 0x80 && kReservedCharacters.find(static_cast<char>(codePoint)) != std::string_view::npos;
    std::string character;
    AppendUtf8(character, reserved || IsControl(codePoint) || codePoint == kReplacementCharacter ? U'_' : codePoint);
    if (name.size() + character.size() > mostBytes) break;
    name += character;
  }
  name.erase(0, name.find_first_not_of(kTrimmedCharacters));
  name.erase(name.find_last_not_of(kTrimmedCharacters) + 1);
  return name.empty() ? "camera" : name;
}

std::string_view PictureExtension(std::span<const std::uint8_t> picture) {
  const std::string_view bytes(reinterpret_cast<const char*>(picture.data()), picture.size());
  const auto* const format = std::find_if(std::begin(kPictureFormats), std::end(kPictureFormats),
                                          [&](const PictureFormat& row) { return bytes.starts_with(row.beginning); });
  return format == std::end(kPictureFormats) ? "bin" : format->extension;
}

}  // namespace tarnfind
