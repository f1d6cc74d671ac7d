#!/usr/bin/env python3
"""Mutation testing of the Win32-free code: how many single-point faults do the native tests catch?

Each mutant changes one line of one source file that the native build compiles (a comparison,
a boolean, an integer constant, a returned value, or a call dropped), is built incrementally in
a worker's own copy of the tree, and the native test exes that it changed are run. A mutant that
makes a test fail is killed; one that passes every test survived and names a fault no test sees.

  scripts/tolvane mutants [--seed N] [--count N] [--jobs N] [--min-score X]
  scripts/mutants.py --list src/text/strings.cpp     every candidate of one file, nothing built

The sample is fixed by the seed and the source tree. Not part of the CI run: a score measures
the tests, it does not gate a change (unless --min-score asks for it).
"""

import argparse
import hashlib
import json
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import threading
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
OUT = os.path.join(ROOT, "build", "mutants")

# What a worker's copy of the tree needs to configure and run the native tests.
TREE_ITEMS = ["CMakeLists.txt", "cmake", "src", "tests", "bench", "package", "res", "lang", "data",
              "help"]

# --- finding the candidates --------------------------------------------------------------------


def blank(text):
    """The text with comments turned to spaces and the insides of string and character literals
    to underscores, each character where it was, so that columns and lines still match."""
    out = list(text)
    i, n = 0, len(text)
    while i < n:
        c = text[i]
        if c == "/" and text.startswith("//", i):
            j = text.find("\n", i)
            j = n if j < 0 else j
            for k in range(i, j):
                out[k] = " "
            i = j
        elif c == "/" and text.startswith("/*", i):
            j = text.find("*/", i + 2)
            j = n if j < 0 else j + 2
            for k in range(i, j):
                if out[k] != "\n":
                    out[k] = " "
            i = j
        elif c == "R" and text.startswith('R"', i) and (i == 0 or not (text[i - 1].isalnum()
                                                                        or text[i - 1] == "_")):
            m = re.match(r'R"([^(\s]*)\(', text[i:])
            if not m:
                i += 1
                continue
            end = text.find(")" + m.group(1) + '"', i + m.end())
            end = n if end < 0 else end
            for k in range(i + m.end(), end):
                if out[k] != "\n":
                    out[k] = "_"
            i = end + len(m.group(1)) + 2
        elif c in "\"'":
            if c == "'" and i > 0 and text[i - 1].isalnum():
                i += 1  # a digit separator, 1'000
                continue
            j = i + 1
            while j < n and text[j] != c and text[j] != "\n":
                j += 2 if text[j] == "\\" else 1
            for k in range(i + 1, min(j, n)):
                out[k] = "_"
            i = j + 1
        else:
            i += 1
    return "".join(out)


def code_lines(text):
    """(original line, blanked line) pairs; preprocessor lines and static_assert come blank."""
    orig = text.split("\n")
    blanked = blank(text).split("\n")
    result = []
    continued = False
    in_assert = False
    for o, b in zip(orig, blanked):
        s = b.strip()
        if continued or s.startswith("#"):
            continued = b.rstrip().endswith("\\")
            b = ""
        elif in_assert or "static_assert" in s:
            in_assert = not s.endswith(";")
            b = ""
        result.append((o, b))
    return result


COMPARE = {"==": ["!="], "!=": ["=="], "<": [">=", "<="], ">": ["<=", ">="], "<=": [">", "<"],
           ">=": ["<", ">"]}
KEYWORDS = {"return", "if", "while", "for", "switch", "sizeof", "static_assert", "assert",
            "delete", "throw", "case", "using", "typedef", "co_return", "co_await", "co_yield",
            "new", "else", "do", "goto", "decltype", "alignof", "noexcept", "template"}
NUMBER = re.compile(r"(?<![\w.'])(0[xX][0-9a-fA-F']+|\d[\d']*)([uUlLzZ]*)(?![\w.'])")
CALL = re.compile(r"(?:::)?[A-Za-z_]\w*(?:(?:::|\.|->)~?[A-Za-z_]\w*)*(?:<[^;()]*>)?\(")
BOOLISH = re.compile(r" (?:==|!=|<|>|<=|>=|&&|\|\|) |^!|^(?:true|false)$")


def bumped(literal):
    """n+1, and 1 to 0, keeping the base, the width of a hex literal and its suffix."""
    digits = literal.replace("'", "")
    if digits[:2] in ("0x", "0X"):
        value = int(digits, 16)
        new = 0 if value == 1 else value + 1
        body = format(new, "X" if any(ch.isupper() for ch in digits[2:]) else "x")
        return digits[:2] + body.zfill(len(digits) - 2)
    if len(digits) > 1 and digits.startswith("0"):
        return None  # octal: none in this code, and not worth the care
    value = int(digits)
    return str(0 if value == 1 else value + 1)


def matching_close(s, open_at):
    depth = 0
    for k in range(open_at, len(s)):
        if s[k] in "([{":
            depth += 1
        elif s[k] in ")]}":
            depth -= 1
            if depth == 0:
                return k
    return -1


def array_size_spans(b):
    """Spans of integer constants that size an array or std::array in a declaration."""
    spans = []
    for m in re.finditer(r"\b(?!return\b)[\w:>]+[*&]?\s+\w+\s*\[\s*(\w+)\s*\]", b):
        spans.append(m.span(1))
    for m in re.finditer(r"std::array<[^;]*?,\s*(\w+)>", b):
        spans.append(m.span(1))
    return spans


def line_mutants(o, b, prev):
    """Each (column, operator, mutated line) for one line of code."""
    found = []

    def put(start, end, new, op):
        found.append((start, op, o[:start] + new + o[end:]))

    for m in re.finditer(r"(?<= )(==|!=|<=|>=|<|>)(?= )", b):
        for new in COMPARE[m.group(1)]:
            put(m.start(), m.end(), new, "compare")
    for m in re.finditer(r"(?<= )(&&|\|\|)(?= )", b):
        put(m.start(), m.end(), "||" if m.group(1) == "&&" else "&&", "logic")
    for m in re.finditer(r"\b(true|false)\b", b):
        put(m.start(), m.end(), "false" if m.group(1) == "true" else "true", "bool")
    for m in re.finditer(r"(?<![\w)\]!=<>&|])!(?=[\w(*:])", b):
        put(m.start(), m.end(), "", "not")
    sized = array_size_spans(b)
    for m in NUMBER.finditer(b):
        if any(s <= m.start() and m.end(1) <= e for s, e in sized):
            continue
        new = bumped(m.group(1))
        if new is not None:
            put(m.start(1), m.end(1), new, "constant")
    for m in re.finditer(r"(?<!\w)return\s+", b):
        depth, k = 0, m.end()
        while k < len(b) and not (b[k] == ";" and depth == 0):
            depth += b[k] in "([{"
            depth -= b[k] in ")]}"
            k += 1
        if k >= len(b):
            continue
        expr = o[m.end():k].strip()
        if expr in ("{}", '""', "true", "false", "nullptr", "std::nullopt", "*this") or not expr:
            continue
        if BOOLISH.search(b[m.end():k].strip()) and "?" not in b[m.end():k]:
            put(m.end(), k, "!(" + expr + ")", "return")
        else:
            put(m.end(), k, "{}", "return")
    s = b.strip()
    m = CALL.match(s)
    if (m and s.endswith(");") and s.split("(")[0].split("::")[-1] not in KEYWORDS
            and re.match(r"[\w:]+", s).group(0) not in KEYWORDS
            and matching_close(s, m.end() - 1) == len(s) - 2 and prev[-1:] in (";", "{", "}", ":")):
        found.append((len(o) - len(o.lstrip()), "call", ""))
    return found


def candidates(rel, text):
    """Every mutant of one file: dicts with its file, line, column, operator and lines."""
    result = []
    prev = "{"
    for number, (o, b) in enumerate(code_lines(text), start=1):
        for col, op, new in line_mutants(o, b, prev):
            result.append({"file": rel, "line": number, "col": col, "op": op, "orig": o,
                           "new": new})
        if b.strip():
            prev = b.rstrip()
    return result


def folder_of(rel):
    return rel.split("/")[1]


def sample(all_mutants, count, seed, least=5):
    """A share of `count` for each folder by its candidates (largest remainder, `least` at
    least), then that many picked at random within the folder."""
    by_folder = {}
    for mutant in all_mutants:
        by_folder.setdefault(folder_of(mutant["file"]), []).append(mutant)
    total = len(all_mutants)
    count = min(count, total)
    share = {f: min(len(ms), max(least, count * len(ms) // total)) for f, ms in by_folder.items()}
    # Largest remainders first when short; the largest shares give back when the floors of
    # the small folders overshoot.
    order = sorted(by_folder, key=lambda f: (-(count * len(by_folder[f]) % total), f))
    while sum(share.values()) < count:
        f = next(f for f in order if share[f] < len(by_folder[f]))
        order.remove(f)
        order.append(f)
        share[f] += 1
    while sum(share.values()) > count:
        f = max(share, key=lambda f: (share[f], f))
        share[f] -= 1
    rng = random.Random(seed)
    picked = []
    for f in sorted(by_folder):
        picked += rng.sample(by_folder[f], share[f])
    return sorted(picked, key=lambda m: (m["file"], m["line"], m["col"], m["new"]))


# --- the worker build trees --------------------------------------------------------------------


def run(cmd, cwd, log, **kw):
    with open(log, "ab") as f:
        f.write(("$ " + " ".join(cmd) + "\n").encode())
        f.flush()
        return subprocess.run(cmd, cwd=cwd, stdout=f, stderr=subprocess.STDOUT, **kw).returncode


def sync_tree(dest):
    """Brings the worker's copy up to date with the working tree. A changed file gets a fresh
    time, so that ninja rebuilds it; an unchanged one keeps its own, so that nothing else is."""
    keep = set()
    for item in TREE_ITEMS:
        src = os.path.join(ROOT, item)
        if os.path.isfile(src):
            pairs = [(src, os.path.join(dest, item))]
        else:
            pairs = []
            for dirpath, dirnames, filenames in os.walk(src):
                dirnames[:] = [d for d in dirnames if d != "corpus"]
                for name in filenames:
                    s = os.path.join(dirpath, name)
                    pairs.append((s, os.path.join(dest, os.path.relpath(s, ROOT))))
        for s, d in pairs:
            keep.add(d)
            if os.path.exists(d):
                with open(s, "rb") as a, open(d, "rb") as b:
                    if a.read() == b.read():
                        continue
            os.makedirs(os.path.dirname(d), exist_ok=True)
            shutil.copyfile(s, d)
    for dirpath, _, filenames in os.walk(dest):
        for name in filenames:
            path = os.path.join(dirpath, name)
            if path not in keep:
                os.remove(path)


def digest(path):
    with open(path, "rb") as f:
        return hashlib.sha1(f.read()).hexdigest()


class Worker:
    def __init__(self, index):
        self.index = index
        self.dir = os.path.join(OUT, "w%d" % index)
        self.tree = os.path.join(self.dir, "src-tree")
        self.build = os.path.join(self.dir, "build")
        self.log = os.path.join(self.dir, "log.txt")
        self.tests = []  # (name, exe, command, env, cwd)
        self.limit = {}
        self.hashes = {}

    def prepare(self, ninja_jobs):
        """Configures and builds the worker's tree as the native build, without the sanitizers
        and unoptimised (each mutant's build is the cost), and runs its tests once."""
        os.makedirs(self.dir, exist_ok=True)
        open(self.log, "w").close()
        sync_tree(self.tree)
        if run(["cmake", "-G", "Ninja", "-S", self.tree, "-B", self.build,
                "-DCMAKE_BUILD_TYPE=", "-DCMAKE_CXX_FLAGS=-O0", "-DCMAKE_C_FLAGS=-O0",
                "-DTOLVANE_SANITIZE=OFF", "-DTOLVANE_FUZZ=OFF"], ROOT, self.log) != 0:
            return "configure failed"
        # Every test is a target of its own name; ctest names the exe only once it is built.
        names = subprocess.run(["ctest", "--show-only=json-v1"], cwd=self.build,
                               capture_output=True, text=True, check=True).stdout
        targets = [t["name"] for t in json.loads(names)["tests"]]
        if run(["ninja", "-j%d" % ninja_jobs] + targets, self.build, self.log) != 0:
            return "build failed (see %s)" % os.path.relpath(self.log, ROOT)
        shown = subprocess.run(["ctest", "--show-only=json-v1"], cwd=self.build,
                               capture_output=True, text=True, check=True).stdout
        for test in json.loads(shown)["tests"]:
            props = {p["name"]: p["value"] for p in test.get("properties", [])}
            env = dict(os.environ)
            for pair in props.get("ENVIRONMENT", []):
                key, _, value = pair.partition("=")
                env[key] = value
            cwd = props.get("WORKING_DIRECTORY", self.build)
            self.tests.append((test["name"], test["command"][0], test["command"], env, cwd))
        for name, exe, command, env, cwd in self.tests:
            started = time.monotonic()
            result = subprocess.run(command, cwd=cwd, env=env, stdout=subprocess.DEVNULL,
                                    stderr=subprocess.DEVNULL)
            took = time.monotonic() - started
            if result.returncode != 0:
                return "test %s fails without any mutant" % name
            self.limit[name] = max(10.0, 3 * took)
            self.hashes[name] = digest(exe)
        return None

    def sources(self):
        """The files under src/ that the native build compiles, relative to the tree."""
        with open(os.path.join(self.build, "compile_commands.json")) as f:
            entries = json.load(f)
        found = set()
        for entry in entries:
            rel = os.path.relpath(os.path.realpath(entry["file"]), os.path.realpath(self.tree))
            if rel.startswith("src/"):
                found.add(rel)
        return sorted(found)

    def try_mutant(self, mutant):
        path = os.path.join(self.tree, mutant["file"])
        with open(path, encoding="utf-8", newline="") as f:
            original = f.read()
        lines = original.split("\n")
        assert lines[mutant["line"] - 1] == mutant["orig"], "source changed under the run"
        lines[mutant["line"] - 1] = mutant["new"]
        try:
            with open(path, "w", encoding="utf-8", newline="") as f:
                f.write("\n".join(lines))
            os.utime(path)
            if run(["ninja", "-j1"] + [t[0] for t in self.tests], self.build, self.log) != 0:
                return "did not compile"
            return self.run_changed_tests()
        finally:
            # Back as it was, with a fresh time: the next build puts the original object back.
            with open(path, "w", encoding="utf-8", newline="") as f:
                f.write(original)
            os.utime(path)

    def run_changed_tests(self):
        """Runs each test exe that the mutant changed; those it left byte for byte as they were
        cannot see it and passed already."""
        for name, exe, command, env, cwd in self.tests:
            if digest(exe) == self.hashes[name]:
                continue
            proc = subprocess.Popen(command, cwd=cwd, env=env, stdout=subprocess.DEVNULL,
                                    stderr=subprocess.DEVNULL, start_new_session=True)
            try:
                code = proc.wait(timeout=self.limit[name])
            except subprocess.TimeoutExpired:
                os.killpg(proc.pid, signal.SIGKILL)
                proc.wait()
                return "timed out"
            if code != 0:
                return "killed"
        return "survived"

    def restore(self):
        """Builds the tree as it was; each test exe must come out byte for byte as before, or
        the mutants' builds were not what they seemed."""
        run(["ninja", "-j1"] + [t[0] for t in self.tests], self.build, self.log)
        return [name for name, exe, *_ in self.tests if digest(exe) != self.hashes[name]]


# --- the run -----------------------------------------------------------------------------------


def shown(mutant):
    if mutant["new"] == "":
        return "%s:%d: %s -> (call removed)" % (mutant["file"], mutant["line"],
                                                mutant["orig"].strip())
    return "%s:%d: %s -> %s" % (mutant["file"], mutant["line"], mutant["orig"].strip(),
                                mutant["new"].strip())


def list_file(rel):
    with open(os.path.join(ROOT, rel), encoding="utf-8", newline="") as f:
        for mutant in candidates(rel, f.read()):
            print("%-9s %s" % (mutant["op"], shown(mutant)), flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--seed", type=int, default=2026, help="picks the sample (2026)")
    parser.add_argument("--count", type=int, default=160, help="mutants in the sample (160)")
    parser.add_argument("--jobs", type=int, default=2, help="workers, each its own build (2)")
    parser.add_argument("--min-score", type=float, default=None,
                        help="exit 1 when the score (0 to 1) is below this")
    parser.add_argument("--list", metavar="FILE", help="print every candidate of FILE and stop")
    args = parser.parse_args()
    if args.list:
        list_file(os.path.relpath(os.path.abspath(args.list), ROOT))
        return 0

    started = time.monotonic()
    workers = [Worker(i) for i in range(max(1, args.jobs))]
    print("mutants: building %d worker trees under build/mutants (baseline)" % len(workers),
          flush=True)
    # One tree after the other, each with every core.
    failure = None
    for w in workers:
        failure = failure or w.prepare(max(1, os.cpu_count() or 1))
    if failure:
        print("mutants: the baseline fails: %s; no mutant was tried" % failure, file=sys.stderr)
        return 2
    print("mutants: baseline built and passing in %.0f s" % (time.monotonic() - started),
          flush=True)

    everything = []
    for rel in workers[0].sources():
        with open(os.path.join(ROOT, rel), encoding="utf-8", newline="") as f:
            everything += candidates(rel, f.read())
    picked = sample(everything, args.count, args.seed)
    folders = {}
    for m in picked:
        folders[folder_of(m["file"])] = folders.get(folder_of(m["file"]), 0) + 1
    print("mutants: %d of %d candidates (seed %d): %s" % (
        len(picked), len(everything), args.seed,
        ", ".join("%s %d" % kv for kv in sorted(folders.items()))), flush=True)

    # Each file's mutants stay with one worker, in a row: only the file changes between them.
    by_file = {}
    for m in picked:
        by_file.setdefault(m["file"], []).append(m)
    queues = [[] for _ in workers]
    for rel in sorted(by_file, key=lambda r: (-len(by_file[r]), r)):
        min(queues, key=len).extend(by_file[rel])

    results = []
    lock = threading.Lock()

    def work(w, queue):
        for mutant in queue:
            t0 = time.monotonic()
            outcome = w.try_mutant(mutant)
            with lock:
                results.append((mutant, outcome))
                print("[%3d/%d] w%d %-15s %s (%.0f s)" % (
                    len(results), len(picked), w.index, outcome, shown(mutant),
                    time.monotonic() - t0), flush=True)
        stale = w.restore()
        if stale:
            with lock:
                print("mutants: w%d: %s differ from the baseline after the run: the incremental "
                      "builds went wrong, the outcomes are not to be trusted" % (
                          w.index, ", ".join(stale)), file=sys.stderr, flush=True)

    threads = [threading.Thread(target=work, args=(w, q)) for w, q in zip(workers, queues)]
    for t in threads:
        t.start()
    for t in threads:
        t.join()

    counts = {k: sum(1 for _, o in results if o == k)
              for k in ("killed", "survived", "timed out", "did not compile")}
    tried = len(results) - counts["did not compile"]
    score = (counts["killed"] + counts["timed out"]) / tried if tried else 0.0
    minutes = (time.monotonic() - started) / 60
    report = ["Mutation testing of the native build's code, seed %d, %d mutants, %.1f min" % (
        args.seed, len(results), minutes)]
    report += ["  %-16s %d" % (k + ":", v) for k, v in counts.items()]
    report.append("score (killed + timed out) / (all - did not compile): %.3f" % score)
    tests, code = folder_lines("tests"), folder_lines("src")
    report.append("size: tests %d lines against %d of src/ (%.0f %%), blank and // lines not "
                  "counted" % (tests, code, 100.0 * tests / code if code else 0))
    survivors = sorted((m for m, o in results if o == "survived"),
                       key=lambda m: (m["file"], m["line"], m["col"]))
    report.append("survivors (%d):" % len(survivors))
    report += ["  " + shown(m) for m in survivors]
    text = "\n".join(report) + "\n"
    print(text, end="")
    with open(os.path.join(OUT, "report.txt"), "w") as f:
        f.write(text)
    if args.min_score is not None and score < args.min_score:
        print("mutants: score %.3f below %.3f" % (score, args.min_score), file=sys.stderr)
        return 1
    return 0


def folder_lines(folder):
    """The non-blank lines of a folder's C++ files that are not // comments alone."""
    count = 0
    for root, _, files in os.walk(os.path.join(ROOT, folder)):
        for name in files:
            if name.endswith((".cpp", ".h")):
                with open(os.path.join(root, name), encoding="utf-8", errors="replace") as f:
                    count += sum(1 for line in f
                                 if line.strip() and not line.lstrip().startswith("//"))
    return count


if __name__ == "__main__":
    sys.exit(main())
