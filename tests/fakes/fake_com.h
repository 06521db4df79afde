/// Stands in for the system's COM: counts the BSTRs that are alive, can refuse one, and makes a marshaler that counts
/// its references. A test program that lists fake_com.cpp among its sources uses it. For one thread.
#pragma once

#include <cstdint>

#include "tarn/com_types.h"

namespace fakes {

/// BSTRs made through the platform layer and not freed there yet.
int LiveBstrs();
/// The n-th BSTR from here on cannot be made; 0: all can.
void FailBstr(int n);

/// Answers every query with E_NOINTERFACE.
struct Marshaler : IUnknown {
  HRESULT QueryInterface(const IID& id, void** object) override;
  std::uint32_t AddRef() override { return ++references; }
  std::uint32_t Release() override { return --references; }

  std::uint32_t references = 0;
  int queries = 0;
};

/// Handed out for every object that is made while it is set; null: objects have none.
void UseMarshaler(Marshaler* marshaler);

}  // namespace fakes
