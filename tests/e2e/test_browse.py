"""Browsing: bars, tree, listing, links, sorting and status texts."""

import os
import pwd
import subprocess

import desktop
from case import BrowseTest
from desktop import holds, wait_for
from files import Link


class Browse(BrowseTest):
    # --- Bars.

    def test_drive_buttons_move_their_own_panel(self):
        first = self.open(a={"deep": {}}, f="x")
        second = self.program.panel(2)
        first.press_drive("Root")
        first.wait_folder("/")
        self.assertEqual(second.path, self.tree)
        second.press_drive("Sub")
        second.wait_folder(self.in_tree("a"))
        self.assertEqual(first.path, "/")
        first.press_drive("Tree")
        first.wait_folder(self.tree)

    def test_a_drive_is_the_root_of_the_tree(self):
        panel = self.open(a={"deep": {}}, b={})
        wait_for(lambda: panel.branch_names == ["tree", "a", "b"], lambda: panel.branch_names)
        panel.press_drive("Sub")
        panel.wait_folder(self.in_tree("a"))
        wait_for(lambda: panel.branch_names == ["a", "deep"], lambda: panel.branch_names)

    def test_path_bar(self):
        panel = self.open("a", "b", a={"b": {"c": {}}})
        self.assertEqual(panel.components, ["/"] + [part + "/" for part in self.in_tree("a", "b").split("/")[1:]])
        panel.press_component("a/")
        panel.wait_folder(self.in_tree("a"))
        self.assertEqual(panel.components[-1], "a/")

    def test_path_bar_stays_below_the_root(self):
        panel = self.open("a", a={})
        for name in ("/", os.path.basename(os.path.dirname(self.tree)) + "/"):
            panel.press_component(name)
            holds(lambda: panel.path == self.in_tree("a"), lambda: f"{name} does nothing; it shows {panel.path}")
        panel.press_component("tree/")
        panel.wait_folder(self.tree)

    def test_path_bar_buttons_act_on_the_press(self):
        panel = self.open("a", a={})
        x, y = panel.part("filler", "Path bar").find("push button", "tree/").middle
        desktop.xdo("mousemove", x, y, "mousedown", 1)
        try:
            panel.wait_folder(self.tree)
        finally:
            desktop.xdo("mouseup", 1)

    # --- Tree and listing.

    def test_double_clicks_in_the_listing(self):
        panel = self.open("a", "b", a={"b": {"c": {}, "f": "1"}})
        self.assertEqual(panel.names, ["..", "c", "f"])
        wait_for(lambda: panel.branch_names == ["tree", "a", "b", "c"], lambda: panel.branch_names)
        panel.open_row("..")
        panel.wait_folder(self.in_tree("a"))
        panel.open_row("..")
        panel.wait_folder(self.tree)

    def test_the_listing_stays_below_the_root(self):
        panel = self.open(a={})
        panel.open_row("..")
        holds(lambda: panel.path == self.tree, lambda: f"still the root; it is {panel.path}")

    def test_a_click_in_the_tree_shows_the_folder(self):
        panel = self.open(a={"x": "1"}, b={"y": "22"})
        panel.click_branch("b")
        panel.wait_folder(self.in_tree("b"))
        panel.wait_names("..", "y")
        panel.click_branch("a")
        panel.wait_folder(self.in_tree("a"))
        panel.wait_names("..", "x")

    def test_arrow_keys_in_the_tree(self):
        panel = self.open(a={}, b={})
        panel.click_branch("a")
        panel.wait_folder(self.in_tree("a"))
        desktop.key("Down")
        panel.wait_folder(self.in_tree("b"))
        desktop.key("Up", "Up")
        panel.wait_folder(self.tree)

    def test_double_clicks_in_the_tree(self):
        panel = self.open(a={"b": {"c": {}}}, z={})
        panel.open_branch("a")
        panel.wait_folder(self.in_tree("a"))
        wait_for(lambda: panel.branch_names == ["tree", "a", "b", "z"], lambda: panel.branch_names)
        panel.open_branch("b")
        wait_for(lambda: panel.branch_names == ["tree", "a", "b", "c", "z"], lambda: panel.branch_names)
        # An open folder stays open, and what is below it folds up.
        panel.open_branch("a")
        wait_for(lambda: panel.branch_names == ["tree", "a", "b", "z"], lambda: panel.branch_names)
        panel.wait_folder(self.in_tree("a"))

    def test_the_tree_shows_no_links_and_no_files(self):
        panel = self.open(a={}, **{".hidden": {}, "f": "", "link": Link("a")})
        wait_for(lambda: panel.branch_names == ["tree", ".hidden", "a"], lambda: panel.branch_names)

    def test_the_listing_shows_everything(self):
        names = ["a b", ".hidden", "ümläut", "-dash", "star*", "quo'te\"", "a;b", "#x", "50%"]
        panel = self.open(**{name: "" for name in names}, dir={}, dangling=Link("nowhere"))
        wait_for(lambda: sorted(panel.names) == sorted(names + ["..", "dir", "dangling"]), lambda: panel.names)

    def test_columns(self):
        panel = self.open(dir={}, big="x" * 1234567)
        os.utime(self.in_tree("big"), (0, 1700000000))
        os.chmod(self.in_tree("big"), 0o640)
        self.assertEqual([panel.header(name).name for name in ("Name", "Size", "Owner", "Modified")],
                         ["Name", "Size", "Owner", "Modified"])
        user = pwd.getpwuid(os.getuid()).pw_name
        for column, text in (("Size", "1,234,567"), ("Owner", f"{user} 640"), ("Modified", "2023-11-14 22:13")):
            wait_for(lambda: panel.cell("big", column).name == text, lambda: f"{text}; {panel.column(column)}")
        self.assertEqual(panel.cell("dir", "Size").name, "0")

    # --- Links.

    def test_a_link_to_a_folder_does_nothing(self):
        self.stand_in("xdg-open")
        panel = self.open(a={}, link=Link("a"), chain=Link("link"))
        for name in ("link", "chain"):
            panel.open_row(name)
            holds(lambda: panel.path == self.tree and not self.notes("xdg-open"), lambda: panel.path)

    def test_a_link_to_a_file_opens_like_a_file(self):
        self.stand_in("xdg-open")
        panel = self.open(**{"f.txt": "x", "link.txt": Link("f.txt")})
        panel.open_row("link.txt")
        self.assertEqual(self.launched("xdg-open")[1], ["file://" + self.in_tree("link.txt")])

    def test_a_dangling_link_opens_like_a_file(self):
        self.stand_in("xdg-open")
        panel = self.open(**{"link.txt": Link("/nowhere/at/all")})
        panel.open_row("link.txt")
        self.assertEqual(self.launched("xdg-open")[1], ["file://" + self.in_tree("link.txt")])

    # --- Sorting.

    def test_header_clicks_sort_and_flip_each_time(self):
        panel = self.open(**{"a": "333", "b": "1", "c": "22"})
        panel.wait_names("..", "a", "b", "c")
        x, y = panel.header("Size").middle
        for column, order in (("Size", ["a", "c", "b"]), ("Size", ["b", "c", "a"]), ("Name", ["c", "b", "a"]),
                              ("Name", ["a", "b", "c"]), ("Size", ["a", "c", "b"]), ("Name", ["a", "b", "c"])):
            desktop.click(*panel.header(column).middle)
            wait_for(lambda: [name for name in panel.names if name != ".."] == order,
                     lambda: f"{order} by {column}; it is {panel.names}")
        self.assertEqual((x, y), panel.header("Size").middle)

    def test_sort_by_date(self):
        panel = self.open(**{"a": "", "b": "", "c": ""})
        for name, when in (("a", 2), ("b", 3), ("c", 1)):
            os.utime(self.in_tree(name), (0, when * 100000000))
        wait_for(lambda: panel.cell("a", "Modified").name.startswith("1976"), "the times are shown")
        desktop.click(*panel.header("Modified").middle)
        wait_for(lambda: [name for name in panel.names if name != ".."] == ["b", "a", "c"], lambda: panel.names)

    def test_sort_by_one_column_after_another(self):
        panel = self.open(**{"a": "1", "b": "333", "c": "22"})
        for name, when in (("a", 2), ("b", 3), ("c", 1)):
            os.utime(self.in_tree(name), (0, when * 100000000))
        wait_for(lambda: panel.cell("a", "Modified").name.startswith("1976"), "the times are shown")
        # Every click flips the order, descending first.
        for column, order in (("Name", "cba"), ("Modified", "cab"), ("Name", "cba"), ("Name", "abc"), ("Size", "bca"),
                              ("Modified", "cab"), ("Modified", "bac"), ("Size", "acb")):
            desktop.click(*panel.header(column).middle)
            wait_for(lambda: "".join(panel.names).replace("..", "") == order,
                     lambda: f"{order} by {column}; it is {panel.names}")

    def test_sort_order_starts_afresh_in_every_folder(self):
        panel = self.open(a={"x": "1", "y": "22"}, b="", c="")
        desktop.click(*panel.header("Name").middle)
        wait_for(lambda: panel.names.index("c") < panel.names.index("b"), lambda: panel.names)
        panel.open_row("a")
        panel.wait_names("..", "x", "y")

    # --- Status texts.

    def test_free_space(self):
        panel = self.open(a={})
        device = subprocess.run(["df", "--output=source", self.tree], capture_output=True, text=True,
                                check=True).stdout.split()[1]
        self.assertRegex(panel.left_text, r"^\S+: [0-9.]+(KB|MB|GB|TB) [0-9]+\.[0-9][0-9]% used$")
        self.assertEqual(panel.left_text.split(": ")[0], device)
        space = os.statvfs(self.tree)
        used = (space.f_blocks - space.f_bfree) / space.f_blocks * 100
        self.assertAlmostEqual(float(panel.left_text.split()[-2].rstrip("%")), used, delta=1.0)

    def test_selection_totals(self):
        panel = self.open(dir={"x": "x"}, one="1" * 1000, two="2" * 536)
        panel.select("one")
        panel.wait_left("Selected 1 file(s), 1000 Bytes")
        panel.select("one", "two")
        panel.wait_left("Selected 2 file(s), 1.50KB")
        panel.select("..")
        panel.wait_left("Selected 0 file(s), 0 Bytes")
        desktop.key("ctrl+a")
        panel.wait_left("Selected 3 file(s), 1.50KB")
        panel.click_branch("tree")
        wait_for(lambda: panel.left_text.endswith("% used"), lambda: panel.left_text)

    def test_shift_and_keys_select(self):
        panel = self.open(**{name: "12345" for name in "abcdef"})
        panel.click_row("b")
        panel.click_row("e", held=("shift",))
        panel.wait_left("Selected 4 file(s), 20 Bytes")
        panel.click_row("a")
        desktop.key("shift+Down", "shift+Down")
        panel.wait_left("Selected 3 file(s), 15 Bytes")

    def test_type_ahead(self):
        panel = self.open(**{"apple": "1", "date": "4444", "egg": "55555"})
        panel.select("apple")
        desktop.key("d")
        panel.wait_left("Selected 1 file(s), 4 Bytes")
        self.assertEqual(panel.selected, ["date"])

    def test_folder_counts(self):
        panel = self.open("a", a={"x": "1" * 10, ".z": "2" * 5, "y": {}, "l": Link("x")})
        total = 10 + 5 + 10 + os.path.getsize(self.in_tree("a", "y"))
        panel.wait_right(f"{self.in_tree('a')} has 1 dirs, 3 files, {total / 1024:.2f}KB")

    def test_empty_folder(self):
        panel = self.open("a", a={})
        panel.wait_right(f"{self.in_tree('a')} has 0 dirs, 0 files, 0 Bytes")
        self.assertEqual(panel.names, [".."])
