"""Deleting by key: its question, the question for each file, and the errors."""

import os

from desktop import holds, key
from files import Link
from operations import OperationTest


class Delete(OperationTest):
    def asked(self, name, button):
        self.answer(["Abort", "No", "Yes", "YesAll"], f"Delete file:\n{self.in_tree(name)}", button)

    def left(self):
        self.finished()
        return sorted(os.listdir(self.tree))

    def test_no_to_the_first_question(self):
        panel = self.open(f="1")
        panel.select("f")
        key("Delete")
        self.confirm(f"Delete selected files in folder: \n\n{self.tree}", "No")
        holds(lambda: not self.program.boxes(), "nothing comes after No")
        self.assertEqual(self.left(), ["f"])

    def test_escape_is_no_to_the_first_question(self):
        panel = self.open(f="1")
        panel.select("f")
        key("Delete")
        self.program.message("Vantrel").keys("Escape")
        holds(lambda: not self.program.boxes(), "nothing comes after Escape")
        self.assertEqual(self.left(), ["f"])

    def test_one_file_asks_no_more(self):
        panel = self.open(f="1", g="2")
        panel.select("f")
        self.delete()
        self.assertEqual(self.left(), ["g"])
        panel.wait_names("..", "g")
        self.program.panel(2).wait_names("..", "g")

    def test_an_empty_folder_asks_no_more(self):
        panel = self.open(d={}, g="2")
        panel.select("d")
        self.delete()
        self.assertEqual(self.left(), ["g"])
        panel.wait_names("..", "g")

    def test_a_link_goes_and_its_folder_stays(self):
        panel = self.open(d={"x": "1"}, l=Link("d"))
        panel.select("l")
        self.delete()
        self.finished()
        self.assert_tree({"d/": "", "d/x": "1"})

    def test_each_answer(self):
        panel = self.open(a="1", b="2", c="3", d="4", e="5")
        panel.select("a", "b", "c", "d", "e")
        self.delete()
        self.asked("a", "Yes")
        self.asked("b", "No")
        self.asked("c", "YesAll")
        self.assertEqual(self.left(), ["b"])
        panel.wait_names("..", "b")

    def test_abort(self):
        panel = self.open(a="1", b="2", c="3")
        panel.select("a", "b", "c")
        self.delete()
        self.asked("a", "Yes")
        self.asked("b", "Abort")
        self.assertEqual(self.left(), ["b", "c"])

    def test_a_folder_with_one_file_asks(self):
        panel = self.open(d={"x": "1"})
        panel.select("d")
        self.delete()
        self.asked("d/x", "Yes")
        self.assertEqual(self.left(), [])

    def test_a_kept_file_keeps_its_folder(self):
        panel = self.open(d={"x": "1"})
        panel.select("d")
        self.delete()
        self.asked("d/x", "No")
        self.error(f"Error deleting directory:\n{self.in_tree('d')}\nDirectory not empty", "Ignore")
        self.finished()
        self.assert_tree({"d/": "", "d/x": "1"})

    def test_the_folder_of_the_tree(self):
        panel = self.open(d={"e": {"f": {}}}, g="2")
        panel.click_branch("d")
        panel.wait_folder(self.in_tree("d"))
        key("Delete")
        self.confirm(f"Delete selected files in folder: \n\n{self.in_tree('d')}")
        self.assertEqual(self.left(), ["g"])
        # The folder that was shown is gone: the panel shows the one above.
        panel.wait_folder(self.tree)
        panel.wait_names("..", "g")

    def test_nothing_selected(self):
        panel = self.open(f="1")
        panel.select("..")
        self.delete()
        self.assertEqual(self.left(), ["f"])

    # --- Errors.

    def closed_folder(self, *names):
        panel = self.open(d={name: name for name in names}, z="1")
        os.chmod(self.in_tree("d"), 0o500)
        panel.open_row("d")
        panel.wait_folder(self.in_tree("d"))
        panel.select(*names)
        key("Delete")
        self.confirm(f"Delete selected files in folder: \n\n{self.in_tree('d')}")

    def denied(self, name, button):
        self.error(f"Error deleting file:\n{self.in_tree('d', name)}\nPermission denied", button)

    def test_retry(self):
        self.closed_folder("a")
        self.denied("a", "Retry")
        box = self.program.message("Vantrel")
        os.chmod(self.in_tree("d"), 0o700)
        box.press("Retry")
        self.finished()
        self.assertEqual(os.listdir(self.in_tree("d")), [])

    def test_ignore_and_ignore_all(self):
        self.closed_folder("a", "b", "c")
        self.asked("d/a", "YesAll")
        self.denied("a", "Ignore")
        self.denied("b", "IgnoreAll")
        self.finished()
        self.assertEqual(sorted(os.listdir(self.in_tree("d"))), ["a", "b", "c"])

    def test_abort_at_an_error(self):
        self.closed_folder("a", "b")
        self.asked("d/a", "YesAll")
        self.denied("a", "Abort")
        self.finished()
        self.assertEqual(sorted(os.listdir(self.in_tree("d"))), ["a", "b"])

    def test_a_folder_that_may_not_be_read(self):
        panel = self.open(d={"x": "1"}, z="1")
        os.chmod(self.in_tree("d"), 0o300)
        panel.select("d")
        self.delete()
        self.error(f"Error accessing directory:\n{self.in_tree('d')}\nPermission denied", "Ignore")
        self.assertEqual(self.left(), ["d", "z"])
