"""Makes small mistakes in the plug-in's sources, one at a time, and lists those that no test notices."""

import argparse
import collections
import concurrent.futures
import filecmp
import os
import random
import re
import shutil
import sys
import threading
import time

import changes
import coverage
import plugin

TABLE = "tests/completeness/equivalent.txt"
# What share of all changes must be noticed, however many are explained.
LEAST = 0.98
# A change that makes tests take this many times as long, and this many seconds more, has made them hang.
PATIENCE = 10
GRACE = 3
# How many suites are run one by one first; and in how many seconds a suite is quick.
FIRST = 6
QUICK = 0.7
# From how many changes on it pays to find out first which suites run which code.
MANY = 100

NOTICED, SURVIVED, SAME_CODE, NOT_COMPILED = "noticed", "survived", "same code", "not compiled"


# What the sanitizers would say ends the process; of a date that is infinite the seconds are whatever the processor makes of
# them.
PLAIN = ["-O0", "-fsanitize=undefined", "-fsanitize-trap=undefined", "-fno-sanitize=function,vptr,float-cast-overflow"]
OPTIMISED = ["-O2"]


class Compiler:
    """Compiles sources of one folder."""

    def __init__(self, build, folder):
        self.build = build
        self.folder = folder
        self.sources = os.path.join(folder, "src")
        shutil.rmtree(folder, ignore_errors=True)
        plugin.copy_sources(build.root, self.sources)
        self.prefix = os.path.join(self.sources, "prefix.h")
        with open(self.prefix, "w", encoding="utf-8") as file:
            file.write(changes.PREFIX)

    def object_of(self, name, optimise=False):
        return os.path.join(self.folder, "optimised" if optimise else "objects", name + ".o")

    def compile(self, name, optimise=False):
        """Whether it worked, and what the compiler says. Equal code becomes equal objects, in whichever folder."""
        flags = [*(OPTIMISED if optimise else PLAIN), f"-ffile-prefix-map={self.sources}=.", "-include", self.prefix]
        return self.build.compile(name, self.sources, self.object_of(name, optimise), flags)


class Plain(Compiler):
    """The sources as they are."""

    def __init__(self, build, folder):
        super().__init__(build, folder)
        with concurrent.futures.ThreadPoolExecutor(plugin.processors()) as pool:
            list(pool.map(self.compile_or_fail, build.sources))
        self.objects = {name: self.object_of(name) for name in build.sources}
        self.included = {name: self.read_included(name) for name in build.sources}

    def compile_or_fail(self, name, optimise=False):
        compiled, said = self.compile(name, optimise)
        if not compiled:
            raise plugin.Failure(f"{name} doesn't compile as it is:\n{said}")

    def optimised(self, name):
        path = self.object_of(name, True)
        if not os.path.exists(path):
            self.compile_or_fail(name, True)
        return path

    def read_included(self, name):
        with open(self.objects[name] + ".d", encoding="utf-8") as file:
            words = re.findall(r"(?:\\.|\S)+", file.read().replace("\\\n", " "))  # "\ " is a blank in a name
        words = [re.sub(r"\\(.)", r"\1", word) for word in words]
        return {os.path.relpath(os.path.realpath(word), os.path.realpath(self.sources)) for word in words}

    def users_of(self, file):
        users = [name for name in self.build.sources if file in self.included[name]]
        if not users:  # no change of it would make any difference
            raise plugin.Failure(f"the compiler names no source that includes {file}")
        return users


class Worker:
    """A folder in which one change is made after the other."""

    def __init__(self, plain, folder):
        self.plain = plain
        self.compiler = Compiler(plain.build, folder)
        self.programs = plugin.Programs(plain.build, folder)

    def judge(self, change, rounds):
        """What becomes of a change, and the suite that noticed it. The suites of each round come in the order to be tried;
        after the first round it is asked whether the change makes a difference at all."""
        path = os.path.join(self.compiler.sources, change.file)
        with open(path, encoding="latin-1") as file:
            text = file.read()
        try:
            with open(path, "w", encoding="latin-1") as file:
                file.write(change.apply(text))
            return self.judge_written(self.plain.users_of(change.file), rounds)
        finally:
            with open(path, "w", encoding="latin-1") as file:
                file.write(text)

    def judge_written(self, users, rounds):
        if not all(self.compiler.compile(name)[0] for name in users):
            return NOT_COMPILED, None
        objects = {**self.plain.objects, **{name: self.compiler.object_of(name) for name in users}}
        if all(filecmp.cmp(objects[name], self.plain.objects[name], shallow=False) for name in users):
            return SAME_CODE, None
        if not self.programs.link_library(objects):
            return NOT_COMPILED, None
        linked = False
        for suites in rounds:
            for suite in suites:
                if suite.takes_objects and not linked:
                    linked = self.programs.link_objects_tests(objects)
                    if not linked:
                        return NOT_COMPILED, None
                if not self.programs.passes(suite, GRACE + PATIENCE * suite.seconds):
                    return NOTICED, f"{suite.program}.{self.programs.failed_suite()}"
            if suites is rounds[0] and all(self.is_same_optimised(name) for name in users):
                return SAME_CODE, None
        return SURVIVED, None

    def is_same_optimised(self, name):
        compiled, _ = self.compiler.compile(name, True)
        return compiled and filecmp.cmp(self.compiler.object_of(name, True), self.plain.optimised(name), shallow=False)


class Reach:
    """Which suites run which code: no other can notice a change there."""

    def __init__(self, build, work, suites):
        self.suites = suites
        self.reached_by = collections.defaultdict(set)
        self.pieces = collections.defaultdict(list)
        shutil.rmtree(work, ignore_errors=True)
        programs = coverage.link_programs(build, work)
        for number, suite in enumerate(suites):
            counts = coverage.run_suites(programs, [suite], os.path.join(work, "counts", str(number)))
            if not counts:
                continue
            _, code, _ = coverage.count(coverage.export(programs, counts)["functions"], build.root)
            for place, times in code.items():
                if times:
                    self.reached_by[place].add(suite.name)
                elif place not in self.reached_by:
                    self.reached_by[place] = set()
        for place in self.reached_by:
            self.pieces[place[0]].append(((place[1], place[2]), (place[3], place[4]), place))

    def suites_for(self, file, place):
        """Of a line and column. All, where there is no code but a table or a declaration, or what runs in the compiler."""
        around = [piece for piece in self.pieces[file] if piece[0] <= place < piece[1]]
        if not around:
            return self.suites
        start = max(piece[0] for piece in around)
        names = set().union(*(self.reached_by[piece[2]] for piece in around if piece[0] == start))
        return [suite for suite in self.suites if suite.name in names] or self.suites


class Judges:
    """All workers, and what they have learnt: which suites notice changes of which file."""

    def __init__(self, build, work, sources, count):
        self.sources = sources
        self.suites = plugin.find_suites(build)
        self.lock = threading.Lock()
        self.noticed_by = collections.defaultdict(collections.Counter)
        self.read_log(os.path.join(work, "log"))
        plain = Plain(build, os.path.join(work, "plain"))
        self.workers = [Worker(plain, os.path.join(work, f"worker-{number}")) for number in range(plugin.processors() + 1)]
        self.measure(self.workers[0].programs, plain)
        self.reach = Reach(build, os.path.join(work, "reach"), self.suites) if count >= MANY else None

    def learn(self, file, suite):
        for place in (file, os.path.dirname(file)):
            self.noticed_by[place][suite] += 1

    def read_log(self, path):
        """What an earlier run has learnt, which may have ended in the middle of a line."""
        if not os.path.exists(path):
            return
        with open(path, encoding="utf-8", errors="replace") as log:
            for line in log:
                words = line.rstrip("\n").split("\t")
                if words[0] == NOTICED and len(words) == 3:
                    self.learn(words[1].split(" | ")[0], words[2])

    def measure(self, programs, plain):
        if not programs.link_library(plain.objects) or not programs.link_objects_tests(plain.objects):
            raise plugin.Failure("the plug-in can't be linked as it is")
        for suite in self.suites:
            before = time.monotonic()
            if not programs.passes(suite, 600):
                raise plugin.Failure(f"{suite.name} fails without any change; run ./test first")
            suite.seconds = time.monotonic() - before

    def rounds_for(self, change):
        """Of the suites that run the code: first those that noticed most changes of this file in a second, or of its
        folder, then all others that are quick, those of a program in one process, and at last what takes long."""
        file, folder = change.file, os.path.dirname(change.file)
        place = self.sources[file].place_of(change.start)
        suites = self.reach.suites_for(file, place) if self.reach else self.suites
        with self.lock:
            noticed = {s.name: self.noticed_by[file][s.name] + self.noticed_by[folder][s.name] / 10 for s in suites}
        order = sorted(suites, key=lambda s: (-noticed[s.name] / (s.seconds + 0.02), s.seconds))
        first = [suite for suite in order[:FIRST] if noticed[suite.name]]
        others = [suite for suite in order if suite not in first]
        quick = [suite for suite in others if suite.seconds < QUICK and not suite.takes_objects]
        groups = [[suite for suite in quick if suite.program == program] for program in ("bridge", "plugin")]
        slow = sorted((suite for suite in others if suite not in quick), key=lambda s: s.seconds)
        return [first + [plugin.joined(group) for group in groups if group], slow]

    def judge_all(self, chosen, report):
        """Calls report(change, verdict, suite) for each, one at a time."""
        free = list(self.workers)

        def judge_one(change):
            with self.lock:
                worker = free.pop()
            try:
                verdict, suite = worker.judge(change, self.rounds_for(change))
            finally:
                with self.lock:
                    free.append(worker)
            with self.lock:
                self.learn(change.file, suite)
                report(change, verdict, suite)

        with concurrent.futures.ThreadPoolExecutor(len(self.workers)) as pool:
            for done in concurrent.futures.as_completed([pool.submit(judge_one, change) for change in chosen]):
                done.result()


def find_changes(build):
    """The changes of all sources, each with its name, and the sources."""
    names = [f"{folder}/{name}" for folder in plugin.FOLDERS for name in sorted(os.listdir(os.path.join(build.root, folder)))]
    finder = changes.Finder(build.root, names)
    for name in build.sources:
        finder.parse(name, ["-x", "c++"] + [word for word in build.commands[name] if re.match(r"-(std|D|I|m)", word)])
    return changes.described(finder.sources, finder.changes.values()), finder.sources


class Report:
    def __init__(self, names, sources, table, log):
        self.names = names
        self.sources = sources
        self.table = table
        self.log = log
        self.counts = collections.Counter()
        self.survivors = []
        self.explained = set()

    def add(self, change, verdict, suite):
        name = self.names[change]
        self.counts[verdict] += 1
        print(verdict, name, suite or "", sep="\t", file=self.log, flush=True)
        if verdict != SURVIVED:
            return
        if name in self.table:
            self.explained.add(name)
            return
        self.survivors.append(name)
        line = self.sources[change.file].line_of(change.start)
        print(f"{change.file}:{line}: no test notices ({change.kind}): {name.split(' | ', 2)[2]}", flush=True)

    def share(self):
        """The part of the changes that was noticed, of those that compile and alter the code."""
        return self.counts[NOTICED] / ((self.counts[NOTICED] + self.counts[SURVIVED]) or 1)

    def end(self, minutes):
        counts = self.counts
        compiled = counts[NOTICED] + counts[SURVIVED]
        print(f"{sum(counts.values())} changes in {minutes:.0f} minutes: {counts[NOT_COMPILED]} don't compile,"
              f" {counts[SAME_CODE]} become the same code")
        if compiled:
            print(f"{compiled} others: {counts[NOTICED]} noticed ({100 * self.share():.1f} %),"
                  f" {len(self.explained)} explained by {TABLE}, {len(self.survivors)} not noticed")
        if self.survivors:
            print(f"rows for {TABLE}, where they alter nothing:", *sorted(self.survivors), sep="\n")


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("root", help="of the project")
    parser.add_argument("build", help="folder of the default build; its test programs must be up to date")
    parser.add_argument("work", help="folder in which the changed sources are compiled")
    parser.add_argument("--sample", type=int, metavar="N", help="make N changes only, drawn by chance")
    parser.add_argument("--seed", type=int, help="draw the same ones again")
    parser.add_argument("--only", metavar="REGEX", help="make only the changes whose rows (FILE | LINE | OLD -> NEW) match")
    return parser.parse_args()


def main():
    arguments = parse_arguments()
    started = time.monotonic()
    build = plugin.Build(os.path.realpath(arguments.root), os.path.realpath(arguments.build))
    names, sources = find_changes(build)
    table = plugin.read_reasons(os.path.join(build.root, TABLE), lambda row: row.count(" | ") >= 2 and " -> " in row)
    unknown = set(table) - set(names.values())
    if unknown:
        raise plugin.Failure(f"{TABLE}: there is no such change (any more):\n" + "\n".join(sorted(unknown)))
    chosen = [change for change, name in names.items() if not arguments.only or re.search(arguments.only, name)]
    seed = random.randrange(1, 10**9) if arguments.seed is None else arguments.seed
    random.Random(seed).shuffle(chosen)
    if arguments.sample is not None:
        chosen = chosen[: arguments.sample]
        print(f"{len(chosen)} of {len(names)} changes, drawn with the seed {seed}", flush=True)
    work = os.path.realpath(arguments.work)
    judges = Judges(build, work, sources, len(chosen))
    with open(os.path.join(work, "log"), "w", encoding="utf-8") as log:
        report = Report(names, sources, table, log)
        judges.judge_all(chosen, report.add)
    report.end((time.monotonic() - started) / 60)
    whole = len(chosen) == len(names)
    needless = set(table) - report.explained if whole else set()
    if needless:
        print(f"{TABLE} explains what is noticed or becomes the same code:", *sorted(needless), sep="\n")
    few = whole and report.share() < LEAST
    if few:
        print(f"less than {LEAST:.0%} are noticed: that many can't be explained away")
    return 1 if report.survivors or needless or few else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except plugin.Failure as failure:
        print(f"mutants: {failure}", file=sys.stderr)
        sys.exit(2)
