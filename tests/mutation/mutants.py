"""The ways in which tests/mutation/mutate breaks a line of the code."""
import collections
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent

OPERATORS = [
    (r"(?<![<>=!\-+*/&|])<(?![<=>])(?= )", "<="), (r"(?<= )>(?![>=])(?= )", ">="),
    (r"<=(?!>)", "<"), (r">=", ">"), (r"==", "!="), (r"!=", "=="), (r"!(?=[\w(*])", ""),
    (r"&&", "||"), (r" \|\| ", " && "), (r"\+ 1\b", "+ 2"), (r"\b- 1\b", "- 0"),
    (r"\|=", "="), (r"(?<=[\w)]) \| (?=\w)", " & "), (r"(?<=\w) & (?=\w)", " | "),
    (r"\btrue\b", "false"), (r"\bfalse\b", "true"),
    # A statement that is left out: an assignment, a call, a step.
    (r"^ +((?!return|const|using)[\w.*:>()\[\]+-]+(?: = .+|\(.*\)));$", ""),
]
NUMBER = re.compile(r"(?<![\w.\"'])(?:0x[0-9A-Fa-f]+|\d+)(?=[uUfFlL]*\b)(?![\w.]*[\"'])")
TEXT = re.compile(r'"(?:[^"\\]|\\.)+"')
LETTER = re.compile(r"'[^'\\]'")
# What a row of a table refers to; a mutant refers to what the next row does.
REFERENCE = re.compile(r"&(?:\w+::)*\w+(?:\.\w+)?(?:<[\w:, ]+>)?|\bStatus_\w+|\bk[A-Z]\w+"
                       r"|(?<=Kind)<[\w:]+>")
ROW = re.compile(r"^\s+(\{|\w+(?:<[\w:]+>)?\(|&\w+).*,$")
SKIPPED = re.compile(r"^\s*(?:#|//|static_assert|template|using|namespace|\*)|^\s*std::printf"
                     r"|reinterpret_cast<")


class Mutant:
    """`new` instead of `old` at a column of a line."""

    def __init__(self, path, number, column, old, new, line):
        self.path, self.number, self.column, self.old, self.new = path, number, column, old, new
        # Names the mutant, also when lines before it come or go.
        self.key = f"{path}: {line.strip()}: {old} -> {new}"

    def __str__(self):
        return f"{self.path}:{self.number}:{self.column + 1}: {self.old} -> {self.new}"

    def applied(self, text):
        lines = text.splitlines(keepends=True)
        line = lines[self.number - 1]
        assert line[self.column:].startswith(self.old)
        lines[self.number - 1] = line[:self.column] + self.new + line[self.column + len(self.old):]
        return "".join(lines)


def mutants_of(path):
    """All mutants of a file; the second of the same key has " #2" after it, and so on."""
    counts = collections.Counter()
    for mutant in sorted(_mutants_of(path), key=lambda mutant: (mutant.number, mutant.column)):
        counts[mutant.key] += 1
        if counts[mutant.key] > 1:
            mutant.key += f" #{counts[mutant.key]}"
        yield mutant


def _mutants_of(path):
    lines = [line.split("//")[0].rstrip() for line in (ROOT / path).read_text().splitlines()]
    for number, line in enumerate((ROOT / path).read_text().splitlines(), 1):
        if SKIPPED.search(line):
            continue
        code = lines[number - 1]
        plain = TEXT.sub(lambda text: '"' + "_" * (len(text.group()) - 2) + '"', code)
        found = [(match, new) for pattern, new in OPERATORS for match in re.finditer(pattern, plain)]
        for match in NUMBER.finditer(plain):
            value = int(match.group(), 0) + 1
            found.append((match, hex(value) if match.group().startswith("0x") else str(value)))
        found += [(match, match.group()[:-1] + '~"') for match in TEXT.finditer(code)]
        found += [(match, f"'{chr(ord(match.group()[1]) + 1)}'") for match in LETTER.finditer(plain)]
        following = lines[number] if number < len(lines) else ""
        row, next_row = ROW.match(plain), ROW.match(following)
        if row and next_row and row.group(1)[:3] == next_row.group(1)[:3]:
            found += [(match, other.group()) for match, other in
                      zip(REFERENCE.finditer(plain), REFERENCE.finditer(following))
                      if match.group() != other.group()]
        for match, new in found:
            begin, end = match.span(match.re.groups)
            yield Mutant(path, number, begin, code[begin:end], new, line)


def users_of(mutant, folders):
    """The sources in `folders` that a change to a line of a table of codes concerns: those that name
    what the line belongs to. None: all that include it."""
    def declared(index):
        return next((match.group(1) for line in reversed(lines[:index + 1])
                     if (match := re.search(r"(\bk[A-Z]\w+)\s*(?:\[\])?\s*(?:=|\{)", line))), None)

    def mentioned(text):
        return re.search(r"\b(" + "|".join(names) + r")\b", text)

    lines = (ROOT / mutant.path).read_text().splitlines()
    names = {declared(mutant.number - 1)}
    if not mutant.path.endswith(("codes.h", "paths.h", "requests.h")) or None in names:
        return None
    names |= {declared(index) for index, line in enumerate(lines) if mentioned(line)}
    users = [str(file.relative_to(ROOT)) for folder in folders
             for file in (ROOT / folder).glob("*.[ch]*") if mentioned(file.read_text())]
    users.remove(mutant.path)
    return None if any(user.endswith(".h") for user in users) else users
