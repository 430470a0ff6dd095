"""The program under test: its process, its windows, boxes and menus."""

import os
import re
import subprocess

import a11y
import desktop
from desktop import wait_for
from files import write
from panel import Panel

PROGRAM = os.path.join(desktop.WORK, "vantrel")

#: What dialogs and message boxes are to assistive technology.
BOX_ROLES = ("dialog", "alert message")

#: When a box closes, Qt looks for the window under the pointer, and may find the frame that the window manager is
#: just taking away. Nothing depends on it. Of each key it tells the registry of assistive technology, and goes on with
#: the key by itself where that does not answer soon.
NOT_OURS = re.compile(r"qt\.qpa\.xcb: QXcbConnection: XCB error: 3 \(BadWindow\),.* \(TranslateCoords\)"
                      r'|QSpiApplication::keyEventError +"org\.freedesktop\.DBus\.Error\.NoReply"')


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

    def messages(self, not_ours=False):
        """All that the program has written to its standard output and error; or what of that is not of its making."""
        self._messages.seek(0)
        lines = self._messages.read().decode(errors="replace").splitlines(keepends=True)
        return "".join(line for line in lines if bool(NOT_OURS.match(line)) == not_ours)

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

    def click(self, item):
        """Clicks on something in a box."""
        desktop.click(*item.middle)

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
        self.wait_keyboard()

    def wait_keyboard(self):
        """Waits until a window of the program has the keyboard, also for the X server, where windows close later."""
        def has():
            shown = desktop.xdo("search", "--onlyvisible", "--pid", self.process.pid).split()
            try:
                told = [window for window in self.windows() if window.has("showing")]
            except a11y.Gone:
                return False
            return len(shown) == len(told) and desktop.focused_window() in shown
        def done():
            return not self.alive() or has()
        try:
            wait_for(done, "", timeout=3)
        except AssertionError:
            # Two windows that go at once can leave the window manager without one to give the keys to.
            if self.boxes():
                raise
            desktop.click(desktop.SCREEN[0] // 4, 8)
            wait_for(done, lambda: "a window of the program has the keyboard; it is "
                                   f"{desktop.focused_window()}, there is {self.titles()}")

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
        return self._look_at_menu()

    def _look_at_menu(self):
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
        self.program.wait_keyboard()

    def press(self, button, stays=False):
        """Clicks on a button; the box ends with that, unless it is said to stay."""
        self.program.click(self.window.find("push button", button))
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
        self.program.click(field)
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

    def choose_by_keys(self, text):
        """Chooses with the arrow keys; the keyboard is at the first entry."""
        for _ in self.entries:
            entry = a11y.focus_told(self.window)
            if entry.name == text:
                break
            desktop.key("Down")
            wait_for(lambda: a11y.focus_told(self.window) != entry, "the next entry has the keyboard")
        desktop.key("Return")
        self.wait_gone()

    def press(self, text):
        """Chooses as assistive technology does."""
        self.window.find("menu item", text).do("Press")
        self.wait_gone()

    def dismiss(self):
        desktop.key("Escape")
        self.wait_gone()
