#include "com/com_wrapper.h"

#include <gtest/gtest.h>

#include <thread>

#include "fakes/fake_com.h"
#include "tarn/camera_finding.h"
#include "tarn/dbi.h"

namespace {

struct IProbe : IUnknown {
  virtual int Answer() = 0;

 protected:
  ~IProbe() = default;
};
constexpr IID kIidProbe = {0x12345678, 0x9ABC, 0xDEF0, {1, 2, 3, 4, 5, 6, 7, 8}};

class Probe : public IProbe {
 public:
  explicit Probe(bool& destroyed) : destroyed_(destroyed) {}
  int Answer() override { return 42; }

 protected:
  ~Probe() { destroyed_ = true; }

 private:
  bool& destroyed_;
};

}  // namespace

template <>
inline constexpr IID Kestrel::kInterfaceId<IProbe> = kIidProbe;

namespace {

class ComWrapperTest : public testing::Test {
 protected:
  ~ComWrapperTest() override { fakes::UseMarshaler(nullptr); }

  static IProbe* MakeProbe(bool& destroyed) { return Kestrel::MakeComObject<Probe, IProbe>(destroyed).Detach(); }

  bool destroyed_ = false;
};

TEST_F(ComWrapperTest, CountsFromTheCreatorsReferenceAndIsDestroyedByTheLast) {
  IProbe* const probe = MakeProbe(destroyed_);
  EXPECT_EQ(probe->AddRef(), 2U);
  EXPECT_EQ(probe->Release(), 1U);
  EXPECT_FALSE(destroyed_);
  EXPECT_EQ(probe->Release(), 0U);
  EXPECT_TRUE(destroyed_);
}

TEST_F(ComWrapperTest, AnswersUnknownAndItsOwnInterfaceOnly) {
  const struct {
    const char* name;
    IID id;
    HRESULT result;
  } rows[] = {
      {"IUnknown", IID_IUnknown, S_OK},
      {"its own", kIidProbe, S_OK},
      {"its own but the last byte", {0x12345678, 0x9ABC, 0xDEF0, {1, 2, 3, 4, 5, 6, 7, 9}}, E_NOINTERFACE},
      {"finder", Tarn::CameraFinding::IID_ICameraFinder, E_NOINTERFACE},
      {"camera", Tarn::CameraFinding::IID_ICameraInfo, E_NOINTERFACE},
      {"receiver", IID_IGenericDataReceivedCallback, E_NOINTERFACE},
      {"marshaler that could not be made", Kestrel::kIidMarshal, E_NOINTERFACE},
  };
  IProbe* const probe = MakeProbe(destroyed_);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    void* object = this;
    EXPECT_EQ(probe->QueryInterface(row.id, &object), row.result);
    EXPECT_EQ(object, row.result == S_OK ? probe : nullptr);
    if (object) {
      EXPECT_EQ(probe->Release(), 1U);
    }
  }
  EXPECT_EQ(probe->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
  EXPECT_EQ(probe->Release(), 0U);
}

TEST_F(ComWrapperTest, ForwardsToTheMarshalerAndDiscardsItsAnswer) {
  fakes::Marshaler marshaler;
  fakes::UseMarshaler(&marshaler);
  IProbe* const probe = MakeProbe(destroyed_);
  void* object = this;
  EXPECT_EQ(probe->QueryInterface(Kestrel::kIidMarshal, &object), S_OK);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(marshaler.queries, 1);
  EXPECT_EQ(marshaler.references, 1U);
  probe->Release();
  EXPECT_EQ(marshaler.references, 0U);
}

TEST_F(ComWrapperTest, CountsOnSeveralThreads) {
  IProbe* const probe = MakeProbe(destroyed_);
  const auto takeAndDrop = [probe] {
    for (int i = 0; i < 10000; ++i) {
      probe->AddRef();
      probe->Release();
    }
  };
  std::thread other(takeAndDrop);
  takeAndDrop();
  other.join();
  EXPECT_FALSE(destroyed_);
  EXPECT_EQ(probe->Release(), 0U);
  EXPECT_TRUE(destroyed_);
}

}  // namespace
