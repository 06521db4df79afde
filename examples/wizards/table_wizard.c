/// A wizard in C: the same steps as smallest_wizard, by the tables of functions.
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#if defined(_WIN32)
#include <windows.h>
#define SleepForSeconds(seconds) Sleep((seconds)*1000)
#else
#include <unistd.h>
#define SleepForSeconds(seconds) sleep(seconds)
#endif

#include "tarn/camera_finding_c.h"
#include "tarn/camera_finding_nothrow.h"

/// Prints a text and frees it. Anything but plain ASCII is shown as "?".
static void PrintAndFree(const char* label, BSTR text) {
  printf("%s", label);
  for (const OLECHAR* unit = text; unit && *unit; ++unit) putchar(*unit >= ' ' && *unit <= '~' ? (int)*unit : '?');
  SysFreeString(text);
}

static void PrintCamera(const char* event, ICameraInfo* camera) {
  PrintAndFree(event, camera->lpVtbl->GetMacAddress(camera));
  PrintAndFree("  ", camera->lpVtbl->GetIpAddress(camera));
  PrintAndFree("  ", camera->lpVtbl->GetModel(camera));
  putchar('\n');
}

/// An object begins with the pointer to its table; what follows is the wizard's own.
typedef struct Callback {
  INewCameraDataCallback base;
  atomic_uint references;
} Callback;

static HRESULT CallbackQueryInterface(INewCameraDataCallback* self, const IID* id, void** object) {
  (void)self;
  (void)id;
  *object = NULL;
  return E_NOINTERFACE;
}
static ULONG CallbackAddRef(INewCameraDataCallback* self) {
  return atomic_fetch_add(&((Callback*)self)->references, 1) + 1;
}
static ULONG CallbackRelease(INewCameraDataCallback* self) {
  const ULONG left = atomic_fetch_sub(&((Callback*)self)->references, 1) - 1;
  if (left == 0) free(self);
  return left;
}
static HRESULT PictureReceived(INewCameraDataCallback* self, const uint8_t* picture, uint64_t byteCount, BSTR text) {
  (void)self;
  (void)picture;
  PrintAndFree("picture  ", text);
  printf(", %lu bytes\n", (unsigned long)byteCount);
  return S_OK;
}
static HRESULT ValuesReceived(INewCameraDataCallback* self, BSTR text, const uint64_t* values, uint64_t count) {
  (void)self;
  (void)values;
  PrintAndFree("values   ", text);
  printf(", %lu\n", (unsigned long)count);
  return S_OK;
}
static HRESULT CameraInfoReceived(INewCameraDataCallback* self, uint32_t kind, ICameraInfo* camera, int32_t type) {
  (void)self;
  (void)kind;
  (void)type;
  PrintCamera("camera   ", camera);
  return S_OK;
}
static const struct INewCameraDataCallbackVtbl kCallbackTable = {
    CallbackQueryInterface, CallbackAddRef, CallbackRelease, PictureReceived, ValuesReceived, CameraInfoReceived};

/// A receiver lives as long as the call that it is handed to: it counts no references.
static HRESULT ReceiverQueryInterface(IFoundCameraReceiver* self, const IID* id, void** object) {
  (void)self;
  (void)id;
  *object = NULL;
  return E_NOINTERFACE;
}
static ULONG ReceiverCount(IFoundCameraReceiver* self) {
  (void)self;
  return 1;
}
static HRESULT CameraFound(IFoundCameraReceiver* self, ICameraInfo* camera) {
  (void)self;
  PrintCamera("listed   ", camera);
  return S_OK;
}
static const struct IFoundCameraReceiverVtbl kReceiverTable = {ReceiverQueryInterface, ReceiverCount, ReceiverCount,
                                                               CameraFound};

int main(void) {
  char error[256];
  ICameraFinder* finder = NULL;
  IFoundCameraReceiver receiver = {&kReceiverTable};
  Callback* const callback = malloc(sizeof *callback);
  if (!callback) return 1;
  callback->base.lpVtbl = &kCallbackTable;
  atomic_init(&callback->references, 1);

  HRESULT result = TarnNoThrow_GetFindingInterface(NULL, NULL, &finder, error, sizeof error);
  if (result == S_OK) result = TarnNoThrow_SetNewCameraDataCallback(finder, &callback->base, error, sizeof error);
  // The library keeps a reference on the callback; without a channel to the server it takes none.
  if (CallbackRelease(&callback->base) == 0 && result == S_OK) {
    strcpy(error, "The channel to the server cannot be opened.");
    result = E_FAIL;
  }
  if (result == S_OK) result = TarnNoThrow_ListFoundCameras(finder, &receiver, error, sizeof error);
  if (result == S_OK) {
    finder->lpVtbl->RequestInfoByIp(finder, OLESTR("192.168.0.9"));
    SleepForSeconds(3);
  } else {
    fprintf(stderr, "%s\n", error);
  }
  if (finder) finder->lpVtbl->Release(finder);
  return result == S_OK ? 0 : 1;
}
