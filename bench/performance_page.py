"""docs/performance.md from the figures that bench/report measured."""
import os
import platform
import subprocess

MIB = 1024


def rows_part(times):
    return times["Cycle"]["time"] - times["Probe"]["time"]


def rows_instructions(counts):
    return counts["Cycle"] - counts["Probe"]


def fraction(value):
    """0.05 as "1/20"."""
    return f"1/{1 / value:.1f}"


def verdict(value, limit):
    return "reached" if value <= limit else "**not reached**"


def reaches(f):
    """The rows of the table: what, reach, measured, verdict."""
    rows, counts, demo = f["rows"], f["instructions"], f["demo"]
    time = rows_part(rows[10000]) / rows[10000]["RowsFloor"]["time"]
    count = rows_instructions(counts[10000]) / counts[10000]["RowsFloor"]
    largest = max(rows)
    growth = rows_part(rows[largest]) / largest / (rows_part(rows[1000]) / 1000)
    growth_count = (rows_instructions(counts[largest]) / largest
                    / (rows_instructions(counts[1000]) / 1000))
    probe = demo["Probe"]["time"] / demo["ProbeFloor"]["time"]
    xml = demo["Xml"]["time"] / demo["XmlFloor"]["time"]
    xml_count = f["demo instructions"]["Xml"] / f["demo instructions"]["XmlFloor"]
    document = (demo["Cycle"]["time"] + demo["Json"]["time"]) / 1000 / f["python"][0]
    process = f["show json"][0] / f["python"][0]
    scrape = f["shared sources"]["Probe"]["time"] / 1000 / f["exporter"]
    memory = (f["show"][1] - f["empty"][1]) / MIB
    size = f["size"] / 1024
    return [
        ("rows part / floor, 10,000 rows: time", "1.25", f"{time:.2f}",
         verdict(time, 1.25)),
        ("rows part / floor, 10,000 rows: instructions", "1.25", f"{count:.2f}",
         verdict(count, 1.25)),
        (f"cost per row at {largest:,} / at 1,000 rows: time", "1.1", f"{growth:.2f}",
         verdict(growth, 1.1)),
        (f"cost per row at {largest:,} / at 1,000 rows: instructions", "1.1", f"{growth_count:.2f}",
         verdict(growth_count, 1.1)),
        ("probe part / floor, demo with a package database of 3 MiB: time", "1.15", f"{probe:.2f}",
         verdict(probe, 1.15)),
        ("allocations by the cycle itself per row, records and their texts apart", "0",
         f"{f['allocations per row']:g}", verdict(f["allocations per row"], 0)),
        ("XML of the demo / libxml2 floor: time", "1.2", f"{xml:.2f}", verdict(xml, 1.2)),
        ("XML of the demo / libxml2 floor: instructions", "1.2", f"{xml_count:.2f}",
         verdict(xml_count, 1.2)),
        ("processor time per document / Python peer, in a host that stays", "1/30", fraction(document),
         verdict(document, 1 / 30)),
        ("processor time per document / Python peer, a process each", "1/30", fraction(process),
         verdict(process, 1 / 30)),
        ("processor time per probe pass / node exporter's scrape, shared sources", "1/3",
         fraction(scrape), verdict(scrape, 1 / 3)),
        ("stripped size of the three libraries", "400 KiB", f"{size:.0f} KiB",
         verdict(size, 400)),
        ("peak memory of `statuscollector show` above an empty program, demo", "8 MiB",
         f"{memory:.1f} MiB", verdict(memory, 8)),
    ]


def table(head, lines):
    rule = ["---"] + ["---:"] * (len(head) - 1)
    return "\n".join("| " + " | ".join(line) + " |" for line in [head, rule, *lines])


def reach_table(f):
    return "\n".join(["| what | at most | measured | |", "|---|---:|---:|---|"]
                     + [f"| {' | '.join(row)} |" for row in reaches(f)])


def size_table(f):
    names = ["Cycle", "RowsFloor", "Xml", "XmlFloor", "Json", "Parse"]
    lines = [[f"{n:,}", *(f"{f['rows'][n][name]['time'] / 1000:,.0f}" for name in names),
              f"{f['rows'][n]['Cycle']['allocations']:,.0f}"] for n in sorted(f["rows"])]
    return table(["rows", *names, "allocations of a cycle"], lines)


def instruction_table(f):
    lines = []
    for n in sorted(f["instructions"]):
        counts = f["instructions"][n]
        lines.append([f"{n:,}", f"{counts['Cycle']:,.0f}", f"{rows_instructions(counts) / n:,.0f}",
                      f"{counts['RowsFloor'] / n:,.0f}",
                      f"{rows_instructions(counts) / counts['RowsFloor']:.2f}"])
    return table(["rows", "a cycle", "a row", "a row of the floor", "ratio"], lines)


def demo_table(f):
    lines = [[name, f"{f['demo'][name]['time'] / 1000:,.0f}", f"{f['demo'][name]['allocations']:,.0f}",
              f"{f['demo instructions'][name]:,.0f}"]
             for name in ("Cycle", "Probe", "ProbeFloor", "Xml", "XmlFloor", "Json", "Parse")]
    return table(["demo", "µs", "allocations", "instructions"], lines)


def profile_table(f):
    lines = [[name, f"{count:.0f}", f"{f['floor profile'][name]:.0f}",
              f"{count - f['floor profile'][name]:+.0f}"]
             for name, count in f["profile"].items() if round(count) or round(f["floor profile"][name])]
    total, floor = sum(f["profile"].values()), sum(f["floor profile"].values())
    lines.append(["**all**", f"**{total:.0f}**", f"**{floor:.0f}**", f"**{total - floor:+.0f}**"])
    return table(["instructions per row", "cycle", "floor", "more"], lines)


def peer_table(f):
    names = {"show json": "`statuscollector show --format json`", "show": "`statuscollector show`",
             "empty": "an empty program on the same libraries", "python": "`bench/peer.py`",
             "shell": "`sqlite3 -json`, the table alone"}
    return table(["a process for each document, demo", "µs", "peak MiB"],
                 [[text, f"{f[name][0]:,.0f}", f"{f[name][1] / MIB:.1f}"] for name, text in names.items()])


def machine():
    with open("/proc/cpuinfo") as file:
        model = next((line.split(":")[1].strip() for line in file if line.startswith("model name")), "?")
    compiler = subprocess.run(["c++", "--version"], stdout=subprocess.PIPE, text=True).stdout.split("\n")[0]
    return (f"{model}, {os.cpu_count()} processors, {platform.system()} {platform.release()}, "
            f"{compiler}, release preset; load {os.getloadavg()[1]:.1f} at the end")


def page(f):
    exporter_all = f["exporter"]
    demo = {name: figures["time"] / 1000 for name, figures in f["demo"].items()}
    document = demo["Cycle"] + demo["Json"]
    probe = f["shared sources"]["Probe"]["time"] / 1000
    return f"""# Performance

Written by `bench/report`, which measures everything here in one run; do not edit. To repeat it:

    bench/report            # five minutes
    bench/report --quick    # a look, up to 10,000 rows

Every figure is a ratio to a floor or a peer that was measured beside it. The **floor** of the rows is
a bare loop over the SQLite C API that prepares the same statement, steps, and copies both columns into
the two buffers; that of the probe makes the same opens, reads, requests, stats, sockets and interface
look-ups without parsing and without checking what it opened; that of the XML builds the same tree by plain libxml2 calls and dumps it.
Times are processor time (user and system), medians of runs in random order; instructions are what
valgrind counts in user space, and repeat to a thousandth. Machine: {machine()}.

## What is aimed at

{reach_table(f)}

## Rows

The mix is that of a display: 21 scalars, a device node in every twenty rows, DCIO devices, sensors of
all kinds on the own buses and behind two display interfaces, boards with labelled points. Times in
microseconds. The rows part is the cycle less a probe that finds nothing.

{size_table(f)}

{instruction_table(f)}

### Where the instructions go

Those of a cycle with 10,000 rows, beside the floor's:

{profile_table(f)}

## Demo

The demo scenario with a package database of 3 MiB; times in microseconds.

{demo_table(f)}

## Peers

{peer_table(f)}

One document in a host that stays, a cycle and its JSON, takes {document:,.0f} µs; the floor of its
probe takes {demo['ProbeFloor']:,.0f} µs.

A scrape of Debian's node exporter (memory, interfaces, carriers, routes, the root file system, time) takes
{exporter_all:,} µs of its process over loopback; a pass of the probe without device nodes {probe:,.0f} µs.

## Size

The three libraries, stripped, have {f['size']:,} bytes.
"""
