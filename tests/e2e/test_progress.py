"""The dialog that stands while an operation runs."""

import os

import desktop
from desktop import holds, key, wait_for
from files import read
from operations import MANY, ONE, OperationTest


class Progress(OperationTest):
    MIB = 1 << 20

    def open(self):
        """Copies a file block by block, slowly enough to look on."""
        slow = ["/usr/bin/strace", "-D", "-f", "-qq", "-o", "/dev/null", "-P", self.in_tree("d", "big"),
                "-e", "trace=write", "-e", "inject=write:delay_exit=200000"]
        panel = super().open(prefix=slow, big=os.urandom(40 * self.MIB), d={})
        panel.select("big")
        self.copy("d/", ONE + self.in_tree("d", "big"))
        box = self.program.dialog("Vantrel")
        wait_for(lambda: self.size() > 2 * self.MIB, lambda: f"a part is copied; {self.size()}")
        return box

    def size(self):
        # Room for the whole file is taken first.
        with open(self.in_tree("d", "big"), "rb") as file:
            return len(file.read().rstrip(b"\0"))

    def assert_partial(self):
        """The part that was copied is left where it is."""
        self.finished()
        size = self.size()
        self.assertTrue(0 < size < 40 * self.MIB, size)
        size = -size % self.MIB
        self.assertLess(size, 16, "whole blocks, but for zeros at the end of the random bytes")
        self.program.panel(1).press_drive("Root")
        self.program.panel(1).wait_folder("/")

    def test_what_it_shows(self):
        box = self.open()
        self.assertEqual(box.buttons, ["Abort"])
        wait_for(lambda: self.in_tree("big") in box.texts, lambda: f"the path is shown; it is {box.texts}")
        speed, = [text for text in box.texts if text.startswith("Speed: ")]
        self.assertRegex(speed, r"^Speed: [0-9]+\.[0-9][0-9] MBytes/sec$")
        bar = box.window.find("progress bar")
        first = wait_for(lambda: bar.value, "the bar moves")
        wait_for(lambda: bar.value > first, "the bar moves on")
        self.assertLess(bar.value, 100)
        box.press("Abort")
        self.assert_partial()

    def test_the_main_window_is_closed_to_clicks_and_keys(self):
        box = self.open()
        panel = self.program.panel(1)
        panel.press_drive("Root")
        panel.click_branch("d")
        key("Delete", "c")
        holds(lambda: panel.path == self.tree and len(self.program.boxes()) == 1,
              lambda: f"{panel.path} {self.program.boxes()}")
        box.press("Abort")
        self.assert_partial()

    def test_escape_is_abort(self):
        self.open().keys("Escape")
        self.assert_partial()

    def test_the_title_bar_is_abort(self):
        self.open().close()
        self.assert_partial()

    def test_a_question_closes_the_progress_dialog_as_well(self):
        panel = OperationTest.open(self, a="1", d={"a": "2"})
        panel.select("a")
        self.copy("d/", ONE + self.in_tree("d", "a"))
        question = self.program.message("Vantrel")
        progress = self.program.dialog("Vantrel")
        # No time passes while a question is open.
        wait_for(lambda: "Speed: nan MBytes/sec" in progress.texts, lambda: progress.texts)
        desktop.click(*progress.window.find("push button", "Abort").middle)
        panel.press_drive("Root")
        holds(lambda: panel.path == self.tree and not question.gone(), "nothing else reacts")
        question.press("Yes")
        self.finished()
        self.assertEqual(read(self.in_tree("d", "a")), "1")

    def test_it_names_the_operation(self):
        panel = OperationTest.open(self, a="1", b="2", d={"a": "0"})
        panel.select("a", "b")
        self.copy("d", MANY + self.in_tree("d"))
        progress = self.program.dialog("Vantrel")
        wait_for(lambda: "Copying:" in progress.texts and self.in_tree("a") in progress.texts, lambda: progress.texts)
        self.program.message("Vantrel").press("Abort")
        self.finished()
        panel.select("a", "b")
        self.delete()
        progress = self.program.dialog("Vantrel")
        wait_for(lambda: "Deleting:" in progress.texts and self.in_tree("a") in progress.texts, lambda: progress.texts)
        self.program.message("Vantrel").press("Abort")
        self.finished()
