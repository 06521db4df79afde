#!/usr/bin/env python3
"""Compares what tarnfind prints, and what the simulator accepts, with the schemas: schema_test.py TARNFIND DOCS SCENARIO"""
import base64, copy, hashlib, json, os, random, re, subprocess, sys, tempfile, urllib.request
import jsonschema

program, docs, scenario_file = sys.argv[1:]
folder = tempfile.mkdtemp()
failures = []


def validator(name):
    with open(os.path.join(docs, name), encoding="utf-8") as file:
        return jsonschema.Draft202012Validator(json.load(file))


scenario_path = os.path.join(folder, "scenario.json")


def play(scenario):
    with open(scenario_path, "w", encoding="utf-8") as file:
        json.dump(scenario, file)


def run(arguments, scenario):
    play(scenario)
    return subprocess.run(program.split() + [scenario_path if a == "SCENARIO" else a for a in arguments], stdin=subprocess.DEVNULL,
                          env=dict(os.environ, TARN_SIMULATOR_SCENARIO=scenario_path), capture_output=True)


def check_output():
    """Most commands: with no function failing, and with each of four functions failing at its first call."""
    schema = validator("tarnfind.schema.json")
    with open(scenario_file, encoding="utf-8") as file:
        scenario = json.load(file)
    functions = ["TarnServer_CreateLiveStream", "TarnLiveStream_Open", "TarnLiveStream_SetGenericDataCallback",
                 "TarnLiveStream_SendSynchDSPCommand"]
    commands = ["search --for 1", f"search --for 1 --times --pictures {folder}", "list --expect 9", "list --nothing",
                "info 10.0.0.1 --for 0.2", "check --for 0.2", "send-mac 00408c000001 --for 0.1", "bare --for 0.1",
                "set-network 00408c000001 --static --yes --for 0.1", "scenario check SCENARIO"]
    capture = os.path.join(os.path.dirname(docs), "tests", "data", "captures", "faults.pcapng")
    recorded = [f"show {capture}", f"stats {capture}", f"explain 00408c1a0002 {capture}", f"redact {capture} {folder}/clean",
                f"diff {capture} {folder}/clean", f"search --for 1 --against {capture}"]
    for fault in [[]] + [[{"function": f, "call": 1, "error": e}] for f in functions for e in (True, False)]:
        for command in commands + (recorded if not fault else []):
            result = run(command.split() + ["--json"], dict(scenario, functionFaults=fault))
            objects = [json.loads(line) for line in result.stdout.decode().splitlines()] or [{}]
            errors = [error.message for o in objects for error in schema.iter_errors(o)]
            if errors or objects[-1].get("exitCode", 0) != result.returncode:
                failures.append(f"{command} {fault}: {errors} {result.returncode} {objects[-1]}")


def check_page():
    """The lines that a browser gets."""
    schema = validator("tarnfind.schema.json")
    with open(scenario_file, encoding="utf-8") as file:
        play(json.load(file))
    page = subprocess.Popen(program.split() + "page --for 1 --once --json".split(), stdout=subprocess.PIPE, stdin=subprocess.DEVNULL,
                            env=dict(os.environ, TARN_SIMULATOR_SCENARIO=scenario_path))
    try:
        first = json.loads(page.stdout.readline())
        with urllib.request.urlopen(first["address"] + "events", timeout=60) as response:
            lines = [json.loads(response.readline())]
            while lines[-1]["event"] not in ("summary", "error"):
                lines.append(json.loads(response.readline()))
    except BaseException:
        page.kill()
        raise
    rest = page.stdout.read().decode()
    errors = [error.message for o in [first] + lines for error in schema.iter_errors(o)]
    printed = [json.loads(line) for line in rest.splitlines()]
    shown = [{k: v for k, v in o.items() if k not in ("time", "seconds")} for o in lines if o["event"] != "state"]
    if errors or page.wait() != 0 or shown != printed or not any(o["event"] == "camera" for o in lines):
        failures.append(f"page: {errors} {page.returncode} {lines} {rest}")


def check_report():
    """Two reports: one by a search, and one made from its lines, which hold passwords."""
    schema = validator("tarnfind.schema.json")
    with open(scenario_file, encoding="utf-8") as file:
        scenario = json.load(file)
    names = [os.path.join(folder, name) for name in ("live.html", "lines", "saved.html")]
    run(["search", "--for", "1", "--report", names[0]], scenario)
    with open(names[1], "wb") as file:
        file.write(run(["search", "--for", "1", "--json", "--show-passwords"], scenario).stdout)
    run(["report", names[1], "-o", names[2]], scenario)
    for name in (names[0], names[2]):
        with open(name, encoding="utf-8", newline="") as file:
            html = file.read()
        lines = re.search('id="lines">\n(.*?)</script>', html, re.S)[1].splitlines()
        errors = [error.message for line in lines for error in schema.iter_errors(json.loads(line))]
        policy = re.search('Content-Security-Policy" content="([^"]*)"', html)[1]
        inline = re.findall("<(?:style|script)>(.*?)</(?:style|script)>", html, re.S)
        hashes = ["sha256-" + base64.b64encode(hashlib.sha256(text.encode()).digest()).decode() for text in inline]
        if errors or "hunter2" in html or len(inline) < 3 or sorted(hashes) != sorted(re.findall("sha256-[^']*", policy)):
            failures.append(f"{name}: {errors} {policy} {hashes}")


BASE = {
    "seed": 3, "speed": 2.5,
    "cameras": [{"name": "a", "mac": "00:40:8c:00:00:01", "ip": "10.0.0.1", "dhcpMode": 0, "icb": True, "plugins": ["x"],
                 "vendorTypeMask": "0x40", "deviceFlags": 5, "text": "t", "present": True, "ni2": ["10.0.0.2"]}],
    "generate": {"count": 2, "withinMs": 5, "pictures": True, "changedPercent": 3, "gonePercent": 100},
    "events": [{"atMs": 1, "camera": "a", "event": "values", "values": [1, 2]},
               {"atMs": 2, "camera": "a", "event": "changed", "set": {"ip": "", "ctt": 255, "firmware": "5"}}],
    "functionFaults": [{"function": "TarnLiveStream_Open", "call": 9, "error": {"class": 1, "description": "d"}},
                       {"function": "TarnLiveStream_Start", "call": "every", "delayMs": 4}],
    "blockFaults": [{"block": 1, "cutAt": 3}, {"block": "every", "alterAt": 1, "alterMask": 7, "delayMs": 1}],
}
VALUES = [None, True, 0, 1, -1, 1.0, 1.5, 255, 256, 1e300, 2**32, 2**64 - 1, 2**64, "", "every", "instant", "0x40",
          "0x1FFFFFFFF", "10.0.0.300", "010.0.0.1", "00:40:8C:00:00:0G", "gone", "found", [], [1], ["x"], {}, {"call": 1}]
KEYS = ["colour", "values", "set", "delayMs", "alterMask", "error", "text"]


def mutate(place, chance):
    """Changes, removes or adds one member, somewhere."""
    key = chance.choice(list(place) if isinstance(place, dict) else range(len(place)))
    if isinstance(place[key], (dict, list)) and place[key] and chance.random() < 0.8:
        mutate(place[key], chance)
    elif isinstance(place, dict) and chance.random() < 0.3:
        place.pop(key) if chance.random() < 0.6 else place.update({chance.choice(KEYS): chance.choice(VALUES)})
    else:
        place[key] = chance.choice(VALUES)


def check_scenarios():
    """Files that are nearly right. Only the reader knows whether there is a camera of a name."""
    schema, chance, accepted = validator("scenario.schema.json"), random.Random(20140618), 0
    count = 250 if len(program.split()) == 1 else 50  # an emulator takes a second for each
    for number in range(count):
        scenario = copy.deepcopy(BASE)
        if number:
            mutate(scenario, chance)
        result = run(["scenario", "check", "SCENARIO"], scenario)
        text, accepted = result.stderr.decode(), accepted + (result.returncode == 0)
        agree = "there is no camera of the name" in text or schema.is_valid(scenario) == (result.returncode == 0)
        if not agree or result.returncode not in (0, 2) or text.count("\n") > 1:
            failures.append(f"{json.dumps(scenario)}: {result.returncode} {text or 'accepted'}")
    if not 0.08 < accepted / count < 0.92:
        failures.append(f"{accepted} of {count} scenarios were accepted: that tests little")


check_output()
check_page()
check_report()
check_scenarios()
print("\n".join(failures))
sys.exit(len(failures) > 0)
