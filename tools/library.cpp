#include "tools/library.h"

#include <fmt/format.h>

#include <filesystem>
#include <system_error>

#include "tools/failure.h"
#include "tools/platform.h"
#include "tools/steps.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

constexpr char kExportName[] = "GetFindingInterface";

/// From the program's folder, in order of preference. The last one is set by the build.
constexpr const char* kFolders[] = {".", "../lib", TARN_LIBRARY_FOLDER};

/// A file that exists is the answer, also where it cannot be loaded, because another version from elsewhere would hide
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

[[noreturn]] void Refuse(Step step, const std::string& text) {
  throw NoChannel(RowOf(step).name, OneLine(text));
}

[[noreturn]] void RefuseUnloaded(const std::filesystem::path& path, const platform::ModuleFailure& failure) {
  std::error_code unknown;
  const std::string file = Utf8FromPath(path);
  // A bare name was looked for where the system looks, not in this folder.
  if (failure.other.empty() && (!path.has_parent_path() || !std::filesystem::exists(path, unknown)))
    Refuse(Step::kLibrary,
           fmt::format("the finder library {} is missing ({}); put it beside tarnfind, or name its file "
                       "with --library PATH",
                       file, failure.reason));
  constexpr char kAdvice[] = "see that the file is whole, and for this kind of computer";
  if (failure.other.empty())
    Refuse(Step::kLibrary,
           fmt::format("the finder library {} cannot be loaded: {}; {}", file, failure.reason, kAdvice));
  const bool isPlatform = PathFromUtf8(failure.other).filename() == platform::PlatformLibraryFileName();
  const std::string other =
      fmt::format("{} {}, which the finder library {} needs,",
                  isPlatform ? "the video server's platform library" : "the library", failure.other, file);
  Refuse(isPlatform ? Step::kPlatformLibrary : Step::kLibrary,
         failure.otherMissing ? fmt::format("{} is missing; put it beside that file", other)
                              : fmt::format("{} cannot be loaded: {}; {}", other, failure.reason, kAdvice));
}

}  // namespace

Library LoadFinderLibrary(const std::string& file) {
  // An absolute path, because the system would look for a bare name elsewhere.
  const std::filesystem::path path = file.empty() ? LibraryPath() : std::filesystem::absolute(PathFromUtf8(file));
  platform::ModuleFailure failure;
  void* const module = platform::OpenModule(path, failure);
  if (!module) RefuseUnloaded(path, failure);
  void* const create = platform::FindSymbol(module, kExportName);
  if (!create)
    Refuse(Step::kLibrary, fmt::format("{} is no finder library: it has no {}", Utf8FromPath(path), kExportName));
  return {reinterpret_cast<decltype(&GetFindingInterface)>(create), Utf8FromPath(path),
          platform::LoadedModuleFile(std::string(platform::PlatformLibraryFileName()))};
}

}  // namespace tarnfind
