/// The three operations that let C++ exceptions through, for wizards that cannot catch them: those in C and in other
/// languages, and those of another compiler family than the library's. For C11 and C++17; the library is
/// TarnCameraFindingNoThrow, which is built on the finder's public interface alone.
///
/// Result  S_OK; E_OUTOFMEMORY for std::bad_alloc; E_FAIL for every other exception, also for the library's own "Out of
///         memory during allocation of … bytes in FlatMemory".
/// text    receives the exception's what(), in the system's code page, cut to textSize bytes with its NUL. Empty with
///         S_OK, and where the exception is not derived from std::exception. May be null.
///
/// Each function does what the operation of its name does (camera_finding.h). The ICameraFinder must not be null.
///
/// A callback or receiver built by another compiler family must let no exception out into the library.
#pragma once

#include <stddef.h>

#if defined(__cplusplus)
#include "tarn/camera_finding.h"
namespace Tarn::CameraFinding {
extern "C" {
#else
#include "tarn/camera_finding_c.h"
#endif

/// *finder is not written where the result is a failure. Where finder is null, nothing happens and the
/// result is S_OK.
HRESULT TarnNoThrow_GetFindingInterface(void* server, void* channelArgument, ICameraFinder** finder, char* text,
                                        size_t textSize);
HRESULT TarnNoThrow_ListFoundCameras(ICameraFinder* finder, IFoundCameraReceiver* receiver, char* text,
                                     size_t textSize);
HRESULT TarnNoThrow_SetNewCameraDataCallback(ICameraFinder* finder, INewCameraDataCallback* callback, char* text,
                                             size_t textSize);

#if defined(__cplusplus)
}  // extern "C"
}  // namespace Tarn::CameraFinding
#endif
