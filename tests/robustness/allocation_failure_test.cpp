/// Memory runs out at every allocation in turn, through every operation.
#include <new>
#include <stdexcept>

#include "fakes/counting_allocator.h"
#include "valuelist/buffer_pool.h"
#include "wizard/finder_library.h"

namespace wizard {
namespace {

/// Keeps nothing: the test's own memory must not count.
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
  CountingCallback wizard;
  LookingReceiver receiver;
  ComPtr<ICameraInfo> camera;
};

struct OperationRow {
  const char* name;
  bool throws;  ///< whether the wizard, or the platform library, sees failures
  void (*run)(Scene& scene);
};

void MakeFinder(Scene& scene) {
  scene.finder.Reset();
  scene.finder = MakeFinderBy(GetFindingInterface);
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
  AllocationFailure() {
    dbi.SetReply(ReadSample("reply-list-3.bin"));
    dbi.StopNotingCalls();
  }

  /// Fails the n-th allocation of the operation for n = 1, 2, … until none fails, and checks each time. Whether any of
  /// the failures left the operation.
  bool FailEach(Scene& scene, const std::function<void()>& operation) {
    bool anyThrown = false;
    for (int n = 1; n < 5000; ++n) {
      SCOPED_TRACE(n);
      bool failed = false;
      {
        const fakes::FailingAllocation failing(n);
        try {
          operation();
        } catch (const std::exception&) {
          anyThrown = true;
        }
        failed = failing.HasFailed();
      }
      EXPECT_EQ(dbi.OpenReplies(), 0);
      if (!scene.finder) MakeFinder(scene);
      const int before = scene.receiver.found;
      scene.finder->ListFoundCameras(&scene.receiver);
      EXPECT_EQ(scene.receiver.found - before, 3) << "the next operation works";
      if (!failed) return anyThrown;
    }
    ADD_FAILURE() << "an allocation fails for ever";
    return anyThrown;
  }
  /// Two rounds of failures; the first fills what is kept for later. Whether any of them left the operation.
  bool ExpectNoLeak(const std::function<void(Scene&)>& operation) {
    Scene scene;
    MakeFinder(scene);
    {
      RecordingReceiver receiver;
      scene.finder->ListFoundCameras(&receiver);
      scene.camera = receiver.kept[0];
    }
    scene.finder->SetNewCameraDataCallback(&scene.wizard);
    const bool firstThrown = FailEach(scene, [&] { operation(scene); });
    const std::int64_t blocks = CountBlocks();
    const bool laterThrown = FailEach(scene, [&] { operation(scene); });
    EXPECT_EQ(CountBlocks(), blocks);
    scene.finder.Reset();
    EXPECT_EQ(scene.wizard.references, 0U);
    return firstThrown || laterThrown;
  }
};

class EachOperation : public AllocationFailure, public testing::WithParamInterface<OperationRow> {};

TEST_P(EachOperation, EndsAsStatedAndLeaksNothing) {
  EXPECT_EQ(ExpectNoLeak(GetParam().run), GetParam().throws);
}

INSTANTIATE_TEST_SUITE_P(Operations, EachOperation, testing::ValuesIn(kOperations),
                         [](const auto& row) { return row.param.name; });

class EachBlock : public AllocationFailure, public testing::WithParamInterface<std::uint32_t> {};

TEST_P(EachBlock, IsDeliveredOrDroppedAndLeaksNothing) {
  int delivered = 0;
  // Without memory to copy the block, the platform library's call throws. It need not come to that, because a pooled
  // buffer may have the room.
  ExpectNoLeak([&, block = SampleOfType(GetParam())](Scene& scene) {
    dbi.Push(GetParam(), block);
    delivered = scene.wizard.count;
  });
  EXPECT_GE(delivered, 2);
}

INSTANTIATE_TEST_SUITE_P(OfType, EachBlock, testing::Range(1U, 9U), testing::PrintToStringParamName());

}  // namespace
}  // namespace wizard
