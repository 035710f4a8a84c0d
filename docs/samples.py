#!/usr/bin/env python3
"""Extracts the code samples of the pages and the public headers, for docs/samples/CMakeLists.txt to build.

    docs/samples.py DIRECTORY      run in the root of the project

C++ that is no whole file becomes the body of a member function of Scene (docs/samples/Scene.h), which has what samples
borrow from the application around them. A sample below a comment that names a file is a piece of that file, which the
tests build; all CMake samples and QML pages with windows are.
"""
import json
import re
import sys
from pathlib import Path

PAGES = sorted(Path(".").glob("*.md")) + sorted(Path("docs").glob("*.md"))
HEADERS = sorted(Path("libs/libHXCommon").rglob("*.h"))
IN_PAGE = re.compile(r"(?:<!-- (\S+) -->\n)?^```(\w+)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
IN_HEADER = re.compile(r"()@code(?:\{\.(\w+)\})?\n(.*?)^ *\* @endcode", re.MULTILINE | re.DOTALL)
WHOLE_FILE = re.compile(r"^(int main\(|class |#include )", re.MULTILINE)


def samples():
    """Path, line, the file that has it, language and text of each sample."""
    for paths, pattern in (PAGES, IN_PAGE), (HEADERS, IN_HEADER):
        for path in paths:
            page = path.read_text()
            for found in pattern.finditer(page):
                origin, language, text = found.groups()
                if paths is HEADERS:
                    text = re.sub(r"^ *\* ?", "", text, flags=re.MULTILINE)
                yield path, page.count("\n", 0, found.start(3)) + 1, origin, language or "cpp", text


def is_piece(text, origin):
    """Whether the lines stand in the file one after the other, however far they are indented."""
    lines, all_lines = ([line.strip() for line in part.splitlines()] for part in (text, Path(origin).read_text()))
    return any(all_lines[i:i + len(lines)] == lines for i in range(len(all_lines)))


def source(number, path, line, text):
    """Name and contents of the source file of a C++ sample."""
    marked = f'#line {line} "{path.absolute()}"\n{text}'
    if WHOLE_FILE.search(text):
        # moc's part is included below a class, as a whole file would do it itself.
        moc = re.search(r'#include "(\w+)\.moc"', text)
        name = moc.group(1) if moc else f"whole_{number}"
        if "Q_OBJECT" in text and not moc:
            marked += f'#include "{name}.moc"\n'
        return f"{name}.cpp", f'#include "Scene.h"\n{marked}'
    return f"part_{number}.cpp", (
        f'#include "Scene.h"\nstruct Sample{number} : Scene {{ int run(int, char **); }};\n'
        f"int Sample{number}::run([[maybe_unused]] int argc, [[maybe_unused]] char **argv)\n{{\n{marked}return 0;\n}}\n")


def main(directory):
    directory.mkdir(parents=True, exist_ok=True)
    for old in directory.glob("*.*"):
        old.unlink()
    faults = []
    for count, (path, line, origin, language, text) in enumerate(samples(), 1):
        if origin:
            if not is_piece(text, origin):
                faults.append(f"{path}:{line}: is no piece of {origin}")
        elif language == "cpp":
            name, contents = source(count, path, line, text)
            (directory / name).write_text(contents)
        elif language == "qml":
            (directory / f"Sample{count}.qml").write_text(text)
        elif language == "json":
            try:
                json.loads(text)
            except ValueError as error:
                faults.append(f"{path}:{line}: {error}")
        elif language != "dot":
            faults.append(f"{path}:{line}: no file is named for this {language} sample")
    print(f"{count} samples")
    print("\n".join(faults), end="\n" if faults else "", file=sys.stderr)
    return bool(faults)


sys.exit(main(Path(sys.argv[1])))
