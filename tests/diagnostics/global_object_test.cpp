#include "diagnostics/global_object.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace Kestrel {
namespace {

std::atomic<int> made{0}, alive{0};

/// The first two wait for each other while they are made.
class Slow : public ReferenceCounted {
 public:
  Slow() {
    ++alive;
    for (++made; made < 2;) std::this_thread::yield();
  }
  ~Slow() override { --alive; }
};

TEST(GlobalObject, TwoThreadsThatComeFirstAtOnceGetTheSameOne) {
  GlobalObject<Slow> object;
  ReferencePointer<Slow> first, second;
  std::thread other([&] { first = object.Get(); });
  second = object.Get();
  other.join();
  EXPECT_EQ(first.Get(), second.Get());
  EXPECT_EQ(object.Get().Get(), first.Get());
  EXPECT_EQ(made * 10 + alive, 21);
  EXPECT_EQ(object.Take().Get(), first.Get());
  EXPECT_EQ(object.Take().Get(), nullptr);
  first = second = {};
  EXPECT_EQ(alive, 0);
}

}  // namespace
}  // namespace Kestrel
