#include "tools/library.h"

#include <fmt/format.h>

#include <filesystem>
#include <system_error>

#include "tools/failure.h"
#include "tools/platform.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

constexpr char kExportName[] = "GetFindingInterface";

/// From the program's folder, in order of preference. The last one is set by the build.
constexpr const char* kFolders[] = {".", "../lib", TARN_LIBRARY_FOLDER};

/// A file that is there is the answer, also where it then cannot be loaded: another version found elsewhere would hide
/// the fault.
std::filesystem::path LibraryPath() {
  const std::filesystem::path name(platform::LibraryFileName());
  const std::filesystem::path program = platform::ExecutableFolder();
  if (program.empty()) return name;
  for (const char* const folder : kFolders) {
    std::error_code unknown;
    const std::filesystem::path candidate = (program / folder / name).lexically_normal();
    if (std::filesystem::exists(candidate, unknown)) return candidate;
  }
  return name;
}

}  // namespace

CreateFinderFunction LoadFinderLibrary(const std::string& file) {
  // An absolute path: the system would look for a bare name elsewhere.
  const std::filesystem::path path =
      file.empty() ? LibraryPath() : std::filesystem::absolute(std::u8string(file.begin(), file.end()));
  const auto refuse = [&](std::string_view reason) {
    const std::u8string name = path.u8string();
    throw WrongUse(
        OneLine(fmt::format("cannot load {}: {}; put it beside tarnfind, or name its file with --library PATH",
                            std::string(name.begin(), name.end()), reason)));
  };
  std::string error;
  void* const module = platform::OpenModule(path, error);
  if (!module) refuse(error);
  void* const create = platform::FindSymbol(module, kExportName);
  if (!create) refuse(fmt::format("it has no {}", kExportName));
  return reinterpret_cast<CreateFinderFunction>(create);
}

}  // namespace tarnfind
