/// Delivery threads push blocks of all types to several finders while wizard threads list, replace callbacks, detach,
/// release and re-create finders, and the callbacks call back, throw, dawdle or release. TARN_STRESS_SECONDS: how long.
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <random>
#include <stdexcept>
#include <thread>

#include "wizard/finder_library.h"

namespace wizard {
namespace {

constexpr int kFinders = 4, kDeliveryThreads = 8;

/// Goes with its last reference.
struct OwnWizard final : CountingCallback {
  std::uint32_t Release() override {
    const std::uint32_t left = --references;
    if (left == 0) delete this;
    return left;
  }
};

/// A finder that is replaced now and then, and the stream by which its blocks come.
struct Place {
  std::mutex lock;
  ComPtr<ICameraFinder> finder;
  std::atomic<std::int64_t> received{0};

  ComPtr<ICameraFinder> Get() {
    const std::lock_guard guard(lock);
    return finder;
  }
  /// Returns the finder that stood here. The caller releases it outside the lock, because that may call back.
  ComPtr<ICameraFinder> Exchange(ComPtr<ICameraFinder> other) {
    const std::lock_guard guard(lock);
    std::swap(finder, other);
    return other;
  }
};

class Stress : public WizardTest {
 protected:
  /// Only one thread at a time may replace the callback of a finder.
  void Install(Place& place, std::minstd_rand& random) {
    auto* const wizard = new OwnWizard;
    wizard->inside = [&place, wizard, mischief = random() % 6] {
      ++place.received;
      if (mischief == 0) throw std::runtime_error("wizard");
      if (mischief == 1) place.Get()->SendBareCommand();
      if (mischief == 2 && wizard->count % 64 == 1) std::this_thread::sleep_for(std::chrono::milliseconds(50));
    };
    const ComPtr<INewCameraDataCallback> held(wizard);
    place.Get()->SetNewCameraDataCallback(wizard);
  }

  /// On a thread of its own: pushes blocks of all types to all finders, until it has pushed enough.
  void Push(std::size_t seed, const std::function<bool(std::size_t)>& goesOn) {
    for (std::size_t i = 0; goesOn(i); ++i) {
      const std::size_t type = (i * 7 + seed) % blocks.size();
      if (dbi.Push(static_cast<std::uint32_t>(type + 1), blocks[type], 2, &places[i % kFinders])) ++pushed;
    }
  }
  std::int64_t Received() const {
    std::int64_t received = 0;
    for (const Place& place : places) received += place.received;
    return received;
  }

  const FinderLibrary library;
  std::vector<Bytes> blocks;
  std::vector<Place> places = std::vector<Place>(kFinders);
  std::atomic<std::int64_t> pushed{0};
};

TEST_F(Stress, NoDeliveryIsLostDoubledOrLate) {
  const char* const asked = std::getenv("TARN_STRESS_SECONDS");
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(asked ? std::atoi(asked) : 2);
  const auto running = [end](std::size_t) { return std::chrono::steady_clock::now() < end; };
  dbi.SetReply(ReadSample("reply-list-3.bin"));
  dbi.StopNotingCalls();
  for (std::uint32_t type = 1; type <= 8; ++type) blocks.push_back(SampleOfType(type));
  std::minstd_rand first(1);
  for (Place& place : places) {
    place.finder = library.MakeFinder(&place);
    Install(place, first);
  }

  // Pushed while nobody replaces anything: each of these must arrive, once.
  std::vector<std::thread> threads;
  for (unsigned t = 0; t < kDeliveryThreads; ++t)
    threads.emplace_back([this, t] { Push(t, [](std::size_t i) { return i < 400; }); });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(Received(), pushed);

  threads.clear();
  for (unsigned t = 0; t < kDeliveryThreads; ++t) threads.emplace_back([&, t] { Push(t, running); });
  for (unsigned t = 0; t < kFinders; ++t)
    threads.emplace_back([&, t] {
      std::minstd_rand random(t + 1);
      Place& place = places[t];
      while (running(0)) {
        RecordingReceiver receiver;
        const auto choice = random() % 8;
        if (choice == 0) place.Get()->ListFoundCameras(&receiver);
        if (choice == 1) place.Get()->RequestInfoByIp(u"10.0.0.5");
        if (choice == 2) dbi.Detach(&place);
        if (choice == 3) place.Exchange(library.MakeFinder(&place));
        if (choice >= 3) Install(place, random);
      }
    });
  for (auto& thread : threads) thread.join();

  for (Place& place : places) place.finder.Reset();
  EXPECT_LE(Received(), pushed) << "blocks that find no callback are dropped, none is delivered twice";
  EXPECT_GT(Received(), 0);
}

}  // namespace
}  // namespace wizard
