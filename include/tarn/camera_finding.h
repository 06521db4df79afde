/// The camera finder as a set-up wizard sees it.
///
///     Tarn::CameraFinding::ICameraFinder* finder = nullptr;
///     GetFindingInterface(server, channel, &finder);     // count 1, yours
///     finder->SetNewCameraDataCallback(&myCallback);     // cameras arrive from here on
///     finder->ListFoundCameras(&myReceiver);             // those found so far, before it returns
///     finder->Release();                                 // removes the callback
///
/// Binary contract
///   1. An interface is a table of operations, identified by position; IUnknown's three stand at 0 to 2.
///   2. A boolean is one byte, 0 or 1. Text passed in is NUL-terminated UTF-16; null is allowed only where said.
///   3. Text handed out is a new BSTR of the caller's, freed with SysFreeString; an empty text is an empty BSTR.
///   4. Every object may be called and released on any thread.
///   5. ListFoundCameras, SetNewCameraDataCallback and GetFindingInterface let C++ exceptions through, all derived from
///      std::exception; every other operation keeps them inside and returns its failure value.
///   6. The library may be unloaded once every object of it has been released. Where a delivery is still under way then,
///      it ends as usual, and the library stays in the process.
///   There is no time-out: an operation blocks until the server has answered.
#pragma once

#include <cstdint>

#include "tarn/com_types.h"

namespace Tarn::CameraFinding {

/// A camera: a snapshot of what the server knew, and a draft of what it shall become.
/// One thread at a time calls the setters; they change this object only, until it is sent with SendNetworkCommandType…
struct ICameraInfo : IUnknown {
  /// Position 3. Camera type code of the vendor mask; 0 is unknown.
  virtual std::int32_t GetCameraType() = 0;
  virtual BSTR GetModel() = 0;
  virtual BSTR GetIpAddress() = 0;
  virtual BSTR GetSubnetMask() = 0;
  virtual BSTR GetGateway() = 0;
  virtual BSTR GetFirmwareVersion() = 0;
  /// Position 9. The same text as GetModel.
  virtual BSTR GetModelName() = 0;
  virtual BSTR GetMacAddress() = 0;
  /// Positions 11 and 12. "&!*KVMR*9%" stands for credentials that were never supplied.
  virtual BSTR GetUserName() = 0;
  virtual BSTR GetPassword() = 0;
  virtual std::uint8_t IsDhcpEnabled() = 0;
  /// Position 14. The first plug-in name; "UNKNOWN" when there is none.
  virtual BSTR GetPluginName() = 0;
  virtual std::uint8_t HasDeviceFlag17() = 0;
  /// Position 16. Always 0.
  virtual std::uint8_t IsReserved() = 0;
  /// Position 17. A null text clears the member.
  virtual void SetCredentials(const OLECHAR* user, const OLECHAR* password) = 0;
  /// Position 18. A null text clears the member; dhcpMode 1 means DHCP, any value is kept as it is.
  virtual void SetNetworkSettings(const OLECHAR* ipAddress, const OLECHAR* subnetMask, std::uint8_t dhcpMode,
                                  const OLECHAR* gateway) = 0;
  virtual std::uint32_t GetDeviceFlags() = 0;
  virtual std::uint64_t GetVendorTypeMask() = 0;
  virtual std::uint8_t GetIcb() = 0;
  virtual std::uint8_t GetGcb() = 0;
  virtual std::uint8_t GetCtt() = 0;
  /// Position 24.
  virtual BSTR GetVendorDisplayName() = 0;

 protected:
  ~ICameraInfo() = default;
};

/// Implemented by the wizard. Called on worker threads, without any lock held; an operation may call back into the
/// finder, also Release. The thread that delivers waits for it. Results are ignored. An exception thrown here ends the
/// delivery of that block (for ValuesReceived only of that call) and goes no further.
struct INewCameraDataCallback : IUnknown {
  /// Position 3. A picture arrived.
  /// picture     the bytes as the server sent them, byteCount of them (may be 0); valid during the call only.
  /// cameraText  which camera; the BSTR is yours, free it with SysFreeString.
  virtual HRESULT PictureReceived(const std::uint8_t* picture, std::uint64_t byteCount, BSTR cameraText) = 0;
  /// Position 4. Values arrived: valueCount of them (at least 1), valid during the call only. Free cameraText.
  virtual HRESULT ValuesReceived(BSTR cameraText, const std::uint64_t* values, std::uint64_t valueCount) = 0;
  /// Position 5. A camera was found, changed or has gone.
  /// eventKind   0 to 4, by the kind of message; 4 is sent for cameras that went away.
  /// camera      AddRef it to keep it; the library lets go of its own reference after the call.
  /// cameraType  camera type code, by vendor mask or else by first plug-in name; 0 is unknown.
  virtual HRESULT CameraInfoReceived(std::uint32_t eventKind, ICameraInfo* camera, std::int32_t cameraType) = 0;

 protected:
  ~INewCameraDataCallback() = default;
};

/// Implemented by the wizard for ListFoundCameras; called on the thread that called it.
struct IFoundCameraReceiver : IUnknown {
  /// Position 3. One camera; AddRef it to keep it. The result is ignored.
  virtual HRESULT CameraFound(ICameraInfo* camera) = 0;

 protected:
  ~IFoundCameraReceiver() = default;
};

/// The finder. Operations may be called on any thread, except that only one thread at a time calls
/// SetNewCameraDataCallback.
struct ICameraFinder : IUnknown {
  /// Position 3. Sends a hardware address such as u"00:40:8C:12:34:56" to the server. Failures are silent.
  virtual void SendMacAddress(const OLECHAR* macAddress) = 0;
  /// Position 4. Asks the server to look at one IP address; what it finds arrives at the callback. Failures are silent.
  virtual void RequestInfoByIp(const OLECHAR* ipAddress) = 0;
  /// Position 5. Hands every camera found so far to the receiver (may be null), in the server's order, before it
  /// returns. Does nothing where the channel cannot be opened. Throws what the server or a malformed reply causes.
  virtual void ListFoundCameras(IFoundCameraReceiver* receiver) = 0;
  /// Position 6. Installs the callback (may be null) in place of the one before; the finder holds a reference on it
  /// until it is replaced or the finder is released. Where it throws, the one before stays.
  virtual void SetNewCameraDataCallback(INewCameraDataCallback* callback) = 0;
  /// Position 7. Sends the camera's credentials and network settings. The camera must not be null. 0 on failure.
  virtual std::uint8_t SendNetworkCommandType1(ICameraInfo* camera) = 0;
  /// Position 8. Sends the command without a payload. Failures are silent.
  virtual void SendBareCommand() = 0;
  /// Position 9. As position 7, with command type 4.
  virtual std::uint8_t SendNetworkCommandType4(ICameraInfo* camera) = 0;

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
/// channelArgument  opaque; handed to the platform library when the channel is opened.
/// finder           receives the finder with a count of 1, the caller's. Null: nothing happens at all.
/// Throws an exception derived from std::exception where the server cannot create the channel; *finder is not written.
extern "C" void GetFindingInterface(void* server, void* channelArgument, Tarn::CameraFinding::ICameraFinder** finder);
