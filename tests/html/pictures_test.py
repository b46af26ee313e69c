"""The pictures in README.md are those that docs/pictures/draw.py draws now. Usage: pictures_test.py SOURCES SHOTLIGHT"""

import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SHOTLIGHT = sys.argv.pop(2)
SOURCES = Path(sys.argv.pop(1)).resolve()


def without_times(text):
    return re.sub(r"in \d+\.\d{3} s", "in TIME s", text)


class Pictures(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.root = Path(holder.name)
        shutil.copy(SOURCES / "README.md", self.root)
        shutil.copytree(SOURCES / "docs/pictures", self.root / "docs/pictures")
        (self.root / "examples").symlink_to(SOURCES / "examples")
        self.pictures = self.root / "docs/pictures"

    def draw(self):
        script = SOURCES / "docs/pictures/draw.py"
        return subprocess.run(
            ["/usr/bin/python3", "-B", script, self.root, SHOTLIGHT], capture_output=True, text=True, timeout=300
        )

    def test_drawn_now(self):
        for name in ("run.svg", "speed.svg"):
            (self.pictures / name).unlink()
        readme = self.root / "README.md"
        readme.write_text(re.sub(r"!\[.*\]", "![]", readme.read_text("utf-8")), "utf-8")
        drawn = self.draw()
        self.assertEqual((0, ""), (drawn.returncode, drawn.stderr))
        for name in ("docs/pictures/run.svg", "docs/pictures/speed.svg", "README.md"):
            self.assertEqual(
                without_times((SOURCES / name).read_text("utf-8")), without_times((self.root / name).read_text("utf-8")), name
            )

    def test_readme_without_a_picture(self):
        (self.root / "README.md").write_text("![](docs/pictures/run.svg)\n")
        drawn = self.draw()
        self.assertEqual(1, drawn.returncode)
        self.assertEqual("draw.py: README.md shows docs/pictures/speed.svg 0 times; it should once\n", drawn.stderr)


if __name__ == "__main__":
    unittest.main()
