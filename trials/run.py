#!/usr/bin/python3
"""Runs trials: the built program on a real display, as its user would use it.

    run.py [--windows] [--build FOLDER] [NAME...]
                                  names of trials or of their files; all without, or those for Wine
    run.py random [STEPS] [SEED]  real actions at random, over all windows
"""

import argparse
import concurrent.futures
import importlib
import os
import subprocess
import sys
import time
import traceback

from app import Kestrel
from random_trial import trial_of
from wine import KestrelOnWindows

HERE = os.path.dirname(os.path.abspath(__file__))
TOP = os.path.dirname(HERE)
SECONDS = 120  # at most, for a trial


def trials():
    """All trials by their names: the functions of the files *_trials.py that begin with "try_"."""
    files = [file[:-3] for file in sorted(os.listdir(HERE)) if file.endswith("_trials.py")]
    return {name[4:]: body for file in files for name, body in
            vars(importlib.import_module(file)).items() if name.startswith("try_")}


def run_here(name, options):
    """Runs one trial in this process, which is its own."""
    body = trials().get(name) or trial_of(*map(int, name.split()[1:]))
    needs = getattr(body, "needs", {})
    installed = options.installed if needs.get("installed") else None
    program = KestrelOnWindows if options.windows else Kestrel
    kestrel = program(options.build, TOP, installed, **needs.get("desk", {}))
    try:
        if needs.get("opened", True):
            kestrel.open()
        body(kestrel)
        kestrel.finish()
    except BaseException:
        traceback.print_exc()
        kestrel.leave_traces(os.path.join(options.build, "trials", name.replace(" ", "-")))
        return 1
    finally:
        if kestrel.process:
            kestrel.process.kill()
        kestrel.desk.end()
    return 0


def run_apart(name, options):
    """Runs one trial in a process of its own and tells how it ended; whether it passed."""
    start = time.monotonic()
    at_random = name.startswith("random ")
    command = [sys.executable, __file__, "--build", options.build, "--installed",
               options.installed, "--one", name, *(["--windows"] if options.windows else [])]
    try:
        ended = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               timeout=None if at_random else SECONDS, check=False)
        said, passed = ended.stdout.decode("utf-8", "replace"), ended.returncode == 0
    except subprocess.TimeoutExpired as error:
        said, passed = (error.stdout or b"").decode("utf-8", "replace") + "\ntook too long", False
    print(f"{'passed' if passed else 'FAILED'}  {name}  {time.monotonic() - start:.1f} s"
          + ("" if passed and not at_random else "\n" + said), flush=True)
    return passed


def chosen(options):
    """The names of the trials that are asked for."""
    asked = {*options.names}
    if "random" in asked:
        return [" ".join([*options.names, *["1000", "1"][len(options.names) - 1:]])]
    there = {name: getattr(body, "needs", {}).get("windows") for name, body in trials().items()}
    return [name for name, body in trials().items()
            if (not asked or {name, body.__module__.removesuffix("_trials")} & asked)
            and (there[name] if options.windows else there[name] != "only")]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=os.path.abspath, default=os.path.join(TOP, "build/release"))
    parser.add_argument("--installed", default="")
    parser.add_argument("--windows", action="store_true")
    parser.add_argument("--one")
    parser.add_argument("names", nargs="*")
    options = parser.parse_args()
    if options.one:
        return run_here(options.one, options)
    names = chosen(options)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        passed = sum(pool.map(lambda name: run_apart(name, options), names))
    print(f"{passed} passed, {len(names) - passed} failed" if names else "no such trial")
    return 0 if names and passed == len(names) else 1


if __name__ == "__main__":
    sys.exit(main())
