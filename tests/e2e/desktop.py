"""The desktop that the tests have to themselves: X server, window manager, session bus, pointer, keyboard, screen."""

import contextlib
import os
import subprocess
import time

WORK = os.environ["VANTREL_E2E_WORK"]
SESSION = os.path.join(WORK, os.environ["VANTREL_E2E_SESSION"])
SCREEN = tuple(map(int, os.environ.get("VANTREL_E2E_SCREEN", "1400x900").split("x")))

#: How long a condition may take to come true. Only a failing test ever waits that long.
PATIENCE = 15.0

_processes = []


def wait_for(condition, what, timeout=PATIENCE):
    """Waits until condition() gives something true, and returns that."""
    deadline = time.monotonic() + timeout
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise AssertionError(f"not within {timeout:.0f} s: {what() if callable(what) else what}")
        time.sleep(0.02)


def holds(condition, what, seconds=0.4):
    """Checks that condition() stays true for a while: nothing happens where nothing should."""
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        if not condition():
            raise AssertionError(what() if callable(what) else what)
        time.sleep(0.02)


def begin():
    """Starts the session; its addresses are in os.environ afterwards."""
    runtime = os.path.join(SESSION, "runtime")
    os.mkdir(runtime, 0o700)
    os.environ["XDG_RUNTIME_DIR"] = runtime
    _begin_display()
    _begin_bus()


def end():
    for process in reversed(_processes):
        process.terminate()
    for process in reversed(_processes):
        process.wait()


def _start(command, **options):
    log = open(os.path.join(SESSION, os.path.basename(command[0]) + ".log"), "wb")
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stderr=log, **{"stdout": log, **options})
    _processes.append(process)
    return process


def start_display():
    """Starts an X server, and returns its process and the name of its display."""
    read_end, write_end = os.pipe()
    size = "{}x{}x24".format(*SCREEN)
    process = _start(["Xvfb", "-displayfd", str(write_end), "-screen", "0", size, "-nolisten", "tcp", "-noreset"],
                     pass_fds=[write_end])
    os.close(write_end)
    with os.fdopen(read_end) as number:
        return process, ":" + number.readline().strip()


def _begin_display():
    _, os.environ["DISPLAY"] = start_display()
    # The window manager says so when it is ready: its hints on the root window are there earlier.
    ready = os.path.join(SESSION, "openbox.ready")
    _start(["openbox", "--startup", f"touch {ready}"])
    wait_for(lambda: os.path.exists(ready), "a window manager")


def _begin_bus():
    bus = _start(["dbus-daemon", "--session", "--nofork", "--print-address=1"], stdout=subprocess.PIPE)
    os.environ["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.readline().decode().strip()


def xdo(*words):
    """Runs xdotool."""
    done = subprocess.run(["xdotool", *map(str, words)], capture_output=True, text=True, timeout=30, check=False)
    if done.returncode not in (0, 1) or (done.returncode and words[0] != "search"):
        raise AssertionError(f"xdotool {words}: {done.stderr}")
    return done.stdout


def focused_window():
    """The window that the X server gives the keys to."""
    return subprocess.run(["xdotool", "getwindowfocus"], capture_output=True, text=True, check=False).stdout.strip()


def window_is_menu(window):
    """Whether a window of the X server is a menu."""
    words = subprocess.run(["xprop", "-id", window, "_NET_WM_WINDOW_TYPE"], capture_output=True, text=True,
                           check=False).stdout
    return "_MENU" in words


# --- Pointer and keyboard.

_last_click = (-100, -100, 0.0)


def _apart(x, y):
    """A place close to the one given that does not make a double-click of this click and the one before."""
    old_x, old_y, when = _last_click
    near = abs(old_x - x) < 12 and abs(old_y - y) < 12
    return (old_x + 14, y) if near and time.monotonic() - when < 2 else (x, y)


def click(x, y, button=1, repeat=1, held=()):
    """Clicks, with the keys in held down."""
    global _last_click
    x, y = _apart(x, y)
    down = [word for key in held for word in ("keydown", key)]
    up = [word for key in held for word in ("keyup", key)]
    presses = ["click", "--repeat", repeat, "--delay", 30, button] if repeat > 1 else ["click", button]
    xdo("mousemove", x, y, *down, *presses, *up)
    _last_click = (x, y, time.monotonic())


def let_go():
    """Releases what a test that failed may have left pressed."""
    xdo("keyup", "shift", "keyup", "ctrl", "mouseup", 1, "mouseup", 3)


def key(*names):
    xdo("key", *names)


@contextlib.contextmanager
def held(name):
    """A key that is held down: the X server repeats it some thirty times a second after the first half second."""
    xdo("keydown", name)
    try:
        yield
    finally:
        xdo("keyup", name)


def type_text(text):
    xdo("type", "--delay", 1, text)


def pointer():
    """Where the pointer is, as x and y."""
    words = dict(word.split(":") for word in xdo("getmouselocation").split())
    return int(words["x"]), int(words["y"])


class Drag:
    """A drag with the left button: taken up at its construction, moved with to(), ended with drop() or escape()."""

    def __init__(self, start, nudged=True):
        x, y = start
        xdo("mousemove", x, y, "mousedown", 1)
        self._glide(x, y, x + 24, y + 3)
        # The program nudges the pointer while a drag runs, where it can; nothing else moves it.
        place = pointer()
        if nudged:
            wait_for(lambda: pointer() != place, "the pointer is nudged, which shows that a drag runs")

    @staticmethod
    def _glide(x, y, to_x, to_y, steps=6):
        words = []
        for i in range(1, steps + 1):
            words += ["mousemove", x + (to_x - x) * i // steps, y + (to_y - y) * i // steps]
        xdo(*words)

    def to(self, target):
        self._glide(*pointer(), *target)
        xdo("mousemove", target[0] + 1, target[1], "mousemove", *target)
        return self

    def drop(self, shift=False):
        if shift:
            xdo("keydown", "shift", "mousemove_relative", 1, 0, "mouseup", 1, "keyup", "shift")
        else:
            xdo("mouseup", 1)

    def escape(self):
        key("Escape")
        xdo("mouseup", 1)


# --- Screen and clipboard.

def screenshot(path):
    return subprocess.run(["import", "-silent", "-window", "root", path], timeout=60, check=False).returncode == 0


def pixels(x, y, width, height):
    """The colours of a part of the screen: rows of (red, green, blue)."""
    raw = subprocess.run(["import", "-silent", "-window", "root", "-crop", f"{width}x{height}+{x}+{y}", "+repage",
                          "-depth", "8", "rgb:-"], capture_output=True, timeout=60, check=True).stdout
    assert len(raw) == width * height * 3, (len(raw), width, height)
    values = [tuple(raw[i:i + 3]) for i in range(0, len(raw), 3)]
    return [values[row * width:(row + 1) * width] for row in range(height)]


def clipboard():
    """The text on the clipboard."""
    return subprocess.run(["xclip", "-selection", "clipboard", "-o"], capture_output=True, timeout=20,
                          check=False).stdout.decode()
