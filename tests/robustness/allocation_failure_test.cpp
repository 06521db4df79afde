/// Memory runs out at every allocation in turn, through every operation.
#include <new>
#include <stdexcept>

#include "fakes/counting_allocator.h"
#include "valuelist/buffer_pool.h"
#include "wizard/finder_library.h"

namespace wizard {
namespace {

/// Looks at what it is given without keeping anything: the test's own memory must not count.
class LookingWizard : public OwnedByTest<INewCameraDataCallback> {
 public:
  HRESULT PictureReceived(const std::uint8_t*, std::uint64_t, BSTR cameraText) override { return Took(cameraText); }
  HRESULT ValuesReceived(BSTR cameraText, const std::uint64_t*, std::uint64_t) override { return Took(cameraText); }
  HRESULT CameraInfoReceived(std::uint32_t, ICameraInfo* camera, std::int32_t) override {
    return Took(camera->GetMacAddress());
  }
  int taken = 0;

 private:
  HRESULT Took(BSTR text) {
    SysFreeString(text);
    ++taken;
    return S_OK;
  }
};

class LookingReceiver : public OwnedByTest<IFoundCameraReceiver> {
 public:
  HRESULT CameraFound(ICameraInfo* camera) override {
    SysFreeString(camera->GetModel());
    ++found;
    return S_OK;
  }
  int found = 0;
};

struct Scene {
  ComPtr<ICameraFinder> finder;
  LookingWizard wizard;
  LookingReceiver receiver;
  ComPtr<ICameraInfo> camera;
  Bytes block;
};

struct OperationRow {
  const char* name;
  bool throws;  ///< whether the wizard, or the platform library, sees the failure
  void (*run)(Scene& scene);
};

void MakeFinder(Scene& scene) {
  scene.finder.Reset();
  ICameraFinder* finder = nullptr;
  GetFindingInterface(kServer, kChannel, &finder);
  scene.finder = ComPtr<ICameraFinder>::Attach(finder);
}

const OperationRow kOperations[] = {
    {"CreatingAFinder", true, MakeFinder},
    {"SendMacAddress", false, [](Scene& scene) { scene.finder->SendMacAddress(u"00:40:8C:00:00:01"); }},
    {"RequestInfoByIp", false, [](Scene& scene) { scene.finder->RequestInfoByIp(u"192.168.0.3"); }},
    {"SendBareCommand", false, [](Scene& scene) { scene.finder->SendBareCommand(); }},
    {"SendNetworkCommandType1", false, [](Scene& scene) { scene.finder->SendNetworkCommandType1(scene.camera.Get()); }},
    {"SendNetworkCommandType4", false, [](Scene& scene) { scene.finder->SendNetworkCommandType4(scene.camera.Get()); }},
    {"AReplyOfThreeCameras", true, [](Scene& scene) { scene.finder->ListFoundCameras(&scene.receiver); }},
    {"InstallingACallback", true, [](Scene& scene) { scene.finder->SetNewCameraDataCallback(&scene.wizard); }},
    {"ReplacingACallback", true, [](Scene& scene) { scene.finder->SetNewCameraDataCallback(nullptr); }},
};

/// Blocks of the heap, with the pool's lists full of buffers that have storage: what grows then is a leak.
std::int64_t CountBlocks() {
  constexpr std::pair<Kestrel::BufferPoolListIndex, std::uint64_t> kLists[] = {{Kestrel::SmallBufferList, 1},
                                                                               {Kestrel::MediumBufferList, 50000}};
  for (const auto& [list, bytes] : kLists) {
    std::vector<Kestrel::ReferencePointer<Kestrel::Buffer>> buffers;
    while (buffers.size() < 2 * Kestrel::kBufferPoolLimits[list].mostBuffers) {
      buffers.push_back(Kestrel::GetBuffer(list));
      buffers.back()->Reserve(bytes);
    }
  }
  return fakes::GetHeapUse().blocks;
}

class AllocationFailure : public WizardTest {
 protected:
  AllocationFailure() { dbi.SetReply(ReadSample("reply-list-3.bin")); }

  /// Fails the n-th allocation of the operation for n = 1, 2, … until none fails, and checks each time.
  void FailEach(Scene& scene, bool throws, const std::function<void()>& operation) {
    for (int n = 1;; ++n) {
      SCOPED_TRACE(n);
      ASSERT_LT(n, 5000);
      bool thrown = false, failed = false;
      {
        const fakes::FailingAllocation failing(n);
        try {
          operation();
        } catch (const std::exception&) {
          thrown = true;
        }
        failed = failing.HasFailed();
      }
      EXPECT_EQ(thrown && !throws, false) << "the failure left the operation";
      EXPECT_EQ(dbi.OpenReplies(), 0);
      if (!scene.finder) MakeFinder(scene);
      const int before = scene.receiver.found;
      scene.finder->ListFoundCameras(&scene.receiver);
      EXPECT_EQ(scene.receiver.found - before, 3) << "the next operation works";
      if (!failed) return;
    }
  }
  void Prepare(Scene& scene) {
    MakeFinder(scene);
    struct Keeper : OwnedByTest<IFoundCameraReceiver> {
      HRESULT CameraFound(ICameraInfo* camera) override {
        kept = ComPtr<ICameraInfo>(camera);
        return S_OK;
      }
      ComPtr<ICameraInfo> kept;
    } keeper;
    scene.finder->ListFoundCameras(&keeper);
    scene.camera = keeper.kept;
  }
};

class EachOperation : public AllocationFailure, public testing::WithParamInterface<OperationRow> {};

TEST_P(EachOperation, EndsAsStatedAndLeaksNothing) {
  Scene scene;
  Prepare(scene);
  scene.finder->SetNewCameraDataCallback(&scene.wizard);
  std::int64_t blocks = 0;
  for (int round = 0; round < 2; ++round) {
    blocks = CountBlocks();
    FailEach(scene, GetParam().throws, [&] { GetParam().run(scene); });
    dbi.ForgetCalls();
  }
  EXPECT_EQ(CountBlocks(), blocks);
  scene.finder.Reset();
  EXPECT_EQ(scene.wizard.references, 0U);
}

INSTANTIATE_TEST_SUITE_P(Operations, EachOperation, testing::ValuesIn(kOperations),
                         [](const auto& row) { return row.param.name; });

class EachBlock : public AllocationFailure, public testing::WithParamInterface<const char*> {};

TEST_P(EachBlock, IsDeliveredOrDroppedAndLeaksNothing) {
  const std::string name = GetParam();
  Scene scene;
  Prepare(scene);
  scene.block = ReadSample("block-" + name + ".bin");
  scene.finder->SetNewCameraDataCallback(&scene.wizard);
  const auto type = static_cast<std::uint32_t>(name[0] - '0');
  std::int64_t blocks = 0;
  for (int round = 0; round < 2; ++round) {
    blocks = CountBlocks();
    // What cannot even be copied is thrown into the platform library's call.
    FailEach(scene, true, [&] { dbi.Push(type, scene.block); });
    dbi.ForgetCalls();
  }
  EXPECT_EQ(CountBlocks(), blocks);
  EXPECT_GE(scene.wizard.taken, 2);
  scene.finder.Reset();
  EXPECT_EQ(scene.wizard.references, 0U);
}

INSTANTIATE_TEST_SUITE_P(Blocks, EachBlock,
                         testing::Values("1-picture", "2-values", "3-camera", "4-camera", "5-camera", "6-camera",
                                         "7-assembled", "8-gone"),
                         [](const auto& row) {
                           std::string name = row.param;
                           name[1] = '_';
                           return name;
                         });

}  // namespace
}  // namespace wizard
