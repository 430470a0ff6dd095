"""What happens on disk by itself while it is shown."""

import os
import shutil

from case import BrowseTest
from desktop import wait_for
from files import write


class Disk(BrowseTest):
    def test_files_that_come_go_and_change_show_by_themselves(self):
        panel = self.open(f="123")
        write(self.in_tree("new"), "12345")
        panel.wait_names("..", "f", "new")
        wait_for(lambda: panel.cell("new", "Size").name == "5", lambda: panel.column("Size"))
        self.assertEqual(self.program.panel(2).names, ["..", "f", "new"])
        with open(self.in_tree("f"), "a") as file:
            file.write("456789")
        wait_for(lambda: panel.cell("f", "Size").name == "9", lambda: panel.column("Size"))
        os.remove(self.in_tree("new"))
        panel.wait_names("..", "f")
        os.rename(self.in_tree("f"), self.in_tree("g"))
        panel.wait_names("..", "g")

    def test_counts_follow_the_disk(self):
        panel = self.open(f="123")
        panel.wait_right(f"{self.tree} has 0 dirs, 1 files, 3 Bytes")
        write(self.in_tree("g"), "12345")
        panel.wait_right(f"{self.tree} has 0 dirs, 2 files, 8 Bytes")

    def test_folders_come_and_go_in_the_tree(self):
        panel = self.open(a={})
        wait_for(lambda: panel.branch_names == ["tree", "a"], lambda: panel.branch_names)
        os.mkdir(self.in_tree("b"))
        wait_for(lambda: panel.branch_names == ["tree", "a", "b"], lambda: panel.branch_names)
        os.rmdir(self.in_tree("a"))
        wait_for(lambda: panel.branch_names == ["tree", "b"], lambda: panel.branch_names)

    def test_a_folder_vanishes_while_both_panels_show_it(self):
        first = self.open("a", "b", a={"b": {"f": "x"}})
        second = self.program.panel(2)
        second.open_row("a")
        second.wait_folder(self.in_tree("a"))
        second.open_row("b")
        second.wait_folder(self.in_tree("a", "b"))
        shutil.rmtree(self.in_tree("a", "b"))
        for panel in (first, second):
            panel.wait_folder(self.in_tree("a"))
            panel.wait_names("..")
        first.open_row("..")
        first.wait_folder(self.tree)

    def test_the_root_vanishes(self):
        # The table says that it has the top's rows while it has none.
        self.expected_messages = r"\A(QAccessibleTable::child: Invalid index at: 0 [0-3]\n)*\Z"
        panel = self.open(f="x")
        shutil.rmtree(self.tree)
        wait_for(lambda: "f" not in panel.names, lambda: panel.names)
        panel.press_drive("Root")
        panel.wait_folder("/")

    def test_a_folder_that_may_not_be_read(self):
        panel = self.open(a={"f": "x"})
        os.chmod(self.in_tree("a"), 0)
        panel.open_row("a")
        wait_for(lambda: panel.path == self.in_tree("a"), lambda: panel.path)
        panel.wait_right(f"{self.in_tree('a')} has 0 dirs, 0 files, 0 Bytes")
        panel.press_component("tree/")
        panel.wait_folder(self.tree)
