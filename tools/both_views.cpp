#include <utility>

#include "tools/search_view.h"

namespace tarnfind {

namespace {

class BothViews final : public SearchView {
 public:
  BothViews(std::unique_ptr<SearchView> first, std::unique_ptr<SearchView> second)
      : first_(std::move(first)), second_(std::move(second)) {}

  void ShowCamera(const FoundCamera& found, std::optional<std::uint32_t> kind) override {
    first_->ShowCamera(found, kind);
    second_->ShowCamera(found, kind);
  }
  void ShowPicture(const PictureEvent& event, const FoundCamera* camera) override {
    first_->ShowPicture(event, camera);
    second_->ShowPicture(event, camera);
  }
  void ShowValues(const ValuesEvent& event, const FoundCamera* camera) override {
    first_->ShowValues(event, camera);
    second_->ShowValues(event, camera);
  }
  void ShowProblem(const std::string& text) override {
    first_->ShowProblem(text);
    second_->ShowProblem(text);
  }
  void ShowConnecting(std::chrono::milliseconds elapsed) override {
    first_->ShowConnecting(elapsed);
    second_->ShowConnecting(elapsed);
  }
  void Refresh(const SearchProgress& progress) override {
    first_->Refresh(progress);
    second_->Refresh(progress);
  }
  void Finish(const SearchProgress& progress) override {
    first_->Finish(progress);
    second_->Finish(progress);
  }
  bool IsAbandoned() const override { return first_->IsAbandoned() || second_->IsAbandoned(); }

 private:
  std::unique_ptr<SearchView> first_;
  std::unique_ptr<SearchView> second_;
};

}  // namespace

std::unique_ptr<SearchView> MakeBothViews(std::unique_ptr<SearchView> first, std::unique_ptr<SearchView> second) {
  return std::make_unique<BothViews>(std::move(first), std::move(second));
}

}  // namespace tarnfind
