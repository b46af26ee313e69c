"""How the default build makes the plug-in's ELF twin and the programs that test it, to make them once more of sources
that are changed or instrumented; and the suites of these programs."""

import json
import os
import re
import shlex
import shutil
import subprocess

FOLDERS = ("host", "bridge", "query", "item")
# What a test program may take of memory: a changed plug-in may ask for anything.
MEMORY_KIB = 3 << 20


class Failure(Exception):
    """Nothing can be said about the tests; the message says why."""


def processors():
    return len(os.sched_getaffinity(0))


def run(command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace", **options)


def copy_sources(root, folder):
    for name in FOLDERS:
        shutil.copytree(os.path.join(root, name), os.path.join(folder, name))


class Build:
    """The commands of the default build, for other sources and flags."""

    def __init__(self, root, folder):
        self.root = root
        self.folder = folder
        with open(os.path.join(folder, "compile_commands.json"), encoding="utf-8") as file:
            entries = json.load(file)
        commands = {os.path.relpath(entry["file"], root): shlex.split(entry["command"]) for entry in entries}
        self.commands = {name: words for name, words in commands.items() if name.split(os.sep)[0] in FOLDERS}
        self.sources = list(self.commands)
        if not self.sources:
            raise Failure(f"{folder} compiles no source of the plug-in")
        self.compiler = next(word for word in self.commands[self.sources[0]] if not word.endswith("ccache"))
        # The conversions are exported besides, so that all test programs but one take the same library.
        self.library_command = self.link_command("lib/libBridgeModule.so")
        self.objects_tests_command = self.link_command("bin/objects-tests")

    def link_command(self, target):
        commands = run(["ninja", "-C", self.folder, "-t", "commands", target]).stdout
        for part in commands.strip().split("\n")[-1].split("&&"):
            words = shlex.split(part)
            if "-o" in words and words[words.index("-o") + 1] == target:
                return words
        raise Failure(f"ninja doesn't tell how {target} is linked in {self.folder}")

    def compile(self, name, sources, output, flags):
        """Compiles a file of copied sources. Beside the object is the list of what it includes. Whether it worked, and what
        the compiler says."""
        words = self.commands[name]
        at = words.index("-o")
        words = words[:at] + words[at + 2 :]
        words = [w for w in words if not re.fullmatch(r"-c|-O.|-g.|-W.*|.*\bccache", w) and w != os.path.join(self.root, name)]
        words = [f"-I{sources}" if word == f"-I{self.root}" else word for word in words]
        words += ["-w", "-g0", *flags, "-MMD", "-MF", output + ".d", "-o", output, "-c", os.path.join(sources, name)]
        os.makedirs(os.path.dirname(output), exist_ok=True)
        result = run(words, cwd=self.folder)
        return result.returncode == 0, result.stdout

    def link(self, command, objects, output, flags=()):
        """Links what the command links, with these objects of the plug-in. Whether it worked."""
        words = [word for word in command if not word.startswith("CMakeFiles/SpotlightObjects.dir/")]
        words[words.index("-o") + 1] = output
        # These come first: of inline functions, which test code has as well, the linker takes the first copy.
        words[1:1] = [objects[name] for name in self.sources]
        # Programs look for libraries from their own folder.
        words += [*flags, "-fuse-ld=gold", f"-Wl,-rpath,{os.path.join(self.folder, 'lib')}"]
        return run(words, cwd=self.folder).returncode == 0


class Suite:
    """Some tests of one program, run until one fails, with a process for each filter. The command starts with the program;
    it has LIBRARY and OBJECTS in the place of files."""

    def __init__(self, name, command, filters):
        self.name = name
        self.command = command
        self.filters = filters
        self.seconds = 0.0

    @property
    def program(self):
        return self.name.split(".")[0]

    @property
    def takes_objects(self):
        return self.program == "objects"


def joined(suites):
    """Suites of one program as one, in one process."""
    whole = Suite(suites[0].program, suites[0].command, [":".join(suite.filters[0] for suite in suites)])
    whole.seconds = sum(suite.seconds for suite in suites)
    return whole


def list_tests(command):
    """The names of a GoogleTest program's tests, by suite."""
    result = run(command + ["--gtest_list_tests"])
    if result.returncode:
        raise Failure(f"{command[0]} doesn't list its tests:\n{result.stdout}")
    suites = {}
    for line in result.stdout.splitlines():
        line = line.split("#")[0].rstrip()
        if line.startswith("  "):
            suites[suite].append(suite + line.strip())
        elif line.endswith("."):
            suite = line
            suites[suite] = []
    return suites


def find_suites(build):
    suites = []
    for program in ("bridge", "plugin"):
        binary = os.path.join(build.folder, "bin", f"{program}-tests")
        library = os.path.join(build.folder, "lib", "libBridgeModule.so")
        for suite in list_tests([binary, f"--plugin={library}"]):
            suites.append(Suite(f"{program}.{suite}", [binary, "--plugin=LIBRARY"], [f"{suite}*"]))
    # A service once found stays found for the life of a process: each of these tests has one of its own.
    for suite, tests in list_tests([os.path.join(build.folder, "bin", "objects-tests")]).items():
        suites.append(Suite(f"objects.{suite}", ["OBJECTS"], tests))
    return suites


class Programs:
    """What is linked of one state of the sources, and how it is tested."""

    def __init__(self, build, folder):
        self.build = build
        self.folder = folder
        self.library = os.path.join(folder, "plugin.so")
        self.objects_tests = os.path.join(folder, "objects-tests")
        self.output = os.path.join(folder, "output")

    def link_library(self, objects, flags=()):
        return self.build.link(self.build.library_command, objects, self.library, flags)

    def link_objects_tests(self, objects, flags=()):
        return self.build.link(self.build.objects_tests_command, objects, self.objects_tests, flags)

    def passes(self, suite, seconds):
        """Whether the tests pass within this time."""
        # The limit is of the processor's time, which others may take: so the clock counts for less.
        limits = f"ulimit -c 0; ulimit -t {int(seconds) + 1}; ulimit -v {MEMORY_KIB}; " + 'exec "$@"'
        environment = {**os.environ, "GTEST_FAIL_FAST": "1"}
        names = {"LIBRARY": self.library, "OBJECTS": self.objects_tests}
        command = [re.sub("LIBRARY|OBJECTS", lambda match: names[match.group()], word) for word in suite.command]
        for tests in suite.filters:
            words = ["sh", "-c", limits, "sh", *command, f"--gtest_filter={tests}"]
            with open(self.output, "wb") as output:
                try:
                    status = subprocess.run(words, stdin=subprocess.DEVNULL, stdout=output, stderr=output, cwd=self.folder,
                                            timeout=6 * seconds, env=environment).returncode
                except subprocess.TimeoutExpired:
                    return False
            if status:
                return False
        return True

    def failed_suite(self):
        """The suite of the first test that failed, or else of the one that was run when the program ended."""
        with open(self.output, "rb") as file:
            text = file.read()
        failed = re.search(rb"^\[  FAILED  \] ([^ ]*\.)", text, re.M)
        started = re.findall(rb"^\[ RUN      \] (.*\.)", text, re.M)
        return (failed.group(1) if failed else started[-1] if started else b"").decode()


def read_reasons(path, is_row):
    """The rows of a table, each with its reason: the line above it, or above the rows before it, that starts with '# '."""
    rows = {}
    reason = None
    with open(path, encoding="utf-8") as file:
        for number, line in enumerate(file, 1):
            line = line.rstrip("\n")
            if not line or line.startswith("##"):
                continue
            if line.startswith("# "):
                reason = line[2:]
            elif not is_row(line):
                raise Failure(f"{path}:{number}: is no row; the head of the file says what rows look like")
            elif reason is None:
                raise Failure(f"{path}:{number}: has no reason above it, a line that starts with '# '")
            elif line in rows:
                raise Failure(f"{path}:{number}: is there already")
            else:
                rows[line] = reason
    return rows
