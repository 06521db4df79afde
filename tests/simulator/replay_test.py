#!/usr/bin/env python3
"""Plays recorded conversations in the simulator and compares what comes of them with what they hold.

Use: replay_test.py "TARNFIND COMMAND" CAPTURES
"""
import os
import shlex
import subprocess
import sys
import tempfile

#  Of each capture: how many cameras it leaves behind, and a command with what is told of its answer.
CAPTURES = {"search.pcapng": (8, ["info", "192.168.10.22"], "NX-40"), "faults.pcapng": (2, ["list"], "The finder is busy")}


def main():
    tarnfind, captures = shlex.split(sys.argv[1]), sys.argv[2]
    wrong = []
    with tempfile.TemporaryDirectory() as folder:
        for name, (cameras, command, told) in CAPTURES.items():
            capture = os.path.join(captures, name)
            environment = os.environ | {"TARN_SIMULATOR_SCENARIO": capture, "TARN_SIMULATOR_SPEED": "0"}

            def run(*arguments):
                return subprocess.run(tarnfind + list(arguments), env=environment, capture_output=True)

            played = os.path.join(folder, name + ".jsonl")
            search = run("search", "--for", "1", "--json")
            with open(played, "wb") as file:
                file.write(search.stdout)
            #  Behind the summary stands what failed, such as a list that the server refused.
            summary = next((line for line in search.stdout.decode().splitlines() if '"summary"' in line), "no summary")
            if f'"cameras":{cameras},' not in summary:
                wrong.append(f"{name}: {cameras} cameras expected: {summary}")
            same = run("diff", capture, played)
            if same.returncode != 0:
                wrong.append(f"{name}: playing gives something else:\n{same.stdout.decode()}{same.stderr.decode()}")
            answer = run(*command)
            if told not in answer.stdout.decode() + answer.stderr.decode():
                wrong.append(f"{name}: '{told}' expected: {answer.stdout.decode()}{answer.stderr.decode()}")
    print("\n".join(wrong) or f"{len(CAPTURES)} captures play as they were recorded")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
