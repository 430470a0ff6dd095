"""Context menus, and the commands that start programs or fill the clipboard."""

import os

import desktop
from commands import MENU, CommandTest
from desktop import clipboard, holds, key, wait_for
from operations import ONE


class Menus(CommandTest):
    """What a menu offers."""

    FOLDER = ["Facts", "Usage", "-", "New folder", "New name", "Copy", "Remove", "Paths", "Shell", "Nothing", "-"]
    FILE = ["Facts", "Usage", "Sums", "-", "New name", "Copy", "Remove", "Paths", "Compare", "Run", "Shell",
            "Shell with it", "Nothing", "-"]
    TEXT = FILE[:7] + ["Send"] + FILE[7:]

    def offered(self, popup):
        entries = popup.entries
        popup.dismiss()
        return entries

    def test_of_a_file(self):
        panel = self.open(**{"x": "", "a.TXT": "", "b.tar.md": "", "c.sh": ""})
        for name, entries in (("x", self.FILE), ("a.TXT", self.TEXT), ("b.tar.md", self.TEXT), ("c.sh", self.FILE)):
            self.assertEqual(self.offered(panel.row_menu(name)), entries, name)

    def test_of_a_folder(self):
        panel = self.open(**{"d.txt": {}})
        for name in ("d.txt", ".."):
            self.assertEqual(self.offered(panel.row_menu(name)), self.FOLDER, name)

    def test_of_a_name_that_ends_in_a_dot(self):
        everything = [line.split("=")[3] if line.count("=") > 2 else "-" for line in MENU]
        panel = self.open(**{"x.": ""})
        self.assertEqual(self.offered(panel.row_menu("x.")), everything)

    def test_of_the_tree(self):
        panel = self.open(d={})
        self.assertEqual(self.offered(panel.branch_menu("d")), self.FOLDER)

    def test_of_the_empty_space(self):
        panel = self.open(d={})
        desktop.click(*panel.empty_place(), button=3)
        self.assertEqual(self.offered(self.program.popup()), self.FOLDER)

    def test_dismissed(self):
        panel = self.open(x="")
        panel.row_menu("x").dismiss()
        holds(lambda: not self.program.boxes() and not self.program.menu_is_open(), "nothing happens")

    def test_an_unknown_keyword_does_nothing(self):
        panel = self.open(x="")
        self.choose(panel, "x", "Nothing")
        holds(lambda: not self.program.boxes(), "nothing happens")

    def test_without_settings_there_is_nothing_to_choose(self):
        self.make(x="")
        self.start("drive={tree}=Tree\n")
        panel = self.program.panel(1)
        panel.wait_folder(self.tree)
        panel.click_row("x", button=3)
        holds(lambda: not self.program.boxes(), "nothing happens")
        key("Escape")
        panel.select("x")


class Launches(CommandTest):
    """The commands that start a program, in the panel's folder."""

    def test_send_to(self):
        self.stand_in("sender")
        panel = self.open(**{"a b;$(c).txt": ""})
        self.choose(panel, "a b;$(c).txt", "Send")
        self.assertEqual(self.launched("sender"), (self.tree, ["--to", '"somebody', 'here"', "$HOME",
                                                               self.in_tree("a b;$(c).txt")]))

    def test_execute(self):
        panel = self.open(**{"-x": ""})
        os.rename(self.stand_in("runner"), self.in_tree("runner"))
        self.choose(panel, "runner", "Run")
        self.assertEqual(self.launched("runner"), (self.tree, []))
        panel.select("runner")
        key("x")
        self.assertEqual(self.launched("runner"), (self.tree, []))

    def test_execute_what_is_no_program(self):
        panel = self.open(x="text")
        panel.select("x")
        for run in (lambda: key("x"), lambda: self.choose(panel, "x", "Run")):
            run()
            box = self.program.box("Error")
            self.assertEqual(box.text, f"Failed to start program:\n{self.in_tree('x')}")
            box.press("OK")

    def test_terminal(self):
        self.stand_in("terminal")
        panel = self.open(d={"x": ""})
        panel.open_row("d")
        panel.wait_folder(self.in_tree("d"))
        self.choose(panel, "x", "Shell")
        self.assertEqual(self.launched("terminal"), (self.in_tree("d"), ["-a", "-b"]))

    def test_terminal_with_the_item(self):
        self.stand_in("terminal")
        panel = self.open(**{"x y": ""})
        self.choose(panel, "x y", "Shell with it")
        self.assertEqual(self.launched("terminal"), (self.tree, ["-e", self.in_tree("x y")]))

    def test_a_terminal_in_a_folder_of_the_tree(self):
        self.stand_in("terminal")
        panel = self.open(d={})
        panel.branch_menu("d").choose("Shell")
        self.assertEqual(self.launched("terminal"), (self.in_tree("d"), ["-a", "-b"]))

    def test_a_program_that_is_missing(self):
        panel = self.open(x="")
        self.choose(panel, "x", "Shell")
        box = self.program.box("Error")
        self.assertEqual(box.text, "Failed to start program:\nterminal")
        box.keys("Return")

    def test_compare(self):
        self.stand_in("comparer")
        first = self.open(a="1", b="2", d={})
        second = self.program.panel(2)
        first.select("a")
        second.select("b")
        # The item of panel 1 comes first, in whichever panel the command is given.
        for panel in (first, second):
            self.choose(panel, "a", "Compare")
            expected = [self.in_tree("a"), self.in_tree("b" if panel is first else "a")]
            self.assertEqual(self.launched("comparer"), (self.tree, ["-x", *expected]))

    def test_compare_in_the_other_order(self):
        self.stand_in("comparer")
        first = self.open(a="1", b="2", d={})
        second = self.program.panel(2)
        second.select("a")
        first.select("b")
        self.choose(first, "b", "Compare")
        self.assertEqual(self.launched("comparer"), (self.tree, ["-x", self.in_tree("b"), self.in_tree("a")]))

    def test_compare_of_folders_that_were_opened(self):
        self.stand_in("comparer")
        first = self.open(d={"x": ""}, e={})
        second = self.program.panel(2)
        second.open_row("e")
        second.wait_folder(self.in_tree("e"))
        first.open_row("d")
        first.wait_folder(self.in_tree("d"))
        # A right click selects, and with that the item takes the folder's place.
        self.choose(first, "x", "Compare")
        self.assertEqual(self.launched("comparer"),
                         (self.in_tree("d"), ["-x", self.in_tree("d", "x"), self.in_tree("e")]))


class Operations(CommandTest):
    """The commands that start a file operation, from the menu."""

    def test_copy(self):
        panel = self.open(f="1", d={})
        self.choose(panel, "f", "Copy")
        box = self.program.dialog("Vantrel")
        box.fill("d/")
        box.press("OK")
        self.confirm(ONE + self.in_tree("d", "f"))
        self.finished()
        self.assert_tree({"f": "1", "d/": "", "d/f": "1"})

    def test_delete(self):
        panel = self.open(f="1", g="2")
        self.choose(panel, "f", "Remove")
        self.confirm(f"Delete selected files in folder: \n\n{self.tree}")
        self.finished()
        self.assert_tree({"g": "2"})

    def test_delete_in_the_tree(self):
        panel = self.open(d={}, g="2")
        panel.branch_menu("d").choose("Remove")
        self.confirm(f"Delete selected files in folder: \n\n{self.in_tree('d')}")
        self.finished()
        self.assert_tree({"g": "2"})
        panel.wait_folder(self.tree)


class Clipboard(CommandTest):
    def test_paths(self):
        panel = self.open(**{"a": "", "b c": "", "d": {}, "ü": ""})
        panel.select("b c", "ü", "d")
        panel.row_menu("ü").choose("Paths")
        expected = "".join(self.in_tree(name) + "\n" for name in ("b c", "ü", "d"))
        wait_for(lambda: sorted(clipboard().split("\n")) == sorted(expected.split("\n")), lambda: repr(clipboard()))
        self.assertTrue(clipboard().endswith("\n"))

    def test_the_folder_of_the_tree(self):
        panel = self.open(d={})
        panel.branch_menu("d").choose("Paths")
        wait_for(lambda: clipboard() == self.in_tree("d") + "\n", lambda: repr(clipboard()))
