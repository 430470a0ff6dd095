"""The dialogs that make a folder and rename an item."""

import os
import shutil

from commands import CommandTest
from desktop import key, wait_for


class NewFolder(CommandTest):
    def dialog(self, panel, folder):
        panel.select("..")
        key("n")
        return self.check(folder)

    def check(self, folder):
        box = self.program.dialog("Create New Directory")
        self.assertEqual(box.texts, ["Current Directory:", folder, "Create new sub-directory:"])
        self.assertEqual(sorted(box.buttons), ["Cancel", "OK"])
        return box

    def refused(self, box, text):
        """Presses OK and answers the message; the dialog stays."""
        box.press("OK", stays=True)
        message = self.program.message("Error")
        self.assertEqual(message.text, text)
        message.press("OK")

    def test_by_key(self):
        panel = self.open()
        box = self.dialog(panel, self.tree)
        box.fill("new one")
        box.keys("Return")
        self.assert_tree({"new one/": ""})
        panel.wait_names("..", "new one")
        self.program.panel(2).wait_names("..", "new one")
        wait_for(lambda: "new one" in panel.branch_names, lambda: panel.branch_names)

    def test_in_a_folder_of_the_tree(self):
        panel = self.open(d={})
        panel.branch_menu("d").choose("New folder")
        box = self.check(self.in_tree("d"))
        box.fill("e")
        box.press("OK")
        self.assert_tree({"d/": "", "d/e/": ""})

    def test_cancelled(self):
        panel = self.open()
        box = self.dialog(panel, self.tree)
        box.fill("e")
        box.press("Cancel")
        box = self.dialog(panel, self.tree)
        box.fill("e")
        box.keys("Escape")
        self.assert_tree({})

    def test_names_that_are_refused(self):
        panel = self.open(f="1", d={})
        box = self.dialog(panel, self.tree)
        self.refused(box, f"Failed to create:\n{self.tree}/")
        for name in ("f", "d"):
            box.fill(name)
            self.refused(box, f"{name} already exists in directory:\n{self.tree}")
        box.fill("x/y")
        self.refused(box, f"Failed to create:\n{self.tree}/x/y")
        os.chmod(self.tree, 0o500)
        box.fill("e")
        self.refused(box, f"Permission denied to write in directory:\n{self.tree}")
        os.chmod(self.tree, 0o700)
        box.press("OK")
        self.assert_tree({"f": "1", "d/": "", "e/": ""})

    def test_the_folder_is_gone(self):
        panel = self.open(d={})
        panel.branch_menu("d").choose("New folder")
        box = self.check(self.in_tree("d"))
        box.fill(".Vantrel")
        os.rmdir(self.in_tree("d"))
        box.press("OK", stays=True)
        message = self.program.message("Error")
        self.assertEqual(message.text, f"Vantrel cannot access directory:\n{self.in_tree('d')}")
        message.press("OK")
        # The checks go on in the working folder, which is the home here.
        message = self.program.message("Error")
        self.assertEqual(message.text, f".Vantrel already exists in directory:\n{self.in_tree('d')}")
        message.press("OK")
        self.program.wait_for_no_box()


class NewName(CommandTest):
    def check(self, folder, name):
        box = self.program.dialog("Rename")
        self.assertEqual(sorted(box.texts), ["Current directory:", "New name:", "Rename:"])
        self.assertEqual(sorted(field.text for field in box.fields), sorted([folder, name, name]))
        self.assertEqual(sorted(box.buttons), ["Cancel", "OK"])
        return box

    def refused(self, box, *texts, stays=True):
        box.press("OK", stays=True)
        for text in texts:
            message = self.program.message("Error")
            self.assertEqual(message.text, text)
            message.press("OK")

    def test_by_key(self):
        panel = self.open(f="1")
        panel.select("f")
        key("r")
        box = self.check(self.tree, "f")
        box.fill("a new name")
        box.keys("Return")
        self.assert_tree({"a new name": "1"})
        for number in (1, 2):
            self.program.panel(number).wait_names("..", "a new name")

    def test_from_the_menu(self):
        panel = self.open(d={"x": "1"}, f="1")
        self.choose(panel, "d", "New name")
        box = self.check(self.tree, "d")
        box.fill("e")
        box.press("OK")
        self.assert_tree({"e/": "", "e/x": "1", "f": "1"})
        wait_for(lambda: panel.branch_names == ["tree", "e"], lambda: panel.branch_names)

    def test_cancelled(self):
        panel = self.open(f="1")
        panel.select("f")
        for end in (lambda box: box.press("Cancel"), lambda box: box.keys("Escape"), lambda box: box.close()):
            key("r")
            box = self.check(self.tree, "f")
            box.fill("g")
            end(box)
        self.assert_tree({"f": "1"})

    def test_names_that_are_refused(self):
        panel = self.open(f="1", g="2")
        panel.select("f")
        key("r")
        box = self.check(self.tree, "f")
        self.refused(box, f"f already exists in directory:\n{self.tree}")
        box.fill("g")
        self.refused(box, f"g already exists in directory:\n{self.tree}")
        box.fill("")
        self.refused(box, "Failed to rename:\nf")
        for name in ("no/such", "g/h", "n" * 256):
            box.fill(name)
            self.refused(box, "Failed to rename:\nf")
        os.chmod(self.tree, 0o500)
        box.fill("h")
        self.refused(box, f"Permission denied to make changes in directory:\n{self.tree}")
        os.chmod(self.tree, 0o700)
        box.press("OK")
        self.assert_tree({"h": "1", "g": "2"})

    def test_the_item_is_gone(self):
        panel = self.open(f="1", g="2")
        panel.select("f")
        key("r")
        box = self.check(self.tree, "f")
        box.fill("g")
        os.remove(self.in_tree("f"))
        # The second message comes although the dialog has closed.
        self.refused(box, "Vantrel cannot find:\nf", f"g already exists in directory:\n{self.tree}")
        self.program.wait_for_no_box()
        self.assert_tree({"g": "2"})

    def test_the_folder_is_gone(self):
        panel = self.open(d={"x": "1"})
        panel.open_row("d")
        panel.wait_folder(self.in_tree("d"))
        panel.select("x")
        key("r")
        box = self.check(self.in_tree("d"), "x")
        box.fill(".Vantrel")
        shutil.rmtree(self.in_tree("d"))
        # The checks go on in the working folder, which is the home here.
        self.refused(box, f"Vantrel cannot access directory:\n{self.in_tree('d')}", "Vantrel cannot find:\nx",
                     f".Vantrel already exists in directory:\n{self.in_tree('d')}")
        self.program.wait_for_no_box()
        panel.wait_folder(self.tree)
        self.assertEqual(os.listdir(self.home), [".Vantrel"])
