#!/usr/bin/env python3
"""Checks the reference that scripts/docs has built, against the code: run by that script, in the root of the project.

Every public entity is documented, also those that Doxygen's own warnings leave out, and every class and every header's
names are in a part of docs/groups.dox; docs/architecture.md lists every `Deliberate:` comment and names every log
category and environment variable of libs/; its picture has the arrows that the #include lines of libs/ have, and no
others.
"""
import re
import sys
from collections import Counter
from pathlib import Path
from xml.etree import ElementTree

LIBS = Path("libs/libHXCommon")
PAGE = Path("docs/architecture.md")
XML = Path("build/docs/xml")


def is_documented(element):
    return any("".join(element.find(tag).itertext()).strip() for tag in ("briefdescription", "detaileddescription"))


def public_entities():
    """Name and documentation of all compounds, their members that are not private, and the values of enumerations."""
    entities = {}
    for path in XML.glob("*.xml"):
        for compound in ElementTree.parse(path).iterfind("compounddef"):
            scope = compound.findtext("compoundname")
            if compound.get("kind") in ("class", "struct", "namespace"):
                entities[compound.get("id")] = (scope, is_documented(compound))
            for member in compound.iterfind("sectiondef/memberdef"):
                arguments = member.findtext("argsstring") or ""
                if member.get("prot") == "private" or arguments.endswith("=delete"):
                    continue
                name = f"{scope}::{member.findtext('name')}{arguments}"
                entities[member.get("id")] = (name, is_documented(member))
                for value in member.iterfind("enumvalue"):
                    entities[value.get("id")] = (f"{scope}::{value.findtext('name')}", is_documented(value))
    return entities.values()


def check_coverage():
    entities = public_entities()
    missing = sorted(name for name, documented in entities if not documented)
    count = len(entities) - len(missing)
    # Rounded down: 100 % says that nothing is missing.
    print(f"{count} of {len(entities)} public entities documented ({100 * count // max(len(entities), 1)} %)")
    return [f"not documented: {name}" for name in missing] or ([] if entities else ["no entities found"])


def check_parts():
    """What holds only classes and namespaces, such as Communication, is in no part itself."""
    compounds = [compound for path in XML.glob("*.xml") for compound in ElementTree.parse(path).iterfind("compounddef")]
    grouped = {inner.text for compound in compounds if compound.get("kind") == "group" for inner in compound
               if inner.tag in ("innerclass", "innernamespace")}
    nested = {inner.text for compound in compounds if compound.get("kind") == "class"
              for inner in compound.iterfind("innerclass")}
    names = {compound.findtext("compoundname") for compound in compounds if compound.get("kind") == "class"
             or compound.get("kind") == "namespace" and compound.find("sectiondef") is not None} - nested
    print(f"{len(names & grouped)} of {len(names)} classes and headers in a part")
    return [f"docs/groups.dox has no part for {name}" for name in sorted(names - grouped)]


def check_deliberate():
    """The last table of the page names a file in the first column of each row; its rows are counted by file."""
    comments = Counter()
    for path in sources():
        comments[path.name] += path.read_text().count("Deliberate:")
    listed = Counter(re.findall(r"^\| `([\w.]+\.(?:h|cpp))` \|", PAGE.read_text(), re.MULTILINE))
    print(f"{listed.total()} of {comments.total()} deliberate oddities listed in {PAGE}")
    return [f"{name} has {comments[name]} Deliberate: comments, {PAGE} lists {listed[name]}"
            for name in sorted(comments | listed) if comments[name] != listed[name]]


def check_names():
    code = "".join(path.read_text() for path in sources())
    names = set(re.findall(r'"(Olvex\.[\w.]+)"|(?:qgetenv|qEnvironmentVariable)\("(\w+)"', code))
    names = {category or variable for category, variable in names}
    missing = sorted(name for name in names if f"| `{name}` |" not in PAGE.read_text())
    print(f"{len(names) - len(missing)} of {len(names)} log categories and environment variables listed")
    return [f"{PAGE} does not list {name}" for name in missing]


def sources():
    return sorted(path for path in LIBS.rglob("*") if path.suffix in (".h", ".cpp"))


def arrows_of_picture():
    dot = re.search(r"^```dot\n(.*?)^```", PAGE.read_text(), re.MULTILINE | re.DOTALL).group(1)
    arrows = set()
    for tail, heads in re.findall(r"^ *(\w+) -> (\w+|{[\w ]+})", dot, re.MULTILINE):
        arrows |= {(tail, head) for head in heads.strip("{}").split()}
    return arrows


def part_of(stem, parts):
    """AppConfigPaths belongs to AppConfig; what no arrow names is a part of its own."""
    return max((part for part in parts if stem.lower().startswith(part.lower())), key=len, default=stem)


def qt_module(header):
    for module, prefixes in (("QtNetwork", ("QNetwork", "QHttp")), ("QtQml", ("QQml", "QJS"))):
        if header.startswith(prefixes):
            return module
    return "QtCore"


def arrows_of_code(parts):
    known = {path.name for path in sources()}
    arrows = set()
    for path in sources():
        part = part_of(path.stem, parts)
        for quote, header in re.findall(r'^#include (["<])([^">]+)', path.read_text(), re.MULTILINE):
            name = Path(header).name
            if name in known and not name.endswith("Export.h"):
                arrows.add((part, part_of(Path(name).stem, parts)))
            elif quote == "<" and re.match("Q[A-Z]", name):
                arrows.add((part, qt_module(name)))
    return {(tail, head) for tail, head in arrows if tail != head and head != "QtCore"}


def check_arrows():
    stated = arrows_of_picture()
    actual = arrows_of_code({end for arrow in stated for end in arrow})
    print(f"{len(stated & actual)} of {len(actual)} dependencies in the picture")
    return ([f"{PAGE} lacks the arrow {tail} -> {head}" for tail, head in sorted(actual - stated)]
            + [f"{PAGE} has the arrow {tail} -> {head}, the code does not" for tail, head in sorted(stated - actual)])


faults = check_coverage() + check_parts() + check_deliberate() + check_names() + check_arrows()
print("\n".join(faults), end="\n" if faults else "", file=sys.stderr)
sys.exit(bool(faults))
