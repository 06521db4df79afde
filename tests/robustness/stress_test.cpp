/// Delivery threads push blocks of all types to several finders while wizard threads list, replace callbacks, detach,
/// release and re-create finders, and the callbacks call back, throw, dawdle or release. TARN_STRESS_SECONDS: how long.
#include <chrono>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <thread>

#include "wizard/finder_library.h"

namespace wizard {
namespace {

constexpr int kFinders = 4, kDeliveryThreads = 8;

/// Counts what it gets, and misbehaves by turns.
class MisbehavingWizard final : public INewCameraDataCallback {
 public:
  explicit MisbehavingWizard(std::atomic<std::int64_t>& received) : received_(received) {}
  HRESULT QueryInterface(const IID&, void**) override { return E_NOINTERFACE; }
  std::uint32_t AddRef() override { return ++references_; }
  std::uint32_t Release() override {
    const std::uint32_t left = --references_;
    if (left == 0) delete this;
    return left;
  }
  HRESULT PictureReceived(const std::uint8_t*, std::uint64_t, BSTR text) override { return Received(text); }
  HRESULT ValuesReceived(BSTR text, const std::uint64_t*, std::uint64_t) override { return Received(text); }
  HRESULT CameraInfoReceived(std::uint32_t, ICameraInfo* camera, std::int32_t) override {
    return Received(camera->GetMacAddress());
  }

  /// What one of its callbacks does besides counting; may be empty.
  std::function<void()> inside;

 private:
  HRESULT Received(BSTR text) {
    SysFreeString(text);
    ++received_;
    if (inside) inside();
    return S_OK;
  }
  std::atomic<std::uint32_t> references_{0};
  std::atomic<std::int64_t>& received_;
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
  /// The one before; it goes with the result, outside the lock, for it may call back then.
  ComPtr<ICameraFinder> Exchange(ComPtr<ICameraFinder> other) {
    const std::lock_guard guard(lock);
    std::swap(finder, other);
    return other;
  }
};

class Stress : public WizardTest {
 protected:
  ComPtr<ICameraFinder> MakeFinder(Place& place) const {
    ICameraFinder* finder = nullptr;
    library.getFindingInterface(&place, kChannel, &finder);
    return ComPtr<ICameraFinder>::Attach(finder);
  }
  void Install(Place& place, std::minstd_rand& random) {
    const ComPtr<ICameraFinder> finder = place.Get();
    auto* const wizard = new MisbehavingWizard(place.received);
    switch (random() % 6) {
      case 0:
        wizard->inside = [] { throw std::runtime_error("wizard"); };
        break;
      case 1:
        wizard->inside = [&place] { place.Get()->SendBareCommand(); };
        break;
      case 2:
        wizard->inside = [n = std::make_shared<std::atomic<int>>(0)] {
          if ((*n)++ % 64 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(50));
        };
        break;
      default:
        break;
    }
    // Only one thread at a time may replace the callback of a finder.
    const ComPtr<INewCameraDataCallback> held(wizard);
    finder->SetNewCameraDataCallback(wizard);
  }

  const FinderLibrary library;
};

TEST_F(Stress, NoDeliveryIsLostDoubledOrLate) {
  const char* const asked = std::getenv("TARN_STRESS_SECONDS");
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(asked ? std::atoi(asked) : 2);
  const auto running = [&] { return std::chrono::steady_clock::now() < end; };
  dbi.SetReply(ReadSample("reply-list-3.bin"));
  dbi.StopNotingCalls();
  std::vector<std::pair<std::uint32_t, Bytes>> blocks;
  for (const char* name :
       {"1-picture", "2-values", "3-camera", "4-camera", "5-camera", "6-camera", "7-assembled", "8-gone"})
    blocks.emplace_back(name[0] - '0', ReadSample("block-" + std::string(name) + ".bin"));

  std::vector<Place> places(kFinders);
  std::minstd_rand first(1);
  for (Place& place : places) {
    place.finder = MakeFinder(place);
    Install(place, first);
  }

  // Pushed while nobody replaces anything: each of these must arrive, once.
  std::vector<std::thread> threads;
  std::atomic<std::int64_t> pushed{0};
  for (int t = 0; t < kDeliveryThreads; ++t)
    threads.emplace_back([&, t] {
      for (std::size_t i = 0; i < 400; ++i) {
        const auto& [type, block] = blocks[(i + static_cast<std::size_t>(t)) % blocks.size()];
        if (dbi.Push(type, block, 2, &places[i % kFinders])) ++pushed;
      }
    });
  for (auto& thread : threads) thread.join();
  std::int64_t received = 0;
  for (Place& place : places) received += place.received;
  EXPECT_EQ(received, pushed);

  threads.clear();
  for (int t = 0; t < kDeliveryThreads; ++t)
    threads.emplace_back([&, t] {
      for (std::size_t i = 0; running(); ++i) {
        const auto& [type, block] = blocks[(i * 7 + static_cast<std::size_t>(t)) % blocks.size()];
        if (dbi.Push(type, block, 2, &places[i % kFinders])) ++pushed;
      }
    });
  for (unsigned t = 0; t < kFinders; ++t)
    threads.emplace_back([&, t] {
      std::minstd_rand random(t + 1);
      Place& place = places[t];
      RecordingReceiver receiver;
      while (running()) {
        switch (random() % 8) {
          case 0:
            place.Get()->ListFoundCameras(&receiver);
            break;
          case 1:
            place.Get()->RequestInfoByIp(u"10.0.0.5");
            break;
          case 2:
            dbi.Detach(&place);
            break;
          case 3:
            place.Exchange(MakeFinder(place));
            Install(place, random);
            break;
          default:
            Install(place, random);
        }
        receiver.cameras.clear();
      }
    });
  for (auto& thread : threads) thread.join();

  received = 0;
  for (Place& place : places) {
    place.finder.Reset();
    received += place.received;
  }
  EXPECT_LE(received, pushed) << "blocks that find no callback are dropped, none is delivered twice";
  EXPECT_GT(received, 0);
}

}  // namespace
}  // namespace wizard
