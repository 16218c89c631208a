"""What the bytes of a stripped library are."""
import subprocess
import tempfile
from pathlib import Path

# The first whose pattern begins the name of the section.
KINDS = [
    ("code", (".text", ".plt", ".init", ".fini")),
    ("exceptions: how functions are left", (".eh_frame", ".gcc_except_table")),
    ("symbols: names and their look-up", (".dynsym", ".dynstr", ".gnu.hash", ".gnu.version")),
    ("relocations", (".rel",)),
    ("constants and tables", (".rodata", ".data", ".got", ".tm_clone")),
]
OTHER = "headers and what fills pages up"


def of(library):
    """Bytes by kind; their sum is the size of the stripped file."""
    with tempfile.TemporaryDirectory() as folder:
        copy = Path(folder) / "library"
        subprocess.run(["strip", "-o", copy, library], check=True)
        listing = subprocess.run(["readelf", "-SW", copy], check=True, text=True,
                                 stdout=subprocess.PIPE).stdout
        size = copy.stat().st_size
    found = {kind: 0 for kind, _ in KINDS}
    for line in listing.splitlines():
        words = line.partition("]")[2].split()
        if len(words) < 5 or words[1] == "NOBITS" or not words[0].startswith("."):
            continue
        kind = next((kind for kind, names in KINDS if words[0].startswith(names)), None)
        if kind:
            found[kind] += int(words[4], 16)
    found[OTHER] = size - sum(found.values())
    return found
