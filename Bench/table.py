"""Measures every pair of the comparison and prints the table.

The two sides of a pair run in turn, round by round, so that whatever else the machine does meets both alike. A
row shows each side's median, the ratio of the medians, and the smallest and largest ratio of a single round."""

import argparse
import os
import platform
import shutil
import statistics
import subprocess
import sys
import time

from devices import FILE_TYPES, SNAPSHOTS, STEPS, TEMPORARY, Maker, root

ROUNDS = 5
SECONDS_FOR_ALL = 560


class Bench:
    def __init__(self, build, scratch):
        self.programs = os.path.join(build, "bin")
        self.enter = os.path.join(build, "libexec", "ozenter")
        self.scratch = scratch
        self.output = os.path.join(scratch, "output")
        self.make = Maker(self.programs, scratch)
        self.deadline = time.monotonic() + SECONDS_FOR_ALL
        self.environment = dict(os.environ, LC_ALL="C.UTF-8", HOME=scratch)

    def program(self, name):
        return os.path.join(self.programs, name)

    def ozvarine(self, device, *switches):
        return [self.program("ozvarine"), "--device", device, *switches]

    def shell(self, script, *arguments):
        return ["sh", "-c", script, "sh", *arguments]

    def measure(self, command, count=1, **options):
        """Seconds of one run and the peak memory in KiB."""
        seconds, peak = self.measured(command, count, **options)[-1].split()
        return float(seconds) / count, int(peak)

    def measure_on_files(self, folder, folders, files, command, **options):
        """The same after the folder has been filled anew."""
        self.make.files(folder, folders, files)
        return self.measure(command, **options)

    def own_measure(self, command):
        """The same of a command that tells its seconds itself."""
        own, others = self.measured(command, 1)[-2:]
        return float(own), int(others.split()[1])

    def measured(self, command, count, **options):
        """The lines on standard error, the last of which is that of `measure`."""
        run = subprocess.run(
            [self.program("measure"), str(count), *command],
            stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, env=self.environment, check=False, **options)
        if run.returncode != 0:
            raise RuntimeError(" ".join(run.stderr.split()))
        return run.stderr.splitlines()

    def median(self, measure, count):
        """The middle one of several measurements."""
        return sorted(measure() for _ in range(count))[count // 2]

    def row(self, what, reach, ours, theirs, at_least=False):
        """Runs two sides in turn and prints their line. A side is a function that gives seconds and peak. For
        `at_least` the ratio is theirs to ours."""
        pairs = []
        for number in range(ROUNDS + 1):
            pair = (ours(), theirs())
            # The first round only warms the caches.
            if number > 0 or time.monotonic() > self.deadline:
                pairs.append(pair)
            if time.monotonic() > self.deadline:
                break
        self.print_row(what, reach, pairs, at_least)

    def print_row(self, what, reach, pairs, at_least):
        seconds = [[side[0] for side in pair] for pair in pairs]
        own, other = (statistics.median(side) for side in zip(*seconds))
        ratios = [theirs / ours if at_least else ours / theirs for ours, theirs in seconds]
        ratio = other / own if at_least else own / other
        peak = max(pair[0][1] for pair in pairs) / 1024
        met = ratio >= reach if at_least else ratio <= reach
        words = ("at least" if at_least else "at most", "yes" if met else "no")
        print(
            f"| {what} | {span(own)} | {span(other)} | {ratio:.2f} | {min(ratios):.2f} to {max(ratios):.2f} | "
            f"{peak:.0f} MiB | {words[0]} {reach:g} | {words[1]} |", flush=True)


def span(seconds):
    return f"{seconds * 1000:.1f} ms" if seconds < 0.1 else f"{seconds:.2f} s"


def cache_folder(bench):
    device = bench.make.device("cache", steps=["CACHEFILES"])
    folder = root(device, SNAPSHOTS)
    caches = os.path.dirname(folder)
    bench.make.files(folder, 400, 500)
    bench.row(
        "analysis, 200,000 files in 400 folders; `find -printf`", 1.0,
        lambda: bench.measure(bench.ozvarine(device, "--dry-run", "-clean")),
        lambda: bench.measure(bench.shell("find ./Snapshots -mindepth 1 -printf '%s %p\\n\\n' > \"$1\"", bench.output),
                              cwd=caches))

    bench.row(
        "cleanup, the same folder; `find -print`, then `rm -rf`", 0.9,
        lambda: bench.measure_on_files(folder, 400, 500, bench.ozvarine(device, "-clean")),
        lambda: bench.measure_on_files(
            folder, 400, 500, bench.shell("find ./Snapshots -print > \"$1\"; rm -rf ./Snapshots", bench.output),
            cwd=caches))
    shutil.rmtree(device)


def large_folder(bench):
    device = bench.make.device("large", steps=["CACHEFILES"])
    folder = root(device, SNAPSHOTS)
    bench.row(
        "cleanup of one folder of 1,000,000 files; `rm -rf` without a log", 1.25,
        lambda: bench.measure_on_files(folder, 1, 1000000, bench.ozvarine(device, "-clean")),
        lambda: bench.measure_on_files(folder, 1, 1000000, ["rm", "-rf", folder]))
    shutil.rmtree(device)


def prune_pattern(device):
    """The pattern of the step with every other step off, as the step itself makes it."""
    containers = ["/var/mobile/Containers/Bundle/Application", "/var/mobile/Containers/Data/Application",
                  "/var/mobile/Containers/Shared/AppGroup"]
    bundles = "/var/containers/Bundle/Application"
    if os.path.isdir(root(device, "private" + bundles)):
        containers[0] = bundles
    return f"^(/private)?({'|'.join(containers)})$|^(/private)?/var/([Ll]ogs?|tmp)$|^.*/Library/Logs$"


def million(bench):
    device = bench.make.device("million", junk=1000000, steps=["FILETYPECLEANUP"])
    search = ["/", "-regextype", "posix-extended", "-regex", prune_pattern(device), "-prune", "-o",
              "-regex", f"^.*\\.({'|'.join(FILE_TYPES)})$", "-type", "f", "-print"]
    # The search alone, in the tree as its world: the helper gets the root and the current directory as 3 and 4.
    alone = bench.shell("out=$1 root=$2; shift 2; exec \"$@\" 3<\"$root\" 4<\"$root\" > \"$out\"", bench.output,
                        root(device), bench.enter, "enter", shutil.which("find"), "find", *search)
    bench.row(
        "file types, analysis, 1,000,000 files; the same `find`", 1.1,
        lambda: bench.measure(bench.ozvarine(device, "--dry-run", "-clean")),
        lambda: bench.measure(alone))
    bench.make.choose(device, STEPS)
    bench.row(
        "all steps, analysis, 1,000,000 files; `du -s`", 1.5,
        lambda: bench.measure(bench.ozvarine(device, "--dry-run", "-clean")),
        lambda: bench.measure(["du", "-s", root(device)]))
    shutil.rmtree(device)


def test_mode(bench):
    device = bench.make.device("test")
    folder = root(device, TEMPORARY)
    bench.make.files(folder, 200, 500)
    script = os.path.join(os.path.dirname(os.path.abspath(__file__)), "rename.py")
    bench.row(
        "test mode and restore, 100,000 files; renames both ways", 1.0,
        lambda: bench.measure([bench.program("rows"), "test-and-restore", device]),
        lambda: bench.measure([sys.executable, script, folder]))
    shutil.rmtree(device)


def attachments(bench):
    devices = []
    for name, rows in (("messages", 100000), ("twice", 200000)):
        devices.append(bench.make.device(name, steps=["ATTACHMENTS"]))
        bench.make.messages(devices[-1], rows)
    single, double = devices
    bench.row(
        "smart attachments, 200,000 rows and 400,000 files; half of both", 2.2,
        lambda: bench.measure(bench.ozvarine(double, "--dry-run", "-clean")),
        lambda: bench.measure(bench.ozvarine(single, "--dry-run", "-clean")))
    for device in devices:
        shutil.rmtree(device)


def small_processes(bench):
    device = bench.make.device("demo", junk=1500, steps=["CACHEFILES"])
    # The switch ends with the status of its record; a build without it would say so.
    bench.row(
        "`-printsettings`, whole process; `dpkg-query -W dpkg`", 1.5,
        lambda: bench.measure(bench.ozvarine(device, "-printsettings"), count=20),
        lambda: bench.measure(["dpkg-query", "-W", "dpkg"], count=20))


def graph(bench):
    device = bench.make.device("packages")
    bench.make.packages(device, 3000)
    fields = ("Package", "Status", "Name", "Icon", "Pre-depends", "Depends")
    query = "".join(f"{field}=${{{field}}}\\n" for field in fields) + "<delimiter>\\n"
    database = root(device, "private/var/lib/dpkg")
    bench.row(
        "package graph, 3,000 packages, 60,000 links; bare `dpkg-query`", 1.25,
        lambda: bench.median(lambda: bench.own_measure([bench.program("rows"), "graph", device]), 25),
        lambda: bench.median(lambda: bench.measure(["dpkg-query", f"--admindir={database}", "-W", f"-f={query}"]), 25))


RULES = """<?xml version="1.0" encoding="UTF-8"?>
<cleaner id="snapshots">
  <label>Snapshots</label>
  <option id="all">
    <label>All</label>
    <description>Everything in the folder</description>
    <action command="delete" search="walk.all" path="{folder}"/>
  </option>
</cleaner>
"""


def cleaner(bench):
    device = bench.make.device("cleaner", steps=["CACHEFILES"])
    folder = root(device, SNAPSHOTS)
    rules = os.path.join(bench.scratch, ".config", "bleachbit", "cleaners")
    os.makedirs(rules)
    with open(os.path.join(rules, "snapshots.xml"), "w", encoding="ascii") as file:
        file.write(RULES.format(folder=folder))

    def both(look, clean):
        bench.make.files(folder, 40, 500)
        first, second = bench.measure(look), bench.measure(clean)
        return first[0] + second[0], max(first[1], second[1])

    bench.row(
        "analysis and cleanup, 20,000 files in 40 folders; `bleachbit`", 5,
        lambda: both(bench.ozvarine(device, "--dry-run", "-clean"), bench.ozvarine(device, "-clean")),
        lambda: both(["bleachbit", "--preview", "snapshots.all"], ["bleachbit", "--clean", "snapshots.all"]),
        at_least=True)


SECTIONS = {"cache": cache_folder, "large": large_folder, "million": million, "test": test_mode,
            "attachments": attachments, "start": small_processes, "graph": graph, "cleaner": cleaner}


def describe_machine():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        model = next((line.split(":")[1].strip() for line in file if line.startswith("model name")), "unknown")
    with open("/proc/meminfo", encoding="utf-8") as file:
        memory = int(file.readline().split()[1]) / 1024 / 1024
    print(f"{time.strftime('%Y-%m-%d %H:%M')}, {os.cpu_count()} x {model}, {memory:.0f} GiB, "
          f"Linux {platform.release()}, load {os.getloadavg()[0]:.1f} at the start\n")


def main():
    parser = argparse.ArgumentParser(prog="bench", description="Measures Ozvarine against the usual tools.")
    parser.add_argument("build")
    parser.add_argument("scratch")
    parser.add_argument("sections", nargs="*", metavar="section", help=f"one of {', '.join(SECTIONS)}; all without")
    arguments = parser.parse_args()
    if unknown := [name for name in arguments.sections if name not in SECTIONS]:
        parser.error(f"there is no section {unknown[0]}; there are {', '.join(SECTIONS)}")
    bench = Bench(arguments.build, arguments.scratch)
    describe_machine()
    print("| what; against | ours | theirs | ratio | spread | peak memory | to reach | met |")
    print("|---|---|---|---|---|---|---|---|")
    for name in arguments.sections or SECTIONS:
        try:
            SECTIONS[name](bench)
        except RuntimeError as error:
            print(f"| {name} | not measured: {error} | | | | | | |", flush=True)


main()
