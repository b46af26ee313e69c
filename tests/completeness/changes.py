"""The changes that are made to the plug-in's sources, one at a time: each is a small mistake that tests should notice."""

import os
import re
from dataclasses import dataclass

from clang.cindex import CursorKind, Index, TokenKind, TypeKind

# What an operator is mistaken for.
OPERATORS = {
    "==": ["!="], "!=": ["=="],
    "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"],
    "&&": ["||"], "||": ["&&"],
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"],
    "&": ["|"], "|": ["&"], "^": ["&"], "<<": [">>"], ">>": ["<<"],
}
# Names with a counterpart: an owner that keeps or hands over, a reference that is taken over or retained.
COUNTERPARTS = {"get": "leak", "leak": "get", "adopt": "retain", "retain": "adopt", "true": "false", "false": "true"}
# A pointer of any type that isn't null. PREFIX declares it, in each source before everything else.
ANY_POINTER = "AnyPointer()"
PREFIX = """struct AnyPointer {
  template <typename T>
  constexpr operator T*() const { return reinterpret_cast<T*>(64); }
};
"""

LOOPS = (CursorKind.FOR_STMT, CursorKind.CXX_FOR_RANGE_STMT, CursorKind.WHILE_STMT)
# Of what is replaced, and by what, in the name of a change.
LONGEST = 100
NEUTRAL = ("{}", "nullptr", "0", "false")


@dataclass(frozen=True)
class Change:
    file: str  # from the root
    start: int  # in bytes
    end: int
    new: str
    kind: str

    def apply(self, text):
        return text[: self.start] + self.new + text[self.end :]


def one_line(text):
    return " ".join(text.split())


class Source:
    """One file of the plug-in. Texts are of one byte a character, as the compiler's positions are."""

    def __init__(self, root, name):
        self.name = name
        with open(os.path.join(root, name), encoding="latin-1") as file:
            self.text = file.read()

    def line_of(self, position):
        return self.text.count("\n", 0, position) + 1

    def place_of(self, position):
        """Line and column, from 1."""
        return self.line_of(position), position - self.text.rfind("\n", 0, position)

    def line_text(self, position):
        start = self.text.rfind("\n", 0, position) + 1
        return one_line(self.text[start : self.text.index("\n", position)])


class Finder:
    """Collects the changes of all files that a translation unit includes of the plug-in. Each is made once."""

    def __init__(self, root, names):
        self.root = root
        self.sources = {name: Source(root, name) for name in names}
        self.changes = {}

    def parse(self, name, arguments):
        unit = Index.create().parse(os.path.join(self.root, name), arguments)
        errors = [d.spelling for d in unit.diagnostics if d.severity >= 3]
        if errors:
            raise RuntimeError(f"{name} can't be parsed: {errors[0]}")
        seen = {name} | {self.relative(i.include.name) for i in unit.get_includes()}
        for file in sorted(seen & set(self.sources)):
            FileFinder(self, unit, file).tokens()
        self.walk(unit, unit.cursor)

    def relative(self, path):
        return os.path.relpath(os.path.realpath(path), os.path.realpath(self.root))

    def walk(self, unit, cursor):
        for child in cursor.get_children():
            if not child.location.file:
                continue
            name = self.relative(child.location.file.name)
            if name in self.sources and not name.endswith(".inc"):
                FileFinder(self, unit, name).node(child)


class FileFinder:
    def __init__(self, finder, unit, name):
        self.finder = finder
        self.unit = unit
        self.source = finder.sources[name]
        self.text = self.source.text

    def add(self, start, end, new, kind):
        if self.text[start:end] == new or start >= end:
            return
        change = Change(self.source.name, start, end, new, kind)
        self.finder.changes.setdefault((change.file, start, end, new), change)

    # Of single words and signs. Macros have no other changes: what they stand for is not written anywhere.

    def tokens(self):
        if self.source.name.endswith(".inc"):
            self.rows_of_macros()
            return
        file = self.unit.get_file(os.path.join(self.finder.root, self.source.name))
        extent = self.unit.get_extent(file.name, (0, len(self.text)))
        tokens = [t for t in self.unit.get_tokens(extent=extent) if t.kind != TokenKind.COMMENT]
        skipped = self.skipped_ranges()
        for i, token in enumerate(tokens):
            start, end = token.extent.start.offset, token.extent.end.offset
            if any(a <= start < b for a, b in skipped):
                continue
            before = tokens[i - 1].spelling if i else ""
            after = tokens[i + 1].spelling if i + 1 < len(tokens) else ""
            self.token(token, start, end, before, after)

    def skipped_ranges(self):
        """Directives but for the bodies of macros; assertions, attributes and linkage."""
        ranges = []
        for match in re.finditer(r"^#\s*(\w+)(.*(?:\\\n.*)*)", self.text, re.M):
            defined = re.match(r"#\s*define\s+\w+(\([^)]*\))?", match.group(0))
            ranges.append((match.start(), match.start() + defined.end() if defined else match.end()))
        for pattern in (r"static_assert\(.*?\);", r"\[\[.*?\]\]", r"__attribute__\(\(.*?\)\)\)?", r'extern "C"'):
            ranges += [m.span() for m in re.finditer(pattern, self.text, re.S)]
        return ranges

    def token(self, token, start, end, before, after):
        text = token.spelling
        if token.kind == TokenKind.LITERAL:
            if text[0] == '"':
                self.add(start, end, text[:-1] + '~"', "text")
            elif text[0] != "'":
                self.number(start, end, text)
        elif text in ("true", "false"):
            self.add(start, end, COUNTERPARTS[text], "constant")
        elif text == "nullptr":
            self.add(start, end, ANY_POINTER, "constant")
        elif text in COUNTERPARTS and after in ("(", "<"):
            self.add(start, end, COUNTERPARTS[text], "ownership")
        elif text in ("-", "+") and before == "key" and "#" in self.text[start - 6 : start]:
            self.add(start, end, OPERATORS[text][0], "operator")  # in a macro

    def number(self, start, end, text):
        if re.fullmatch(r"[0-9]+|0[xX][0-9a-fA-F]+u?", text):
            value = int(text.rstrip("u"), 0)
            news = {value + 1, value - 1, 0} - {value}
            for new in sorted(news):
                self.add(start, end, str(new) if new >= 0 else f"({new})", "constant")
        else:
            value = float(text.rstrip("fF"))
            for new in (value + 1, value - 1, 0.0):
                self.add(start, end, repr(new), "constant")

    def rows_of_macros(self):
        rows = list(re.finditer(r"^(\w+)\((\w+)\)\n", self.text, re.M))
        for row, following in zip(rows, rows[1:] + [None]):
            other = "TEXT_KEY" if row.group(1) == "PLATFORM_KEY" else "PLATFORM_KEY"
            self.add(row.start(1), row.end(1), other, "row")
            if following and following.start() == row.end():
                self.add(row.start(), following.end(), following.group(0) + row.group(0), "rows exchanged")

    # Of the syntax tree.

    def span(self, cursor):
        """Where the cursor is in this file, or None for what a macro or another file has."""
        start, end = cursor.extent.start, cursor.extent.end
        if not start.file or self.finder.relative(start.file.name) != self.source.name:
            return None
        if not end.file or end.file.name != start.file.name or end.offset <= start.offset:
            return None
        return start.offset, end.offset

    def node(self, cursor):
        if cursor.kind == CursorKind.STATIC_ASSERT:
            return
        for child in cursor.get_children():
            self.node(child)
        span = self.span(cursor)
        if not span or self.in_directive(span[0]):
            return
        kind = cursor.kind
        if kind == CursorKind.BINARY_OPERATOR:
            self.binary(cursor, span)
        elif kind == CursorKind.UNARY_OPERATOR:
            self.unary(cursor, span)
        elif kind == CursorKind.CONDITIONAL_OPERATOR:
            self.conditional(cursor)
        elif kind == CursorKind.IF_STMT:
            self.if_statement(cursor, span)
        elif kind in LOOPS:
            self.loop(cursor, span)
        elif kind == CursorKind.RETURN_STMT:
            self.return_statement(cursor)
        elif kind == CursorKind.COMPOUND_STMT:
            self.statements(cursor)
        elif kind == CursorKind.CALL_EXPR:
            self.call(cursor, span)
        elif kind == CursorKind.INIT_LIST_EXPR:
            self.initialisers(cursor)
        elif kind == CursorKind.DECL_REF_EXPR:
            self.reference(cursor, span)

    def in_directive(self, position):
        line = self.text.rfind("\n", 0, position) + 1
        return self.text.startswith("#", line)

    def binary(self, cursor, span):
        children = [self.span(child) for child in cursor.get_children()]
        if len(children) != 2 or None in children:
            return
        (left_start, left_end), (right_start, right_end) = children
        between = self.text[left_end:right_start]
        match = re.search(r"==|!=|<=|>=|&&|\|\||<<|>>|[-+*/%&|^<>]", between)
        if not match or re.search(r"[-+*/%&|^<>]?=$", between.rstrip()) and match.group(0) not in ("==", "!=", "<=", ">="):
            return
        sign = match.group(0)
        for new in OPERATORS[sign]:
            self.add(left_end + match.start(), left_end + match.end(), new, "operator")
        if sign in ("&&", "||"):
            self.add(*span, self.text[left_start:left_end], "condition left out")
            self.add(*span, self.text[right_start:right_end], "condition left out")

    def unary(self, cursor, span):
        text = self.text[span[0] : span[1]]
        if text[0] == "!":
            self.add(*span, text[1:], "operator")
        elif text[0] == "-" and text[1] != "-":
            self.add(*span, text[1:], "operator")
        for sign, new in (("++", "--"), ("--", "++")):
            if text.startswith(sign):
                self.add(span[0], span[0] + 2, new, "operator")
            elif text.endswith(sign):
                self.add(span[1] - 2, span[1], new, "operator")

    def conditional(self, cursor):
        children = [self.span(child) for child in cursor.get_children()]
        if len(children) != 3 or None in children:
            return
        condition, first, second = children
        self.add(*condition, "true", "condition")
        self.add(*condition, "false", "condition")
        both = self.text[second[0] : second[1]] + " : " + self.text[first[0] : first[1]]
        self.add(first[0], second[1], both, "condition negated")

    def closing(self, opening):
        """The position of the bracket that closes the one at this position."""
        depth = 0
        for match in re.finditer(r'"(?:\\.|[^"\\])*"|[()]', self.text[opening:]):
            depth += {"(": 1, ")": -1}.get(match.group(0), 0)
            if depth == 0:
                return opening + match.start()
        raise RuntimeError(f"{self.source.name}: a bracket is not closed")

    def if_statement(self, cursor, span):
        opening = self.text.index("(", span[0])
        closing = self.closing(opening)
        condition = self.text[opening + 1 : closing]
        declared = re.match(r"(?:const )?[\w:<>*& ]+?[ *&]\w+ = ", condition)
        if declared:
            tests = [f"{condition}; true", f"{condition}; false"]
        else:
            tests = ["true", "false"]
        for new in tests:  # who notices both notices the negated condition
            self.add(opening + 1, closing, new, "condition")
        parts = [self.span(child) for child in cursor.get_children()]
        parts = [part for part in parts if part and part[0] > closing]
        if len(parts) == 2:
            then, other = parts
            start = self.end_of(then)
            self.add(start, self.end_of(other), "", "else removed")

    def loop(self, cursor, span):
        if cursor.kind == CursorKind.CXX_FOR_RANGE_STMT:
            return
        opening = self.text.index("(", span[0])
        closing = self.closing(opening)
        head = self.text[opening + 1 : closing]
        if cursor.kind == CursorKind.FOR_STMT:
            first = head.index(";")
            last = head.rindex(";")
            condition = head[first + 1 : last].strip()
            start = opening + 1 + head.index(condition, first)
            self.add(start, start + len(condition), f"!({condition})", "condition negated")

    def return_statement(self, cursor):
        children = list(cursor.get_children())
        if not children:
            return
        span = self.span(children[0])
        if not span:
            return
        text = self.text[span[0] : span[1]]
        if text in NEUTRAL:
            return
        self.add(*span, "{}", "neutral result")
        if children[0].type.get_canonical().kind == TypeKind.BOOL:
            self.add(*span, "true", "constant result")

    def end_of(self, span):
        """Where a statement ends, with its semicolon."""
        end = span[1]
        return end + 1 if self.text[end] == ";" and self.text[end - 1] != ";" else end

    def statements(self, cursor):
        parts = []
        for child in cursor.get_children():
            span = self.span(child)
            if span and not self.text.startswith("static_assert", span[0]):
                parts.append((child, span[0], self.end_of(span)))
        for child, start, end in parts:
            if self.can_be_deleted(child, start, end, parts[-1][2]):
                self.add(start, end, ";", "statement deleted")
        for (one, start, one_end), (other, other_start, end) in zip(parts, parts[1:]):
            kinds = (one.kind, other.kind)
            if CursorKind.CASE_STMT in kinds or CursorKind.DEFAULT_STMT in kinds or CursorKind.RETURN_STMT in kinds:
                continue
            if self.declared_names(one) & set(re.findall(r"\w+", self.text[other_start:end])):
                continue
            if not self.does(start, one_end) or not self.does(other_start, end):
                continue
            swapped = self.text[other_start:end] + self.text[one_end:other_start] + self.text[start:one_end]
            self.add(start, end, swapped, "statements exchanged")

    def does(self, start, end):
        """Whether a statement calls something or leaves the function or loop. What only computes may as well come later."""
        text = re.sub(r"static_cast<[^;()]*?>\(|sizeof\(", "", self.text[start:end])
        return re.search(r"[\w>]\(|\b(return|continue|break)\b", text)

    def declared_names(self, cursor):
        if cursor.kind != CursorKind.DECL_STMT:
            return set()
        bound = re.match(r"(?:const )?auto \[(.*?)\]", self.text[cursor.extent.start.offset :])
        if bound:
            return set(re.findall(r"\w+", bound.group(1)))
        return {child.spelling for child in cursor.get_children()}

    def can_be_deleted(self, cursor, start, end, last):
        if cursor.kind == CursorKind.RETURN_STMT or self.text[start:end] == ";":
            return cursor.kind == CursorKind.RETURN_STMT and not list(cursor.get_children())
        if cursor.kind == CursorKind.DECL_STMT:
            return not self.declared_names(cursor) & set(re.findall(r"\w+", self.text[end:last]))
        return True

    def call(self, cursor, span):
        arguments = [argument for argument in cursor.get_arguments() if argument is not None]
        arguments = [(argument, self.span(argument)) for argument in arguments]
        if not self.text[span[0] : span[1]].endswith(")"):
            return
        self.exchanged(arguments)

    def exchanged(self, values):
        for (one, one_span), (other, other_span) in zip(values, values[1:]):
            if not one_span or not other_span or one_span[1] > other_span[0]:
                continue
            types = [plain_type(value) for value in (one, other)]
            if not types[0] or types[0] != types[1]:
                continue
            swapped = (self.text[other_span[0] : other_span[1]] + self.text[one_span[1] : other_span[0]]
                       + self.text[one_span[0] : one_span[1]])
            self.add(one_span[0], other_span[1], swapped, "exchanged")

    def initialisers(self, cursor):
        values = [(child, self.span(child)) for child in cursor.get_children()]
        values = [(child, span) for child, span in values if span]
        self.exchanged(values)
        rows = [span for child, span in values if self.text[span[0]] == "{" or self.text.startswith("REALproperty", span[0])]
        for row, following in zip(rows, rows[1:] + [None]):
            comma = self.text.find(",", row[1], row[1] + 1)
            self.add(row[0], comma + 1 if comma >= 0 else row[1], "", "row deleted")
            if following and self.text[row[1] : following[0]].strip() == ",":
                swapped = (self.text[following[0] : following[1]] + self.text[row[1] : following[0]]
                           + self.text[row[0] : row[1]])
                self.add(row[0], following[1], swapped, "rows exchanged")

    def reference(self, cursor, span):
        target = cursor.referenced
        name = self.text[span[0] : span[1]]
        if not target or name != cursor.spelling:
            return
        if target.kind == CursorKind.ENUM_CONSTANT_DECL or re.match(r"k[A-Z]", name):
            kind = cursor.type.get_canonical().kind
            if kind == TypeKind.POINTER:
                if name != "kCFAllocatorDefault":  # it is null
                    self.add(*span, "nullptr", "null")
            elif kind != TypeKind.RECORD:
                self.add(*span, f"static_cast<decltype({name})>({name} + 1)", "constant")


def plain_type(cursor):
    """The type of an expression without qualifiers; None where a template leaves it open."""
    canonical = cursor.type.get_canonical()
    if canonical.kind in (TypeKind.INVALID, TypeKind.DEPENDENT, TypeKind.UNEXPOSED, TypeKind.VOID):
        return None
    return canonical.spelling.replace("const ", "").replace(" const", "").strip() or None


def shortened(text):
    return text if len(text) <= LONGEST else text[: LONGEST - 3] + "..."


def described(sources, changes):
    """What each change is called, by its file, the text of its line and what is put in place of what; the same change,
    made twice in lines of the same text, is told apart by a number."""
    counts = {}
    names = {}
    for change in sorted(changes, key=lambda c: (c.file, c.start, c.end, c.new)):
        source = sources[change.file]
        old = shortened(one_line(source.text[change.start : change.end]))
        new = shortened(one_line(change.new))
        name = f"{change.file} | {source.line_text(change.start)} | {old} -> {new}"
        counts[name] = counts.get(name, 0) + 1
        names[change] = name if counts[name] == 1 else f"{name} #{counts[name]}"
    return names
