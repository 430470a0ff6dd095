"""Browsing: bars, tree, listing, links, sorting, status texts, and what happens on disk meanwhile."""

import os
import pwd
import shutil
import subprocess

import desktop
from desktop import holds, wait_for
from vantrel import Link, VantrelTest, write

SETTINGS = "drive={tree}=Tree\ndrive=/=Root\ndrive={tree}/a=Sub\n"


class Browse(VantrelTest):
    def open(self, *folders, settings=SETTINGS, **entries):
        """Starts in the tree, and goes on into a folder of it."""
        self.make(**entries)
        self.start(settings)
        panel = self.program.panel(1)
        panel.wait_folder(self.tree)
        for depth, name in enumerate(folders, 1):
            panel.open_row(name)
            panel.wait_folder(self.in_tree(*folders[:depth]))
        return panel

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

    # --- The disk changes by itself.

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


class Open(VantrelTest):
    """What a double-click on a file starts."""

    def open(self, *lines, **entries):
        self.make(**entries)
        self.start("\n".join(("drive={tree}=Tree", *lines)))
        panel = self.program.panel(1)
        panel.wait_folder(self.tree)
        return panel

    def test_the_desktop_opens_what_has_no_association(self):
        self.stand_in("xdg-open")
        panel = self.open(**{"note.txt": "x"})
        panel.open_row("note.txt")
        self.assertEqual(self.launched("xdg-open")[1], ["file://" + self.in_tree("note.txt")])

    def test_an_association_with_arguments_and_a_path_with_blanks(self):
        self.stand_in("viewer")
        panel = self.open("assn=md|txt=viewer  --one   -2 three", **{"my  notes; $HOME \"x\".TXT": "x"})
        panel.open_row("my  notes; $HOME \"x\".TXT")
        folder, arguments = self.launched("viewer")
        self.assertEqual(arguments, ["--one", "-2", "three", self.in_tree("my  notes; $HOME \"x\".TXT")])
        self.assertEqual(folder, self.home)

    def test_the_last_suffix_decides(self):
        self.stand_in("unpack")
        self.stand_in("viewer")
        panel = self.open("assn=gz=unpack", "assn=tar=viewer", **{"archive.tar.gz": "x"})
        panel.open_row("archive.tar.gz")
        self.assertEqual(self.launched("unpack")[1], [self.in_tree("archive.tar.gz")])

    def test_a_name_without_a_dot(self):
        self.stand_in("maker")
        self.stand_in("viewer")
        panel = self.open("assn=makefile=maker", "assn=|sh=viewer", Makefile="x", README="x")
        panel.open_row("Makefile")
        self.assertEqual(self.launched("maker")[1], [self.in_tree("Makefile")])
        panel.open_row("README")
        self.assertEqual(self.launched("viewer")[1], [self.in_tree("README")])

    def test_a_program_that_is_missing(self):
        panel = self.open("assn=txt=no-such-program --x", **{"note.txt": "x"})
        panel.open_row("note.txt")
        box = self.program.box("Error")
        self.assertEqual(box.text, "Failed to start program:\nno-such-program")
        self.assertEqual(box.buttons, ["OK"])
        box.press("OK")
        self.assertEqual(panel.path, self.tree)

    def test_no_desktop_program(self):
        # Nothing opens; the program goes on.
        self.expected_messages = r"\AUnable to detect a launcher for 'file:///\S+'\n\Z"
        panel = self.open(**{"note.txt": "x"})
        panel.open_row("note.txt")
        panel.select("note.txt")
        panel.wait_left("Selected 1 file(s), 1 Bytes")

    def test_programs_outlive_the_program(self):
        self.stand_in("viewer")
        panel = self.open("assn=txt=viewer", **{"note.txt": "x"})
        panel.open_row("note.txt")
        self.launched("viewer")
        self.assertEqual(self.program.quit(), 0)
