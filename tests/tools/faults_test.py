#!/usr/bin/env python3
"""Lets each function of the platform library fail at each of its calls, for every command: faults_test.py TARNFIND"""
import concurrent.futures, itertools, json, os, signal, subprocess, sys, tempfile

program = sys.argv[1].split()
folder = tempfile.mkdtemp()
WORLD = {"speed": "instant", "cameras": [{"name": "A", "mac": "00:40:8C:00:00:01", "ip": "10.0.0.1", "subnetMask": "255.255.255.0"}]}
CREATE, OPEN, START = "TarnServer_CreateLiveStream", "TarnLiveStream_Open", "TarnLiveStream_Start"
CALLBACK, SEND = "TarnLiveStream_SetGenericDataCallback", "TarnLiveStream_SendSynchDSPCommand"
RELEASE, DESTROY, LAST_ERROR = "TarnDBI_ReleaseReference", "TarnLiveStream_Destroy", "TarnDBIGetLastError"

# What each command answers where nothing fails.
LIST, SEARCH, CHECK, INFO, MAC, BARE, CHANGE = COMMANDS = [
    "list", "search --for 0.1", "check --for 0.1", "info 10.0.0.1 --for 0.1", "send-mac 0:40:8c:0:0:1 --for 0.1",
    "bare --for 0.1", "set-network 00408c000001 --yes --static --for 0.1"]
FINE = {LIST: "\n1 camera\n", SEARCH: "\n1 camera: 1 known, 0 new; ", CHECK: "\nThe server answers. It knows 1 camera.\n",
        INFO: "\nIP            10.0.0.1\n", MAC: "\nSent 00:40:8C:00:00:01; ", BARE: "\nSent the bare command; ",
        CHANGE: "00:40:8C:00:00:01 applied\n"}

CLOSED = "tarnfind: the channel to the server cannot be opened, the library does not tell why; see that "
NO_LIST = "tarnfind: the server did not list its cameras: müde\n"
SILENT = "tarnfind: the channel is open and the list arrives, but the server sent nothing within 0.1 s when it was "
NOTHING = "tarnfind: nothing arrived about a camera at 10.0.0.1 within 0.1 s; whether the server refused the question "
LEAVING = "tarnfind: at the end the server refused to remove the callback"
UNHEARD = "does not tell whether the server knows no camera or did not answer"
# Function, number of the call, whether there is an error record, commands, exit code, text in one of the two streams.
# What is not here is no failure: the command does as usual.
ROWS = [
    (CREATE, 1, True, COMMANDS, 3, "tarnfind: the server refused a live stream: müde; see that the video server runs"),
    (CREATE, 1, False, COMMANDS, 3, CLOSED),
    (OPEN, 1, True, COMMANDS, 3, CLOSED),
    (START, 1, True, COMMANDS, 3, CLOSED),
    (CALLBACK, 1, True, [CHECK], 3, "\ncallback          failed             the server refused the callback: müde; see that "),
    (CALLBACK, 1, True, COMMANDS, 3, "tarnfind: the server refused the callback: müde; see that "),
    (CALLBACK, 1, False, [CHECK], 1, SILENT),
    (CALLBACK, 1, False, [INFO], 1, NOTHING),
    (CALLBACK, 2, True, COMMANDS, 0, LEAVING),
    (SEND, 1, True, [LIST, SEARCH, CHECK, MAC, BARE, CHANGE], 1, NO_LIST),
    (SEND, 1, True, [INFO], 1, NOTHING),
    (SEND, 1, False, [LIST, CHECK], 0, UNHEARD),
    (SEND, 1, False, [SEARCH], 0, "! Nothing arrived, and the server's list is empty; tarnfind check shows"),
    (SEND, 1, False, [INFO], 1, NOTHING),
    (SEND, 1, False, [CHANGE], 1, UNHEARD),
    (SEND, 2, True, [CHECK], 1, SILENT),
    (SEND, 2, True, [CHANGE], 1, "failed: the server refused the command, or did not answer; whether it arrived cannot"),
    (SEND, 2, False, [CHECK], 1, SILENT),
    (SEND, 2, False, [CHANGE], 4, "tarnfind: 00:40:8C:00:00:01 not applied: sent and listed differ: DHCP no -> yes\n"),
    (SEND, 3, True, [CHANGE], 1, "not confirmed: the server did not list its cameras: müde\n"),
    (SEND, 3, False, [CHANGE], 1, UNHEARD),
]
# As often as any of the commands calls the function. The last error is asked for where another call has failed.
CALLS = {CREATE: 1, OPEN: 1, START: 1, CALLBACK: 2, SEND: 3, RELEASE: 3, DESTROY: 1, LAST_ERROR: 1}


def faults(function, call, record):
    error = {"description": "müde\r\n"} if record else False
    failed = [{"function": SEND, "call": 3, "error": error}] if function == LAST_ERROR else []
    calls = [3, 4, 5] if (function, call) == (SEND, 3) else [call]  # the list is read back several times
    return failed + [{"function": function, "call": n, "error": error} for n in calls]


def check(case):
    function, call, record, command = case
    rows = [row for row in ROWS if row[:3] == (function, call, record) and command in row[3]]
    code, text = rows[0][4:] if rows else (0, FINE[command])
    path = os.path.join(folder, f"{function}{call}{record}{COMMANDS.index(command)}.json")
    with open(path, "w", encoding="utf-8") as file:
        json.dump(dict(WORLD, functionFaults=faults(function, call, record)), file)
    result = subprocess.run(program + command.split(), stdin=subprocess.DEVNULL, capture_output=True, timeout=60,
                            env=dict(os.environ, TARN_SIMULATOR_SCENARIO=path))
    output, error = result.stdout.decode(), result.stderr.decode(errors="replace")
    complaints = sum(line.startswith("tarnfind: ") for line in error.splitlines())
    # Beside the complaint there is only what set-network is about to change, and what the library's own C++ runtime says
    # where it has one and wants to end the process.
    fault = [name for name, wrong in [
        ("exit code", result.returncode != code),
        ("text", text not in '\n' + output + error),
        ("number of complaints", complaints != (code != 0 or "tarnfind: " in text)),
        ("line without a name", command != CHANGE and text != LEAVING and len(error.splitlines()) != complaints),
        ("untrue", code != 0 and command != MAC and command != BARE and FINE[command] in '\n' + output),
    ] if wrong]
    return f"{function} {call} {record} {command}: {', '.join(fault)}: {result.returncode} {output} {error}" if fault else ""


def interrupted(number):
    """A search that is ended by a signal tells all that it has."""
    path = os.path.join(folder, "signals.json")
    with open(path, "w", encoding="utf-8") as file:
        json.dump(WORLD, file)
    with subprocess.Popen(program + ["search", "--watch", "--json"], stdout=subprocess.PIPE,
                          env=dict(os.environ, TARN_SIMULATOR_SCENARIO=path)) as process:
        first = json.loads(process.stdout.readline())
        process.send_signal(number)
        last = json.loads(process.communicate(timeout=60)[0].splitlines()[-1])
    told = first["change"], last["event"], last["cameras"], last["interrupted"], process.returncode
    return f"{number.name}: {told}" if told != ("known", "summary", 1, True, 0) else ""


cases = [(function, call, record, command) for function, calls in CALLS.items()
         for call, record, command in itertools.product(range(1, calls + 1), [True, False], COMMANDS)]
with concurrent.futures.ThreadPoolExecutor(4) as threads:
    failures = [failure for failure in threads.map(check, cases) if failure]
if os.name == "posix" and len(program) == 1:  # without an emulator
    signal.signal(signal.SIGHUP, signal.SIG_DFL)  # nohup ignores it, and children inherit that
    failures += filter(None, map(interrupted, [signal.SIGINT, signal.SIGTERM, signal.SIGHUP]))
print("\n".join(failures))
sys.exit(len(failures) > 0)
