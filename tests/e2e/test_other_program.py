"""An operation that ends while the user types into another program."""

import os
import subprocess

import desktop
from desktop import holds, key, wait_for
from operations import ONE, OperationTest


class OtherProgram(OperationTest):
    MIB = 1 << 20

    def open(self):
        """Starts a copy that takes some seconds."""
        slow = ["/usr/bin/strace", "-D", "-f", "-qq", "-o", "/dev/null", "-P", self.in_tree("d", "big"),
                "-e", "trace=write", "-e", "inject=write:delay_exit=200000"]
        panel = super().open(prefix=slow, big=os.urandom(15 * self.MIB), d={})
        panel.select("big")
        self.copy("d/", ONE + self.in_tree("d", "big"))
        return self.program.dialog("Vantrel").wait_active()

    def other_window(self):
        """A window of another program, which tells the keys that it gets."""
        told = open(os.path.join(self.place, "keys"), "wb+")
        self.addCleanup(told.close)
        process = subprocess.Popen(["xev", "-event", "keyboard", "-name", "Other"], stdout=told,
                                   env={**os.environ, "LC_ALL": "C"})
        self.addCleanup(process.wait)
        self.addCleanup(process.terminate)
        window = wait_for(lambda: desktop.xdo("search", "--onlyvisible", "--name", "^Other$").strip(), "another window")
        desktop.xdo("windowactivate", window)
        wait_for(lambda: desktop.focused_window() == window, "the other window has the keyboard")
        return window

    def keys_told(self):
        with open(os.path.join(self.place, "keys"), "rb") as file:
            return [line.split(b"keysym")[1].split()[1].strip(b"),").decode()
                    for line in file.read().splitlines() if b"keysym" in line][::2]

    def wait_end(self, box):
        wait_for(box.gone, "the copy has ended", timeout=30)
        with open(self.in_tree("d", "big"), "rb") as copied:
            self.assertEqual(len(copied.read()), 15 * self.MIB)

    def test_it_keeps_the_keyboard(self):
        box = self.open()
        window = self.other_window()
        wait_for(lambda: not box.window.has("active"), "the dialog has not got the keyboard any more")
        self.wait_end(box)
        holds(lambda: desktop.focused_window() == window, "the other window keeps the keyboard", 1.5)
        key("x", "n", "r", "Delete")
        wait_for(lambda: self.keys_told() == ["x", "n", "r", "Delete"], lambda: f"keys typed; {self.keys_told()}")
        self.assertEqual(self.program.boxes(), [])

    def test_it_has_not_got_the_keyboard(self):
        box = self.open()
        window = self.other_window()
        desktop.click(*box.window.middle)
        box.wait_active()
        self.wait_end(box)
        wait_for(lambda: desktop.focused_window() != window, "a window of the program has the keyboard")
        self.program.wait_keyboard()
        key("n")
        self.program.dialog("Create New Directory").keys("Escape")
        self.assertEqual(self.keys_told(), [])
