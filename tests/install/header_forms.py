#!/usr/bin/env python3
"""Compiles the public headers in every place that a wizard may include them. Use: header_forms.py INCLUDE COMPILER…

A COMPILER is a command with its own options, in one argument; one that is not there is left out, and that is said. Each
form is compiled as C++17 and C++20 (the C header as C11), with warnings as errors.
"""
import os
import shlex
import shutil
import subprocess
import sys
import tempfile

WARNINGS = "-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -fsyntax-only".split()

#  A use of what other headers like to rename, and of what must have one spelling.
CPP_USE = """
using namespace Tarn::CameraFinding;
struct Callback : INewCameraDataCallback {
  HRESULT QueryInterface(const IID&, void** object) override { *object = nullptr; return E_NOINTERFACE; }
  ULONG AddRef() override { return 2; }
  ULONG Release() override { return 1; }
  HRESULT PictureReceived(const uint8_t*, uint64_t, BSTR text) override { SysFreeString(text); return S_OK; }
  HRESULT ValuesReceived(BSTR text, const uint64_t*, uint64_t) override { SysFreeString(text); return S_OK; }
  HRESULT CameraInfoReceived(CameraEventKind kind, ICameraInfo* camera, CameraTypeCode type) override {
    SysFreeString(camera->GetUserName());
    camera->SetCredentials(UnsetCredential, OLESTR("secret"));
    return kind == cekGone || type == ctcUnknown ? E_FAIL : S_OK;
  }
};
void Use(ICameraFinder& finder, Callback& callback) {
  finder.SetNewCameraDataCallback(&callback);
  finder.RequestInfoByIp(OLESTR("10.0.0.5"));
}
"""
C_USE = """
ULONG Use(ICameraFinder* finder, INewCameraDataCallback* callback);
ULONG Use(ICameraFinder* finder, INewCameraDataCallback* callback) {
  finder->lpVtbl->SetNewCameraDataCallback(finder, callback);
  finder->lpVtbl->RequestInfoByIp(finder, OLESTR("10.0.0.5"));
  return finder->lpVtbl->Release(finder);
}
"""
WINDOWS = "#include <windows.h>\n"
HEADERS = {"camera_finding.h": ("c++", ["c++17", "c++20"], CPP_USE), "camera_finding_c.h": ("c", ["c11"], C_USE)}


def forms(header, windows):
    other = WINDOWS if windows else "#include <stdlib.h>\n#include <wchar.h>\n"
    include = f'#include "tarn/{header}"\n'
    yield "alone", include
    yield "first", include + other
    yield "after", other + include
    if windows:
        yield "after, wide", "#define UNICODE\n" + other + include
        yield "plain", "#define TARN_PLAIN_COM_TYPES\n" + include


def main():
    include, failures, tried = sys.argv[1], 0, 0
    for compiler in map(shlex.split, sys.argv[2:]):
        if not shutil.which(compiler[0]):
            print(f"left out, not installed: {compiler[0]}")
            continue
        windows = subprocess.run(compiler + ["-dM", "-E", "-xc", os.devnull], capture_output=True, text=True).stdout.find("_WIN32") >= 0
        for header, (language, standards, use) in HEADERS.items():
            for name, text in forms(header, windows):
                for standard in standards:
                    with tempfile.NamedTemporaryFile("w", suffix=".h") as source:
                        source.write(text + use)
                        source.flush()
                        command = compiler + WARNINGS + [f"-std={standard}", f"-I{include}", f"-x{language}", source.name]
                        result = subprocess.run(command, capture_output=True, text=True)
                    tried += 1
                    if result.returncode:
                        failures += 1
                        print(f"{header} {name}, {standard}: {shlex.join(command)}\n{result.stderr}")
    print(f"{tried - failures} of {tried} forms compile")
    return 1 if failures or not tried else 0


if __name__ == "__main__":
    sys.exit(main())
