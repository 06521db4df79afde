#!/usr/bin/env python3
"""Compiles the public headers in every place that a wizard may include them. Use: header_forms.py INCLUDE COMPILER…

A COMPILER is a command with its own options, in one argument; one that is not installed is left out, and that is said.
"""
import itertools
import os
import re
import shlex
import shutil
import subprocess
import sys

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
void Use(ICameraFinder& finder, Callback& callback) { finder.SetNewCameraDataCallback(&callback); }
"""
C_USE = """
ULONG Use(ICameraFinder* finder, INewCameraDataCallback* callback);
ULONG Use(ICameraFinder* finder, INewCameraDataCallback* callback) {
  finder->lpVtbl->SetNewCameraDataCallback(finder, callback);
  finder->lpVtbl->RequestInfoByIp(finder, UnsetCredential);
  return finder->lpVtbl->Release(finder);
}
"""
HEADERS = [("camera_finding.h", "c++17", CPP_USE), ("camera_finding.h", "c++20", CPP_USE), ("camera_finding_nothrow.h", "c++17", CPP_USE),
           ("camera_finding_c.h", "c11", C_USE), ("camera_finding_nothrow.h", "c11", C_USE)]


def forms(header, windows):
    include, other = f'#include "tarn/{header}"\n', "#include <windows.h>\n" if windows else "#include <stdlib.h>\n#include <wchar.h>\n"
    plain = ["#define TARN_PLAIN_COM_TYPES\n" + include, "#define UNICODE\n" + other + include]
    return [include, include + other, other + include] + (plain if windows else [])


def constants(header):
    """The names and values that C++ and C must have in common."""
    with open(os.path.join(sys.argv[1], "tarn", header), encoding="utf-8") as file:
        return set(re.findall(r'(\b(?:cek|ctc)\w+ = \d+|IID_\w+ = .+;|UnsetCredential\[\] = .+;|\{ctc\w+, OLESTR\("[^"]+"\)\})', file.read()))


def main():
    tried = failures = 0
    same = constants("camera_finding.h") == constants("camera_finding_c.h")
    if not same:
        print("the constants differ:", *constants("camera_finding.h") ^ constants("camera_finding_c.h"), sep="\n  ")
    for compiler in map(shlex.split, sys.argv[2:]):
        if not shutil.which(compiler[0]):
            print(f"left out, not installed: {compiler[0]}")
            continue
        macros = subprocess.run(compiler + ["-dM", "-E", "-xc", os.devnull], capture_output=True, text=True, check=True).stdout
        for (header, standard, use), form in itertools.product(HEADERS, range(5 if "_WIN32" in macros else 3)):
            text = forms(header, "_WIN32" in macros)[form] + use
            command = compiler + WARNINGS + [f"-std={standard}", f"-I{sys.argv[1]}", "-xc" + "++" * ("++" in standard), "-"]
            result = subprocess.run(command, input=text, capture_output=True, text=True, check=False)
            tried += 1
            if result.returncode:
                failures += 1
                print(f"{shlex.join(command)}\n{text}\n{result.stderr}")
    print(f"{tried - failures} of {tried} forms compile")
    return 0 if same and tried and not failures else 1


if __name__ == "__main__":
    sys.exit(main())
