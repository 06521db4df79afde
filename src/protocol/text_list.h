/// A list of texts that keeps up to two of them inside itself, because nearly every camera has one or two addresses and
/// plug-ins, and the allocations for two such lists would take as long as the rest of the record.
///
/// The interface is that of a standard container. Adding a text makes references to the others invalid.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Tarn::CameraFinding {

class TextList {
 public:
  using value_type = std::string;

  TextList() = default;
  TextList(std::initializer_list<std::string_view> texts) {
    for (const std::string_view text : texts) emplace_back(text);
  }
  TextList(const TextList& other)
      : few_(other.few_), fewCount_(other.fewCount_), many_(other.many_ ? new Many(*other.many_) : nullptr) {}
  TextList(TextList&& other) noexcept = default;
  TextList& operator=(const TextList& other) { return *this = TextList(other); }
  TextList& operator=(TextList&& other) noexcept = default;
  ~TextList() = default;

  std::size_t size() const { return many_ ? many_->size() : fewCount_; }
  bool empty() const { return size() == 0; }
  std::string* begin() { return many_ ? many_->data() : few_.data(); }
  std::string* end() { return begin() + size(); }
  const std::string* begin() const { return many_ ? many_->data() : few_.data(); }
  const std::string* end() const { return begin() + size(); }
  const std::string& front() const { return *begin(); }

  void reserve(std::size_t count) {
    if (count > few_.size()) MakeMany().reserve(count);
  }
  template <class... Arguments>
  std::string& emplace_back(Arguments&&... arguments) {
    if (!many_ && fewCount_ < few_.size())
      return few_[fewCount_++] = std::string(std::forward<Arguments>(arguments)...);
    return MakeMany().emplace_back(std::forward<Arguments>(arguments)...);
  }
  void push_back(std::string text) { emplace_back(std::move(text)); }
  /// Requires a list that is not empty.
  void pop_back() {
    if (many_)
      many_->pop_back();
    else
      --fewCount_;
  }

  friend bool operator==(const TextList& left, const TextList& right) { return std::ranges::equal(left, right); }

 private:
  using Many = std::vector<std::string>;

  Many& MakeMany() {
    if (!many_)
      many_ = std::make_unique<Many>(std::move_iterator(few_.data()), std::move_iterator(few_.data() + fewCount_));
    return *many_;
  }

  std::array<std::string, 2> few_;
  std::size_t fewCount_ = 0;
  std::unique_ptr<Many> many_;  ///< all texts once few_ is too small; a pointer, because a vector is larger
};

}  // namespace Tarn::CameraFinding
