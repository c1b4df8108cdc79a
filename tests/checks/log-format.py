#!/usr/bin/env python3
"""docs/log-format.md tells what logs hold: its tables are held against the logs and texts that the tests expect,
against the names and numbers of the interface, and against the names and messages that the library writes."""

import re

import check

PAGE = "docs/log-format.md"
NAME = r"[A-Za-z_][\w.]*"
TAG = re.compile(rf'<({NAME})((?: [\w.]+="[^"<>\n]*")*)(/?)>')
REAL = r"-?(?:\d+(?:\.\d+)?(?:e[+-]\d\d+)?|inf|nan)"
FORMS = {
    "bool": r"TRUE|FALSE",
    "double": REAL,
    "float": REAL,
    "point": rf"(?:{REAL} ){{2}}",
    "vector": rf"(?:{REAL} ){{2}}",
    "box": rf"(?:{REAL} ){{4}}",
    "matrix": rf"(?:{REAL} ){{6}}",
    "box of i32": r"(?:-?\d+ ){4}",
    "text": r"[ !#-%'-;=?-~]*",
    "edge flag": r"\[(?:0|0x[0-9a-f]+)\] (?:GPA_SUPPRESS_STROKING_FLAG )?(?:GPA_SUBPATH_\w+|UNKNOWN_VALUE\(\d+\)) ",
}
NAMES = "orvlog/names/"
# A bit beside a number, sizes, an encoding that the log has as a number, and the modes, which the root has in words.
NO_NAMES_OF_THE_LOG = {"GPA_SUPPRESS_STROKING_FLAG", "GFI_GLYPH_DESC_FBE_PAYLOAD", "GFI_GLYPH_DESC_BITMAP_PAYLOAD",
                       "GFI_GLYPH_DESC_TRUETYPE_PAYLOAD", "GFI_GLYPH_DESC_RLE_PAYLOAD", "GOP_ENCODING_CHUNKY",
                       "GOP_ENCODING_PLANAR", "ORVLOG_MODE_TRANSPARENT", "ORVLOG_MODE_BASE"}
# What the library's sources hold besides names and messages of the log.
NOT_OF_THE_LOG = {"dir", "img", "attr", "0123456789abcdef", "csd_Defn.CallbackBufferSize"}


def rows(text):
    """The tables of a text: for each row the heads of its columns, and its cells."""
    heads = None
    for line in text.splitlines():
        cells = [cell.strip() for cell in line.strip("|").split(" | ")] if line.startswith("| ") else None
        if cells is None or line.startswith("| --- "):
            heads = heads if cells else None
        elif heads is None:
            heads = cells
        else:
            yield heads, cells


def attributes(cell):
    """What a cell of attributes says: name, type, and the group of those that come and go together, or None."""
    group, found = 0, []
    for part in re.findall(r"\[(`.*?)\](?=,|$)|(`[^`]+`[^,]*)", cell):
        inner = part[0] or part[1]
        group += 1
        inner = inner.partition(": ")[0] if part[0] else inner
        for item in inner.split(", "):
            match = re.fullmatch(r"`([\w.]+)` (.*?)(?: \(.*\))?", item)
            if match:
                found.append((match[1], match[2], group if part[0] else None))
    return found


def elements(page):
    known = {}
    for heads, cells in rows(page):
        if heads[0] in ("Element", "Shape", "Edge", "Pointer element") and heads[1] in ("Attributes", "Attribute"):
            for name in re.findall(rf"`({NAME})`", cells[0]):
                known[name] = attributes(cells[1]), "yes" in cells[2:3] or "closed in itself" in cells[2:3]
    return known


def names_of(section):
    """The attributes that a row of names belongs to, and the row's names."""
    for _, cells in rows(section):
        yield re.findall(rf"`({NAME})`", cells[0]), cells[1]


def number_fault(kind, value):
    low, high = (0, 1 << int(kind[1:])) if kind[0] == "u" else (-1 << int(kind[1:]) - 1, 1 << int(kind[1:]) - 1)
    return not (re.fullmatch(r"-?\d+", value) and low <= int(value) < high)


def flags_fault(flags, value):
    match = re.fullmatch(r"\[(0|0x[0-9a-f]+)\] ((?:\w+ )*)", value)
    if not match:
        return True
    number = int(match[1], 16)
    bits = [name for name, bit in flags if bit & number and not name.startswith("GGO_XFLAG_ROT")]
    if number == 0:
        bits = [name for name, bit in flags if bit == 0][:1]
    bits += [name for name, bit in flags if name.startswith("GGO_XFLAG_ROT") and bit == number & 0xE0]
    return match[2].split() != bits


class Page:
    def __init__(self):
        page = check.text(PAGE)
        self.text = page
        self.elements = elements(page.partition("\n## Enumerations")[0])
        enums, flags = page.partition("\n## Enumerations")[2].partition("\n## Examples")[0].split("\n## Flags")
        self.enums, self.flags = {}, {}
        for owners, cell in names_of(enums):
            self.enums.update({owner: re.findall(r"`(\w+)`", cell) for owner in owners})
        for owners, cell in names_of(flags):
            pairs = [(name, int(value, 16)) for name, value in re.findall(r"`(\w+)` (0x[0-9A-F]+|0)\b", cell)]
            pairs += [(name, int(value, 16)) for value, name in re.findall(r"(0x[0-9A-F]+) `(GGO\w+)`", cell)]
            self.flags.update({owner: pairs for owner in owners})

    def value_fault(self, name, kind, value):
        if kind == "enum":
            return value not in self.enums.get(name, ()) and not re.fullmatch(r"UNKNOWN_VALUE\(-?\d+\)", value)
        if kind == "flags":
            return flags_fault(self.flags.get(name, ()), value)
        if " or " in kind:
            return all(self.value_fault(name, one, value) for one in kind.split(" or "))
        if kind.endswith("]"):
            item = "[0-9a-f]{2}" if kind.startswith("hex") else REAL
            count = kind.partition("[")[2][:-1]
            return not re.fullmatch(rf"(?:{item} ){'*' if count == 'n' else '{' + count + '}'}", value)
        if kind in FORMS:
            return not re.fullmatch(FORMS[kind], value)
        return number_fault(kind, value)

    def tag_faults(self, name, found, closed):
        told, own_end = self.elements[name]
        pending, groups = list(found), {}
        for attribute, kind, group in told:
            there = bool(pending) and pending[0][0] == attribute
            if there and self.value_fault(attribute, kind, pending[0][1]):
                yield f'{attribute}="{pending[0][1]}" is no {kind}'
            if there:
                pending.pop(0)
            elif group is None:
                yield f"lacks {attribute}"
            groups.setdefault(group, set()).add(there)
        if pending:
            yield f"has {pending[0][0]}"
        if closed != own_end and not name.startswith("GFI_GlyphGet"):
            yield "is closed in itself" if closed else "is not closed in itself"
        yield from (f"has half of the group {group}" for group, sides in groups.items() if group and len(sides) == 2)


def expected_texts():
    for path in check.files(".xml", ".inc", under=("tests/expected/",)):
        # The text of tickets is told on a page of its own.
        yield path, re.sub(r"^ *<GXC_ColorTickets>.*?^ *</GXC_ColorTickets>$", "", check.text(path), flags=re.S | re.M)
    records = [f"tests/orvlog/{folder}/" for folder in ("colour", "core", "font", "image", "records")]
    for path in check.files(".cpp", under=records):
        joined = re.sub(r'\)"\s*R"\(|"\s*\n\s*"', "", check.text(path))
        yield path, joined.replace('\\"', '"')


def literals(text):
    text = re.sub(r"//.*|#include.*", "", text)
    return set(re.findall(r'"((?:[^"\\\n]|\\.)*)"', text))


def interface_numbers():
    numbers = {}
    for path in check.files(".h", under=("orvlog/interface/", "holv-core/ggo/ggo-records")):
        for block in re.findall(r"\benum\s*\{([^}]*)\}", re.sub(r"//.*", "", check.text(path))):
            value = -1
            for item in filter(None, (item.strip() for item in block.split(","))):
                name, _, told = (side.strip() for side in item.partition("="))
                value = int(told, 0) if told else value + 1
                numbers[name] = value
    return numbers


def unlisted(known):
    """The enumerators of the interface that the log has no name for, but for those that no list could hold."""
    return sorted(interface_numbers().keys() - {name for names in known for name in names} - NO_NAMES_OF_THE_LOG)


def number_faults(page):
    numbers = interface_numbers()
    for names in page.enums.values():
        for value, name in enumerate(names):
            if numbers.get(name) != value and name != "GCM_WHITEPOINT_D65":
                yield f"{name} is {numbers.get(name)}"
    for pairs in page.flags.values():
        yield from (f"{name} is {numbers.get(name)}" for name, value in pairs if numbers.get(name) != value)


def name_faults(page, path):
    for literal in sorted(literals(check.text(path)) - NOT_OF_THE_LOG):
        if re.fullmatch(r"[\w.]+", literal) and not re.search(rf"(?<!\w){re.escape(literal)}(?!\w)", page.text):
            yield f"{literal} is not told"


def lists(begin, path):
    """The names of each list of a file of names, by that of the list."""
    for name, body in re.findall(rf"^{begin}\((\w+)\)\n(.*?)^ORVLOG_END", check.text(path), re.M | re.S):
        yield name, re.findall(r"^ORVLOG_\w+\((\w+)\)$", body, re.M)


def told_flags(page):
    """The names of each table of flags, as the page has them."""
    for pairs in page.flags.values():
        names = [name for name, _ in pairs]
        rotations = [name for name in names if name.startswith("GGO_XFLAG_ROT")]
        yield [name for name in names if name not in rotations]
        if rotations:
            yield rotations


def told_messages(page):
    """The warnings of the page's table."""
    for heads, cells in rows(page.text):
        if heads[0] == "Message":
            yield cells[0].strip("`")


def message_faults(page, path):
    for call in re.findall(r"(?:defer_warning|warn|warn_once|pull_fixed)\(([^;]*?)\);", check.text(path)):
        for message in re.findall(r'"([^"]{20,})"', call):
            if re.sub(r"Fn (BITMAP|PATH) call", "Fn FBE call", message) not in page.text:
                yield f'"{message}" is not told'


report = check.Report()
page = Page()
seen = set()
tables = [names for _, names in lists("ORVLOG_FLAGS", NAMES + "flags.inc")]
enumerations = [names for path in ("colour-enumerations.inc", "enumerations.inc")
                for _, names in lists("ORVLOG_ENUMERATION", NAMES + path)]
sources = ""
for path, text in expected_texts():
    for match in TAG.finditer(text):
        name, found, closed = match[1], re.findall(r' ([\w.]+)="([^"]*)"', match[2]), match[3] == "/"
        # In sources a name alone may be the argument of a template.
        if name in page.elements and (found or not path.endswith(".cpp") or not page.elements[name][0]):
            seen.add(name)
            report.hold(f"{path}: {match[0][:160]}", page.tag_faults(name, found, closed))
report.hold(PAGE, (f"no expected text has a {name}" for name in sorted(page.elements.keys() - seen)))
report.hold(PAGE, number_faults(page))
for path in check.files(".cpp", ".h", under=("orvlog/",)):
    if not path.startswith(("orvlog/interface/", "orvlog/colour/gxc/", "orvlog/log/orvlog-merge")):
        report.hold(path, name_faults(page, path))
        report.hold(path, message_faults(page, path))
        sources += re.sub(r'"\s*\n\s*"', "", check.text(path))
told = list(told_flags(page))
report.hold("tables of flags", (f"not in the order told: {', '.join(names)}" for names in tables if names not in told))
report.hold(PAGE, (f"no table of flags has {', '.join(names)}" for names in told if names not in tables))
told_enums = list(page.enums.values())
report.hold("enumerations", (f"not told: {', '.join(names)}" for names in enumerations
                             if names not in told_enums and ", ".join(f"`{name}`" for name in names) not in page.text))
report.hold(PAGE, (f"no enumeration has {', '.join(names)}" for names in told_enums if names not in enumerations))
report.hold("lists of names", [] if len(tables) > 10 and len(enumerations) > 20 else ["are not read"])
report.hold("the interface", (f"{name} is in no list of names" for name in unlisted(tables + enumerations)))
messages = list(told_messages(page))
report.hold(PAGE, [] if len(messages) > 20 else ["has no table of messages"])
report.hold(PAGE, (f'no source says "{message}"' for message in messages if f'"{message}"' not in sources))
report.end()
