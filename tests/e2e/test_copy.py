"""Copying by key: the destination dialog, its question, and what lies on disk afterwards."""

import os
import stat

from desktop import holds, key, wait_for
from files import Link
from operations import MANY, ONE, OperationTest


class Copy(OperationTest):
    def test_a_file_into_a_folder(self):
        panel = self.open(f="12345", d={})
        panel.select("f")
        self.copy(self.in_tree("d") + "/", ONE + self.in_tree("d", "f"))
        self.finished()
        self.assert_tree({"f": "12345", "d/": "", "d/f": "12345"})

    def test_a_file_to_another_name_in_folders_that_are_made(self):
        panel = self.open(f="12345")
        panel.select("f")
        self.copy(self.in_tree("x", "y", "g"), ONE + self.in_tree("x", "y", "g"))
        self.finished()
        self.assert_tree({"f": "12345", "x/": "", "x/y/": "", "x/y/g": "12345"})
        panel.wait_names("..", "x", "f")

    def test_a_relative_destination(self):
        panel = self.open(f="12345")
        panel.select("f")
        self.copy("copy of f.txt", ONE + self.in_tree("copy of f.txt"))
        self.finished()
        self.assert_tree({"f": "12345", "copy of f.txt": "12345"})
        self.assertEqual(panel.names, ["..", "copy of f.txt", "f"])

    def test_modifiers_make_no_difference(self):
        panel = self.open(f="12345")
        panel.select("f")
        key("ctrl+c")
        self.program.dialog("Vantrel").press("Cancel")

    def test_several_items(self):
        panel = self.open(f="1", g="22", d={"e": {"h": "333"}, "l": Link("e/h")}, target={})
        os.chmod(self.in_tree("d", "e", "h"), 0o751)
        panel.select("f", "d")
        self.copy(self.in_tree("target"), MANY + self.in_tree("target"))
        self.finished()
        self.assert_tree({"f": "1", "g": "22", "d/": "", "d/e/": "", "d/e/h": "333", "d/l": "-> e/h", "target/": "",
                          "target/f": "1", "target/d/": "", "target/d/e/": "", "target/d/e/h": "333",
                          "target/d/l": "-> e/h"})
        self.assertEqual(stat.S_IMODE(os.stat(self.in_tree("target/d/e/h")).st_mode), 0o751)

    def test_one_folder(self):
        panel = self.open(d={"h": "1"}, target={})
        panel.select("d")
        self.copy("target", MANY + self.in_tree("target"))
        self.finished()
        self.assert_tree({"d/": "", "d/h": "1", "target/": "", "target/d/": "", "target/d/h": "1"})

    def test_the_folder_of_the_tree(self):
        panel = self.open(d={"h": "1"}, target={})
        panel.click_branch("d")
        panel.wait_folder(self.in_tree("d"))
        self.copy(self.in_tree("target"), MANY + self.in_tree("target"))
        self.finished()
        self.assert_tree({"d/": "", "d/h": "1", "target/": "", "target/d/": "", "target/d/h": "1"})

    def test_both_panels_show_what_was_copied(self):
        panel = self.open(f="12345", d={})
        other = self.program.panel(2)
        other.open_row("d")
        other.wait_folder(self.in_tree("d"))
        panel.select("f")
        self.copy("d/", ONE + self.in_tree("d", "f"))
        self.finished()
        other.wait_names("..", "f")
        wait_for(lambda: other.cell("f", "Size").name == "5", lambda: other.column("Size"))
        other.wait_right(f"{self.in_tree('d')} has 0 dirs, 1 files, 5 Bytes")

    # --- Nothing is done.

    def test_cancelled_destinations(self):
        panel = self.open(f="1", d={})
        panel.select("f")
        key("c")
        box = self.program.dialog("Vantrel").wait_active()
        self.assertEqual([field.text for field in box.fields], [""])
        self.assertEqual(sorted(box.buttons), ["Cancel", "OK"])
        box.press("OK")  # an empty line
        key("c")
        box = self.program.dialog("Vantrel")
        box.fill("d/")
        box.press("Cancel")
        key("c")
        box = self.program.dialog("Vantrel")
        box.fill("d/")
        box.keys("Escape")
        key("c")
        box = self.program.dialog("Vantrel")
        box.fill("d/")
        box.close()
        holds(lambda: not self.program.boxes(), "no question comes")
        self.assert_tree({"f": "1", "d/": ""})

    def test_no_to_the_question(self):
        panel = self.open(f="1", d={})
        panel.select("f")
        self.type_destination("d/")
        self.confirm(ONE + self.in_tree("d", "f"), "No")
        holds(lambda: not self.program.boxes(), "nothing comes after No")
        self.assert_tree({"f": "1", "d/": ""})

    def test_into_the_folder_where_it_is(self):
        panel = self.open(d={"h": "1"})
        panel.select("d")
        self.type_destination(self.tree)
        holds(lambda: not self.program.boxes(), "nothing is said")

    def test_into_itself(self):
        panel = self.open(d={"h": "1"}, dd={})
        for destination in ("d/h", "dd"):
            panel.select("d")
            self.type_destination(destination)
            box = self.program.message("Vantrel")
            self.assertEqual(box.text, "I'm sorry Dave, I'm afraid I can't do that.\n"
                                       "The destination is a child of the source")
            self.assertEqual(box.buttons, ["OK"])
            box.press("OK")
        self.assert_tree({"d/": "", "d/h": "1", "dd/": ""})

    def test_only_the_way_up_is_selected(self):
        panel = self.open(d={})
        panel.select("..")
        self.copy("d", MANY + self.in_tree("d"))
        self.finished()
        self.assert_tree({"d/": ""})
