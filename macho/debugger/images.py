# For gdb: tells it of the Mach-O images in the process, with functions, source lines and variables.
#
#   gdb -x macho/debugger/images.py --args PROGRAM [argument...]
#
# Any program with the Mach-O loader in it will do. The debug information of X.dylib is in X.dylib.debug.
import os

import gdb


class Images:
    """What gdb knows: the slides of each file's images in the process `pid`."""

    def __init__(self):
        self.pid = 0
        self.slides = {}

    def add(self, path, slide):
        self.forget_other_processes()
        debug = os.path.abspath(path) + ".debug"
        if not os.path.exists(debug):
            gdb.write(f"{path} has no debug information: {debug} is not there\n", gdb.STDERR)
            return
        self.slides.setdefault(debug, []).append(slide)
        self.show(debug, slide)

    def remove(self, path, slide):
        debug = os.path.abspath(path) + ".debug"
        slides = self.slides.get(debug, [])
        if slide not in slides:
            return
        # gdb goes by the name of the file, which several images may share.
        self.hide(debug)
        slides.remove(slide)
        for other in slides:
            self.show(debug, other)

    def forget_other_processes(self):
        pid = gdb.selected_inferior().pid
        if pid != self.pid:
            for debug in self.slides:
                self.hide(debug)
            self.slides = {}
            self.pid = pid

    def show(self, debug, slide):
        gdb.execute(f"add-symbol-file {quoted(debug)} -o {slide:#x}", to_string=True)

    def hide(self, debug):
        for _ in self.slides[debug]:
            gdb.execute(f"remove-symbol-file {quoted(debug)}", to_string=True)


def quoted(path):
    return '"' + path.replace("\\", "\\\\").replace('"', '\\"') + '"'


class Notice(gdb.Breakpoint):
    """Stops for a moment where the loader tells of an image."""

    def __init__(self, function, tell):
        # The address: there the arguments are still where the caller put them.
        super().__init__("*" + function, internal=True)
        self.tell = tell

    def stop(self):
        path = gdb.parse_and_eval("*(char **) ($esp + 4)").string()
        self.tell(path, int(gdb.parse_and_eval("*(unsigned *) ($esp + 8)")))
        return False


# A method of the dylib may be named before the dylib is there.
gdb.execute("set breakpoint pending on")
images = Images()
Notice("machoImageLoaded", images.add)
Notice("machoImageUnloaded", images.remove)
