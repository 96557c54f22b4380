"""The stages of ./test, one after the other, and what came of them.

usage: test.py [--list | STAGE...]
The stage "usual" is all that run when none is named.
"""
import concurrent.futures
import glob
import os
import re
import signal
import subprocess
import sys
import time
from dataclasses import dataclass, field

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
IN_WINE = os.path.join(ROOT, "scripts", "in_wine.sh")
SECOND_PLATFORM = os.path.join(ROOT, "scripts", "second_platform.sh")
# A test program that takes longer hangs; the slowest take a minute or two.
PROGRAM_SECONDS = 600
# The exit code of a script that says why it cannot do here what it is for.
NOT_POSSIBLE = 77
# A zone with daylight saving, in the form that needs no zone files.
CENTRAL_EUROPE = "CET-1CEST,M3.5.0,M10.5.0/3"


@dataclass
class Outcome:
    """What came of one stage, or of all."""
    passed: int = 0
    failed: int = 0
    failures: list = field(default_factory=list)
    text: list = field(default_factory=list)
    seconds: float = 0
    skipped: bool = False

    def say(self, text):
        self.text.append(text)

    def add(self, passed, failed, what=None):
        self.passed += passed
        self.failed += failed
        if failed:
            self.failures.append(what)


def run(command, seconds, **options):
    """Runs a command with its output in one text; the exit code (None: it took too long) and the text."""
    process = subprocess.Popen(command, cwd=ROOT, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT, start_new_session=True, **options)
    try:
        output, _ = process.communicate(timeout=seconds)
        code = process.returncode
    except subprocess.TimeoutExpired:
        # All that it started goes with it; first asked, so that in_wine.sh cleans up.
        os.killpg(process.pid, signal.SIGTERM)
        try:
            output, _ = process.communicate(timeout=20)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            output, _ = process.communicate()
        code = None
    return code, output.decode("utf-8", "replace").replace("\r", "")


def failed_parts(output):
    """Of a test program's output, what belongs to tests that failed, or the end when it broke off."""
    parts, current = [], []
    for line in output.splitlines():
        if line.startswith("[ RUN"):
            current = []
        current.append(line)
        if re.match(r"\[  FAILED  \] .*\(\d+ ms\)$", line):
            parts += current
            current = []
        elif line.startswith("[       OK ]"):
            current = []
    if not parts or "[==========]" not in "\n".join(output.splitlines()[-30:]):
        parts += current[-40:]
    return "\n".join(parts)


def count_tests(name, code, output, outcome):
    """Counts the cases of a test program that reports as GoogleTest does."""
    passed = len(re.findall(r"^\[       OK \]", output, re.M))
    failed = len(re.findall(r"^\[  FAILED  \] .*\(\d+ ms\)$", output, re.M))
    skipped = len(re.findall(r"^\[  SKIPPED \] .*\(\d+ ms\)$", output, re.M))
    if code != 0 and failed == 0:
        failed = 1
    reason = "took too long" if code is None else f"exit code {code}"
    outcome.say(f"  {name}: {passed} passed"
          + (f", {skipped} skipped" if skipped else "") + (f", {failed} FAILED ({reason})" if failed else ""))
    if failed:
        outcome.say(failed_parts(output))
    outcome.add(passed, failed, name)


def check(name, command, outcome, seconds=600):
    """A check that is one test: passed when the command says so."""
    code, output = run(command, seconds)
    if code != 0:
        outcome.say(output.rstrip())
        outcome.say(f"  {name}: FAILED")
    outcome.add(code == 0, code != 0, name)


def check_sources(outcome):
    files = [path for folder in ("src", "tests", "benchmarks", "fuzz") for end in ("h", "cpp")
             for path in glob.glob(os.path.join(ROOT, folder, "**", "*." + end), recursive=True)]
    check("layering", [sys.executable, "scripts/check_layering.py"], outcome)
    check("guide", [sys.executable, "scripts/check_guide.py"], outcome)
    check("formatting", ["clang-format", "--dry-run", "--Werror", *sorted(files)], outcome)


def build(preset):
    def stage(outcome):
        check(f"build of {preset}", ["scripts/build.sh", preset], outcome, seconds=1200)
    return stage


def without_random_addresses():
    """The sanitizers of this compiler do not get on with the wide address randomization of newer kernels."""
    command = ["setarch", "-R"]
    return command if run([*command, "true"], 10)[0] == 0 else []


def test_native(preset, environment):
    def stage(outcome):
        prefix = without_random_addresses()
        for program in sorted(glob.glob(os.path.join(ROOT, "build", preset, "bin", "*_test"))):
            code, output = run([*prefix, program], PROGRAM_SECONDS, env={**os.environ, **environment})
            count_tests(f"{os.path.basename(program)} ({preset})", code, output, outcome)
    return stage


def test_in_wine(outcome, platform=(), wine="Wine"):
    # One prefix, server and display for all programs: making them costs more than most programs take.
    programs = sorted(glob.glob(os.path.join(ROOT, "build", "windows-x64-checked", "bin", "*_test.exe")))
    if not programs:
        return
    code, output = run([*platform, IN_WINE, "python3", os.path.abspath(__file__), "--in-wine", *programs],
                       PROGRAM_SECONDS * 3, env={**os.environ, "WINE_TZ": CENTRAL_EUROPE})
    parts = re.split(r"^@@@ (\S+) (\S+)\n", output, flags=re.M)
    for program, result, text in zip(parts[1::3], parts[2::3], parts[3::3]):
        count_tests(f"{program} ({wine})", None if result == "None" else int(result), text, outcome)
    if code != 0 or len(parts) // 3 != len(programs):
        outcome.say(parts[0] + f"  the programs under {wine} broke off with exit code {code}")
        outcome.add(0, 1, f"programs under {wine}")


def in_wine(programs):
    for program in programs:
        command = ["wine", program]
        if os.path.basename(program) == "update_test.exe":
            command.insert(0, "tests/update/run_with_server.sh")
        code, output = run(command, PROGRAM_SECONDS)
        print(f"@@@ {os.path.basename(program)} {code}\n{output}", flush=True)


def test_whole_run(*names, seconds=900, platform=(), wine="Wine", **numbers):
    def stage(outcome):
        code, output = run([*platform, IN_WINE, "python3", "tests/whole_run/whole_run_test.py", *names], seconds,
                           env={**os.environ, "WINE_TZ": CENTRAL_EUROPE, **numbers})
        count_tests(f"whole_run_test ({wine})", code, output, outcome)
    return stage


def test_second_platform(outcome):
    code, output = run([SECOND_PLATFORM, "true"], 3600)
    if code == NOT_POSSIBLE:
        outcome.say("  " + output.strip().splitlines()[-1])
        outcome.skipped = True
        return
    if code != 0:
        outcome.say(output.rstrip())
        outcome.add(0, 1, "second platform")
        return
    # Faulty file systems and power cuts are left out: they take compilers there, and the kernel is the same.
    onlooker = os.path.join(ROOT, "build", "windows-x64-checked", "bin", "onlooker.exe")
    second = {"platform": [SECOND_PLATFORM], "wine": "Wine 10"}
    test_in_wine(outcome, **second)
    test_whole_run("CopyCases", "UnattendedCases", "DisturbanceCases", "NightCases", "ScaleCases", **second,
                   WINE_SCREEN="3000x2000", VARDEKO_ONLOOKER=onlooker)(outcome)


def test_package(outcome):
    check("making the package", ["scripts/package.sh"], outcome, seconds=1200)
    code, output = run([IN_WINE, sys.executable, "tests/package/package_test.py"], PROGRAM_SECONDS)
    count_tests("package_test (Wine)", code, output, outcome)


def test_setup(outcome):
    check("making setup and release", ["tests/setup/prepare.sh"], outcome, seconds=1200)
    with open(os.path.join(ROOT, "build", "windows-x64", "CMakeCache.txt"), encoding="utf-8") as cache:
        server = re.search(r"^VARDEKO_UPDATE_SERVER:STRING=(.*)$", cache.read(), re.M)[1]
    # Some machines allow no network of one's own; what needs it is skipped there.
    network = ["tests/setup/own_network.sh", server]
    if run([*network, "true"], 10)[0] != 0:
        network = []
    code, output = run([*network, IN_WINE, sys.executable, "tests/setup/setup_test.py"], 2 * PROGRAM_SECONDS)
    count_tests("setup_test (Wine)", code, output, outcome)


def fuzz(*limit):
    def stage(outcome):
        code, output = run([sys.executable, "scripts/fuzz.py", *limit], 4 * 3600)
        count_tests("fuzz targets", code, output, outcome)
        for target, executions in re.findall(r"^\[ RUN +\] (.*)\n(.*executions.*)", output, re.M):
            outcome.say(f"    {target}: {executions}")
    return stage


def lint(outcome):
    check("clang-tidy", ["scripts/lint.sh"], outcome, seconds=1800)


STAGES = {
    "sources": check_sources,
    "build-windows-x64": build("windows-x64"),
    "whole-run": test_whole_run(),
    "package": test_package,
    "setup": test_setup,
    "build-windows-x64-checked": build("windows-x64-checked"),
    "wine": test_in_wine,
    "build-native": build("native"),
    "native": test_native("native", {"ASAN_OPTIONS": "detect_stack_use_after_return=1"}),
    "build-native-thread": build("native-thread"),
    "native-thread": test_native("native-thread", {"TSAN_OPTIONS": "halt_on_error=1"}),
    "build-native-fuzz": build("native-fuzz"),
    "fuzz": fuzz(),
    "lint": lint,
}
# Run only when named: .ci/run names the first, and docs/reliability.md cites what came of the others.
NAMED_STAGES = {
    "second-platform": test_second_platform,
    "long-kills": test_whole_run("kill", seconds=1800, VARDEKO_KILLS="50"),
    "long-nights": test_whole_run("night", seconds=1800, VARDEKO_NIGHTS="50"),
    "long-power-cuts": test_whole_run("power_cut", "goes_away", seconds=5400, VARDEKO_LONG="1"),
    "long-release": lambda outcome: check("a release, twice", ["tests/setup/release_twice.sh"], outcome, seconds=3600),
    "long-fuzz": fuzz("--runs", "10000000"),
}
# These use one core at most, so the others go on meanwhile; they are reported when they are done.
ON_ONE_CORE = ("whole-run", "setup", "wine")


def run_stage(name):
    outcome = Outcome()
    began = time.monotonic()
    (STAGES | NAMED_STAGES)[name](outcome)
    outcome.seconds = time.monotonic() - began
    return outcome


def report(name, outcome, total):
    print(f"-- {name}: {outcome.seconds:.0f} s")
    for text in outcome.text:
        print(text)
    sys.stdout.flush()
    total.passed += outcome.passed
    total.failed += outcome.failed
    total.failures += outcome.failures
    total.skipped = total.skipped or outcome.skipped


def main(names):
    names = [stage for name in names for stage in (STAGES if name == "usual" else [name])]
    unknown = [name for name in names if name not in STAGES | NAMED_STAGES]
    if unknown:
        print(f"There is no stage {' '.join(unknown)}; the stages are {' '.join(STAGES | NAMED_STAGES)}.")
        return 64
    start = time.monotonic()
    total = Outcome()
    beside = {}
    with concurrent.futures.ThreadPoolExecutor(1) as pool:
        for name in names or STAGES:
            if name in ON_ONE_CORE:
                beside[name] = pool.submit(run_stage, name)
                continue
            report(name, run_stage(name), total)
            for done in [other for other in beside if beside[other].done()]:
                report(done, beside.pop(done).result(), total)
        for name, stage in beside.items():
            report(name, stage.result(), total)
    print(f"\nAll of it took {time.monotonic() - start:.0f} s.")
    if total.failures:
        print("Failed: " + ", ".join(total.failures))
    if total.passed + total.failed == 0 and not total.skipped:
        total.add(0, 1, "nothing was tested")
    print(f"{total.passed} passed, {total.failed} failed")
    return 1 if total.failed else 0


if __name__ == "__main__":
    if sys.argv[1:2] == ["--in-wine"]:
        in_wine(sys.argv[2:])
        sys.exit(0)
    if sys.argv[1:2] == ["--list"]:
        print("\n".join(STAGES | NAMED_STAGES))
        sys.exit(0)
    sys.exit(main(sys.argv[1:]))
