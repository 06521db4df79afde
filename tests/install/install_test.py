#!/usr/bin/env python3
"""Uses the product as its users do. Use: install_test.py STEP BUILD SOURCE [--windows] [--run EMULATOR] [--cmake OPTION]…

STEP names a function step_STEP below; "install" goes first, because the others use what it installs. Everything lies in
BUILD/install_test. Exit code 77: something that the step needs is not installed.
"""
import argparse
import glob
import json
import os
import re
import shlex
import shutil
import subprocess
import sys

arguments = argparse.ArgumentParser()
arguments.add_argument("step")
arguments.add_argument("build")
arguments.add_argument("source")
arguments.add_argument("--windows", action="store_true")
arguments.add_argument("--run")
arguments.add_argument("--cmake", action="append", default=[])
A = arguments.parse_args()
WORK = os.path.join(A.build, "install_test")
PREFIX = os.path.join(WORK, "moved here")  # with a blank, and not where it was installed
EXAMPLES = os.path.join(PREFIX, "share/doc/tarn-camera-finding/examples")
EXE, LIBRARIES, LIBRARY = (".exe", "bin", "Tarn{}.dll") if A.windows else ("", "lib", "libTarn{}.so")
WARNINGS = "-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror"
CAMERA = r"(?m)^(listed|camera|[.+]) +00:40:8C:[0-9A-F:]{8} "


def need(*programs):
    for program in programs:
        if not shutil.which(program):
            print(f"skipped: {program} is not installed")
            sys.exit(77)


def long_test():
    if not os.environ.get("TARN_LONG_TESTS"):
        print("skipped: takes a build of its own; set TARN_LONG_TESTS, as scripts/test does")
        sys.exit(77)


def run(*command, **options):
    print("$", shlex.join(map(str, command)), flush=True)
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace", **options)
    print(done.stdout, flush=True)
    if done.returncode:
        sys.exit(f"exit code {done.returncode}")
    return done.stdout


def run_program(program, *args, expect=CAMERA, **options):
    command = ([A.run] if A.run else []) + [program + EXE, *args]
    output = run(*command, cwd=WORK, **options)
    if not re.search(expect, output):
        sys.exit(f"{program}: nothing looks like {expect}")


def fresh(name):
    folder = os.path.join(WORK, name)
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    return folder


def build_project(source, name, *options):
    folder = fresh(name)
    flags = [f"-DCMAKE_{language}_FLAGS={WARNINGS}" for language in ("C", "CXX")]
    run("cmake", "-G", "Ninja", "-S", source, "-B", folder, f"-DCMAKE_PREFIX_PATH={PREFIX}", *flags, *A.cmake, *options)
    run("cmake", "--build", folder)
    return folder


def beside_libraries(program):
    """Windows looks beside the program, so it is put where the libraries are."""
    return shutil.copy(program + EXE, os.path.join(PREFIX, "bin")).removesuffix(EXE) if A.windows else program


def step_install():
    shutil.rmtree(WORK, ignore_errors=True)
    run("cmake", "--install", A.build, "--prefix", os.path.join(WORK, "made there"))
    os.rename(os.path.join(WORK, "made there"), PREFIX)
    run_program(os.path.join(PREFIX, "bin/tarnfind"), "--version", expect=r"^tarnfind \d+\.\d+\.\d+ \((unknown|[0-9a-f]{12}(-dirty)?)\)$")
    run_program(os.path.join(PREFIX, "bin/tarnfind"), "search", "--for", "1")
    run_program(os.path.join(PREFIX, "bin/smallest_wizard"))


def step_find_package():
    build_project(os.path.join(EXAMPLES, "nothrow_module"), "nothrow_module")
    folder = build_project(os.path.join(EXAMPLES, "wizards"), "wizards")
    programs = [(A.run,) * bool(A.run) + (beside_libraries(os.path.join(folder, wizard)) + EXE,) for wizard in ("smallest_wizard", "table_wizard")]
    if not A.windows:
        programs.append((sys.executable, os.path.join(EXAMPLES, "wizards/ctypes_wizard.py"), os.path.join(PREFIX, "lib/libTarnCameraFindingNoThrow.so")))
    for program in programs:
        if not re.search(CAMERA, run(*program)):
            sys.exit("no camera")
        #  What cannot go on says why: the stream that the server refuses, and the channel that cannot be opened.
        for function, text in (("TarnServer_CreateLiveStream", b"refused here"), ("TarnLiveStream_Open", b"channel to the server")):
            fault = {"function": function, "call": "every", "error": {"description": "refused here"}}
            with open(os.path.join(WORK, "fault.json"), "w", encoding="utf-8") as file:
                json.dump({"functionFaults": [fault]}, file)
            environment = os.environ | {"TARN_SIMULATOR_SCENARIO": os.path.join(WORK, "fault.json")}
            done = subprocess.run(program, capture_output=True, env=environment, check=False)
            if done.returncode != 1 or text not in done.stderr:
                sys.exit(f"{function} fails: {done}")


def step_readme():
    """The use that README.md shows, as it is written there."""
    source = fresh("readme")
    with open(os.path.join(A.source, "README.md"), encoding="utf-8") as file:
        blocks = dict(re.findall(r"```(cpp|cmake)\n(.*?)```", file.read(), re.S))
    for name, language in (("wizard.cpp", "cpp"), ("CMakeLists.txt", "cmake")):
        with open(os.path.join(source, name), "w", encoding="utf-8") as file:
            file.write(blocks[language])
    run_program(beside_libraries(os.path.join(build_project(source, "readme_build"), "wizard")), expect=r"(?m)^00:40:8C:[0-9A-F:]{8}$")


def user_project(name, obtain):
    """A project of nothing but the smallest wizard, which builds the library from its sources."""
    long_test()
    source = fresh(name)
    shutil.copy(os.path.join(EXAMPLES, "wizards/smallest_wizard.cpp"), source)
    with open(os.path.join(source, "CMakeLists.txt"), "w", encoding="utf-8") as file:
        file.write(f"cmake_minimum_required(VERSION 3.25)\nproject(User LANGUAGES CXX)\n{obtain}\n"
                   "add_executable(wizard smallest_wizard.cpp)\ntarget_link_libraries(wizard PRIVATE Tarn::CameraFinding)\n")
    folder = build_project(source, f"{name}_build")
    beside = os.path.dirname(glob.glob(f"{folder}/**/{LIBRARY.format('CameraFinding')}", recursive=True)[0])
    shutil.copy(os.path.join(PREFIX, LIBRARIES, LIBRARY.format("DBI")), beside)
    run_program(shutil.copy(os.path.join(folder, "wizard" + EXE), beside).removesuffix(EXE))


def step_add_subdirectory():
    user_project("add_subdirectory", f'add_subdirectory("{A.source}" tarn)')


def step_fetch_content():
    user_project("fetch_content", f'include(FetchContent)\nFetchContent_Declare(tarn SOURCE_DIR "{A.source}")\nFetchContent_MakeAvailable(tarn)')


def step_pkg_config():
    need("pkg-config")
    compiler = next(option for option in A.cmake if "CXX_COMPILER=" in option).split("=")[1]
    flags = run("pkg-config", "--cflags", "--libs", "tarn-camera-finding", env=os.environ | {"PKG_CONFIG_PATH": f"{PREFIX}/lib/pkgconfig"})
    program = os.path.join(WORK, "by_pkg_config")
    static = ["-static"] if A.windows else []
    run(compiler, "-std=c++17", *static, os.path.join(EXAMPLES, "wizards/smallest_wizard.cpp"), "-o", program + EXE, *shlex.split(flags))
    run_program(beside_libraries(program), env=os.environ | {"LD_LIBRARY_PATH": f"{PREFIX}/lib"})


def step_packages():
    folder, root = fresh("packages"), fresh("root")
    run("cpack", "--config", os.path.join(A.build, "CPackConfig.cmake"), "-B", folder)
    packages = glob.glob(f"{folder}/*.zip" if A.windows else f"{folder}/*.deb")
    if len(packages) != 3:
        sys.exit(f"{packages} in place of three packages")
    for package in packages:
        run(*(("unzip", "-q", package, "-d", root) if A.windows else ("dpkg-deb", "-x", package, root)))
    programs = os.path.join(root, "bin" if A.windows else "usr/bin")
    run_program(os.path.join(programs, "tarnfind"), "search", "--for", "1")
    run_program(os.path.join(programs, "smallest_wizard"))
    if not A.windows:
        need("lintian")
        run("lintian", "--allow-root", "--fail-on", "error,warning", *packages)


def step_clang_library():
    """The library built by another compiler, with no warning of an extension, under the programs of this one."""
    need("clang++", "ld.lld")
    long_test()
    folder, together = fresh("clang"), fresh("clang_together")
    toolchain = os.path.join(A.source, "cmake/windows-clang-toolchain.cmake")
    launcher = [option for option in A.cmake if "LAUNCHER" in option]
    run("cmake", "-G", "Ninja", "-S", A.source, "-B", folder, "-DTARN_DEVELOPER=OFF", f"-DCMAKE_TOOLCHAIN_FILE={toolchain}",
        "-DCMAKE_COMPILE_WARNING_AS_ERROR=ON", *launcher)
    run("cmake", "--build", folder, "--target", "TarnCameraFinding")
    for file in (f"{folder}/bin/TarnCameraFinding.dll", f"{PREFIX}/bin/TarnDBI.dll", f"{PREFIX}/bin/tarnfind.exe"):
        shutil.copy(file, together)
    run_program(os.path.join(together, "tarnfind"), "search", "--for", "1")


def step_msvc_abi():
    """A wizard of another ABI must read every getter, change a camera, and be told what an exception says."""
    need("clang++", "lld-link")
    program = os.path.join(PREFIX, "bin/msvc_abi_wizard")
    headers = run("clang++", "-print-resource-dir").strip() + "/include"
    run("clang++", "--target=x86_64-pc-windows-msvc", "-std=c++17", "-O1", "-ffreestanding", "-nostdinc", "-isystem", headers,
        "-fno-exceptions", "-fno-rtti", "-fno-stack-protector", *WARNINGS.split(), "-DTARN_PLAIN_COM_TYPES", f"-I{PREFIX}/include",
        "-c", os.path.join(EXAMPLES, "wizards/msvc_abi_wizard.cpp"), "-o", program + ".obj")
    system = [run("x86_64-w64-mingw32-g++-posix", f"-print-file-name=lib{name}.a").strip() for name in ("kernel32", "oleaut32")]
    run("lld-link", "/entry:start", "/nodefaultlib", "/subsystem:console", f"/out:{program}.exe", program + ".obj",
        f"{PREFIX}/lib/libTarnCameraFindingNoThrow.dll.a", *system)
    scenario = os.path.join(A.source, "tests/tools/scenario.json")
    lines = run(A.run, program + ".exe", env=os.environ | {"TARN_SIMULATOR_SCENARIO": scenario}).splitlines()
    product = r"|Axis IPC|0|0|4294836223|64|1|0|255|\5317|2"
    model = r"M\1b[2J|M\1b[2J|5.7.1"
    for expected in ("listed|00:40:8C:00:00:01|10.0.0.1|255.255.255.0|10.0.0.254|" + model + "|operator|hunter2|1" + product,
                     "changed|00:40:8C:00:00:01|10.9.8.7|255.0.0.0|10.0.0.1|" + model + r"|J\fcrgen||0" + product,
                     "arrived|0|2|00:40:8C:00:00:01|10.", "arrived|1|2|00:40:8C:00:00:01|10.9.8.7",
                     "values|1|", "picture 137|"):
        if not any(line.startswith(expected) for line in lines):
            sys.exit(f"missing: {expected}")
    refused = os.environ | {"TARN_SIMULATOR_SCENARIO": os.path.join(A.source, "tests/install/refusing_scenario.json")}
    done = subprocess.run([A.run, program + ".exe"], capture_output=True, env=refused, check=False)
    if (done.returncode, done.stdout.strip()) != (1, b"Der Server ist m\xfcde"):
        sys.exit(f"refused: {done}")


globals()["step_" + A.step]()
