/// The camera finder as a set-up wizard sees it. C++17 and later; camera_finding_c.h is the same for C.
///
///     Tarn::CameraFinding::ICameraFinder* finder = nullptr;
///     GetFindingInterface(server, channel, &finder);     // count 1, yours
///     finder->SetNewCameraDataCallback(callback);        // cameras arrive from here on
///     finder->ListFoundCameras(&receiver);               // those found so far, before it returns
///     …                                                  // as long as the wizard searches
///     finder->Release();                                 // removes the callback, and waits for nothing (Life, below)
///
/// Binary contract
///   1. An interface is a table of operations, identified by position; IUnknown's three stand at 0 to 2.
///   2. A boolean is one byte, 0 or 1.
///   3. Text passed in is NUL-terminated UTF-16, and belongs to the caller. Null counts as an empty text.
///   4. Text handed out is a new BSTR of the receiver's, freed with SysFreeString. An empty text is an empty BSTR; null
///      means that there was no memory for the text. A text that the system cannot convert is empty.
///   5. Every object may be called and released on any thread; ICameraFinder and ICameraInfo say which operations
///      exclude each other. QueryInterface of a library's object answers IUnknown and the object's own interface (on
///      Windows also IMarshal); the library never calls it on a wizard's object.
///   6. The library may be unloaded once every object of it has been released. Where a delivery is still under way
///      then, it ends as usual, and the library stays in the process; also where a callback was replaced or the finder
///      released in the middle of a delivery. The first SetNewCameraDataCallback of a finder and its last Release take
///      the loader's lock, so no thread may wait for them with that lock held. A Release while a delivery is under way,
///      for example inside a callback, does not take it.
///
/// Errors
///   GetFindingInterface, ListFoundCameras and SetNewCameraDataCallback let C++ exceptions through, all derived from
///   std::exception. what() is in the system's code page: that of CP_ACP on Windows, Windows-1252 elsewhere (unless
///   TARN_ANSI_CODE_PAGE names another). Every other operation keeps them inside and returns its failure value.
///   A wizard of another compiler calls these three through camera_finding_nothrow.h.
///   Where the server refuses to remove a callback and gives a reason, the process ends (std::terminate), because
///   neither the last Release of a finder nor the replacing of a callback can report it.
///
/// The channel
///   It is opened by the first operation that needs it. Where it cannot be opened, nothing is sent and nothing is
///   reported; the next operation tries again. A wizard sees it after SetNewCameraDataCallback: the library has then
///   taken no reference on the callback.
///   There is no time-out: an operation blocks until the server has answered.
#pragma once

#include <stdint.h>

#include "tarn/com_types.h"

static_assert(sizeof(void*) == 8, "the library exists for 64-bit processes only");

namespace Tarn::CameraFinding {

/// Stands for the user name and for the password of a camera whose credentials were never supplied. A network command
/// sends it as it stands.
inline constexpr OLECHAR UnsetCredential[] = OLESTR("&!*KVMR*9%");

/// What happened to a camera. The library derives the number from the type of the server's message and attaches no
/// further meaning to it; the names are those of the simulated server.
using CameraEventKind = uint32_t;
enum : CameraEventKind {
  cekFound = 0,
  cekChanged = 1,
  cekSeen = 2,      ///< found before, and still there
  cekReported = 3,  ///< the answer to an enquiry, or a camera of which the server told only a few fields
  cekGone = 4,      ///< only the hardware address and the CTT number are told
};

/// The device family of a camera, 0 to 26. The plug-in types have a name (CameraTypeNames); most others are a number
/// only.
using CameraTypeCode = int32_t;
enum : CameraTypeCode {
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
  ctcAddressOnly = 24,  ///< a camera that has gone: no more than its address is known
  ctcR4Ipc = 25,
};

struct CameraTypeName {
  CameraTypeCode type;
  const OLECHAR* name;
};
/// The plug-in type names, as GetPluginName gives them, and their codes.
inline constexpr CameraTypeName CameraTypeNames[] = {
    {ctcSonyIpc, OLESTR("Sony IPC")},     {ctcAxisIpc, OLESTR("Axis IPC")},
    {ctcSummitIpc, OLESTR("Summit IPC")}, {ctcR2Ipc, OLESTR("R2 IPC")},
    {ctcV1Ipc, OLESTR("V1 IPC")},         {ctcOnvifIpc, OLESTR("ONVIF IPC")},
    {ctcR3Ipc, OLESTR("R3 IPC")},         {ctcArecontVisionIpc, OLESTR("ArecontVision IPC")},
    {ctcMartenIpc, OLESTR("Marten IPC")}, {ctcR4Ipc, OLESTR("R4 IPC")},
};

/// A camera: a snapshot of what the server knew and, after the setters, the settings that a network command sends.
///
/// The library implements it. A wizard may hand its own implementation to SendNetworkCommandType…, which reads
/// positions 5 to 13 on the calling thread. No operation throws or blocks. One thread at a time uses an object while a
/// setter may be called; setters change this object only, until it is sent.
struct ICameraInfo : IUnknown {
  /// By the vendor mask alone: ctcUnknown where that is 0. Then look GetPluginName up in CameraTypeNames, as the
  /// library does for CameraInfoReceived.
  virtual CameraTypeCode GetCameraType() = 0;  ///< Position 3.
  virtual BSTR GetModel() = 0;                 ///< Position 4.
  virtual BSTR GetIpAddress() = 0;             ///< Position 5.
  virtual BSTR GetSubnetMask() = 0;            ///< Position 6.
  virtual BSTR GetGateway() = 0;               ///< Position 7.
  virtual BSTR GetFirmwareVersion() = 0;       ///< Position 8.
  /// The same text as GetModel.
  virtual BSTR GetModelName() = 0;   ///< Position 9.
  virtual BSTR GetMacAddress() = 0;  ///< Position 10.
  /// UnsetCredential where none was supplied; empty for a camera of which the server told only a few fields.
  virtual BSTR GetUserName() = 0;  ///< Position 11.
  /// As GetUserName.
  virtual BSTR GetPassword() = 0;       ///< Position 12.
  virtual uint8_t IsDhcpEnabled() = 0;  ///< Position 13.
  /// The first plug-in type name; "UNKNOWN" when there is none.
  virtual BSTR GetPluginName() = 0;  ///< Position 14.
  /// Bit 17 of GetDeviceFlags; set for a camera of which the server told only a few fields.
  virtual uint8_t HasDeviceFlag17() = 0;  ///< Position 15.
  /// Always 0.
  virtual uint8_t IsReserved() = 0;  ///< Position 16.
  /// Where there is no memory, neither text changes.
  virtual void SetCredentials(const OLECHAR* user, const OLECHAR* password) = 0;  ///< Position 17.
  /// dhcpMode 1 means DHCP, any other value none. Where there is no memory, none of the four changes.
  virtual void SetNetworkSettings(const OLECHAR* ipAddress, const OLECHAR* subnetMask, uint8_t dhcpMode,
                                  const OLECHAR* gateway) = 0;  ///< Position 18.
  /// As the server sent it, without a meaning to the library; so are GetIcb, GetGcb (booleans) and GetCtt.
  virtual uint32_t GetDeviceFlags() = 0;  ///< Position 19.
  /// One bit per vendor, as the server sent it; 0 where the plug-in name alone tells. All bits are set in a camera that
  /// has gone.
  virtual uint64_t GetVendorTypeMask() = 0;  ///< Position 20.
  virtual uint8_t GetIcb() = 0;              ///< Position 21.
  virtual uint8_t GetGcb() = 0;              ///< Position 22.
  virtual uint8_t GetCtt() = 0;              ///< Position 23.
  /// The vendor's name for display.
  virtual BSTR GetVendorDisplayName() = 0;  ///< Position 24.

 protected:
  ~ICameraInfo() = default;
};

/// Implemented by the wizard.
///
/// Thread  Positions 3 to 5 are called on worker threads, without any lock held; they may call back into the finder,
///         also Release. The thread that delivers waits for them, so a slow wizard slows the server down. Blocks that
///         arrive on several threads are delivered at the same time. On Windows the workers belong to the system's
///         pool: COM is not initialised on them, and the callback is called directly, never through a proxy.
/// Errors  Results are ignored. An exception thrown here ends the delivery of its block and goes no further; the next
///         block is delivered all the same. It must be of the library's compiler family; any other one ends the
///         process. An exception out of Release is discarded. AddRef must not throw, nor wait for another thread,
///         because the library calls it with a lock held.
/// Life    Neither the finder's Release nor SetNewCameraDataCallback waits for a delivery. One under way keeps a
///         reference of its own, so that a call may still begin after they have returned, and the last Release may come
///         on another thread. After the last Release no call comes any more: wait for it before you free what the
///         callback uses. Static objects are destroyed when main returns or exit is called, while calls still come.
struct INewCameraDataCallback : IUnknown {
  /// A picture arrived.
  /// picture     the bytes as the server sent them, byteCount of them (may be 0); valid during the call only.
  /// cameraText  what the server calls the camera: often its hardware address, but any text. It ends at its first NUL.
  ///             The BSTR is yours, free it with SysFreeString.
  virtual HRESULT PictureReceived(const uint8_t* picture, uint64_t byteCount, BSTR cameraText) = 0;  ///< Position 3.
  /// Values arrived: valueCount of them (at least 1), valid during the call only. Free cameraText.
  virtual HRESULT ValuesReceived(BSTR cameraText, const uint64_t* values, uint64_t valueCount) = 0;  ///< Position 4.
  /// A camera was found, changed or has gone.
  /// camera      AddRef it to keep it; the library lets go of its own reference after the call.
  /// cameraType  by vendor mask or, where that is 0, by first plug-in name.
  virtual HRESULT CameraInfoReceived(CameraEventKind eventKind, ICameraInfo* camera,
                                     CameraTypeCode cameraType) = 0;  ///< Position 5.

 protected:
  ~INewCameraDataCallback() = default;
};

/// Implemented by the wizard; called on the thread that called ListFoundCameras, and may call the finder. The library
/// takes no reference on it.
struct IFoundCameraReceiver : IUnknown {
  /// One camera; AddRef it to keep it. The result is ignored. An exception thrown here leaves ListFoundCameras, and the
  /// cameras that follow are not handed over.
  virtual HRESULT CameraFound(ICameraInfo* camera) = 0;  ///< Position 3.

 protected:
  ~IFoundCameraReceiver() = default;
};

/// The finder. Operations may be called on any thread, except that only one thread at a time calls
/// SetNewCameraDataCallback.
struct ICameraFinder : IUnknown {
  /// Sends a hardware address such as "00:40:8C:12:34:56" to the server. Every failure is silent.
  virtual void SendMacAddress(const OLECHAR* macAddress) = 0;  ///< Position 3.
  /// Asks the server to look at one IP address. What the server finds arrives at the callback, perhaps after this
  /// call has returned, so keep the finder until then. Every failure is silent.
  virtual void RequestInfoByIp(const OLECHAR* ipAddress) = 0;  ///< Position 4.
  /// Hands every camera found so far to the receiver (may be null), in the server's order, before it returns. Throws
  /// what the server or a malformed reply causes; no camera is handed over then. Without a channel: no camera. The
  /// server is also asked for the last picture of each camera, which a callback then gets once more: do not poll.
  virtual void ListFoundCameras(IFoundCameraReceiver* receiver) = 0;  ///< Position 5.
  /// Installs the callback (may be null) in place of the one before. The finder holds a reference on it until it is
  /// replaced, the finder is released, or the platform library lets the stream go, after which nothing arrives any
  /// more. Throws where the server refuses it; the one before stays then. Without a channel: nothing changes, and no
  /// reference is taken.
  virtual void SetNewCameraDataCallback(INewCameraDataCallback* callback) = 0;  ///< Position 6.
  /// Sends the camera's credentials and network settings. The camera must not be null. 1 where the server took the
  /// command, and without a channel, where nothing is sent. 0 where the camera throws, memory runs out, the server
  /// refuses, or its answer cannot be read: the server may have carried the command out.
  virtual uint8_t SendNetworkCommandType1(ICameraInfo* camera) = 0;  ///< Position 7.
  /// Sends the command that carries nothing. Every failure is silent.
  virtual void SendBareCommand() = 0;  ///< Position 8.
  /// As SendNetworkCommandType1, with command type 4.
  virtual uint8_t SendNetworkCommandType4(ICameraInfo* camera) = 0;  ///< Position 9.

 protected:
  ~ICameraFinder() = default;
};

/// {FFFFFFFF-AAAA-1806-2014-140000000000}
inline constexpr IID IID_ICameraFinder = {0xFFFFFFFF, 0xAAAA, 0x1806, {0x20, 0x14, 0x14, 0x00, 0x00, 0x00, 0x00, 0x00}};
/// {FFFFFFFF-AAAA-2102-2014-095100000000}
inline constexpr IID IID_ICameraInfo = {0xFFFFFFFF, 0xAAAA, 0x2102, {0x20, 0x14, 0x09, 0x51, 0x00, 0x00, 0x00, 0x00}};

}  // namespace Tarn::CameraFinding

/// The library's only export.
/// server           the platform library's server handle, passed on unchanged.
/// channelArgument  opaque; handed to the platform library when the channel is opened, so it must be valid until then.
/// finder           receives the finder with a count of 1, the caller's. Null: nothing happens at all.
/// Callable on any thread. Throws an exception derived from std::exception where the server cannot create the channel;
/// *finder is not written then.
extern "C" void GetFindingInterface(void* server, void* channelArgument, Tarn::CameraFinding::ICameraFinder** finder);
