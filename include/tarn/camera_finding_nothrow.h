/// The three operations that let C++ exceptions through, for wizards that cannot catch them: those in C and in other
/// languages, and those of another compiler family than the library's. For C11 and C++17; the library is
/// TarnCameraFindingNoThrow, which is built on the finder's public interface alone.
///
/// Result  S_OK; E_OUTOFMEMORY where there was no memory; E_FAIL for every other exception.
/// text    receives the exception's what(), or an empty text with S_OK: NUL-terminated, cut to textSize bytes, in the
///         system's code page. May be null.
///
/// What a wizard's own callback or receiver throws must not reach the library from another compiler.
#pragma once

#include <stddef.h>

#if defined(__cplusplus)
#include "tarn/camera_finding.h"
namespace Tarn::CameraFinding {
extern "C" {
#else
#include "tarn/camera_finding_c.h"
#endif

/// *finder is not written where the result is a failure.
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
