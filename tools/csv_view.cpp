#include "tools/csv.h"
#include "tools/search_view.h"

namespace tarnfind {

namespace {

/// A camera's line is complete only when the search is over, so nothing is written before.
class CsvView final : public SearchView {
 public:
  CsvView(TextOutput& output, const Column* sort) : output_(output), sort_(sort) {}

  void ShowCamera(const FoundCamera&, std::optional<std::uint32_t>) override {}
  void ShowPicture(const PictureEvent&, const FoundCamera*) override {}
  void ShowValues(const ValuesEvent&, const FoundCamera*) override {}
  void Refresh(const SearchProgress&) override {}
  void Finish(const SearchProgress& progress) override {
    output_.Write(CsvHeader());
    for (const FoundCamera* const found : SortedCameras(progress.cameras, sort_))
      output_.Write(CsvRow(*found, progress.cameras));
  }

 private:
  TextOutput& output_;
  const Column* sort_;
};

}  // namespace

std::unique_ptr<SearchView> MakeCsvView(TextOutput& output, const Column* sort) {
  return std::make_unique<CsvView>(output, sort);
}

}  // namespace tarnfind
