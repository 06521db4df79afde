/// The camera finder for C11: the interfaces of camera_finding.h as what they are in memory, tables of functions.
///
///     ICameraFinder* finder = NULL;
///     GetFindingInterface(server, channel, &finder);
///     finder->lpVtbl->SendMacAddress(finder, OLESTR("00:40:8C:12:34:56"));
///     finder->lpVtbl->Release(finder);
///
/// A wizard implements INewCameraDataCallback and IFoundCameraReceiver by a structure that begins with lpVtbl. What
/// each operation does, who owns what, which thread calls and what the constants mean stand in camera_finding.h.
///
/// C cannot catch an exception: a refused stream ends the process. camera_finding_nothrow.h has the three operations
/// that throw as functions that return a result.
#pragma once

#include <stdint.h>

#include "tarn/com_types.h"

typedef struct ICameraInfo ICameraInfo;
typedef struct INewCameraDataCallback INewCameraDataCallback;
typedef struct IFoundCameraReceiver IFoundCameraReceiver;
typedef struct ICameraFinder ICameraFinder;

static const OLECHAR UnsetCredential[] = OLESTR("&!*KVMR*9%");

enum { cekFound = 0, cekChanged = 1, cekSeen = 2, cekReported = 3, cekGone = 4 };
enum {
  ctcUnknown = 0,
  ctcSonyIpc = 1,
  ctcAxisIpc = 2,
  ctcSummitIpc = 3,
  ctcR2Ipc = 4,
  ctcV1Ipc = 5,
  ctcOnvifIpc = 6,
  ctcArecontVisionIpc = 7,
  ctcR3Ipc = 8,
  ctcMartenIpc = 9,
  ctcAddressOnly = 24,
  ctcR4Ipc = 25
};

typedef struct CameraTypeName {
  int32_t type;
  const OLECHAR* name;
} CameraTypeName;
static const CameraTypeName CameraTypeNames[] = {
    {ctcSonyIpc, OLESTR("Sony IPC")},     {ctcAxisIpc, OLESTR("Axis IPC")},
    {ctcSummitIpc, OLESTR("Summit IPC")}, {ctcR2Ipc, OLESTR("R2 IPC")},
    {ctcV1Ipc, OLESTR("V1 IPC")},         {ctcOnvifIpc, OLESTR("ONVIF IPC")},
    {ctcR3Ipc, OLESTR("R3 IPC")},         {ctcArecontVisionIpc, OLESTR("ArecontVision IPC")},
    {ctcMartenIpc, OLESTR("Marten IPC")}, {ctcR4Ipc, OLESTR("R4 IPC")},
};

static const IID IID_ICameraFinder = {0xFFFFFFFF, 0xAAAA, 0x1806, {0x20, 0x14, 0x14, 0x00, 0x00, 0x00, 0x00, 0x00}};
static const IID IID_ICameraInfo = {0xFFFFFFFF, 0xAAAA, 0x2102, {0x20, 0x14, 0x09, 0x51, 0x00, 0x00, 0x00, 0x00}};

/// Positions 0 to 2 of every table.
#define TARN_UNKNOWN_OPERATIONS(Interface)                                   \
  HRESULT (*QueryInterface)(Interface * self, const IID* id, void** object); \
  ULONG (*AddRef)(Interface * self);                                         \
  ULONG (*Release)(Interface * self)

struct ICameraInfoVtbl {
  TARN_UNKNOWN_OPERATIONS(ICameraInfo);
  int32_t (*GetCameraType)(ICameraInfo* self);                                              // 3
  BSTR (*GetModel)(ICameraInfo* self);                                                      // 4
  BSTR (*GetIpAddress)(ICameraInfo* self);                                                  // 5
  BSTR (*GetSubnetMask)(ICameraInfo* self);                                                 // 6
  BSTR (*GetGateway)(ICameraInfo* self);                                                    // 7
  BSTR (*GetFirmwareVersion)(ICameraInfo* self);                                            // 8
  BSTR (*GetModelName)(ICameraInfo* self);                                                  // 9
  BSTR (*GetMacAddress)(ICameraInfo* self);                                                 // 10
  BSTR (*GetUserName)(ICameraInfo* self);                                                   // 11
  BSTR (*GetPassword)(ICameraInfo* self);                                                   // 12
  uint8_t (*IsDhcpEnabled)(ICameraInfo* self);                                              // 13
  BSTR (*GetPluginName)(ICameraInfo* self);                                                 // 14
  uint8_t (*HasDeviceFlag17)(ICameraInfo* self);                                            // 15
  uint8_t (*IsReserved)(ICameraInfo* self);                                                 // 16
  void (*SetCredentials)(ICameraInfo* self, const OLECHAR* user, const OLECHAR* password);  // 17
  void (*SetNetworkSettings)(ICameraInfo* self, const OLECHAR* ipAddress, const OLECHAR* subnetMask, uint8_t dhcpMode,
                             const OLECHAR* gateway);  // 18
  uint32_t (*GetDeviceFlags)(ICameraInfo* self);       // 19
  uint64_t (*GetVendorTypeMask)(ICameraInfo* self);    // 20
  uint8_t (*GetIcb)(ICameraInfo* self);                // 21
  uint8_t (*GetGcb)(ICameraInfo* self);                // 22
  uint8_t (*GetCtt)(ICameraInfo* self);                // 23
  BSTR (*GetVendorDisplayName)(ICameraInfo* self);     // 24
};
struct ICameraInfo {
  const struct ICameraInfoVtbl* lpVtbl;
};

struct INewCameraDataCallbackVtbl {
  TARN_UNKNOWN_OPERATIONS(INewCameraDataCallback);
  HRESULT (*PictureReceived)(INewCameraDataCallback* self, const uint8_t* picture, uint64_t byteCount, BSTR text);  // 3
  HRESULT (*ValuesReceived)(INewCameraDataCallback* self, BSTR text, const uint64_t* values, uint64_t count);       // 4
  HRESULT (*CameraInfoReceived)(INewCameraDataCallback* self, uint32_t kind, ICameraInfo* camera, int32_t type);    // 5
};
struct INewCameraDataCallback {
  const struct INewCameraDataCallbackVtbl* lpVtbl;
};

struct IFoundCameraReceiverVtbl {
  TARN_UNKNOWN_OPERATIONS(IFoundCameraReceiver);
  HRESULT (*CameraFound)(IFoundCameraReceiver* self, ICameraInfo* camera);  // 3
};
struct IFoundCameraReceiver {
  const struct IFoundCameraReceiverVtbl* lpVtbl;
};

struct ICameraFinderVtbl {
  TARN_UNKNOWN_OPERATIONS(ICameraFinder);
  void (*SendMacAddress)(ICameraFinder* self, const OLECHAR* macAddress);                   // 3
  void (*RequestInfoByIp)(ICameraFinder* self, const OLECHAR* ipAddress);                   // 4
  void (*ListFoundCameras)(ICameraFinder* self, IFoundCameraReceiver* receiver);            // 5
  void (*SetNewCameraDataCallback)(ICameraFinder* self, INewCameraDataCallback* callback);  // 6
  uint8_t (*SendNetworkCommandType1)(ICameraFinder* self, ICameraInfo* camera);             // 7
  void (*SendBareCommand)(ICameraFinder* self);                                             // 8
  uint8_t (*SendNetworkCommandType4)(ICameraFinder* self, ICameraInfo* camera);             // 9
};
struct ICameraFinder {
  const struct ICameraFinderVtbl* lpVtbl;
};

#undef TARN_UNKNOWN_OPERATIONS

_Static_assert(sizeof(struct ICameraInfoVtbl) == 25 * sizeof(void*), "the last operation stands at position 24");
_Static_assert(sizeof(struct INewCameraDataCallbackVtbl) == 6 * sizeof(void*), "the last operation: position 5");
_Static_assert(sizeof(struct ICameraFinderVtbl) == 10 * sizeof(void*), "the last operation stands at position 9");

void GetFindingInterface(void* server, void* channelArgument, ICameraFinder** finder);
