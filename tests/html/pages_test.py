"""The pages that docs/html/make-html writes: their links lead somewhere, they need nothing from elsewhere, and they are the
same wherever and however they are made. Usage: pages_test.py SOURCES"""

import os
import subprocess
import sys
import tempfile
import unittest
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote, urlsplit

SOURCES = Path(sys.argv.pop(1)).resolve()
MAKE = SOURCES / "docs/html/make-html"
PAGES = ["developing", "guide", "host-programs", "index", "keys", "reference", "using"]


class Page(HTMLParser):
    """What a page has and where it leads."""

    def __init__(self, text):
        super().__init__()
        self.ids = []
        self.links = []  # of anchors
        self.needed = []  # what browsers fetch by themselves
        self.tags = set()
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        self.tags.add(tag)
        if "id" in attributes:
            self.ids.append(attributes["id"])
        if tag == "a" and "href" in attributes:
            self.links.append(attributes["href"])
        elif "href" in attributes:
            self.needed.append(attributes["href"])
        self.needed += [attributes[name] for name in ("src", "srcset", "data", "poster") if name in attributes]


def pages_in(folder):
    return {path.name: Page(path.read_text("utf-8")) for path in sorted(folder.glob("*.html"))}


def mistakes_in(folder):
    pages = pages_in(folder)
    mistakes = []
    for name, page in pages.items():
        mistakes += [f"{name}: two places are called {place}" for place in set(page.ids) if page.ids.count(place) > 1]
        mistakes += [f"{name}: has {tag}" for tag in {"script", "iframe", "base"} & page.tags]
        for target in page.links + page.needed:
            link = urlsplit(target)
            if link.scheme or link.netloc:
                if target in page.needed:
                    mistakes.append(f"{name}: needs {target}")
                continue
            file = unquote(link.path) or name
            if not (folder / file).is_file():
                mistakes.append(f"{name}: {target}: there is no such file")
            elif link.fragment and unquote(link.fragment) not in pages[file].ids:
                mistakes.append(f"{name}: {target}: there is no such place")
    return mistakes


def make(*arguments, **environment):
    return subprocess.run(
        ["/bin/sh", MAKE, *arguments], env={**os.environ, **environment}, capture_output=True, text=True, timeout=300
    )


class Pages(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = Path(holder.name)

    def make(self, *arguments, **environment):
        made = make(*arguments, **environment)
        self.assertEqual((0, ""), (made.returncode, made.stderr))

    def error(self, *arguments, **environment):
        made = make(*arguments, **environment)
        self.assertEqual((2, ""), (made.returncode, made.stdout))
        return made.stderr

    def test_links_lead_somewhere(self):
        self.make(self.folder)
        pages = pages_in(self.folder)
        self.assertEqual([page + ".html" for page in PAGES], list(pages))
        self.assertEqual([], mistakes_in(self.folder))
        links = [link for page in pages.values() for link in page.links]
        self.assertGreater(sum(".html#" in link for link in links), 10)
        self.assertIn("guide.html#the-life-of-a-query", pages["reference.html"].links)
        self.assertIn("keys.html", pages["index.html"].links)

    def test_some_pages_lead_to_each_other_alone(self):
        self.make(self.folder, "guide", "reference", "keys")
        self.assertEqual({"guide.html", "keys.html", "reference.html"}, {path.name for path in self.folder.iterdir()})
        self.assertEqual([], mistakes_in(self.folder))

    def test_same_wherever_they_are_made(self):
        here, there = self.folder / "here", self.folder / "another folder's"
        self.make(here)
        old = os.umask(0o077)
        self.addCleanup(os.umask, old)
        self.make(there, LC_ALL="POSIX", LANGUAGE="tr", TZ="EAST-9", HOME=str(self.folder))
        for path in here.iterdir():
            other = there / path.name
            self.assertEqual(path.read_bytes(), other.read_bytes(), path.name)
            self.assertEqual(0o644, other.stat().st_mode & 0o777)
        self.assertEqual(len(list(here.iterdir())), len(list(there.iterdir())))

    def test_contents_lead_to_headings(self):
        self.make(self.folder, "reference", "keys")
        text = (self.folder / "reference.html").read_text("utf-8")
        self.assertIn('<a href="#mdqueryznkresultcount">ResultCount</a>', text)
        self.assertIn('<h3 id="mdqueryznkresultcount">', text)
        self.assertIn('href="#all-keys"', (self.folder / "keys.html").read_text("utf-8"))

    def test_fit_phones_and_dark_rooms(self):
        self.make(self.folder)
        for page in PAGES:
            text = (self.folder / f"{page}.html").read_text("utf-8")
            self.assertIn('name="viewport"', text)
            self.assertIn("prefers-color-scheme: dark", text)

    def test_pictures_lie_beside_the_page(self):
        self.make(self.folder, "index", "guide")
        self.assertEqual(["run.svg", "speed.svg"], [path.name for path in sorted(self.folder.glob("*.svg"))])
        self.assertIn("run.svg", pages_in(self.folder)["index.html"].needed)
        self.assertEqual([], mistakes_in(self.folder))

    def test_commands_stand_out(self):
        self.make(self.folder, "using")
        text = (self.folder / "using.html").read_text("utf-8")
        self.assertIn("<pre><code>$ <kbd>./run store</kbd>\nstore  /home/you/", text)

    def test_words_of_programs_stand_out(self):
        self.make(self.folder, "guide")
        text = (self.folder / "guide.html").read_text("utf-8")
        self.assertIn('<span class="kw">Dim</span> q <span class="kw">As</span> <span class="kw">New</span>', text)

    def test_errors(self):
        self.assertIn("OUTPUT-FOLDER [PAGE...]\n", self.error())
        self.assertIn("there is no page 'none'\n", self.error(self.folder, "none"))
        file = self.folder / "file"
        file.write_text("")
        self.assertIn(f"{file} can't be made; name a folder that can be written\n", self.error(file))
        self.assertIn("pandoc is missing; install Debian's package pandoc\n", self.error(self.folder, PATH="/none"))


class Check(unittest.TestCase):
    """The check sees what it looks for."""

    def mistakes(self, text):
        with tempfile.TemporaryDirectory() as folder:
            Path(folder, "a.html").write_text('<p id="here">' + text)
            Path(folder, "b.html").write_text('<p id="there">')
            return mistakes_in(Path(folder))

    def test_nothing(self):
        good = '<a href="b.html#there">b</a><a href="#here">a</a><a href="b.html">b</a><a href="https://x.example">x</a>'
        self.assertEqual([], self.mistakes(good))

    def test_mistakes(self):
        for text, mistake in {
            '<a href="c.html">': "a.html: c.html: there is no such file",
            '<a href="b.html#here">': "a.html: b.html#here: there is no such place",
            '<a href="#there">': "a.html: #there: there is no such place",
            '<i id="here">': "a.html: two places are called here",
            '<img src="c.svg">': "a.html: c.svg: there is no such file",
            '<link href="https://x.example/s.css">': "a.html: needs https://x.example/s.css",
            '<img src="//x.example/p.svg">': "a.html: needs //x.example/p.svg",
            "<script>": "a.html: has script",
        }.items():
            self.assertEqual([mistake], self.mistakes(text))


if __name__ == "__main__":
    unittest.main()
