"""docs/performance.md from the figures that bench/report measured."""
import os
import platform
import subprocess

from profile_classes import total

KIB = 1024
MAIN = "10000"  # rows
SHIPPED = ("libsqlitedb", "libstatus", "libstatuscollector")


def fraction(value):
    """0.05 as "1/20"."""
    return f"1/{1 / value:.1f}"


def rows_time(f, rows):
    return f["rows"][rows]["Cycle"]["time"] - f["rows"][rows]["Probe"]["time"]


def rows_count(f, rows):
    return total(f["instructions"][rows]["Cycle"]) - total(f["instructions"][rows]["Probe"])


def ratio(f, name, floor):
    return f["demo"][name]["time"] / f["demo"][floor]["time"]


def process(f, name, of):
    return f["processes"][name][0] / f["processes"][of][0]


def process_count(f, name, of):
    return total(f["process instructions"][name]) / total(f["process instructions"][of])


def grows(f, what):
    few, many = f["growth"][what]
    return many / few


def size(f, libraries=SHIPPED):
    return sum(total(f["sizes"][library]) for library in libraries)


def reaches(f):
    """The rows of the table: what, at most, measured, how the two are written, where the profile is."""
    demo = f["demo"]
    largest = max(f["rows"], key=int)
    main = f["instructions"][MAIN]
    time, kib, mib, part = "{:.2f}".format, "{:.0f} KiB".format, "{:.1f} MiB".format, fraction
    document = (demo["Cycle"]["time"] + demo["Json"]["time"]) / 1000
    python = f["processes"]["python"][0]
    shared = (f["shared sources"]["Probe"]["time"] + demo["Json"]["time"]) / 1000
    return [
        ("probe / floor, demo with a package database of 3 MiB, time", 1.3,
         ratio(f, "Probe", "ProbeFloor"), time, "Demo"),
        ("whole cycle of the demo / (probe floor + rows floor), time", 1.4,
         ratio(f, "Cycle", "Floors"), time, "Demo"),
        ("rows / bare loop, 10,000 rows, instructions", 1.7,
         rows_count(f, MAIN) / total(main["RowsFloor"]), time, "Rows"),
        ("rows / bare loop, 10,000 rows, time", None,
         rows_time(f, MAIN) / f["rows"][MAIN]["RowsFloor"]["time"], time, "Rows"),
        ("observer on / off, 10,000 rows, instructions", 1.1,
         total(main["Watched"]) / total(main["Cycle"]), time, "Observer"),
        ("cost of a row with 100 display interfaces / with 1, instructions", 1.1,
         grows(f, "rows, 100 display interfaces / 1"), time, "Growth"),
        (f"cost of a row among {int(largest):,} / among 1,000, instructions", 1.1,
         grows(f, "rows"), time, "Growth"),
        (f"cost of a row among {int(largest):,} / among 1,000, time", 1.1,
         rows_time(f, largest) / int(largest) / (rows_time(f, "1000") / 1000), time, "Growth"),
        ("allocations by the cycle itself for a row, records and their texts apart", 0,
         f["allocations per row"], "{:g}".format, "Rows"),
        ("`show` / empty program on the same libraries, installed, time", 1.9,
         process(f, "show", "empty"), time, "Processes"),
        ("`show` / empty program on the same libraries, installed, instructions", None,
         process_count(f, "show", "empty"), time, "Processes"),
        ("`show --format json` / the same, time", 1.6, process(f, "show json", "empty"), time,
         "Processes"),
        ("`show --format json` / the same, instructions", None,
         process_count(f, "show json", "empty"), time, "Processes"),
        ("peak memory of `show` above the empty program", 3.5,
         (f["processes"]["show"][1] - f["processes"]["empty"][1]) / KIB, mib, "Processes"),
        ("JSON / XML of the demo, time", 1.2, ratio(f, "Json", "Xml"), time, "Demo"),
        ("XML of the demo / libxml2 floor, time", 1.2, ratio(f, "Xml", "XmlFloor"), time, "Demo"),
        ("a document in a host that stays / Python peer, time", 1 / 30, document / python, part,
         "Processes"),
        ("a process for each document, JSON / Python peer, time", 1 / 30,
         process(f, "show json", "python"), part, "Processes"),
        ("probe without device nodes and JSON of the demo / node exporter's scrape, time", None,
         shared / f["exporter"][0], part, "Processes"),
        ("stripped size of `libsqlitedb`, `libstatus`, `libstatuscollector`", 400, size(f) / KIB, kib,
         "Size"),
    ]


def reasons(f):
    """Of the rows of the table that are not reached: why, with figures of the same run."""
    parts, counts = demo_parts(f), f["instructions"][MAIN]
    more = {name: mine - floor for name, (mine, floor) in parts.items() if is_time(mine) and is_time(floor)}
    events = {name: (counts["Watched"][name] - counts["Cycle"][name]) / int(MAIN) for name in counts["Cycle"]}
    kinds = {kind: sum(f["sizes"][library][kind] for library in SHIPPED) / KIB
             for kind in f["sizes"][SHIPPED[0]]}
    largest = sorted(kinds, key=kinds.get, reverse=True)[:4]
    calls = sum(f["demo calls"]["Cycle"].values()) - sum(f["demo calls"]["Floors"].values())
    rows = {name: (count - counts["RowsFloor"].get(name, 0)) / int(MAIN)
            for name, count in rows_profile(f).items()}
    document = f["demo instructions"]
    steps = process_steps(f)

    def listed(values, form):
        return ", ".join(form(name, value) for name, value in values)

    def process_reason(name):
        least = 1 + f["demo"]["Cycle"]["time"] / 1000 / f["processes"]["empty"][0]
        return ("beyond the empty program: " +
                listed(list(steps[name].items())[1:], lambda what, cost: f"{what} {cost:,.0f} µs") +
                f"; with nothing but a cycle as in a host that stays it would be {least:.2f}")

    return {
        "probe / floor": "above its floor: " + listed(
            [each for each in more.items() if not each[0].startswith("rows")],
            lambda name, cost: f"{name} {cost:+,.0f} µs") +
            f"; a whole cycle makes {calls:+.0f} system calls more, most to look at what was opened",
        "whole cycle": "above its floor: " + listed(more.items(), lambda name, cost: f"{name} {cost:+,.0f} µs"),
        "rows / bare loop": "instructions for a row above the loop: " + listed(
            sorted(((name, more) for name, more in rows.items() if abs(more) >= 1),
                   key=lambda each: -each[1]),
            lambda name, more: f"{name} {more:+,.0f}") +
            f"; without any copy and without the allocator {without_records(f):.2f} would remain",
        "observer": "instructions for a row, to make the events, hand them over and count them: " + listed(
            [each for each in events.items() if round(each[1])], lambda name, cost: f"{name} {cost:+,.0f}"),
        "`show` / empty": process_reason("show"),
        "`show --format json`": process_reason("show json"),
        "peak memory": "MiB of the program alone (`--version`) {:.1f}, with a cycle and JSON {:.1f}, with all "
                       "that is said of each row {:.1f}".format(*(
                           (f["processes"][name][1] - f["processes"]["empty"][1]) / KIB
                           for name in ("start", "show json", "show"))),
        "XML of the demo": "above its floor, in thousand instructions: " + listed(
            [(name, (document["Xml"][name] - document["XmlFloor"][name]) / 1000) for name in document["Xml"]
             if abs(document["Xml"][name] - document["XmlFloor"][name]) > 500],
            lambda name, cost: f"{name} {cost:+,.0f}"),
        "a process for each document": "the empty program alone, which loads the libraries, takes "
                                       f"{fraction(process(f, 'empty', 'python'))}",
        "a document in a host": "the floor of its probe alone takes "
                                f"{fraction(f['demo']['ProbeFloor']['time'] / 1000 / f['processes']['python'][0])}",
        "stripped size": listed([(f"`{library}`", size(f, [library]) / KIB) for library in SHIPPED] +
                                [(kind, kinds[kind]) for kind in largest],
                                lambda what, kibibytes: f"{what} {kibibytes:.0f} KiB"),
    }


def reason_list(f):
    """A line for each row that is not reached."""
    lines = []
    for what, most, value, form, where in reaches(f):
        if most is not None and not is_reached(most, value, form):
            why = next((why for begin, why in reasons(f).items() if what.startswith(begin)),
                       f"what is under {where} says where it goes")
            lines.append(f"- {what}, {form(value)}: {why}.")
    return "\n".join(["What is not reached, and what takes the rest:", "", *lines] if lines else [])


def table(head, lines):
    rule = ["---"] + ["---:"] * (len(head) - 1)
    return "\n".join("| " + " | ".join(line) + " |" for line in [head, rule, *lines])


def is_reached(most, value, form):
    """As both are written: what is shown as the limit is within it."""
    return value <= most or form(value) == form(most)


def reach_table(f):
    lines = []
    for what, most, value, form, where in reaches(f):
        link = f"[{where}](#{where.lower()})"
        verdict = "" if most is None else "reached" if is_reached(most, value, form) else "**not reached**"
        lines.append([what, "" if most is None else form(most), form(value), verdict, link])
    return table(["what", "at most", "measured", "", "where it goes"], lines)


def rows_table(f):
    names = ["Cycle", "Probe", "RowsFloor", "Xml", "XmlFloor", "Json", "Parse"]
    lines = [[f"{int(n):,}", *(f"{f['rows'][n][name]['time'] / 1000:,.0f}" for name in names),
              f"{f['allocations'][n]:,.0f}"] for n in sorted(f["rows"], key=int)]
    return table(["rows", *names, "allocations of a cycle"], lines)


def instruction_table(f):
    lines = []
    for n in sorted(f["instructions"], key=int):
        floor = total(f["instructions"][n]["RowsFloor"])
        lines.append([f"{int(n):,}", f"{total(f['instructions'][n]['Cycle']):,.0f}",
                      f"{rows_count(f, n) / int(n):,.0f}", f"{floor / int(n):,.0f}",
                      f"{rows_count(f, n) / floor:.2f}"])
    return table(["rows", "a cycle", "a row", "a row of the floor", "ratio"], lines)


def comparison_table(head, measured, floor, per, digits=0):
    """By class: what is measured, its floor, the difference; classes of nothing are left out."""
    def cell(value, sign=""):
        return f"{value:{sign},.{digits}f}"

    lines = []
    for name in measured:
        values = measured[name] / per, floor.get(name, 0) / per
        if not all(map(is_time, values)):
            lines.append([name, *(cell(value) if is_time(value) else "?" for value in values), "?"])
        elif any(round(value, digits) for value in values):
            lines.append([name, cell(values[0]), cell(values[1]), cell(values[0] - values[1], "+")])
    sums = total(measured) / per, total(floor) / per
    lines.append([f"**{word}**" for word in ("all", cell(sums[0]), cell(sums[1]),
                                             cell(sums[0] - sums[1], "+"))])
    return table(head, lines)


def rows_profile(f):
    counts = f["instructions"][MAIN]
    return {name: count - counts["Probe"][name] for name, count in counts["Cycle"].items()}


def row_table(f):
    return comparison_table(["instructions for a row", "cycle", "floor", "more"], rows_profile(f),
                            f["instructions"][MAIN]["RowsFloor"], int(MAIN))


def without_records(f):
    """The ratio to the floor that remains without any copy of a text and without the allocator."""
    mine = rows_profile(f)
    left = total(mine) - sum(count for name, count in mine.items()
                             if name.startswith(("allocator", "texts: copies")))
    return left / total(f["instructions"][MAIN]["RowsFloor"])


def observer_table(f):
    counts = f["instructions"][MAIN]
    return comparison_table(["instructions for a row", "observed", "not observed", "more"],
                            counts["Watched"], counts["Cycle"], int(MAIN))


def growth_table(f):
    lines = [[what, f"{few:,.0f}", f"{many:,.0f}", f"{many / few:.2f}"]
             for what, (few, many) in f["growth"].items()]
    return table(["instructions for each", "few", "many", "ratio"], lines)


BODIES = ("Cycle", "Floors", "Watched", "RowsFloor", "Probe", "ProbeFloor", "Packages", "PackagesFloor",
          "Network", "NetworkFloor", "ProbeJson", "Xml", "XmlFloor", "Json", "Parse", "Explained", "Text")


def demo_table(f):
    lines = [[name, f"{f['demo'][name]['time'] / 1000:,.1f}",
              f"{total(f['demo instructions'][name]):,.0f}"] for name in BODIES]
    return table(["demo", "µs", "instructions"], lines)


def is_time(value):
    """False for what is left of a whole when its parts took longer: other work disturbed them."""
    return value >= 0


def demo_parts(f):
    """The demo's cycle in parts: microseconds of each and of its floor."""
    time = {name: figures["time"] / 1000 for name, figures in f["demo"].items()}
    parts = {
        "package database": (time["Packages"], time["PackagesFloor"]),
        "network": (time["Network"], time["NetworkFloor"]),
        "devices, register dumps, identity, memory, storage": (
            time["Probe"] - time["Packages"] - time["Network"],
            time["ProbeFloor"] - time["PackagesFloor"] - time["NetworkFloor"]),
        "rows, time, the document before": (time["Cycle"] - time["Probe"],
                                             time["Floors"] - time["ProbeFloor"]),
    }
    return parts


def parts_table(f):
    parts = demo_parts(f)
    return comparison_table(["µs", "cycle", "floor", "more"],
                            {name: both[0] for name, both in parts.items()},
                            {name: both[1] for name, both in parts.items()}, 1, 1)


def calls_table(f):
    """System calls of the demo's cycle and of its floors; those that are few stand together."""
    cycle, floor = (f["demo calls"][body] for body in ("Cycle", "Floors"))
    names = sorted({**cycle, **floor}, key=lambda name: (-cycle.get(name, 0), name))
    rare = [name for name in names if max(cycle.get(name, 0), floor.get(name, 0)) < 3]

    def shown(calls):
        return {**{name: calls.get(name, 0) for name in names if name not in rare},
                "others": sum(calls.get(name, 0) for name in rare)}

    return comparison_table(["system calls", "cycle", "floors", "more"], shown(cycle), shown(floor), 1)


def document_table(f):
    counts = f["demo instructions"]
    return comparison_table(["instructions", "JSON", "XML", "more"], counts["Json"], counts["Xml"], 1)


PROCESSES = {"show": "`statuscollector show`", "show json": "`statuscollector show --format json`",
             "start": "`statuscollector --version`",
             "empty": "an empty program on the same libraries", "python": "`bench/peer.py`",
             "shell": "`sqlite3 -json`, the table alone"}


def process_table(f):
    return table(["a process for each document, demo", "µs", "peak MiB", "page faults"],
                 [[text, f"{f['processes'][name][0]:,.0f}", f"{f['processes'][name][1] / KIB:.1f}",
                   f"{f['processes'][name][2]:,}"] for name, text in PROCESSES.items()])


def process_steps(f):
    """What `show` and `show --format json` do, in microseconds; the last is the rest of what was measured."""
    demo = {name: figures["time"] / 1000 for name, figures in f["demo"].items()}
    empty, start = (f["processes"][name][0] for name in ("empty", "start"))
    begin = {"the empty program": empty, "the program's own start": start - empty,
             "a cycle, as in a host that stays": demo["Cycle"]}
    found = {"show json": {**begin, "JSON": demo["Json"]},
             "show": {**begin, "what became of sources and rows, findings": demo["Explained"] - demo["Cycle"],
                      "text": demo["Text"]}}
    for name, steps in found.items():
        steps["what is done for the first time: symbols, memory, opening the database"] = (
            f["processes"][name][0] - sum(steps.values()))
    return found


def step_table(f):
    found = process_steps(f)
    names = list(dict.fromkeys([*list(found["show"])[:-1], "JSON", list(found["show"])[-1]]))
    lines = [[what, *(f"{found[each][what]:,.0f}" if what in found[each] else "" for each in ("show", "show json"))]
             for what in names]
    lines.append(["**all**", *(f"**{f['processes'][each][0]:,.0f}**" for each in ("show", "show json"))])
    return table(["µs", "`show`", "`show --format json`"], lines)


PROFILED = ("show", "show json", "start", "empty")


def process_profile(f):
    counts = f["process instructions"]
    lines = [[name, *(f"{counts[each][name] / 1000:,.0f}" for each in PROFILED)]
             for name in counts["show"] if any(counts[each][name] > 500 for each in counts)]
    lines.append(["**all**", *(f"**{total(counts[each]) / 1000:,.0f}**"
                               for each in PROFILED)])
    return table(["thousand instructions", "`show`", "`show --format json`", "`--version`", "empty program"], lines)


def size_table(f):
    lines = [[kind, *(f"{f['sizes'][library][kind]:,}" for library in f["sizes"]),
              f"{sum(f['sizes'][library][kind] for library in SHIPPED):,}"]
             for kind in f["sizes"][SHIPPED[0]]]
    lines.append(["**all**", *(f"**{size(f, [library]):,}**" for library in f["sizes"]),
                  f"**{size(f):,}**"])
    return table(["bytes", *(f"`{library}`" for library in f["sizes"]), "the three"], lines)


def machine(f):
    with open("/proc/cpuinfo") as file:
        model = next((line.split(":")[1].strip() for line in file if line.startswith("model name")), "?")
    compiler = subprocess.run(["c++", "--version"], stdout=subprocess.PIPE, text=True).stdout.split("\n")[0]
    return (f"{model}, {os.cpu_count()} processors, {platform.system()} {platform.release()}, "
            f"{compiler}, release preset. The machine's load was between {min(f['loads']):.1f} and "
            f"{max(f['loads']):.1f} while this was measured; this alone makes about 1, the rest was other "
            "work beside it.")


def contradiction(f):
    """A paragraph when other work beside it disturbed the times of the demo."""
    found = [f"{part} took longer than {whole}, of which it is a part" for part, whole in f["contradictions"]]
    found += [f"what is left for {name} is less than nothing" for name, both in demo_parts(f).items()
              if not all(map(is_time, both))]
    return "" if not found else f"\n**Measure again:** {', '.join(found)}.\n"


def page(f):
    scrape, scraped = f["exporter"]
    demo = {name: figures["time"] / 1000 for name, figures in f["demo"].items()}
    shared = {name: figures for name, figures in f["shared sources"].items()}
    few, many = f["growth"][next(what for what in f["growth"] if "00 display" in what and " 100 " not in what)]
    return f"""# Performance

Written by `bench/report`, which measures everything here in one run; do not edit. To repeat it:

    bench/report            # ten minutes
    bench/report --quick    # a look, up to 10,000 rows

Every figure is a ratio to a floor or a peer that was measured beside it. The **floor** of the rows is a
bare loop over the SQLite C API that prepares the same statement, steps, and copies both columns into
the two buffers; that of the probe makes the same opens, reads, requests, stats, sockets and interface
look-ups without parsing and without checking what it opened, large files 64 KiB at a time into one
place; that of the XML builds the same tree by plain libxml2 calls and dumps it. Times are processor
time (user and system) on one processor, the best of runs in turn; instructions are what valgrind counts
in user space, and repeat to a thousandth. Programs that are started are installed ones.

Machine: {machine(f)}

## What is aimed at

{reach_table(f)}

{reason_list(f)}

## Demo

The demo scenario with a package database of 3 MiB.

{parts_table(f)}
{contradiction(f)}
The floors of the rows are those after a floor of the probe, as in a cycle. The floors open by path. The
cycle also looks at what it opened, follows only links that it trusts, and examines the database's files
and schema before it reads a row. System calls, with those of the box's device nodes:

{calls_table(f)}

{demo_table(f)}

Its document, {f['demo']['Json']['written']:,.0f} bytes of JSON and {f['demo']['Xml']['written']:,.0f} of XML:

{document_table(f)}

## Rows

The mix is that of a display: 21 scalars, a device node in every twenty rows, DCIO devices, sensors of
all kinds on the own buses and behind two display interfaces, boards with labelled points. Times in
microseconds. The rows part is the cycle less a probe that finds nothing.

{rows_table(f)}

{instruction_table(f)}

Of 10,000 rows:

{row_table(f)}

Each record, and each of its texts that is long, is a block of its own, and the texts of a row are
copied and cut before its handler gets them. Without any copy and without the allocator {without_records(f):.2f}
times the floor would remain.

## Observer

Cycles with 10,000 rows, with an observer that counts events and without one:

{observer_table(f)}

## Growth

The user-space cost for each row, or for each network interface, on a small and on a large controller:

{growth_table(f)}

A display interface is looked for among all of its output: the cost of a row grows with their number, here
to {many / few:.2f} times that with one. No controller has so many, so there is no index. A network interface is
looked for in the kernel's list of routes, which has a line for each.

## Processes

{process_table(f)}

Where the time goes; a part that is also done in a host that stays is counted as it takes there:

{step_table(f)}

Where the instructions go; those of the empty program are the loader's and the libraries' own start:

{process_profile(f)}

One document in a host that stays, a cycle and its JSON, takes {demo['Cycle'] + demo['Json']:,.0f} µs; the floor of its
probe takes {demo['ProbeFloor']:,.0f} µs.

A scrape of Debian's node exporter (memory, interfaces, carriers, routes, the root file system, time) takes
{scrape:,} µs of its process over loopback and writes {scraped:,} bytes. A pass of the probe without device
nodes takes {shared['Probe']['time'] / 1000:,.0f} µs; with what it found as JSON, {shared['ProbeJson']['written']:,.0f} bytes, {shared['ProbeJson']['time'] / 1000:,.0f} µs; with the
JSON of the whole demo, {f['demo']['Json']['written']:,.0f} bytes, {shared['Probe']['time'] / 1000 + demo['Json']:,.0f} µs.

## Size

The libraries, stripped; the three are `libsqlitedb`, `libstatus` and `libstatuscollector`.

{size_table(f)}
"""
