"""Draws run.svg, a run of shotlight on a terminal, and speed.svg, the figures of speed.txt, and writes what they show into
their alternative texts in README.md. Usage: draw.py ROOT SHOTLIGHT, both absolute; docs/pictures/make-pictures calls it."""

import fcntl
import os
import pty
import re
import struct
import subprocess
import sys
import tempfile
import termios
import unicodedata
from html import escape
from pathlib import Path

COLUMNS = 84  # of the terminal
CELL, LINE = 9, 21  # of a character; usual monospaced fonts of 15 pixels have that advance
BASELINE = 14  # from the top of a line to where its letters stand
MARGIN = 20

# What is typed, as it is shown; "./run" is shotlight.
COMMANDS = [
    "./run find tide --in examples/library --show kMDItemFSName,kMDItemKind",
    "./run find 'kMDItemISOSpeed > 0' --in examples/library \\\n"
    "  --sort kMDItemISOSpeed:desc --show kMDItemFSName,kMDItemISOSpeed,kMDItemKeywords",
    "./run find '*' --in examples/library --values kMDItemAlbum",
]
# Part of what dircolors says.
LS_COLORS = "*.jpg=01;35:*.tif=01;35:*.heic=01;35:*.txt=00"
RUN_TEXT = (
    "A terminal with three searches of examples/library: the files with the word tide, with their kinds; the photos "
    "with an ISO speed, the fastest first, with their keywords; and the albums, with how many songs each has."
)

STYLE = """
  .page { fill: #fbfbfc; stroke: #d1d9e0; }
  text { fill: #1f2328; font: 15px ui-monospace, "SFMono-Regular", Menlo, Consolas, "DejaVu Sans Mono", monospace; }
  .title { font: 600 15px system-ui, sans-serif; }
  .note { font: 14px system-ui, sans-serif; }
  .prompt, .note { fill: #636c76; }
  .typed { font-weight: bold; }
  .sgr-01-34 { fill: #1f5fb8; font-weight: bold; }
  .sgr-01-35 { fill: #8b2fa8; font-weight: bold; }
  .bar { fill: #a3acb6; }
  .ours { fill: #2f6fc4; }
  @media (prefers-color-scheme: dark) {
    .page { fill: #161b22; stroke: #3a424b; }
    text { fill: #e3e6ea; }
    .prompt, .note { fill: #98a1ab; }
    .sgr-01-34 { fill: #79b0ff; }
    .sgr-01-35 { fill: #d79be8; }
    .bar { fill: #656f7a; }
    .ours { fill: #5b9bf0; }
  }
"""


def svg(width, height, title, description, elements):
    return "\n".join(
        [
            f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" viewBox="0 0 {width} {height}"'
            ' role="img" aria-labelledby="title description">',
            f'<title id="title">{escape(title)}</title>',
            f'<desc id="description">{escape(description)}</desc>',
            f"<style>{STYLE}</style>",
            f'<rect class="page" x="0.5" y="0.5" width="{width - 1}" height="{height - 1}" rx="8"/>',
            *elements,
            "</svg>\n",
        ]
    )


def cells_of(character):
    if unicodedata.combining(character) or ord(character) > 0xFFFF:
        sys.exit(f"draw.py: {character!r} has no place of its own; show another file")
    return 2 if unicodedata.east_asian_width(character) in "WF" else 1


def row(y, spans, x=MARGIN):
    """A line of text, each character at a place of its own: so columns stand below each other in any font."""
    parts = []
    for kind, text in spans:
        places = []
        for character in text:
            places.append(f"{x:g}")
            x += cells_of(character) * CELL
        kind = f' class="{kind}"' if kind else ""
        parts.append(f'<tspan{kind} x="{" ".join(places)}">{escape(text, quote=False)}</tspan>')
    return f'<text y="{y}" xml:space="preserve">{"".join(parts)}</text>'


# A run


def run_on_terminal(command, root, cache):
    """What a terminal of that width is given, and behind it what goes to standard error: on a terminal, that would tell
    how far a search is that takes long."""
    terminal, inside = pty.openpty()
    fcntl.ioctl(inside, termios.TIOCSWINSZ, struct.pack("HHHH", 24, COLUMNS, 0, 0))
    settings = termios.tcgetattr(inside)
    settings[1] &= ~termios.OPOST  # lines end as the program ends them
    termios.tcsetattr(inside, termios.TCSANOW, settings)
    environment = {"PATH": os.environ["PATH"], "TERM": "xterm", "LS_COLORS": LS_COLORS, "XDG_CACHE_HOME": cache}
    environment |= {"LC_ALL": "C.UTF-8", "TZ": "UTC", "HOME": cache}
    with tempfile.TemporaryFile() as errors:
        process = subprocess.Popen(
            ["sh", "-c", command], cwd=root, env=environment, stdin=subprocess.DEVNULL, stdout=inside, stderr=errors
        )
        os.close(inside)
        output = b""
        while True:
            try:
                some = os.read(terminal, 65536)
            except OSError:  # the end of a terminal
                break
            if not some:
                break
            output += some
        os.close(terminal)
        status = process.wait()
        errors.seek(0)
        output += errors.read()
    if status != 0:
        sys.exit(f"draw.py: {command} ended with {status}:\n{output.decode()}")
    return output.decode()


def spans_of(line):
    """The parts of a line by their colours, which are sequences ESC [ ... m."""
    spans = []
    kind = ""
    for part in re.split("(\x1b\\[[0-9;]*m)", line):
        if part.startswith("\x1b"):
            code = part[2:-1]
            kind = "" if code in ("", "0") else "sgr-" + code.replace(";", "-")
        elif part:
            spans.append((kind, part))
    return spans


def draw_run(root, shotlight):
    rows = []
    with tempfile.TemporaryDirectory() as cache:
        for command in COMMANDS:
            first, *more = command.split("\n")
            rows.append([("prompt", "$ "), ("typed", first)])
            rows += [[("typed", line)] for line in more]
            runnable = command.replace("./run", f"'{shotlight}'", 1)
            run_on_terminal(runnable, root, cache)  # reads what is in files; a table that takes long comes in parts
            output = run_on_terminal(runnable, root, cache)
            rows += [spans_of(line) for line in output.splitlines()]
    for kind in {kind for spans in rows for kind, _ in spans if kind.startswith("sgr-")}:
        if f".{kind} " not in STYLE:
            sys.exit(f"draw.py: the style has no colour for {kind}")
    for spans in rows:
        width = sum(cells_of(character) for _, text in spans for character in text)
        if width > COLUMNS:
            sys.exit(f"draw.py: {width} columns are too many for the picture: {spans}")
    elements, y = [], MARGIN + BASELINE
    for spans in rows:
        if elements and spans[0][0] == "prompt":
            y += LINE // 2
        elements.append(row(y, spans))
        y += LINE
    return svg(COLUMNS * CELL + 2 * MARGIN, y - BASELINE + MARGIN, "A run of shotlight", RUN_TEXT, elements)


# Speed

BARS = 400  # the width of the longest one
FIGURE = 8 * CELL  # that of what stands behind it


def charts_in(text):
    """The settings, and of each chart its title and its bars: what was typed, and seconds as they are written."""
    settings, charts = {}, []
    for line in text.splitlines():
        fields = line.split("\t")
        if line.startswith("#"):
            continue
        if fields[0] == "chart":
            charts.append((f"{int(fields[3]):,} of {int(fields[2]):,} {fields[1]}", []))
        elif fields[0] == "bar":
            charts[-1][1].append((fields[1], fields[2]))
        else:
            settings[fields[0]] = fields[1]
    return settings, charts


def shown(seconds):
    """Two digits, or three of less than a tenth."""
    number = float(seconds)
    return f"{number:.3f}" if number < 0.1 else f"{number:.2f}" if number < 1 else f"{number:.1f}"


def described(settings, charts):
    parts = []
    for title, bars in charts:
        names = [text.split()[0] if not text.startswith("the same") else "again" for text, _ in bars]
        figures = ", ".join(f"{name} {shown(seconds)}" for name, (_, seconds) in zip(names, bars))
        parts.append(f"for {title}, {figures}")
    return (
        f"How many seconds commands take, the median of {settings['rounds']} rounds on {settings['processors']} processors: "
        + "; ".join(parts)
        + "."
    )


def draw_speed(figures):
    settings, charts = charts_in(figures)
    elements, y = [], MARGIN + BASELINE
    for title, bars in charts:
        elements.append(f'<text class="title" x="{MARGIN}" y="{y}">{escape(title)}</text>')
        longest = max(float(seconds) for _, seconds in bars)
        name = ""
        for text, seconds in bars:
            name = name if text.startswith("the same") else text.split()[0]
            width = BARS * float(seconds) / longest
            ours = " ours" if name == "shotlight" else ""
            elements.append(row(y + LINE + 4, [("", text)]))
            y += 2 * LINE + 4
            elements.append(f'<rect class="bar{ours}" x="{MARGIN}" y="{y - BASELINE}" width="{width:.2f}" height="17"/>')
            elements.append(row(y, [("", shown(seconds) + " s")], x=MARGIN + round(width) + CELL))
        y += 2 * LINE
    note = f"median of {settings['rounds']} rounds, on {settings['processors']} processors"
    elements.append(f'<text class="note" x="{MARGIN}" y="{y - 7}">{note}</text>')
    width = BARS + FIGURE + 2 * MARGIN
    return svg(width, y + MARGIN - 3, "How long commands take", described(settings, charts), elements)


def describe_in(readme, texts):
    """Replaces the alternative text of each picture. Nothing in the texts means anything to Markdown."""
    for name, text in texts.items():
        readme, count = re.subn(rf"^!\[.*\]\(docs/pictures/{name}\)$", f"![{text}](docs/pictures/{name})", readme, flags=re.M)
        if count != 1:
            sys.exit(f"draw.py: README.md shows docs/pictures/{name} {count} times; it should once")
    return readme


def main():
    root, shotlight = Path(sys.argv[1]), sys.argv[2]
    pictures = root / "docs/pictures"
    figures = (pictures / "speed.txt").read_text("utf-8")
    readme = root / "README.md"
    described_readme = describe_in(readme.read_text("utf-8"), {"run.svg": RUN_TEXT, "speed.svg": described(*charts_in(figures))})
    run = draw_run(root, shotlight)
    (pictures / "run.svg").write_text(run, "utf-8")
    (pictures / "speed.svg").write_text(draw_speed(figures), "utf-8")
    readme.write_text(described_readme, "utf-8")


main()
