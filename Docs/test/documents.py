#!/usr/bin/env python3
"""Holds README.md and Docs/*.md to the truth: documents.py commands PROGRAM DOCUMENT | links [FOLDER] | messages | figures

commands: runs the document's blocks in their order, in a folder of its own that holds the sample clip `clip` (three small
          frames), with PROGRAM's folder on the path; of Commands.md, also looks for a heading for every command, and
          of README.md, compares the exit statuses with those of the manual page. What a block is, its first line says:
              ```sh             commands for bash; each must succeed
              ```sh exit=N      the same, but the block must end with status N
              ```text file=NAME is written into the folder as NAME (any language instead of text)
              ```text output    must be what the sh block above printed, both streams; "…" stands for anything
          Other blocks are only read.
links:    every relative link names a file, and an existing heading of it if it has a "#"; in FOLDER, where they are installed.
messages: every brief text of the exceptions of the core and the nodes, and what the sandbox says, stands in
          Troubleshooting.md.
figures:  the pictures that a script beside them draws are what that script draws.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

root = pathlib.Path(__file__).resolve().parent.parent.parent
docs = root / "Docs"
breaches = []
# Replaced by another text before anyone sees them.
never_shown = {"An interpolation array has the wrong length.", "The text is too long or nested too deeply.",
               "The value of a number does not convert."}


def blocks(path):
    """(line number, info string, text) of each fenced block."""
    start, info, text = 0, "", []
    for number, line in enumerate(path.read_text().splitlines(), 1):
        if start and line.strip() == "```":
            yield start, info, "".join(t + "\n" for t in text)
            start = 0
        elif start:
            text.append(line)
        elif line.startswith("```"):
            start, info, text = number, line[3:].strip(), []
    if start:
        breaches.append(f"{path.name}:{start}: the block does not end")


def fits(expected, printed):
    """Whether the lines are those printed. A line "…" stands for any lines or none, "…" within a line for any text."""
    lines = ["(?:.*\\n)*" if line == "…" else ".*".join(map(re.escape, line.split("…"))) + "\\n"
             for line in expected.splitlines()]
    return re.fullmatch("".join(lines), printed.rstrip("\n") + "\n")


def check_commands(program, document):
    environment = dict(os.environ, PATH=f"{program.parent}{os.pathsep}{os.environ['PATH']}", LC_ALL="C.UTF-8")
    with tempfile.TemporaryDirectory(prefix="orvex-docs-") as top:
        # The search for correction files climbs up; it shall not leave the test's own folders.
        folder = pathlib.Path(top, *"12345")
        folder.mkdir(parents=True)
        subprocess.run([program, "sample", "clip", "--frames", "3", "--size", "640x360", "--progress", "none"],
                       cwd=folder, env=environment, check=True)
        printed = ""
        count = 0
        for number, info, text in blocks(document):
            language, *words = info.split() or [""]
            options = dict(w.split("=", 1) for w in words if "=" in w)
            if "file" in options:
                (folder / options["file"]).write_text(text)
            elif language == "sh":
                count += 1
                result = subprocess.run(["bash", "-euo", "pipefail", "-c", text], cwd=folder, env=environment, text=True,
                                        stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
                printed = result.stdout
                if result.returncode != int(options.get("exit", 0)):
                    breaches.append(f"{document.name}:{number}: ended with {result.returncode}\n{text}{printed}")
            elif "output" in words and not fits(text, printed):
                breaches.append(f"{document.name}:{number}: this was not printed; what was:\n{printed}")
        print(f"{document.name}: {count} blocks of commands")
        if document.name == "Commands.md":
            help_text = subprocess.run([program, "help"], env=environment, text=True, capture_output=True).stdout
            commands = re.findall(r"^  (\w+)  ", help_text.split("Subcommands:")[-1], re.M)
            headings = re.findall(r"\w+", " ".join(re.findall(r"^## (.*)", document.read_text(), re.M)))
            breaches.extend(f"{document.name}: has no heading for {c}" for c in commands if c not in headings)
            if len(commands) < 5:
                breaches.append(f"the help names only these commands: {commands}")
        if document.name == "README.md":
            page = subprocess.run([program, "help", "--man"], env=environment, text=True, capture_output=True).stdout
            told = [(", ".join(re.findall(r"\d+", status)), meaning) for status, meaning
                    in re.findall(r"^\.TP\n\.BR? (.*)\n(.*)\.$", page.split(".SH EXIT STATUS")[-1], re.M)]
            listed = re.findall(r"^\| (\d[\d, ]*) \| (.*?) \|", document.read_text(), re.M)
            if told != listed:
                breaches.append(f"{document.name}: lists the exit statuses {listed}, the manual page {told}")


def anchors(path):
    """The names under which the headings of a document can be linked to."""
    headings = re.findall(r"^#+ +(.+)$", re.sub(r"^```.*?^```", "", path.read_text(), flags=re.S | re.M), re.M)
    return {re.sub(r"[^\w\- ]", "", h.lower()).strip().replace(" ", "-") for h in headings}


def check_links(folder=root):
    documents = [folder / "README.md", *sorted((folder / "Docs").glob("*.md"))]
    if len(documents) < 10:
        breaches.append(f"only {len(documents)} documents are in {folder}")
    for document in documents:
        text = re.sub(r"^```.*?^```", "", document.read_text(), flags=re.S | re.M)
        for target in re.findall(r"\]\(([^)\s]+)\)", text):
            if re.match(r"[a-z]+:", target):
                continue
            name, _, heading = target.partition("#")
            path = document.parent / name if name else document
            if not path.exists():
                breaches.append(f"{document.name}: \"{target}\" does not exist")
            elif heading and heading not in anchors(path):
                breaches.append(f"{document.name}: \"{target}\": there is no such heading")


def literals(text):
    """Texts of C++ string literals in a row joined, as one list; other text between them separates."""
    joined = re.findall(r'"(?:[^"\\\n]|\\.)*"(?:\s*"(?:[^"\\\n]|\\.)*")*', text)
    return ["".join(re.findall(r'"((?:[^"\\\n]|\\.)*)"', j)).replace('\\"', '"') for j in joined]


def check_messages():
    known = " ".join((docs / "Troubleshooting.md").read_text().split())
    sources = sorted([*(root / "Core" / "src").rglob("*.cpp"), *(root / "Nuke" / "src").rglob("*.cpp")])
    count = 0
    for source in sources:
        code = re.sub(r"//[^\n]*", "", source.read_text())
        code = "\n".join(l for l in code.splitlines() if not l.startswith("#"))
        is_exception = source.name.endswith("Exception.cpp")
        for text in literals(code):
            # A sentence: what a person is told. Labels, keys and pieces of sentences are none.
            if text in never_shown:
                continue
            sentence = re.match(r"[A-Z][a-z]+ [^:]*?[a-z]{2}[.!]", text)
            throws = is_exception or "throw" in code or "error(" in code
            if not sentence or not throws or "tooltip" in source.name.lower() or "\\n" in text:
                continue
            if source.parts[-3:-1] == ("Nuke", "src") and not text.startswith(("An issue", "Unknown")):
                continue  # the tooltips and help texts
            count += 1
            if sentence.group(0) not in known:
                breaches.append(f"Troubleshooting.md: lacks \"{sentence.group(0)}\" of {source.relative_to(root)}")
    for source in sorted((root / "Image" / "src" / "Sandbox").glob("*.cpp")):
        if source.stem not in ("SandboxedReader", "SandboxedWriter", "CodecChild", "CodecProcess"):
            continue  # the reasons that stand in parentheses behind a message
        for text in literals(source.read_text()):
            # What is said before a value or an advice.
            beginning = re.split("[;(]", text)[0].strip()
            if " " not in beginning or len(beginning) < 20:
                continue
            count += 1
            if beginning not in known:
                breaches.append(f"Troubleshooting.md: lacks \"{beginning}\" of {source.relative_to(root)}")
    if count < 40:
        breaches.append(f"only {count} messages were found in the sources; the search is broken")


def check_figures():
    for script in sorted((docs / "images").glob("*.py")):
        drawn = subprocess.run([sys.executable, script], text=True, capture_output=True, check=True).stdout
        if script.with_suffix(".svg").read_text() != drawn:
            breaches.append(f"{script.name}: draws another picture than {script.stem}.svg")


if sys.argv[1] == "commands":
    check_commands(pathlib.Path(sys.argv[2]), root / sys.argv[3])
elif sys.argv[1] == "links":
    check_links(*map(pathlib.Path, sys.argv[2:]))
else:
    {"messages": check_messages, "figures": check_figures}[sys.argv[1]]()
print("\n".join(breaches))
sys.exit(bool(breaches))
