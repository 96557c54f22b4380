"""The fuzz targets: what their corpora hold, then new inputs.

usage: fuzz.py [--seconds N | --runs N] [TARGET...]
Each target gets --seconds of new inputs (the default is 9), or at least --runs of them. Reports one line a
target in the form of the test programs; an input that breaks one is left in build/fuzz.
"""
import argparse
import concurrent.futures
import glob
import os
import re
import shutil
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
PROGRAMS = os.path.join(ROOT, "build", "native-fuzz", "bin")
WORK = os.path.join(ROOT, "build", "fuzz")


def without_random_addresses():
    """The sanitizers do not get on with the wide address randomization of newer kernels."""
    probe = subprocess.run(["setarch", "-R", "true"], capture_output=True, check=False)
    return ["setarch", "-R"] if probe.returncode == 0 else []


def fuzz(target, limit):
    """Runs one target; whether nothing was found, and a line or the whole report."""
    found = os.path.join(WORK, target)
    shutil.rmtree(found, ignore_errors=True)
    os.makedirs(found)
    began = time.monotonic()
    done = subprocess.run([*without_random_addresses(), os.path.join(PROGRAMS, f"{target}_fuzz"), limit,
                           "-timeout=20", "-print_final_stats=1", f"-artifact_prefix={found}/broken-", found,
                           os.path.join(ROOT, "fuzz", "corpus", target)],
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    output = done.stdout.decode("utf-8", "replace")
    executions = re.search(r"stat::number_of_executed_units: +(\d+)", output)
    if done.returncode != 0 or not executions:
        return False, "\n".join(output.splitlines()[-60:])
    return True, f"{int(executions[1]):,} executions in {time.monotonic() - began:.0f} s, nothing found"


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    limit = parser.add_mutually_exclusive_group()
    limit.add_argument("--seconds", type=int, default=9)
    limit.add_argument("--runs", type=int)
    parser.add_argument("targets", nargs="*")
    options = parser.parse_args()
    known = sorted(os.path.basename(path)[:-len("_fuzz")] for path in glob.glob(os.path.join(PROGRAMS, "*_fuzz")))
    if not known or not set(options.targets) <= set(known):
        print(f"usage: {__doc__}\nThe targets are: {' '.join(known) or 'not built yet'}")
        return 64
    argument = f"-runs={options.runs}" if options.runs else f"-max_total_time={options.seconds}"
    failed = False
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        runs = {target: pool.submit(fuzz, target, argument) for target in options.targets or known}
        for target, run in runs.items():
            whole, text = run.result()
            failed |= not whole
            print(f"[ RUN      ] {target}\n{text}\n[{'       OK' if whole else '  FAILED '} ] {target} (0 ms)", flush=True)
    return failed


if __name__ == "__main__":
    sys.exit(main())
