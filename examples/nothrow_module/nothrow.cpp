#include "tarn/camera_finding_nothrow.h"

#include <cstring>
#include <exception>
#include <new>

namespace {

void Store(const char* what, char* text, size_t textSize) {
  if (!text || textSize == 0) return;
  std::strncpy(text, what, textSize - 1);
  text[textSize - 1] = '\0';
}

template <class Operation>
HRESULT ResultOf(Operation operation, char* text, size_t textSize) {
  HRESULT result = S_OK;
  Store("", text, textSize);
  try {
    operation();
  } catch (const std::bad_alloc& error) {
    Store(error.what(), text, textSize);
    result = E_OUTOFMEMORY;
  } catch (const std::exception& error) {
    Store(error.what(), text, textSize);
    result = E_FAIL;
  } catch (...) {  // out of the wizard's own receiver
    result = E_FAIL;
  }
  return result;
}

}  // namespace

namespace Tarn::CameraFinding {

HRESULT TarnNoThrow_GetFindingInterface(void* server, void* channelArgument, ICameraFinder** finder, char* text,
                                        size_t textSize) {
  return ResultOf([&] { GetFindingInterface(server, channelArgument, finder); }, text, textSize);
}

HRESULT TarnNoThrow_ListFoundCameras(ICameraFinder* finder, IFoundCameraReceiver* receiver, char* text,
                                     size_t textSize) {
  return ResultOf([&] { finder->ListFoundCameras(receiver); }, text, textSize);
}

HRESULT TarnNoThrow_SetNewCameraDataCallback(ICameraFinder* finder, INewCameraDataCallback* callback, char* text,
                                             size_t textSize) {
  return ResultOf([&] { finder->SetNewCameraDataCallback(callback); }, text, textSize);
}

}  // namespace Tarn::CameraFinding
