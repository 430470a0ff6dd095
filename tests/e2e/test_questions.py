"""Every question that a copy asks, and what each answer does."""

import os

from files import Link
from operations import MANY, ONE, OperationTest


class Replace(OperationTest):
    """The question before a file is replaced."""

    def open(self, count=3):
        names = "abc"[:count]
        panel = super().open(d={name: "old" for name in names}, **{name: "new " + name for name in names})
        for name in names:
            os.utime(self.in_tree(name), (0, 1700000000))
            os.utime(self.in_tree("d", name), (0, 1600000000))
        panel.select(*names)
        return panel

    def copy_all(self):
        self.copy("d", MANY + self.in_tree("d"))

    def asked(self, name, button):
        self.replace(self.in_tree(name), self.in_tree("d", name), button)

    def expect(self, **content):
        self.finished()
        self.assertEqual({name: open(self.in_tree("d", name)).read() for name in content}, content)

    def test_text_and_buttons(self):
        self.open(1)
        self.copy("d/", ONE + self.in_tree("d", "a"))
        box = self.program.message("Vantrel")
        self.assertEqual(box.text, f"Replace file:\n{self.in_tree('d', 'a')}\n2020-09-13 12:26:40 3 bytes\n\n"
                                   f"With file:\n{self.in_tree('a')}\n2023-11-14 22:13:20 5 bytes")
        self.assertTrue(box.window.find("push button", "Yes").has("default"))
        self.assertIn(("dialog", "Vantrel"), self.program.titles())
        box.press("Yes")
        self.expect(a="new a")

    def test_return_is_yes(self):
        self.open(1)
        self.copy("d/", ONE + self.in_tree("d", "a"))
        self.program.message("Vantrel").keys("Return")
        self.expect(a="new a")

    def test_yes_asks_again_for_the_next(self):
        self.open()
        self.copy_all()
        for name in "abc":
            self.asked(name, "Yes")
        self.expect(a="new a", b="new b", c="new c")

    def test_yes_all(self):
        self.open()
        self.copy_all()
        self.asked("a", "No")
        self.asked("b", "YesAll")
        self.expect(a="old", b="new b", c="new c")

    def test_no(self):
        self.open()
        self.copy_all()
        self.asked("a", "No")
        self.asked("b", "Yes")
        self.asked("c", "No")
        self.expect(a="old", b="new b", c="old")

    def test_abort(self):
        self.open()
        self.copy_all()
        self.asked("a", "Yes")
        self.asked("b", "Abort")
        self.expect(a="new a", b="old", c="old")

    def test_a_folder_is_merged_into(self):
        panel = super().open(d={"same": "new", "more": "x"}, target={"d": {"same": "old", "kept": "y"}})
        panel.select("d")
        self.copy("target", MANY + self.in_tree("target"))
        self.replace(self.in_tree("d", "same"), self.in_tree("target", "d", "same"), "Yes")
        self.finished()
        self.assert_tree({"d/": "", "d/same": "new", "d/more": "x", "target/": "", "target/d/": "",
                          "target/d/same": "new", "target/d/kept": "y", "target/d/more": "x"})


class Errors(OperationTest):
    """The box of an error: its text, and what each answer does."""

    def unreadable(self, *names):
        panel = self.open(d={}, **{name: name for name in "abc"})
        for name in names:
            os.chmod(self.in_tree(name), 0)
        panel.select("a", "b", "c")
        self.copy("d", MANY + self.in_tree("d"))

    def denied(self, name, button):
        self.error(f"Unable to open source file:\n{self.in_tree(name)}\nPermission denied", button)

    def copied(self):
        self.finished()
        return sorted(os.listdir(self.in_tree("d")))

    def test_retry(self):
        self.unreadable("b")
        self.denied("b", "Retry")  # the cause is still there
        box = self.program.message("Vantrel")
        os.chmod(self.in_tree("b"), 0o600)
        box.press("Retry")
        self.assertEqual(self.copied(), ["a", "b", "c"])

    def test_return_is_retry(self):
        self.unreadable("b")
        box = self.program.message("Vantrel")
        os.chmod(self.in_tree("b"), 0o600)
        box.keys("Return")
        self.assertEqual(self.copied(), ["a", "b", "c"])

    def test_ignore(self):
        self.unreadable("a", "b")
        self.denied("a", "Ignore")
        self.denied("b", "Ignore")
        self.assertEqual(self.copied(), ["c"])

    def test_ignore_all(self):
        self.unreadable("a", "b")
        self.denied("a", "IgnoreAll")
        self.assertEqual(self.copied(), ["c"])

    def test_abort(self):
        self.unreadable("a")
        self.denied("a", "Abort")
        self.assertEqual(self.copied(), [])

    def test_the_destination_became_a_folder(self):
        panel = self.open(a="new", d={"a": {}})
        panel.select("a")
        self.copy("d/", ONE + self.in_tree("d", "a"))
        self.replace(self.in_tree("a"), self.in_tree("d", "a"), "Yes")
        self.error(f"Unable to open destination file:\n{self.in_tree('d', 'a')}\nIs a directory", "Ignore")
        self.finished()

    def test_a_destination_that_may_not_be_written(self):
        panel = self.open(a="new", d={})
        os.chmod(self.in_tree("d"), 0o500)
        panel.select("a")
        self.copy("d/", ONE + self.in_tree("d", "a"))
        text = f"Unable to open destination file:\n{self.in_tree('d', 'a')}\nPermission denied"
        self.error(text, "Retry")
        box = self.program.message("Vantrel")
        self.assertEqual(box.text, text)
        os.chmod(self.in_tree("d"), 0o700)
        box.press("Retry")
        self.finished()
        self.assert_tree({"a": "new", "d/": "", "d/a": "new"})

    def test_folders_that_cannot_be_made(self):
        panel = self.open(a="new", d={})
        os.chmod(self.in_tree("d"), 0o500)
        panel.select("a")
        self.copy("d/e/", ONE + self.in_tree("d", "e", "a"))
        self.error(f"Error creating directory:\n{self.in_tree('d', 'e', 'a')}\nPermission denied", "Ignore")
        self.error(f"Unable to open destination file:\n{self.in_tree('d', 'e', 'a')}\nNo such file or directory",
                   "Abort")
        self.finished()
        self.assert_tree({"a": "new", "d/": ""})

    def test_a_folder_that_may_not_be_read(self):
        panel = self.open(s={"x": "1"}, t={"y": "2"}, d={})
        os.chmod(self.in_tree("s"), 0o300)
        panel.select("s", "t")
        self.copy("d", MANY + self.in_tree("d"))
        self.error(f"Error reading directory:\n{self.in_tree('s')}\nPermission denied", "Ignore")
        self.finished()
        self.assertEqual(sorted(os.listdir(self.in_tree("d"))), ["s", "t"])
        self.assertEqual(os.listdir(self.in_tree("d", "t")), ["y"])

    def test_a_link_in_the_place_of_a_file(self):
        panel = self.open(l=Link("nowhere"), d={"l": "old"})
        panel.select("l")
        self.copy("d/", ONE + self.in_tree("d", "l"))
        self.replace(self.in_tree("l"), self.in_tree("d", "l"), "Yes")
        self.error(f"Unable to create symbolic link:\n{self.in_tree('d', 'l')}\nFile exists", "Ignore")
        self.finished()
        self.assert_tree({"l": "-> nowhere", "d/": "", "d/l": "old"})

    def test_a_source_that_vanishes_meanwhile(self):
        panel = self.open(d={"a": "old"}, a="1", b="2")
        panel.select("a", "b")
        self.copy("d", MANY + self.in_tree("d"))
        box = self.program.message("Vantrel")
        os.remove(self.in_tree("b"))
        box.press("Yes")
        # What is no file any more is taken for a folder.
        self.error(f"Error reading directory:\n{self.in_tree('b')}\nNo such file or directory", "Ignore")
        self.finished()

    def test_a_full_disk(self):
        panel = self.open(a="new")
        panel.select("a")
        self.copy("/dev/full", ONE + "/dev/full")
        self.replace(self.in_tree("a"), "/dev/full", "Yes")
        self.error("Error writing file:\n/dev/full\nNo space left on device", "Retry")
        self.replace(self.in_tree("a"), "/dev/full", "Yes")
        self.error("Error writing file:\n/dev/full\nNo space left on device", "Abort")
        self.finished()
