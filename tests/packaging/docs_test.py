#!/usr/bin/env python3
"""What the documents name is there: make targets, files, functions, tests, numbers on the
wire, environment variables, options and resources.
usage: docs_test.py SOURCE_ROOT APPLICATION_DEFAULTS"""
import pathlib
import re
import subprocess
import sys

root = pathlib.Path(sys.argv[1])
faults = []


def read(path):
    return (root / path).read_text(encoding="utf-8")


def check(condition, fault):
    if not condition:
        faults.append(fault)


def same(what, said, true):
    check(said == true, f"{what}: said only {sorted(said - true)}, unsaid {sorted(true - said)}")


sources = "".join(p.read_text(encoding="utf-8") for p in (root / "src").rglob("*.cc"))
headers = "".join(p.read_text(encoding="utf-8") for p in (root / "src").rglob("*.h"))
targets = set(re.findall(r"^([a-z-]+):", read("Makefile"), re.M))
for document in [*root.glob("*.md"), *(root / "docs").glob("*.md")]:
    text = read(document)
    for target in re.findall(r"(?<![\w-])make ([a-z-]+)(?=[`,.\s]*(?:`|#|\n|PREFIX|DESTDIR))", text):
        check(target in targets, f"{document}: there is no make {target}")
    prose = re.sub(r"^```.*?^```$", "", text, flags=re.M | re.S)
    for link in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", prose):
        check(document.parent.joinpath(link).exists(), f"{document}: no file {link}")
    for path in re.findall(r"`((?:src|tests|bench|docs|tools|packaging)/[\w./-]+)`(?! \(new)", text):
        check((root / path).exists() or re.search(r"/[A-Z]{3,}/", path),
              f"{document}: no file {path}")
    for preset in re.findall(r"--preset (\w+)", text):
        check(f'"name": "{preset}"' in read("CMakePresets.json"), f"{document}: no preset {preset}")

tests = "".join(p.read_text(encoding="utf-8") for p in (root / "tests").rglob("*_test.cc"))
there = {".".join(name) for name in re.findall(r"^TEST(?:_[FP])?\((\w+),\s*(\w+)\)", tests, re.M)}
there |= {f"fuzz.{p.stem.removesuffix('_fuzz')}" for p in (root / "tests/fuzz").glob("*_fuzz.cc")}
for page in ["docs/security.md", "docs/strangers.md", "docs/wire.md"]:
    for test in re.findall(r"`(fuzz\.\w+|[A-Z]\w+\.[A-Z]\w+)`", read(page)):
        check(test in there, f"{page}: there is no test {test}")

# The house: rooms with what they may use, and functions in the files of their row.
house = read("docs/architecture.md")
same("docs/architecture.md, rooms",
     {(room, *re.findall(r"`([\w/]+)`", uses))
      for room, uses in re.findall(r"^\| `([\w/]+)` \| [^|]* \| ([^|]*)\|$", house, re.M)},
     {(room, *re.sub(r"LIBRARIES.*|TIMEOUT.*|USES", "", uses, flags=re.S).split())
      for room, uses in re.findall(r"^qd_room\(([\w/]+)([^)]*)\)", read("CMakeLists.txt"), re.M)})
for row in re.findall(r"^\|.*`src/.*\|$", house, re.M):
    text = "".join(read(path) for path in re.findall(r"`(src/[\w./]+)`", row))
    for function in re.findall(r"`(?:\w+::)*(\w+)\(\)`", row):
        check(re.search(rf"\b{function}\(", text), f"docs/architecture.md: no {function}(): {row}")

# The wire: numbers with the constants that they are, and the numbers of what has a name.
wire = read("docs/wire.md")
for number, constant in re.findall(r"\b(0x\w+|\d+) \(`(\w+)`\)", wire):
    values = re.findall(rf"\b{constant} = (0x\w+|\d+)\b", sources + headers)
    check(int(number, 0) in [int(value, 0) for value in values],
          f"docs/wire.md: {constant} is {values}, not {number}")


def named_numbers(title):
    """The rows "| NUMBER | `NAME` |" below a heading."""
    part = re.split(rf"^#+ {title}\n", wire, flags=re.M)[1]
    rows = re.findall(r"^\| (\d+) \| `(\w+)` \|", re.split(r"^#", part, flags=re.M)[0], re.M)
    return {(name, int(number)) for number, name in rows}


def check_enumerators(title):
    """What is named below a heading is the whole of the enumerations that have these names."""
    named = named_numbers(title)
    there = set()
    for body in re.findall(r"enum\b[^{;]*{([^}]*)}", headers):
        one = {(name, int(number))
               for name, number in re.findall(r"\b(?:QD_)?(?:PT_)?(\w+) = (\d+)", body)}
        if one & named:
            there |= one
    same(f"docs/wire.md, {title}", named, there)


for title in ["Sound", "Pictures", "Calls"]:
    check_enumerators(title)
for name, number in named_numbers("Framework link"):
    check(re.search(rf"\b{name} = {number};", headers), f"docs/wire.md: {name} is not {number}")
same("docs/wire.md, commands", set(re.findall(r"^\| `(.)` \| `(\w+)` \|", wire, re.M)),
     {(sign, name) for name, sign in re.findall(r"(\w+) = '(.)'",
                                               read("src/framework/link/member_record.h"))})
same("docs/wire.md, states", set(re.findall(r"`(claim|live|left)`: ", wire)),
     set(re.findall(r'"(\w+)"', re.search(r"STATES {([^}]*)}", sources)[1])))

pages = "".join(p.read_text(encoding="utf-8") for p in (root / "packaging/man").glob("*.1"))
pages = pages.replace("\\", "")
same("pages, environment", set(re.findall(r"QD_[A-Z]+(?:_[A-Z]+)*", pages)),
     set(re.findall(r'"(QD_[A-Z]+(?:_[A-Z]+)*)"', sources))
     | set(re.findall(r"\$\{?(QD_[A-Z]+)",
                      read("packaging/bin/apanel") + read("packaging/bin/videopanel"))))
for name in re.findall(r'getenv\("(\w+)"\)', sources):
    check(re.search(rf"\b{name}\b", pages), f"the pages say nothing of {name}")

same("pages, options", set(re.findall(r"--[a-z][a-z-]+", pages)) - {"--help"},
     set(re.findall(r'\{"(--[a-z-]+)"', sources)) - {"--help"})

for man in (root / "packaging/man").glob("*.1"):
    done = subprocess.run(["groff", "-t", "-man", "-Tutf8", "-ww", "-z", man], check=False,
                          capture_output=True, text=True)
    check(done.returncode == 0 and not done.stderr, f"{man.name}: {done.stderr}")

for line in pathlib.Path(sys.argv[2]).read_text(encoding="utf-8").splitlines():
    if not line or re.match(r"! |!$", line):
        continue
    resource = re.fullmatch(r"!?\*([\w.*]+): \S.*", line)
    check(resource, f"application defaults: {line}")
    for part in re.split(r"[.*]", resource[1]) if resource else []:
        check(part == "translations" or re.search(rf"\b(XmN)?{part}\b", sources),
              f"application defaults: no {part}")

sys.exit("\n".join(faults) or 0)
