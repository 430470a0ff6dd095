"""The program under test: started with a home of its own, and used through what is on the screen."""

import os
import re
import shutil
import stat
import subprocess
import unittest

import a11y
import desktop
from desktop import wait_for

PROGRAM = os.path.join(desktop.WORK, "vantrel")
EXAMPLES = os.path.join(desktop.WORK, "examples")

#: Settings of most tests: the tree of the test is the first drive.
SETTINGS = "drive={tree}=Tree\ndrive=/=Root\n"


#: What dialogs and message boxes are to assistive technology.
BOX_ROLES = ("dialog", "alert message")


#: When a box closes, Qt looks for the window under the pointer, and may find the frame that the window manager is
#: just taking away. Nothing depends on it.
NOT_OURS = re.compile(r"qt\.qpa\.xcb: QXcbConnection: XCB error: 3 \(BadWindow\),.* \(TranslateCoords\)")


# --- Files.

class Link(str):
    """A symbolic link with this target."""


def make_tree(folder, entries):
    """Makes files (from str or bytes), folders (from dict) and Links."""
    os.makedirs(folder, exist_ok=True)
    for name, content in entries.items():
        path = os.path.join(folder, name)
        if isinstance(content, dict):
            make_tree(path, content)
        elif isinstance(content, Link):
            os.symlink(content, path)
        else:
            write(path, content)


def write(path, content):
    """Writes a file that appears at once as a whole."""
    content = content if isinstance(content, bytes) else content.encode()
    with open(path + "~", "wb") as file:
        file.write(content)
    os.rename(path + "~", path)


def read(path):
    with open(path, "rb") as file:
        return file.read().decode("latin-1")


def listing(folder):
    """Everything below a folder: names of folders end in "/"; files stand with their content, links with "->"."""
    found = {}
    for place, folders, files in os.walk(folder):
        for name in folders + files:
            path = os.path.join(place, name)
            key = os.path.relpath(path, folder)
            if os.path.islink(path):
                found[key] = "-> " + os.readlink(path)
            elif os.path.isdir(path):
                found[key + "/"] = ""
            else:
                found[key] = read(path)
    return found


def remove_tree(folder):
    for place, folders, _ in os.walk(folder):
        for name in folders:
            path = os.path.join(place, name)
            if not os.path.islink(path):
                os.chmod(path, 0o700)
    shutil.rmtree(folder, ignore_errors=True)


# --- The program.

class Vantrel:
    """A running program."""

    def __init__(self, home, stand_ins, settings=None, prefix=()):
        self.home = home
        if settings is not None:
            write(os.path.join(home, ".Vantrel"), settings)
        env = {name: value for name, value in os.environ.items() if not name.startswith(("QT_", "VANTREL_"))}
        # Nothing but stand-ins is ever found and started.
        env.update(HOME=home, PATH=stand_ins)
        self._messages = open(home + ".messages", "wb+")
        self.process = subprocess.Popen([*prefix, PROGRAM], env=env, cwd=home, stdin=subprocess.DEVNULL,
                                        stdout=self._messages, stderr=self._messages)

    def alive(self):
        return self.process.poll() is None

    def messages(self):
        """All that the program has written to its standard output and error."""
        self._messages.seek(0)
        lines = self._messages.read().decode(errors="replace").splitlines(keepends=True)
        return "".join(line for line in lines if not NOT_OURS.match(line))

    def end(self):
        if self.alive():
            self.process.kill()
            self.process.wait()
        self._messages.close()

    def quit(self):
        """Closes the main window, and returns the exit code."""
        self.menu("File", "Exit")
        wait_for(lambda: not self.alive(), "the program has ended")
        return self.process.returncode

    # --- Windows.

    def windows(self):
        """All windows, menus and boxes."""
        if not self.alive():
            raise AssertionError(f"the program has ended, {self.process.returncode}: {self.messages()}")
        try:
            application = a11y.application(self.process.pid)
            return application.children() if application else []
        except a11y.Gone:
            return []

    def titles(self):
        return [(window.role, window.name) for window in self.windows()]

    def window(self, *roles, name=None):
        """The window with one of these roles, once it stands still on the screen."""
        def look():
            for window in self.windows():
                try:
                    if window.role in roles and name in (None, window.name) and window.has("showing"):
                        return window
                except a11y.Gone:
                    pass
            return None
        found = wait_for(look, lambda: f"a window {roles} {name!r} among {self.titles()}")
        settle(found)
        return found

    def main(self):
        return self.window("frame")

    def box(self, title=None):
        """The dialog or message box that stands; waits for it."""
        return Box(self, self.window(*BOX_ROLES, name=title))

    def dialog(self, title):
        return Box(self, self.window("dialog", name=title))

    def message(self, title):
        return Box(self, self.window("alert message", name=title))

    def boxes(self):
        return [title for title in self.titles() if title[0] in BOX_ROLES]

    def wait_for_no_box(self):
        wait_for(lambda: not self.boxes(), lambda: f"no box; there is {[box.text for box in self.open_boxes()]}")

    def open_boxes(self):
        return [Box(self, window) for window in self.windows() if window.role in BOX_ROLES]

    def menu(self, *words):
        """Chooses from the menu bar."""
        item = self.main().find("menu bar").find("menu item", words[0])
        desktop.click(*item.middle)
        for word in words[1:]:
            self.popup().choose(word)

    def menu_is_open(self):
        """Whether the X server shows a menu of the program."""
        for window in desktop.xdo("search", "--onlyvisible", "--pid", self.process.pid).split():
            if desktop.window_is_menu(window):
                return True
        return False

    def popup(self):
        """The menu that is open; waits for it."""
        wait_for(self.menu_is_open, lambda: f"a menu among {self.titles()}")
        application = a11y.application(self.process.pid)
        # Menus are in no list of windows: what is told is the entry that gets the focus.
        a11y.forget_focus(application)
        desktop.key("Down")

        def look():
            try:
                entry = a11y.focus_told(application)
                menu = entry and entry.parent
                return menu if menu and menu.role == "popup menu" else None
            except a11y.Gone:
                return None
        menu = wait_for(look, "an entry of the menu has the focus")
        settle(menu.children()[0])
        return Popup(self, menu)

    def panel(self, number):
        """Panel 1 or 2."""
        return Panel(self, number)


def settle(item):
    """Waits until something has its place on the screen: the window manager moves new windows."""
    seen = [None, 0]

    def still():
        try:
            extents = item.extents
        except a11y.Gone:
            return False
        seen[1] = seen[1] + 1 if extents == seen[0] and extents[2] > 0 else 0
        seen[0] = extents
        return seen[1] >= 3
    wait_for(still, lambda: f"{item!r} stands still: {seen}")


class Box:
    """A dialog or message box."""

    def __init__(self, program, window):
        self.program = program
        self.window = window

    @property
    def title(self):
        return self.window.name

    @property
    def texts(self):
        """What its labels say, empty ones left out."""
        return [label.name for label in self.window.find_all("label") if label.name]

    @property
    def text(self):
        return "\n".join(self.texts)

    @property
    def buttons(self):
        return [button.name for button in self.window.find_all("push button")]

    @property
    def fields(self):
        """The edit fields, from top to bottom."""
        return sorted(self.window.find_all("text"), key=lambda field: field.extents[1])

    def wait_active(self):
        """Waits for the keyboard."""
        wait_for(lambda: self.window.has("active"), lambda: f"{self.title} is active")
        return self

    def gone(self):
        return self.window not in self.program.windows()

    def wait_gone(self):
        wait_for(self.gone, lambda: f"the box is gone; there is {self.program.boxes()}")

    def press(self, button, stays=False):
        """Clicks on a button; the box ends with that, unless it is said to stay."""
        desktop.click(*self.window.find("push button", button).middle)
        if not stays:
            self.wait_gone()

    def keys(self, *names, stays=False):
        self.wait_active()
        desktop.key(*names)
        if not stays:
            self.wait_gone()

    def close(self, stays=False):
        """Closes it by its title bar, with the key of the window manager for that."""
        self.keys("alt+F4", stays=stays)

    def fill(self, text):
        """Replaces the text of the field that can be edited."""
        self.wait_active()
        field, = [field for field in self.fields if not field.has("read-only")]
        desktop.click(*field.middle)
        wait_for(lambda: field.has("focused"), "the field has the keyboard")
        desktop.key("ctrl+a", "Delete")
        desktop.type_text(text)
        wait_for(lambda: field.text == text, lambda: f"the field holds {text!r}; it is {field.text!r}")


class Popup:
    """An open menu."""

    def __init__(self, program, window):
        self.program = program
        self.window = window

    @property
    def entries(self):
        """Its texts; a separator is "-"."""
        return ["-" if item.role == "separator" else item.name for item in self.window.children()]

    def wait_gone(self):
        wait_for(lambda: not self.program.alive() or not self.program.menu_is_open(), "the menu is gone")

    def choose(self, text):
        desktop.click(*self.window.find("menu item", text).middle)
        self.wait_gone()

    def dismiss(self):
        desktop.key("Escape")
        self.wait_gone()


class Panel:
    """One of the two panels; everything is looked up anew each time."""

    def __init__(self, program, number):
        self.program = program
        self.number = number

    @property
    def frame(self):
        # The second panel is made first.
        frames = [child for child in self.program.main().children() if child.role == "frame"]
        return frames[2 - self.number]

    @property
    def extents(self):
        return self.frame.extents

    def part(self, role, name=None):
        return self.frame.find(role, name)

    @property
    def list(self):
        return self.part(None, "File list")

    @property
    def tree(self):
        return self.part("tree", "Folder tree")

    # --- Texts.

    def _label(self, place):
        labels = sorted(self.part("status bar").find_all("label"), key=lambda label: label.extents[0])
        return labels[place].name

    @property
    def left_text(self):
        """Free space, or the selection."""
        return self._label(0)

    @property
    def right_text(self):
        """Counts of the folder."""
        return self._label(1)

    def wait_left(self, text):
        wait_for(lambda: self.left_text == text, lambda: f"{text!r}; it is {self.left_text!r}")

    def wait_right(self, text):
        wait_for(lambda: self.right_text == text, lambda: f"{text!r}; it is {self.right_text!r}")

    def wait_folder(self, path):
        """Waits until a folder is shown and loaded."""
        wait_for(lambda: self.path == path and self.right_text.startswith(path + " has "),
                 lambda: f"{path}; it is {self.path}, {self.right_text!r}")

    # --- Bars.

    @property
    def components(self):
        return [button.name for button in self.part("filler", "Path bar").find_all("push button")]

    @property
    def path(self):
        return "".join(self.components)[:-1] or "/"

    @property
    def drives(self):
        return [button.name for button in self.part("frame", "Drive bar").find_all("push button")]

    def press_component(self, name):
        desktop.click(*self.part("filler", "Path bar").find("push button", name).middle)

    def press_drive(self, name):
        desktop.click(*self.part("frame", "Drive bar").find("push button", name).middle)

    # --- The listing.

    def header(self, name):
        return next(item for item in self.list.children() if item.role == "column header" and item.name == name)

    def cells(self, column="Name"):
        """The cells of a column that are on the screen, from top to bottom."""
        def look():
            table = self.list
            x, y, width, height = self.header(column).extents
            bottom = table.extents[1] + table.extents[3]
            found = []
            place = y + height + 2
            while place < bottom:
                cell = table.at(x + width // 2, place)
                if cell is None:
                    break
                found.append(cell)
                _, top, _, tall = cell.extents
                place = top + tall + 2
            return found
        return steady(look)

    def column(self, column="Name"):
        return steady(lambda: [cell.name for cell in self.cells(column)])

    @property
    def names(self):
        return self.column("Name")

    def wait_names(self, *names):
        wait_for(lambda: self.names == list(names), lambda: f"{names}; there is {self.names}")

    def cell(self, name, column="Name"):
        """The cell of an item; waits for it."""
        def look():
            names = self.names
            if name not in names:
                return None
            cells = self.cells(column)
            return cells[names.index(name)] if len(cells) == len(names) else None
        return wait_for(look, lambda: f"{name!r} in the listing of {self.path}: {self.names}")

    @property
    def selected(self):
        return steady(lambda: [cell.name for cell in self.cells() if cell.has("selected")])

    def empty_place(self):
        """A place of the listing below its rows."""
        x, _, width, _ = self.list.extents
        _, top, _, height = self.cells()[-1].extents
        return x + width // 2, top + height + 60

    def click_row(self, name, **options):
        desktop.click(*self.cell(name).middle, **options)

    def open_row(self, name):
        """Double-clicks on an item of the listing."""
        self.click_row(name, repeat=2)

    def select(self, *names):
        """Selects items, and with that gives the listing the keyboard."""
        for number, name in enumerate(names):
            self.click_row(name, held=("ctrl",) if number else ())
        wait_for(lambda: sorted(self.selected) == sorted(names), lambda: f"{names} selected; it is {self.selected}")

    def row_menu(self, name):
        """Opens the context menu of an item."""
        self.click_row(name, button=3)
        return self.program.popup()

    # --- The tree.

    def branches(self):
        """The folders that the tree shows, from top to bottom, as name and accessible."""
        def look():
            return [(item.name, item) for item in self.tree.children()
                    if item.role == "tree item" and item.name and item.extents[3] > 0]
        return steady(look)

    @property
    def branch_names(self):
        return [name for name, _ in self.branches()]

    def branch(self, name):
        return wait_for(lambda: dict(self.branches()).get(name),
                        lambda: f"{name!r} in the tree: {self.branch_names}")

    def click_branch(self, name, **options):
        # The middle of a row is beside a short name, which is all the same to a row, but not to an eye.
        x, y, _, height = self.branch(name).extents
        desktop.click(x + 30, y + height // 2, **options)

    def open_branch(self, name):
        self.click_branch(name, repeat=2)

    def branch_menu(self, name):
        self.click_branch(name, button=3)
        return self.program.popup()


def steady(look):
    """The result of a look at things that may be replaced while one looks."""
    def once():
        try:
            return (look(),)
        except (a11y.Gone, IndexError, StopIteration):
            return None
    return wait_for(once, "a look that nothing disturbs")[0]


# --- Tests.

class VantrelTest(unittest.TestCase):
    """A test with a file tree and a home of its own. start() starts the program."""

    _count = 0

    def setUp(self):
        VantrelTest._count += 1
        self.place = os.path.join(desktop.SESSION, f"t{VantrelTest._count}")
        self.tree = os.path.join(self.place, "tree")
        self.home = os.path.join(self.place, "home")
        self.launched_folder = os.path.join(self.place, "launched")
        self.stand_ins = os.path.join(self.place, "bin")
        for folder in (self.place, self.tree, self.home, self.launched_folder, self.stand_ins):
            os.mkdir(folder)
        self.addCleanup(remove_tree, self.place)
        self.program = None
        #: What the program may write to its standard error, as a regular expression: nothing.
        self.expected_messages = r"\A\Z"

    def tearDown(self):
        if self.program is not None:
            self.assertRegex(self.program.messages(), self.expected_messages)

    def make(self, **entries):
        make_tree(self.tree, entries)

    def in_tree(self, *names):
        return os.path.join(self.tree, *names)

    def start(self, settings=SETTINGS, ready=True, **options):
        """Starts the program; in the settings, {tree}, {home} and {bin} stand for folders of the test."""
        if settings is not None:
            for word, path in (("tree", self.tree), ("home", self.home), ("bin", self.stand_ins)):
                settings = settings.replace("{" + word + "}", path)
        self.program = Vantrel(self.home, self.stand_ins, settings, **options)
        self.addCleanup(self.program.end)
        self.addCleanup(desktop.let_go)
        if ready:
            self.wait_ready()
        return self.program

    def wait_ready(self):
        main = self.program.main()
        wait_for(lambda: main.has("active"), "the main window is active")
        return main

    # --- Programs that are started.

    def stand_in(self, name):
        """Puts a program into the path that only notes its arguments and its working folder."""
        path = os.path.join(self.stand_ins, name)
        note = os.path.join(self.launched_folder, name)
        write(path, f'#!/bin/sh\nprintf "%s\\0" "$PWD" "$@" >"{note}.$$~" && /bin/mv "{note}.$$~" "{note}.$$"\n')
        os.chmod(path, stat.S_IRWXU)
        return path

    def notes(self, name):
        return [file for file in os.listdir(self.launched_folder)
                if file.startswith(name + ".") and not file.endswith("~")]

    def launched(self, name):
        """Waits for the one start of a stand-in, and returns its working folder and arguments."""
        note, = wait_for(lambda: self.notes(name), f"{name} is started")
        path = os.path.join(self.launched_folder, note)
        folder, *arguments = read(path).encode("latin-1").decode().split("\0")[:-1]
        os.remove(path)
        return folder, arguments
