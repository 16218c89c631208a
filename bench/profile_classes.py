"""Sorts what callgrind counted into classes."""
import re

# Each is a list of classes. The first whose pattern is found in "function [object]" takes the line.
WORK = [
    ("SQLite: steps and columns", r"libsqlite3"),
    ("XML library", r"libxml2"),
    ("allocator: records and what they own",
     r"malloc|free|calloc|realloc|operator (new|delete)|unlink_chunk"),
    ("records: make, fill, place, destroy",
     r"Fill|Build|Make|COwningList|introsort|_M_realloc|sort|~|_Rb_tree|Populate|OfferPoint|Verify|"
     r"CompleteSensor|FindCode|Status_TtableDevice|Add\(|vector|ClearLists|basic_string|IOList|::Set"),
    ("observer: its events", r"observe::|Counter::See|ReportKept|StoredNumber|FateOf"),
    ("texts: copies of key and value", r"memcpy|memmove|strnlen|strcpy|stpcpy"),
    ("texts: lengths and comparisons", r"strlen|strchr|strcmp|strncmp|memcmp|memchr|strstr"),
    ("numbers", r"Parse(Long|Double|Unsigned)|strto|mpn|round_and_return"),
    ("access to the row", r"libsqlitedb"),
    ("loop and dispatch", r"Dispatch|QueryDatabase|RowsFloor"),
    ("handlers: cut the key, find the attribute, store", r"libstatuscollector"),
    ("everything else", r""),
]

OBJECTS = [
    ("loader", r"\[[^]]*/ld-linux"),
    ("SQLite", r"\[[^]]*libsqlite3"),
    ("libxml2 and what it needs", r"\[[^]]*(libxml2|libicu|liblzma|libz\.)"),
    ("libsqlitedb", r"\[[^]]*libsqlitedb"),
    ("libstatus", r"\[[^]]*libstatus\.so"),
    ("libstatuscollector", r"\[[^]]*libstatuscollector"),
    ("libstatusinsight", r"\[[^]]*libstatusinsight"),
    ("the program", r"\[[^]]*/bin/"),
    ("allocator", r"malloc|free|calloc|realloc|operator (new|delete)|unlink_chunk"),
    ("C and C++ library", r"\[[^]]*(libc\.|libstdc\+\+|libm\.|libgcc)"),
    ("everything else", r""),
]

NAME = re.compile(r"(\w+)=\((\d+)\)(?: (.*))?$")
KINDS = {"cfn": "fn", "cob": "ob"}  # a called one is named once for both


def costs(path):
    """What callgrind wrote: instructions by "function [object]". callgrind_annotate would put functions of
    one name together, as those of templates, which each library has, whatever their objects are."""
    names, place, found, called = {}, {}, {}, False
    for line in path.read_text().splitlines():
        named = NAME.match(line)
        if named:
            kind, number, text = named.groups()
            key = KINDS.get(kind, kind), number
            names.setdefault(key, text)
            place[kind] = names[key]
        elif line.startswith("calls="):
            called = True  # the next line is what the called function cost
        elif line[:1].isdigit() or line[:1] in ("+", "-", "*"):
            if not called:
                what = f"{place['fn']} [{place['ob']}]"
                found[what] = found.get(what, 0) + int(line.split()[1])
            called = False
    return found


def classify(found, classes):
    totals = {name: 0 for name, _ in classes}
    for what, cost in found.items():
        totals[next(name for name, pattern in classes if re.search(pattern, what))] += cost
    return totals


def total(classified):
    return sum(classified.values())
