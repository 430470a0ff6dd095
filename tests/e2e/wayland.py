"""A Wayland compositor in a virtual X server, which hands on real keys and clicks, and the program in it.

The program knows nothing of the X server. Its main window fills the screen, so that places in it are places of the
screen; those of boxes are only their own, as no program is told where its windows are.
"""

import glob
import os
import shutil
import subprocess

import a11y
import desktop
from desktop import wait_for
from files import write
from program import Popup, Vantrel

_PLUGIN = "/usr/lib/*/qt5/plugins/platforms/libqwayland-generic.so"
_SOCKET = "wayland-of-the-test"

#: What is left of the X server's screen, below.
_MARGIN = 20

_CONFIGURATION = """[shell]
panel-position=none
locking=false
animation=none
startup-animation=none
close-animation=none
focus-animation=none
"""


def missing():
    """What is not there to test with, or None."""
    if shutil.which("weston") is None:
        return "no weston"
    return None if glob.glob(_PLUGIN) else "no Wayland plug-in of Qt"


class Compositor:
    """A running compositor, on an X server of its own, where nothing but its window is."""

    def __init__(self, folder):
        self._former = os.environ["DISPLAY"]
        self._server, os.environ["DISPLAY"] = desktop.start_display()
        width, height = desktop.SCREEN[0], desktop.SCREEN[1] - _MARGIN
        # What the pointer enters is told where it is; what opens below it is not always.
        desktop.xdo("mousemove", width // 2, height + _MARGIN // 2)
        configuration = os.path.join(folder, "weston.ini")
        write(configuration, _CONFIGURATION)
        self._log = open(os.path.join(folder, "weston.log"), "wb")
        self._process = subprocess.Popen(
            ["weston", "--backend=x11-backend.so", "--use-pixman", f"--width={width}", f"--height={height}",
             "--socket=" + _SOCKET, "--config=" + configuration, "--idle-time=0"],
            stdin=subprocess.DEVNULL, stdout=self._log, stderr=self._log)
        socket = os.path.join(os.environ["XDG_RUNTIME_DIR"], _SOCKET)
        try:
            wait_for(lambda: os.path.exists(socket) and self._take_keyboard(), "a compositor that has the keyboard")
        except BaseException:
            self.end()
            raise

    @staticmethod
    def _take_keyboard():
        """Gives the keyboard to its window, as there is no window manager to do so."""
        window = desktop.xdo("search", "--onlyvisible", "--class", "^Weston").strip()
        if window:
            desktop.xdo("windowfocus", window)
        return window and desktop.focused_window() == window

    def end(self):
        for process in (self._process, self._server):
            process.terminate()
            process.wait()
        self._log.close()
        os.environ["DISPLAY"] = self._former


class WaylandVantrel(Vantrel):
    """The program, which is told of the compositor only."""

    def __init__(self, home, stand_ins, settings=None, prefix=()):
        # Without the frame that Qt would draw, the main window fills the screen to its edges.
        # A compositor that is started from a console does not say what kind of session it is.
        environment = ["/usr/bin/env", "-u", "DISPLAY", "-u", "QT_QPA_PLATFORM", "-u", "XDG_SESSION_TYPE",
                       "WAYLAND_DISPLAY=" + _SOCKET, "QT_WAYLAND_DISABLE_WINDOWDECORATION=1"]
        super().__init__(home, stand_ins, settings, [*environment, *prefix])

    def wait_keyboard(self):
        """Waits until a window of the program has the keyboard."""
        def has():
            try:
                return not self.alive() or any(window.has("active") for window in self.windows())
            except a11y.Gone:
                return False
        wait_for(has, lambda: f"a window of the program has the keyboard; there is {self.titles()}")

    def click(self, item):
        """Does what a click in a box does. Where the box is, no one can tell."""
        if "Press" in item.actions:
            item.do("Press")
        else:
            item.grab_focus()

    def popup(self):
        """The menu that the click or key before opens: keys that come later are the menu's at once."""
        self._menu = WaylandPopup(self, self._look_at_menu().window)
        return self._menu

    def menu_is_open(self):
        try:
            return self._menu.window.has("showing")
        except a11y.Gone:
            return False


class WaylandPopup(Popup):
    """An open menu, used by keys."""

    def choose(self, text):
        self.choose_by_keys(text)
