"""What tools say of the sources, and of the programs, without running them."""

import concurrent.futures
import json
import os
import re
import shlex
import subprocess

from line import Control, Line, Outcome

HERE = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
PLANTED = os.path.join(HERE, "static")
TARGETS = ("lparams_agent", "lparams_server", "lparamsctl")
FOLDERS = ("agent", "bridge", "checking", "client", "documents", "editing", "inspection", "lparams",
           "markup", "platform", "programs", "schema", "text", "tools")
CPPCHECK = ["cppcheck", "--quiet", "--std=c++20", "--language=c++", "--inline-suppr",
            "--enable=warning,performance,portability", "--error-exitcode=1",
            "--suppress=missingIncludeSystem", "--template={file}:{line}: {id}: {message}"]
# GCC's analyzer was made for C. Of C++ it follows no exception and no virtual call, and knows none of
# the library's classes: it sees what is left of C in them. Without bounds it takes gigabytes.
ANALYZER = ["-fanalyzer", "-O1", "-Wno-error", "-Wno-analyzer-use-of-uninitialized-value", "-S", "-o", "/dev/null",
            *(f"--param=analyzer-{bound}" for bound in (
                "bb-explosion-factor=1", "max-enodes-per-program-point=2", "max-recursion-depth=1"))]
LOCKS = ["clang++", "-fsyntax-only", "-std=c++20", "-Wthread-safety", "-I."]
HARDENING = ["tests/packaging/hardening_test.sh"]
FINDING = re.compile(r"^\S+:\d+(?::\d+)?: .*", re.M)


class Tool:
    def __init__(self, name, *command):
        self.name, self.command = name, command

    def finds(self, context, *words):
        """A list of what it says; empty if all is well."""
        done = context.run([*self.command, *words], cwd=context.root, on_line=context.say_some)
        if done.returncode == 0 and not done.stdout.strip():
            return []
        return FINDING.findall(done.stdout) or done.stdout.strip().splitlines()


class Analyzer(Tool):
    """Takes one compile command at a time."""

    def finds(self, context, *commands):
        def analyze(command):
            done = context.run([*shlex.split(command), *ANALYZER], cwd=context.root)
            context.say_some(f"{self.name}: {command.split()[-1]}")
            if done.returncode != 0:
                return [done.stdout.strip()[-1000:]]
            return [line for line in done.stdout.splitlines() if "[-Wanalyzer-" in line]

        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            return [line for told in pool.map(analyze, commands) for line in told]


def compile_commands(root):
    """Of the products. Sources that are compiled together are analyzed together."""
    with open(os.path.join(root, "build", "lint", "compile_commands.json"), encoding="utf-8") as file:
        entries = json.load(file)
    products = re.compile(rf"{re.escape(root)}/(?:build/lint/)?(?:{'|'.join(FOLDERS)})/")
    return [re.sub(r" -o \S+ -c (\S+)$", r" \1", entry["command"]) for entry in entries
            if products.match(entry["file"])]


def sources(root):
    listed = subprocess.run(["git", "ls-files", "-z", *(f"{one}/*.cc" for one in FOLDERS)], cwd=root,
                            check=True, stdout=subprocess.PIPE, text=True).stdout
    return [one for one in listed.split("\0") if one]


class Static(Line):
    NAME = "static"
    TRIED = "clang-tidy, cppcheck, GCC's analyzer, the analysis of locks, shellcheck, the programs' files"
    WANTED = "nothing is found that is not explained at its line"
    MINUTES = 6
    BUILDS = {"release": TARGETS, "release-32": TARGETS}

    def run(self, context):
        files = sources(context.root)
        context.run(["cmake", "-S", context.root, "--preset", "lint"])
        commands = compile_commands(context.root)
        counts, finds = {}, []
        builds = [os.path.relpath(context.build(preset, *TARGETS), context.root)
                  for preset in self.BUILDS]
        for tool, words in (
                *((Tool(f"hardening of {build}", *HARDENING), [build]) for build in builds),
                (Tool("shellcheck", "tests/lint/shell.sh"), []),
                (Tool("cppcheck", *CPPCHECK, f"-j{os.cpu_count()}", "-I."), files),
                (Tool("clang-tidy, locks", "tests/lint/tidy.sh"), []),
                (Analyzer("analyzer"), commands)):
            context.say(tool.name)
            told = tool.finds(context, *words)
            counts[tool.name] = len(told)
            finds += [f"{tool.name}: {one}" for one in told]
        return Outcome(not finds, f"{len(files)} sources, {len(finds)} findings", counts, tuple(finds))

    def controls(self, context):
        def planted(name):
            return os.path.join(PLANTED, name)

        tidy = ["clang-tidy", "--quiet", f"--config-file={context.root}/.clang-tidy"]
        return [self.control(context, *one) for one in (
            (Tool("cppcheck", *CPPCHECK), planted("out_of_bounds.cc"), "arrayIndexOutOfBounds"),
            (Analyzer("analyzer"), f"g++ -std=c++20 {planted('freed.cc')}", "use-after-free"),
            (Tool("clang-tidy", *tidy), planted("moved_from.cc"), "bugprone-use-after-move"),
            (Tool("analysis of locks", *LOCKS), planted("unlocked.cc"), "thread-safety"),
            (Tool("shellcheck", "shellcheck"), planted("unquoted.bash"), "SC2086"),
            (Tool("hardening", *HARDENING), self.unhardened(context), "not watched"))]

    @staticmethod
    def unhardened(context):
        """Programs that are built without any care."""
        folder = os.path.join(context.scratch, "unhardened")
        os.mkdir(folder)
        for name in ("lparams_agent", "lparamsctl", "lparams_server.so"):
            context.run(["g++", "-fno-stack-protector", "-no-pie", "-Wl,-z,norelro",
                         os.path.join(PLANTED, "freed.cc"), "-o", os.path.join(folder, name)])
        return folder

    @staticmethod
    def control(context, tool, file, word):
        told = tool.finds(context, file)
        said = [one for one in told if word in one]
        return Control(tool.name, bool(said), said[0] if said else f"nothing of it in {told}")
