#!/usr/bin/python3
"""Would the tests notice? Changes the graph, the operators, the linker and the optimizer in hundreds
of small ways, one at a time, and counts how many of the changes a test notices.

All mutants are in one build: each change is switched on by its number, from the environment. A first
run of the tests finds out which of them pass which mutant; then only those tests run against it, the
quickest first. A test that fails, a crash and a run without end kill a mutant.
"""

import argparse
import json
import math
import os
import resource
import shlex
import shutil
import subprocess
import sys
import time
import tomllib
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from mutants import Finder, rewrite

SEED = 1
ENGINE = "math/xpr/src"
PARTS = {
    "graph": """Argument ConstantBase ConstantImpl DeadParent DeferredRelease DomainValueBase
        DomainValueKeeper DomainValueNoCopyImpl DomainVariableImpl DomainVariableUpdate
        ExpressionBaseImpl ExpressionBaseImplFrames ExpressionBaseImplLinks ExpressionImplCopier
        FunctionBaseImpl GraphWalk GraphvizFrame
        GraphvizNodes InvalidExpression InvalidVariable LeafText NodeKind ParameterImpl ParentList
        ScriptFunctionImpl UnknownFunction UnknownVariable VariableImpl""",
    "operators": "BinaryOperatorImpl Operator XaryFunction",
    "linker": "CallBinder CandidateNames Linker PrototypeCopier Resolver ResolverLog",
    "optimizer": """ExpressionComplexity Optimizer OptimizerDictionnary
        OptimizerDictionnarySingleWalk OptimizerExpressionDataImpl OptimizerExpressionDataSpecializer
        OptimizerExpressionKind OptimizerKeyTable""",
}
HERE = Path(__file__).resolve().parent
ROOT = HERE.parent.parent
WORK = ROOT / "build/mutation"
TREE = WORK / "tree"
PROGRAM = TREE / "build/release/tests/velmora-xpr-tests"
JOBS = 2
# A mutant that asks for more, or takes so much longer than the tests do without it, is caught.
MEMORY = 6 << 30
PATIENCE = 10
LONGEST = 60
CHUNKS = (12, 60, 250)
# Milliseconds.
QUICK = 30
# Seconds each, for what the others notice as well.
LEFT_OUT = """*TenThousand* *OfDefinitions* *ThousandDefinitions* *LimitTest.FunctionsThatMultiply*
    *ChainTest.* *LimitsTest.* *.LongChain* *.LongScript* *AGarbledArchive* *ThreadReads*
    *Seeds/RandomScriptTest.*/1 *Seeds/RandomScriptTest.*/2 *Seeds/RandomScriptTest.*/3
    *Seeds/RandomScriptTest.*/4 *Seeds/RandomScriptTest.*/5 *Seeds/RandomScriptTest.*/6
    *Seeds/RandomScriptTest.*/7""".split()
# But they are what guards these.
ONLY_GUARDS = {
    "PrototypeCopier.cpp": ["ResolverLimitTest.FunctionsThatMultiplyAreRefusedWithTheLimit"],
}


def build(target):
    log = WORK / "build.log"
    with open(log, "a") as file:
        status = subprocess.run(["ninja", "-C", TREE / "build/release", target],
                                stdout=file, stderr=subprocess.STDOUT).returncode
    if status != 0:
        sys.exit(f"The mutated tree doesn't build: {log}")


def copy_tree():
    WORK.mkdir(parents=True, exist_ok=True)
    files = subprocess.run(["git", "ls-files", "-z", "--cached", "--others",
                            "--exclude-standard"], cwd=ROOT, check=True, capture_output=True,
                           text=True).stdout.split("\0")[:-1]
    for name in files:
        source, copy = ROOT / name, TREE / name
        copy.parent.mkdir(parents=True, exist_ok=True)
        if source.is_file():
            put(copy, source.read_bytes())
            shutil.copymode(source, copy)
    for name in ("Mutation.cpp", "Mutation.h"):
        put(TREE / "support/src" / name, (HERE / name).read_bytes())
    put(TREE / "tests/support/MutationListener.cpp", (HERE / "MutationListener.cpp").read_bytes())


def put(path, content):
    """Leaves alone what is the same, so that it isn't built again."""
    if not path.exists() or path.read_bytes() != content:
        path.write_bytes(content)


def configure():
    subprocess.run(["cmake", "--preset", "release", "-DVELMORA_BUILD_TOOLS=OFF",
                    "-DVELMORA_WARNINGS_AS_ERRORS=OFF", "-DCMAKE_CXX_FLAGS=-w"],
                   cwd=TREE, check=True, stdout=subprocess.DEVNULL)


def compile_arguments():
    with open(TREE / "build/release/compile_commands.json") as file:
        commands = json.load(file)
    result = {}
    for command in commands:
        words = shlex.split(command["command"])
        kept = [w for w in words if w.startswith(("-I", "-D", "-std"))]
        for place, word in enumerate(words):
            if word == "-isystem":
                kept += words[place:place + 2]
        result[Path(command["file"]).name] = kept
    return result


def find_all():
    """The mutants of each source that there could be, and the sources that they were found in."""
    arguments = compile_arguments()
    found, sources = {}, {}
    for part, names in PARTS.items():
        for name in names.split():
            path = ROOT / ENGINE / f"{name}.cpp"
            finder = Finder(str(path), f"{name}.cpp", arguments[path.name])
            found[name], sources[name] = finder.mutants, finder.bytes
    return found, sources


def choose(found, count):
    """As many of each source as the root of what it offers, drawn by what they are: a change of one
    function leaves the choice in the others alone."""
    roots = {name: math.sqrt(len(mutants)) for name, mutants in found.items()}
    chosen = {}
    number = 0
    for name, mutants in found.items():
        quota = max(1, round(count * roots[name] / sum(roots.values())))
        drawn = sorted(mutants, key=lambda m: m.rank(SEED))[:quota]
        chosen[name] = sorted(drawn, key=lambda m: (m.start, m.end))
        for mutant in chosen[name]:
            mutant.number = number
            number += 1
    return chosen


def limit():
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def run_tests(tests, mutant, timeout):
    environment = dict(os.environ, VELMORA_MUTANT=str(mutant), GTEST_FILTER=":".join(tests))
    try:
        status = subprocess.run(
            [PROGRAM, "--gtest_fail_fast", "--gtest_brief=1"], env=environment, timeout=timeout,
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            preexec_fn=limit).returncode
    except subprocess.TimeoutExpired:
        return "timeout"
    return {0: "", 1: "test"}.get(status, "crash")


def record_reached():
    """For each mutant the tests that pass it, the quickest first, each with its milliseconds."""
    path = WORK / "reached"
    path.unlink(missing_ok=True)
    environment = dict(os.environ, VELMORA_MUTANTS_REACHED=str(path),
                       GTEST_FILTER="-" + ":".join(LEFT_OUT))
    subprocess.run([PROGRAM, "--gtest_brief=1"], env=environment, check=True, preexec_fn=limit,
                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    tests, everywhere, reached = {}, set(), {}
    for line in path.read_text().splitlines():
        test, elapsed, *numbers = line.split()
        numbers = {int(number) for number in numbers}
        if test == "*":
            everywhere |= numbers
        else:
            tests[test] = max(int(elapsed), tests.get(test, 0))
            for number in numbers:
                reached.setdefault(number, set()).add(test)
    for number in everywhere:
        reached[number] = set(tests)
    # What runs once in a process, such as the making of a static object, counts for the test that
    # happened to be the first: behind those that pass a mutant come all others that are quick.
    quick = sorted((elapsed, test) for test, elapsed in tests.items()
                   if elapsed < QUICK)
    return {number: sorted((tests[test], test) for test in names) +
            [entry for entry in quick if entry[1] not in names]
            for number, names in reached.items()}


def kill(mutant, reaching):
    """How the mutant was caught; an empty text for a survivor."""
    first = 0
    for size in (*CHUNKS, *[600] * (len(reaching) // 600 + 1)):
        chunk = reaching[first:first + size]
        if not chunk:
            break
        first += size
        seconds = sum(elapsed for elapsed, _ in chunk) / 1000
        caught = run_tests([test for _, test in chunk], mutant.number,
                           min(10 + PATIENCE * seconds, LONGEST))
        if caught:
            return caught
    guards = ONLY_GUARDS.get(mutant.file)
    return run_tests(guards, mutant.number, 100) if guards else ""


def read_equivalents():
    with open(HERE / "survivors.toml", "rb") as file:
        entries = tomllib.load(file).get("survivor", [])
    return {(e["file"], e["function"], e["before"], e["after"], e.get("occurrence", 0)): e["why"]
            for e in entries}


def report(chosen, caught):
    equivalents = read_equivalents()
    unexplained = []
    print("| part | mutants | killed | by a test | by a crash | by time | equivalent | survived |")
    print("|---|---|---|---|---|---|---|---|")
    totals = [0] * 7
    for part, names in PARTS.items():
        mutants = [m for name in names.split() for m in chosen[name]]
        how = [caught[m.number] for m in mutants]
        explained = [m for m in mutants if not caught[m.number] and m.key() in equivalents]
        left = [m for m in mutants if not caught[m.number] and m.key() not in equivalents]
        unexplained += left
        row = [len(mutants), sum(1 for h in how if h), how.count("test"), how.count("crash"),
               how.count("timeout"), len(explained), len(left)]
        totals = [a + b for a, b in zip(totals, row)]
        print(f"| {part} | " + " | ".join(map(str, row)) + " |")
    print("| all | " + " | ".join(map(str, totals)) + " |")
    print(f"\nkilled: {100 * totals[1] / totals[0]:.1f} % of all, "
          f"{100 * totals[1] / (totals[0] - totals[5]):.1f} % of those that aren't equivalent")
    for mutant in unexplained:
        print(f"\n{ENGINE}/{mutant.file}:{mutant.line}: survived, {mutant.kind}\n"
              f"    {mutant.before}\n    -> {mutant.after or '(nothing)'}\n"
              f"    [[survivor]]\n    file = {json.dumps(mutant.file)}\n"
              f"    function = {json.dumps(mutant.function)}\n"
              f"    before = {json.dumps(mutant.before)}\n    after = {json.dumps(mutant.after)}\n"
              f"    occurrence = {mutant.occurrence}")
    keys = {m.key() for mutants in chosen.values() for m in mutants if not caught[m.number]}
    for key in equivalents.keys() - keys:
        print(f"survivors.toml: no longer among the survivors: {key}", file=sys.stderr)
    return not unexplained


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--count", type=int, default=369, help="how many mutants, about")
    parser.add_argument("--only", default="", help="numbers of mutants, with commas between")
    arguments = parser.parse_args()
    started = time.monotonic()

    copy_tree()
    configure()
    found, sources = find_all()
    chosen = choose(found, arguments.count)
    for name, mutants in chosen.items():
        put(TREE / ENGINE / f"{name}.cpp", rewrite(sources[name], mutants))
    build("velmora-xpr-tests")
    reached = record_reached()

    only = {int(number) for number in arguments.only.split(",") if number}
    todo = [m for mutants in chosen.values() for m in mutants if not only or m.number in only]
    print(f"{len(todo)} mutants, {time.monotonic() - started:.0f} s so far", file=sys.stderr)
    with ThreadPoolExecutor(JOBS) as pool:
        results = pool.map(lambda m: kill(m, reached.get(m.number, [])), todo)
        caught = {}
        for mutant, result in zip(todo, results):
            caught[mutant.number] = result
            print(f"{mutant.number} {result or 'SURVIVED'} {mutant.file}:{mutant.line} "
                  f"{mutant.before} -> {mutant.after or '(nothing)'}", file=sys.stderr, flush=True)
    if only:
        return 0
    children = resource.getrusage(resource.RUSAGE_CHILDREN)
    minutes = (children.ru_utime + children.ru_stime) / 60
    print(f"{time.monotonic() - started:.0f} s, {minutes:.1f} min of CPU", file=sys.stderr)
    return 0 if report(chosen, caught) else 1


if __name__ == "__main__":
    sys.exit(main())
