"""Takes pictures of the real program: its windows, and every dialog and box that it has.

scripts/screenshots makes the home folder that is shown, and starts this as the user whom it belongs to.
"""

import argparse
import os
import signal
import subprocess
import sys

import a11y
import desktop
from desktop import key, wait_for
from files import Link, make_tree, read
from program import Vantrel

HOME = os.environ["HOME"]
STAND_INS = os.path.join(desktop.SESSION, "bin")
EXAMPLES = {"light": "Vantrel.starter", "dark": "Vantrel.dark"}

#: Kept around a dialog, with room for its title, in pixels at 96 dpi.
MARGIN = 16
TITLE = 28

#: Shown in pictures of their own: names that have little room.
DEEP = "Videos/A folder with a long name/and in it another one with a longer name/in which there is a third one"

FOLDERS = {
    "Documents": {
        "invoices": {"2025-01.pdf": 81234, "2025-02.pdf": 79120},
        "letters": {"to the landlord.odt": 18220},
        "budget.ods": 24310, "contract.pdf": 211904, "holidays.md": 2103, "notes.txt": 812, "report.odt": 51200,
        "report.pdf": 140332, "reading list.txt": 1490, "tax 2024.zip": 902114,
    },
    "Downloads": {"debian-12-netinst.iso": 658505728, "photos.tar.gz": 48210331, "manual.pdf": 1840221},
    "Music": {"Evening": {"01 Rain.flac": 28110442, "02 Harbour.flac": 31002841}},
    "Pictures": {"garden": {"IMG_0412.jpg": 3402117}, "harbour.jpg": 2881034, "map.png": 402117, "roof.jpg": 3110442},
    "Projects": {
        "garden": {
            "docs": {"plan.md": 3301}, "photos": {}, "plants": {"apple.csv": 412, "bean.csv": 518, "currant.csv": 377},
            "src": {"main.cpp": 5120, "watering.cpp": 9212, "watering.h": 1804},
            "tests": {"watering_test.cpp": 4408}, "CMakeLists.txt": 1204, "LICENSE.txt": 1071, "README.md": 2410,
            "beds.json": 7302, "frost.py": 3017, "harvest.csv": 18221, "water.sh": 640,
        },
        "website": {"index.html": 6120, "style.css": 2204},
    },
    DEEP: {"a file with quite a long name, too, as some people like them best.txt": 1234},
}


def make_home():
    """Fills the home folder. Files have the size that is given for them, and nothing in them."""
    def sizes(entries):
        return {name: sizes(entry) if isinstance(entry, dict) else b"" for name, entry in entries.items()}

    make_tree(HOME, sizes(FOLDERS))
    make_tree(HOME, {"Documents": {"plan": Link("../Projects/garden/docs/plan.md"), "sealed.txt": "x"}})
    for folder, entries in walk(HOME, FOLDERS):
        for name, size in entries:
            os.truncate(os.path.join(folder, name), size)
    os.chmod(os.path.join(HOME, "Documents", "sealed.txt"), 0)
    os.chmod(os.path.join(HOME, "Projects", "garden", "water.sh"), 0o755)


def walk(folder, entries):
    yield folder, [(name, entry) for name, entry in entries.items() if not isinstance(entry, dict)]
    for name, entry in entries.items():
        if isinstance(entry, dict):
            yield from walk(os.path.join(folder, name), entry)


def set_times():
    """Gives everything a time of its own that is the same in every run."""
    when = 1741942800
    for folder, folders, files in sorted(os.walk(HOME, topdown=False)):
        for name in sorted(files + folders) + [folder]:
            when += 41234
            os.utime(os.path.join(folder, name), (when, when), follow_symlinks=False)


class Pictures:
    """The pictures of one style."""

    def __init__(self, folder, wanted):
        self.folder = folder
        self.wanted = wanted
        self.program = None

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.program:
            desktop.screenshot(os.path.join(self.folder, "failed.png"))
            print(self.program.messages(), end="", flush=True)
            self.program.end()

    def start(self, style, prefix=()):
        settings = style and read(os.path.join(desktop.WORK, "examples", EXAMPLES[style]))
        self.program = Vantrel(HOME, STAND_INS, settings, prefix)
        if style is None:
            return
        set_times()
        self.wait_ready()
        for number in (1, 2):
            self.program.panel(number).wait_folder(HOME)

    def wait_ready(self):
        self.program.wait_for_no_box()
        main = self.program.main()
        wait_for(lambda: main.has("active"), "the main window is active")

    def key(self, *names):
        """Presses keys in the main window."""
        self.wait_ready()
        key(*names)

    def end(self):
        messages = self.program.messages()
        self.program.end()
        self.program = None
        if messages:
            raise AssertionError(f"the program wrote: {messages}")

    # --- Taking one.

    def take(self, name, box=None, place=None):
        """Leaves a picture of the screen, or of a dialog, or of what place_of() has told of one."""
        if self.wanted and name not in self.wanted:
            return
        path = os.path.join(self.folder, name + ".png")
        # The pointer lights up what is under it.
        desktop.xdo("mousemove", desktop.SCREEN[0] - 2, desktop.SCREEN[1] // 2)
        if box:
            place = self.place_of(box.wait_active())
        crop = ["-crop", "{2}x{3}+{0}+{1}".format(*place), "+repage"] if place else []
        self._settled(path, crop)
        print(path, flush=True)

    @staticmethod
    def place_of(box):
        """Where a dialog is with its frame: x, y, width and height."""
        x, y, width, height = box.window.extents
        margin = round(MARGIN * a11y.scale)
        left, top = max(0, x - margin), max(0, y - margin - TITLE)
        return left, top, x + width + margin - left, y + height + margin - top

    @staticmethod
    def _settled(path, crop):
        """Two in a row that are the same."""
        last = []

        def still():
            subprocess.run(["import", "-silent", "-window", "root", *crop, "-define", "png:exclude-chunks=date,time",
                            path], timeout=60, check=True)
            with open(path, "rb") as file:
                last.append(file.read())
            return len(last) > 1 and last[-1] == last[-2]
        wait_for(still, f"{path} stands still")

    # --- What is pictured.

    def go(self, number, *names):
        """Opens folders, from the home folder on."""
        panel = self.program.panel(number)
        panel.press_drive("Home")
        panel.wait_folder(HOME)
        path = HOME
        for name in names:
            panel.open_row(name)
            path = os.path.join(path, name)
            panel.wait_folder(path)
        return panel

    def windows(self):
        """The main window, its arrangements and menus."""
        self.go(1, "Projects", "garden")
        panel = self.go(2, "Documents")
        panel.select("notes.txt", "report.odt", "report.pdf")
        popup = panel.row_menu("report.odt")
        self.take("main")
        popup.dismiss()
        self.program.menu("Window", "Single Panel")
        self.take("single")
        self.program.menu("Window", "Tile Horizontally")
        self.take("stacked")
        desktop.click(*self.program.main().find("menu bar").find("menu item", "Window").middle)
        popup = self.program.popup()
        self.take("menu")
        popup.dismiss()
        self.program.menu("Window", "Tile Vertically")
        self.program.menu("Help", "About")
        self.box("about", "About Vantrel", "OK")

    def box(self, name, title, button=None):
        """Takes a picture of a dialog, and presses a button of it."""
        box = self.program.box(title)
        self.take(name, box)
        if button:
            box.press(button)
        return box

    def facts(self):
        """Properties, disk usage, checksums."""
        panel = self.go(1, "Documents")
        for item, name in (("report.pdf", "properties"), ("plan", "properties-link")):
            panel.select(item)
            self.key("p")
            self.box(name, "Properties", "OK")
        panel.select("report.pdf")
        self.key("s")
        self.ended("disk-usage", "Disk Usage")
        panel.row_menu("report.pdf").choose("Checksums ...")
        self.ended("checksums", "Checksums")
        panel.row_menu("sealed.txt").choose("Checksums ...")
        self.box("checksums-error", "Error", "OK")
        self.program.wait_for_no_box()
        panel = self.go(1, *DEEP.split("/"))
        panel.select(panel.names[1])
        self.key("p")
        self.box("properties-long", "Properties", "OK")
        self.key("s")
        self.ended("disk-usage-long", "Disk Usage")

    def ended(self, name, title):
        """Takes a picture of a dialog once its worker is done."""
        box = self.program.dialog(title)
        wait_for(lambda: self.is_done(box), "the worker is done")
        self.box(name, title, "OK")

    def names(self):
        """New folder and rename, and what they say where that fails."""
        panel = self.go(1, "Documents")
        panel.select("notes.txt")
        for what, name, title in (("n", "new-folder", "Create New Directory"), ("r", "rename", "Rename")):
            self.key(what)
            box = self.program.dialog(title)
            box.fill("letters")
            self.take(name, box)
            box.press("OK", stays=True)
            message = self.program.window("alert message")
            self.box(name + "-error", message.name, "OK")
            self.program.dialog(title).keys("Escape")

    def copying(self):
        """The destination, and the questions before an operation and during it."""
        self.go(2, "Documents", "letters")
        panel = self.go(1, "Documents")
        panel.select("notes.txt")
        self.copy_to("letters/", "copy-to")
        self.box("copy-one", "Vantrel", "Yes")
        self.copy_to("letters/")
        self.program.message("Vantrel").keys("Return")
        self.box_and_progress("replace", "progress", "No")
        panel.select("notes.txt", "holidays.md")
        self.key("F5")
        self.message("copy-many", "Yes")
        self.box_and_progress("replace-many", "progress-many", "Abort")
        panel.select("notes.txt", "holidays.md")
        self.key("F6")
        self.message("move", "No")
        panel.select("letters")
        self.copy_to("letters/old/")
        self.message("into-itself", "OK")
        panel.select("sealed.txt")
        self.copy_to("letters/")
        self.program.message("Vantrel").keys("Return")
        self.message("error", "Abort")
        self.program.wait_for_no_box()
        panel = self.go(1, *DEEP.split("/"))
        panel.select(panel.names[1])
        self.copy_to("other/")
        self.message("copy-one-long", "Yes")
        self.wait_ready()
        panel.select(panel.names[-1])
        self.copy_to("other/")
        self.message("copy-one-long", "Yes")
        self.box_and_progress("replace-long", "progress-long", "No")

    def copy_to(self, destination, name=None):
        self.key("c")
        box = self.program.dialog("Vantrel")
        box.fill(destination)
        if name:
            self.take(name, box)
        box.press("OK")

    def message(self, name, button):
        box = self.program.message("Vantrel")
        self.take(name, box)
        box.press(button)

    def box_and_progress(self, name, progress, button):
        """A question of an operation, and the progress dialog behind it."""
        question = self.program.message("Vantrel")
        self.take(name, question)
        self.take_behind(progress, question)
        question.press(button)
        self.program.wait_for_no_box()

    def take_behind(self, name, question):
        """Moves the question aside."""
        window = desktop.focused_window()
        desktop.xdo("windowmove", window, 0, desktop.SCREEN[1] - 40)
        self.take(name, place=self.place_of(self.program.dialog("Vantrel")))
        desktop.xdo("windowmove", window, desktop.SCREEN[0] // 4, desktop.SCREEN[1] // 4)
        wait_for(lambda: question.window.extents[1] < desktop.SCREEN[1] // 2, "the question is back")

    def deleting(self):
        panel = self.go(1, "Projects", "garden")
        panel.select("plants", "harvest.csv")
        self.key("Delete")
        self.message("delete", "Yes")
        self.box_and_progress("delete-file", "progress-delete", "Abort")

    def failing(self):
        self.program.panel(1).row_menu("README.md").choose("Terminal here")
        self.box("no-program", "Error", "OK")

    def working(self, style):
        """Dialogs while their workers run, which are made slow for that."""
        big = os.path.join(HOME, "Downloads", "debian-12-netinst.iso")
        copy = os.path.join(HOME, "Videos", os.path.basename(big))
        paths = [word for path in (big, copy) for word in ("-P", path)]
        self.start(style, ["/usr/bin/strace", "-D", "-f", "-qq", "-o", "/dev/null", *paths, "-e",
                           "trace=read,write", "-e", "inject=read,write:delay_exit=30000"])
        panel = self.go(1, "Downloads")
        panel.select(os.path.basename(big))
        panel.row_menu(os.path.basename(big)).choose("Checksums ...")
        self.running("checksums-running", "Checksums", "Cancel")
        self.copy_to("../Videos/")
        self.program.message("Vantrel").keys("Return")
        self.running("progress-copy", "Vantrel", "Abort")
        self.end()

    def running(self, name, title, button):
        """A picture of a dialog that changes all the time."""
        box = self.program.dialog(title)
        wait_for(lambda: box.window.find("progress bar").value >= 1, "it has begun")
        place = self.place_of(box.wait_active())
        self.program.process.send_signal(signal.SIGSTOP)
        try:
            self.take(name, place=place)
        finally:
            self.program.process.send_signal(signal.SIGCONT)
        box.press(button, stays=True)
        wait_for(lambda: box.gone() or self.is_done(box), "it has ended")
        if not box.gone():
            box.press("OK")

    @staticmethod
    def is_done(box):
        """Whether the dialog stays for its result to be read. Others may go while they are looked at."""
        try:
            return "OK" in box.buttons
        except a11y.Gone:
            return False


def calibrate():
    """Finds out what the program makes of the screen: its main window fills that."""
    program = Vantrel(HOME, STAND_INS, "window=0\n")
    width = program.main().extents[2]
    program.end()
    a11y.scale = desktop.SCREEN[0] / width
    print(f"a pixel of the program is {a11y.scale:.2f} on the screen", flush=True)


def take_all(folder, style, wanted, short):
    with Pictures(folder, wanted) as pictures:
        if not short:
            os.remove(os.path.join(HOME, ".Vantrel"))
            pictures.start(None)
            pictures.box("no-settings", "Error", "OK")
            pictures.end()
        pictures.start(style)
        pictures.windows()
        if not short:
            pictures.facts()
            pictures.names()
            pictures.copying()
            pictures.deleting()
            pictures.failing()
        pictures.end()
        if not short:
            pictures.working(style)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--dpi", type=int, required=True)
    parser.add_argument("--style", choices=EXAMPLES, required=True)
    parser.add_argument("--output", required=True)
    parser.add_argument("--only", action="append", default=[])
    parser.add_argument("--short", action="store_true")
    arguments = parser.parse_args()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    try:
        desktop.begin()
        # What a desktop sets for a screen of that kind.
        subprocess.run(["xprop", "-root", "-f", "RESOURCE_MANAGER", "8s", "-set", "RESOURCE_MANAGER",
                        f"Xft.dpi:\t{arguments.dpi}\n"], check=True)
        a11y.begin()
        os.makedirs(STAND_INS)
        make_home()
        calibrate()
        take_all(arguments.output, arguments.style, arguments.only, arguments.short)
    finally:
        desktop.end()


if __name__ == "__main__":
    main()
