#!/usr/bin/python3
"""Runs trials: the built program on a real display, as its user would use it.

    run.py [--build FOLDER] [--jobs N] [NAME...]   names of trials or of their files; all without
    run.py --windows [NAME...]                     those that can be tried under Wine
    run.py random [STEPS] [SEED]                   real actions at random, over all windows
    run.py --list
"""

import argparse
import concurrent.futures
import importlib
import inspect
import os
import subprocess
import sys
import time
import traceback

HERE = os.path.dirname(os.path.abspath(__file__))
TOP = os.path.dirname(HERE)
SECONDS = 120  # at most, for a trial


def trials():
    """All trials by their names: the functions of the files *_trials.py that begin with "try_"."""
    found = {}
    for file in sorted(os.listdir(HERE)):
        if not file.endswith("_trials.py"):
            continue
        module = importlib.import_module(file[:-3])
        for name, body in inspect.getmembers(module, inspect.isfunction):
            if name.startswith("try_") and body.__module__ == module.__name__:
                found[name[4:]] = body
    return found


def run_here(name, options):
    """Runs one trial in this process, which is its own."""
    from app import Kestrel
    if options.windows:
        from wine import KestrelOnWindows as Kestrel
    body = trials().get(name)
    if name.startswith("random "):
        steps, seed = map(int, name.split()[1:])
        from random_trial import run

        def body(kestrel):
            run(kestrel, steps, seed)
    needs = getattr(body, "needs", {})
    installed = options.installed if needs.get("installed") else None
    kestrel = Kestrel(options.build, TOP, installed, **needs.get("desk", {}))
    try:
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
    """Runs one trial in a process of its own; its name, what it said and whether it passed."""
    start = time.monotonic()
    command = [sys.executable, __file__, "--build", options.build, "--installed",
               options.installed, "--one", name, *(["--windows"] if options.windows else [])]
    try:
        ended = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               timeout=None if name.startswith("random ") else SECONDS, check=False)
        said, passed = ended.stdout.decode("utf-8", "replace"), ended.returncode == 0
    except subprocess.TimeoutExpired as error:
        said, passed = (error.stdout or b"").decode("utf-8", "replace") + "\ntook too long", False
    return name, said, passed, time.monotonic() - start


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", default=os.path.join(TOP, "build/release"))
    parser.add_argument("--installed", default="")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--windows", action="store_true")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--one")
    parser.add_argument("names", nargs="*")
    options = parser.parse_args()
    options.build = os.path.abspath(options.build)
    sys.path.insert(0, HERE)
    if options.one:
        return run_here(options.one, options)
    every = trials()
    if options.list:
        print("\n".join(every))
        return 0
    if options.names[:1] == ["random"]:
        given = options.names[1:]
        steps, seed = given + ["1000", "1"][len(given):]
        every, options.names = {f"random {steps} {seed}": main}, []
    on_windows = {name: getattr(body, "needs", {}).get("windows") for name, body in every.items()}
    every = {name: body for name, body in every.items()
             if (on_windows[name] if options.windows else on_windows[name] != "only")}
    names = [name for name, body in every.items()
             if not options.names or name in options.names
             or body.__module__.removesuffix("_trials") in options.names]
    if not names:
        print("no such trial", file=sys.stderr)
        return 2
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        jobs = [pool.submit(run_apart, name, options) for name in names]
        for job in concurrent.futures.as_completed(jobs):
            name, said, passed, seconds = job.result()
            print(f"{'passed' if passed else 'FAILED'}  {name}  {seconds:.1f} s", flush=True)
            failed += not passed
            if not passed or name.startswith("random "):
                print(said, flush=True)
    print(f"{len(names) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
