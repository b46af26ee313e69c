"""Runs the tests of the plug-in on its ELF twin, and fails for each piece of its code that they never run, and for each
condition that is never true or never false, unless a row of tests/completeness/untaken.txt says why. Clang counts by the
source: what the compiler adds to clean up after an exception is no branch."""

import argparse
import collections
import concurrent.futures
import json
import os
import shutil
import sys
import time

import plugin

TABLE = "tests/completeness/untaken.txt"
FLAGS = ["-O0", "-fprofile-instr-generate", "-fcoverage-mapping"]
SECONDS = 1200
CODE = 0  # of the kinds of regions


def output_of(command):
    result = plugin.run(command)
    if result.returncode:
        raise plugin.Failure(f"{command[0]} failed:\n{result.stdout}")
    return result.stdout


def compile_all(build, work):
    objects = {name: os.path.join(work, "objects", name + ".o") for name in build.sources}

    def compile_one(name):
        compiled, said = build.compile(name, build.root, objects[name], FLAGS)
        if not compiled:
            raise plugin.Failure(f"{name} doesn't compile:\n{said}")

    with concurrent.futures.ThreadPoolExecutor(plugin.processors()) as pool:
        list(pool.map(compile_one, build.sources))
    return objects


def link_programs(build, work):
    """The programs with counters."""
    programs = plugin.Programs(build, work)
    objects = compile_all(build, work)
    runtime = output_of([build.compiler, "-print-resource-dir"]).strip() + "/lib/linux/libclang_rt.profile-i386.a"
    flags = ["-u__llvm_profile_runtime", runtime]
    if not programs.link_library(objects, flags) or not programs.link_objects_tests(objects, flags):
        raise plugin.Failure(f"the plug-in can't be linked with {runtime}")
    return programs


def run_suites(programs, suites, folder):
    """The file with what these suites counted; None where they left out all their tests."""
    os.makedirs(folder)
    # Programs that are run again add to what is there; the counts of each binary have a file of their own.
    os.environ["LLVM_PROFILE_FILE"] = os.path.join(folder, "%m.profraw")
    for suite in suites:
        before = time.monotonic()
        if not programs.passes(suite, SECONDS):
            raise plugin.Failure(f"{suite.name} fails as it is; {programs.output} has what it printed")
        suite.seconds = time.monotonic() - before
    del os.environ["LLVM_PROFILE_FILE"]
    merged = os.path.join(folder, "counts.profdata")
    raw = [os.path.join(folder, name) for name in os.listdir(folder) if name.endswith(".profraw")]
    if not raw:
        return None
    output_of(["llvm-profdata-14", "merge", "-o", merged, *raw])
    return merged


def export(programs, counts, *options):
    """What llvm-cov says of the counts."""
    command = ["llvm-cov-14", "export", programs.library, "-object", programs.objects_tests, f"-instr-profile={counts}"]
    return json.loads(output_of([*command, *options]))["data"][0]


class Sources:
    def __init__(self, root):
        self.root = root
        self.lines = {}

    def relative(self, path):
        name = os.path.relpath(os.path.realpath(path), self.root)
        return name if name.split(os.sep)[0] in plugin.FOLDERS else None

    def text(self, name, first, column, last, end):
        """From one place to another, on one line."""
        if name not in self.lines:
            with open(os.path.join(self.root, name), encoding="utf-8") as file:
                self.lines[name] = file.read().split("\n")
        lines = self.lines[name][first - 1 : last]
        lines[-1] = lines[-1][: end - 1]
        lines[0] = lines[0][column - 1 :]
        return " ".join(" ".join(lines).split())

    def line(self, name, number):
        return self.text(name, number, 1, number, 1 << 16)


def count(functions, root):
    """How often each piece of code was run, and each condition was true and false, whichever instance of a template or
    copy of an inline function it was. The keys are files and places."""
    sources = Sources(root)
    code = collections.Counter()
    branches = collections.defaultdict(lambda: [0, 0])
    for function in functions:
        names = [sources.relative(path) for path in function["filenames"]]
        for *place, times, file, _, kind in function["regions"]:
            if names[file] and kind == CODE:
                code[(names[file], *place)] += times
        for *place, true, false, file, _, _ in function.get("branches", ()):
            if names[file]:
                branches[(names[file], *place)][0] += true
                branches[(names[file], *place)][1] += false
    return sources, code, branches


def untaken(sources, code, branches):
    """A row for everything that never happened, with where it is."""
    rows = {}

    def add(place, what):
        name = f"{place[0]} | {sources.line(place[0], place[1])} | {what}"
        row, number = name, 1
        while row in rows:
            number += 1
            row = f"{name} #{number}"
        rows[row] = f"{place[0]}:{place[1]}"

    for place, times in sorted(code.items()):
        if not times:
            add(place, f"{sources.text(*place)[:60]} never runs")
    for place, (true, false) in sorted(branches.items()):
        for word, times in (("true", true), ("false", false)):
            if not times and true + false:
                add(place, f"{sources.text(*place)} is never {word}")
    return rows


def print_share(name, taken, total):
    print(f"{name}: {taken} of {total} ({100 * taken / total:.2f} %)")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("root", help="of the project")
    parser.add_argument("build", help="folder of the default build; its test programs must be up to date")
    parser.add_argument("work", help="folder of what is compiled, and of the report")
    arguments = parser.parse_args()
    build = plugin.Build(os.path.realpath(arguments.root), os.path.realpath(arguments.build))
    table = plugin.read_reasons(os.path.join(build.root, TABLE), lambda row: row.count(" | ") >= 2)
    work = os.path.realpath(arguments.work)
    shutil.rmtree(work, ignore_errors=True)
    os.makedirs(work)
    programs = link_programs(build, work)
    counts = run_suites(programs, plugin.find_suites(build), os.path.join(work, "counts"))
    folders = [os.path.join(build.root, folder) for folder in plugin.FOLDERS]
    html = os.path.join(work, "html")
    output_of(["llvm-cov-14", "show", "-format=html", "-show-branches=count", f"-output-dir={html}",
               programs.library, "-object", programs.objects_tests, f"-instr-profile={counts}", *folders])
    sources, code, branches = count(export(programs, counts)["functions"], build.root)
    rows = untaken(sources, code, branches)

    summary = export(programs, counts, "-summary-only", *folders)["totals"]["lines"]
    print_share("lines", summary["covered"], summary["count"])
    print_share("pieces of code", sum(times > 0 for times in code.values()), len(code))
    print_share("branches", sum((true > 0) + (false > 0) for true, false in branches.values()), 2 * len(branches))
    print(f"{html}/index.html shows them")
    bad = sorted(set(rows) - set(table))
    for row in bad:
        print(f"{rows[row]}: no test takes it: {row}")
    gone = sorted(set(table) - set(rows))
    for row in gone:
        print(f"{TABLE}: is taken, or is not there any more: {row}")
    return 1 if bad or gone else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except plugin.Failure as failure:
        print(f"coverage: {failure}", file=sys.stderr)
        sys.exit(2)
