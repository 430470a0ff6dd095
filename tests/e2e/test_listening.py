"""The main window for those who have it read to them: all by what assistive technology is told."""

import json
import os
import pwd
import signal
import subprocess

import a11y
from case import BrowseTest
from desktop import key, wait_for
from files import Link

COLUMNS = ["Name", "Size", "Owner", "Modified"]


class Listening(BrowseTest):
    def rows(self, panel):
        """All rows of the listing, also those that are not on the screen."""
        table = panel.list
        count, columns = table.size
        return [[table.cell(row, column).name for column in range(columns)] for row in range(count)]

    def names(self, panel):
        """The names of all rows; none while rows come and go."""
        try:
            return [row[0] for row in self.rows(panel)]
        except (a11y.Gone, AttributeError):
            return []

    def wait_rows(self, panel, *names):
        wait_for(lambda: self.names(panel) == list(names), lambda: f"{names}; it is {self.names(panel)}")

    def row(self, panel, name, column=0):
        """The cell of an item, on the screen or not."""
        return panel.list.cell(self.names(panel).index(name), column)

    def test_whole_listing(self):
        many = {f"f{number:03}": "x" * number for number in range(150)}
        panel = self.open(d={}, l=Link("d"), **many)
        for name in many:
            os.utime(self.in_tree(name), (1700000000, 1700000000))
        names = ["..", "d", "l", *many]
        wait_for(lambda: panel.list.size == (len(names), 4), lambda: f"its rows; it is {panel.list.size}")
        self.wait_rows(panel, *names)
        rows = {row[0]: row[1:] for row in self.rows(panel)}
        owner = pwd.getpwuid(os.getuid()).pw_name
        for name, text in many.items():
            self.assertEqual(rows[name][0], str(len(text)))
            self.assertIn(owner, rows[name][1])
        self.assertLess(len(panel.cells()), len(names), "most are not on the screen")

    def test_read_by_a_screen_readers_library(self):
        panel = self.open(d={"e": {}}, a="1", b="22", **{"ü ": "333"})
        for name in os.listdir(self.tree):
            os.utime(self.in_tree(name), (1700000000, 1700000000))
        names = ["..", "d", "a", "b", "ü "]
        self.wait_rows(panel, *names)
        wait_for(lambda: self.row(panel, "d", 3).name == self.row(panel, "b", 3).name, "the times are shown")
        reader = os.path.join(os.path.dirname(os.path.realpath(__file__)), "reader.py")
        read = json.loads(subprocess.run(
            ["/usr/bin/python3", reader, str(self.program.process.pid), "Panel 1", "b"],
            check=True, stdout=subprocess.PIPE, timeout=60, text=True).stdout)
        owner = pwd.getpwuid(os.getuid()).pw_name
        self.assertEqual(read["columns"], COLUMNS)
        self.assertEqual([row[0] for row in read["rows"]], names)
        self.assertEqual([row[1] for row in read["rows"]][2:], ["1", "2", "3"])
        self.assertEqual({row[3] for row in read["rows"][1:]}, {"2023-11-14 22:13"})
        for row in read["rows"]:
            self.assertIn(owner, row[2])
        self.assertEqual(read["folders"], [["tree", "Level 1"], ["d", "Level 2"]])
        self.assertRegex(read["status"][0], "% used$")
        self.assertEqual(read["status"][1], panel.right_text)
        self.assertTrue(read["selects"])
        self.assertEqual(read["selected"], ["b"])
        panel.wait_left("Selected 1 file(s), 2 Bytes")

    def test_headers(self):
        panel = self.open(f="1")
        table = panel.list
        self.assertEqual([table.column_header(column) for column in range(4)], COLUMNS)
        headers = [table.child_at(column + 1) for column in range(4)]
        self.assertEqual([header.name for header in headers], COLUMNS)
        self.assertEqual({header.role for header in headers}, {"column header"})

    def test_numbers_of_cells_and_places_agree(self):
        panel = self.open(a="1", b="2")
        self.wait_rows(panel, "..", "a", "b")
        table = panel.list
        for row in range(3):
            for column in range(4):
                index = table.index_of(row, column)
                self.assertEqual(table.child_at(index), table.cell(row, column))
                self.assertEqual((table.row_of(index), table.column_of(index)), (row, column))

    def test_what_the_icons_show_is_told(self):
        panel = self.open(d={}, f="1", l=Link("f"))
        self.wait_rows(panel, "..", "d", "f", "l")
        self.assertEqual([self.row(panel, name).description for name in ("d", "f", "l")], ["Folder", "", "Link"])

    def test_selection(self):
        panel = self.open(a="1", b="22", c="333")
        self.wait_rows(panel, "..", "a", "b", "c")
        panel.list.grab_focus()
        self.assertTrue(panel.list.select_row(1))
        self.assertTrue(panel.list.select_row(3))
        self.assertEqual(panel.list.selected_rows, [1, 3])
        panel.wait_left("Selected 2 file(s), 4 Bytes")
        self.assertEqual([self.row(panel, name, 3).has("selected") for name in "abc"], [True, False, True])
        self.assertTrue(panel.list.select_row(1, on=False))
        self.assertEqual(panel.list.selected_rows, [3])
        panel.wait_left("Selected 1 file(s), 3 Bytes")

    def test_current_cell_is_told(self):
        panel = self.open(a="1", b="2")
        self.wait_rows(panel, "..", "a", "b")
        self.row(panel, "a").do("SetFocus")
        for step, name in ((None, "a"), ("Down", "b"), ("Up", "a")):
            if step:
                key(step)
            expected = self.row(panel, name)
            wait_for(lambda: expected.has("focused"), f"{name} has the keyboard")
            wait_for(lambda: a11y.focus_told(self.program.main()) == expected, f"{name} is told")

    def test_status_texts(self):
        panel = self.open(a="12345", b="1234567")
        panel.wait_right(f"{self.tree} has 0 dirs, 2 files, 12 Bytes")
        self.assertRegex(panel.left_text, r"% used$")
        self.program.panel(2).wait_right(f"{self.tree} has 0 dirs, 2 files, 12 Bytes")

    def test_bars_and_tree_have_names(self):
        panel = self.open(d={"e": {}})
        self.assertEqual(panel.drives, ["Tree", "Root", "Sub"])
        self.assertEqual(panel.path, self.tree)
        panel.branch("d")

    def test_tree(self):
        panel = self.open(d={"e": {}})
        main = self.program.main()
        both = ["tree", "d"]
        for step, name, unfolded in (("Down", "d", ["tree"]), ("Right", None, both), ("Down", "e", both), ("Up", "d", both)):
            a11y.forget_focus(main)
            key(step)
            if name:
                told = wait_for(lambda: a11y.focus_told(main), f"{step} is told")
                self.assertEqual((told.name, told.role, told.has("selected")), (name, "tree item", True))
                panel.wait_folder(self.in_tree("d", "e") if name == "e" else self.in_tree("d"))
            wait_for(lambda: [branch for branch, item in panel.branches() if item.has("expanded")] == unfolded, step)

    def test_tree_by_what_is_told(self):
        panel = self.open(d={"e": {"x": "1"}}, f={})
        for shown in (["tree", "d", "e", "f"], ["tree", "d", "f"], ["tree", "d", "e", "f"]):
            panel.branch("d").do("Toggle")
            wait_for(lambda: panel.branch_names == shown, lambda: f"{shown}; it is {panel.branch_names}")
        self.assertEqual([item.description for _, item in panel.branches()], [f"Level {n}" for n in (1, 2, 3, 2)])
        self.assertEqual([item.has("expanded") for _, item in panel.branches()], [True, True, False, False])
        self.assertEqual(panel.tree.size, (4, 1))
        panel.list.grab_focus()
        panel.branch("e").do("Press")
        panel.wait_folder(self.in_tree("d", "e"))
        self.wait_rows(panel, "..", "x")
        self.assertEqual(panel.tree.selected_rows, [2])
        wait_for(lambda: a11y.focus_told(self.program.main()) == panel.branch("e"), "the folder is told")
        panel.tree.select_row(3)
        panel.wait_folder(self.in_tree("f"))

    def test_menu_of_the_tree_by_what_is_told(self):
        panel = self.open(settings="drive={tree}=Tree\nmenu=newdir=.=New folder=\n", d={})
        panel.branch("d").do("ShowMenu")
        self.program.popup().choose("New folder")
        box = self.program.dialog("Create New Directory")
        self.assertIn(self.in_tree("d"), box.texts)
        box.fields[-1].set_text("n")
        box.window.find("push button", "OK").do("Press")
        wait_for(lambda: os.path.isdir(self.in_tree("d", "n")), "the folder is there")

    def test_works_by_what_is_told(self):
        panel = self.open(d={"x": "1"}, a="1", b="22")
        self.wait_rows(panel, "..", "d", "a", "b")
        panel.list.child_at(2).do("Press")  # the header "Size"
        def larger_first():
            names = self.names(panel)
            return "b" in names and "a" in names and names.index("b") < names.index("a")
        wait_for(larger_first, "the larger one comes first")
        self.row(panel, "d").do("Press")
        panel.wait_folder(self.in_tree("d"))
        self.wait_rows(panel, "..", "x")
        self.row(panel, "..").do("Press")
        panel.wait_folder(self.tree)

    def test_registry_that_stands_still(self):
        """The keys work all the same, and what Qt writes about it counts as no message of the program."""
        panel = self.open(a="1", b="22")
        panel.select("a")
        registry = a11y.registry_pid()
        os.kill(registry, signal.SIGSTOP)
        try:
            key("Down")
            wait_for(lambda: self.program.messages(not_ours=True), "Qt has waited in vain")
        finally:
            os.kill(registry, signal.SIGCONT)
        wait_for(lambda: self.row(panel, "b").has("selected"), "the key did what it does")
        self.assertEqual(self.program.messages(), "")

    def test_menu_by_what_is_told(self):
        panel = self.open(settings="drive={tree}=Tree\nmenu=properties=*=Facts=\n", a="1")
        self.wait_rows(panel, "..", "a")
        self.row(panel, "a").do("ShowMenu")
        self.program.popup().choose("Facts")
        box = self.program.dialog("Properties")
        self.assertEqual([field.text for field in box.fields], [self.in_tree("a")])
        box.keys("Escape")
