#!/usr/bin/env python3
"""What the documents name is there: make targets, pictures, environment variables,
options and resources. usage: docs_test.py SOURCE_ROOT APPLICATION_DEFAULTS"""
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
targets = set(re.findall(r"^([a-z-]+):", read("Makefile"), re.M))
for document in [root / "README.md", *(root / "docs").glob("*.md")]:
    text = read(document)
    for target in re.findall(r"(?<![\w-])make ([a-z-]+)(?=[`,.\s]*(?:`|#|\n|PREFIX|DESTDIR))", text):
        check(target in targets, f"{document}: there is no make {target}")
    for link in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", text):
        check(document.parent.joinpath(link).exists(), f"{document}: no file {link}")

tests = "".join(p.read_text(encoding="utf-8") for p in (root / "tests").rglob("*_test.cc"))
there = {".".join(name) for name in re.findall(r"^TEST(?:_[FP])?\((\w+),\s*(\w+)\)", tests, re.M)}
there |= {f"fuzz.{p.stem.removesuffix('_fuzz')}" for p in (root / "tests/fuzz").glob("*_fuzz.cc")}
for page in ["docs/security.md", "docs/strangers.md"]:
    for test in re.findall(r"`(fuzz\.\w+|[A-Z]\w+\.[A-Z]\w+)`", read(page)):
        check(test in there, f"{page}: there is no test {test}")

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
