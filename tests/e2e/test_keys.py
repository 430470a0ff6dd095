"""The program without a mouse: all is reached by Tab and arrow keys, and used by keys."""

import os
from collections import Counter

import a11y
import desktop
from case import EXAMPLES, BrowseTest
from commands import CommandTest
from desktop import key, wait_for
from files import read
from operations import MANY, MOVE
from panel import steady


class Keys(BrowseTest):
    def in_order(self, panel):
        """What keys can be given to in a panel, in the order in which Tab comes to it."""
        bars = (panel.part("frame", "Drive bar"), panel.part("filler", "Path bar"))
        return [*(button for bar in bars for button in bar.find_all("push button")), panel.tree, panel.list]

    def tab(self, name="Tab"):
        """Moves the keyboard, and returns to where."""
        main = self.program.main()
        a11y.forget_focus(main)
        key(name)
        told = wait_for(lambda: a11y.focus_told(main), f"{name} moves the keyboard")
        # After the tree as a whole, its current folder is told.
        return told.parent if told.role == "tree item" else told

    def test_tab_goes_through_all_and_back(self):
        panel = self.open(a="1")
        other = self.program.panel(2)
        other.wait_folder(self.tree)
        everything = self.in_order(panel) + self.in_order(other)
        everything[-1].grab_focus()
        self.assertEqual([self.tab() for _ in everything], everything)
        back = [self.tab("shift+Tab") for _ in everything]
        self.assertEqual(back, [*reversed(everything[:-1]), everything[-1]])

    def test_tab_after_another_folder(self):
        """The path buttons are made anew for each folder, and keep their place."""
        panel = self.open("a", a={"x": "1"})
        expected = self.in_order(panel)
        self.assertEqual(expected[-3].name, "a/")
        self.program.panel(2).list.grab_focus()
        self.assertEqual([self.tab() for _ in expected], expected)

    def test_bars_are_pressed_by_keys(self):
        panel = self.open("a", a={"x": "1"})
        bar = panel.part("filler", "Path bar")
        self.give(bar.find("push button", "tree/"))
        key("space")
        panel.wait_folder(self.tree)
        self.give(panel.part("frame", "Drive bar").find("push button", "Sub"))
        key("space")
        panel.wait_folder(self.in_tree("a"))

    # --- Menus and arrangements.

    def give(self, part):
        """Gives the keyboard to something that has not got it."""
        main = self.program.main()
        a11y.forget_focus(main)
        part.grab_focus()
        wait_for(lambda: a11y.focus_told(main), f"{part!r} has the keyboard")

    def choose(self, menu, entry):
        """Chooses from the menu bar by keys."""
        main = self.program.main()

        def told(name):
            focus = a11y.focus_told(main)
            return focus is not None and focus.name == name
        key("alt")
        wait_for(lambda: told("File"), "the menu bar has the keyboard")
        for title in ("Window", "Help"):
            if told(menu):
                break
            key("Right")
            wait_for(lambda: told(title), f"{title} has the keyboard")
        key("Down")
        wait_for(self.program.menu_is_open, "a menu is open")
        for _ in range(10):
            if told(entry):
                break
            before = a11y.focus_told(main)
            key("Down")
            wait_for(lambda: a11y.focus_told(main) != before, "the next entry has the keyboard")
        key("Return")
        self.program.wait_keyboard()

    def test_arrangements(self):
        panel = self.open(a="1")
        other = self.program.panel(2)
        for arrangement, panels in (("Single Panel", [panel]), ("Tile Horizontally", [panel, other]),
                                    ("Tile Vertically", [panel, other])):
            self.choose("Window", arrangement)
            wait_for(lambda: (other.extents[2] > 0) == (other in panels), f"{arrangement} is there")
            # From the end of the last panel Tab comes to the first, and it goes over a panel that is not there.
            last = panels[-1].list
            last.grab_focus()
            wait_for(lambda: last.has("focused"), "the last listing has the keyboard")
            self.assertEqual(self.tab(), self.in_order(panel)[0], arrangement)
            self.assertEqual(self.tab("shift+Tab"), last, arrangement)

    def test_the_keyboard_leaves_a_panel_that_goes(self):
        panel = self.open(a="1")
        other = self.program.panel(2)
        other.list.grab_focus()
        wait_for(lambda: other.list.has("focused"), "the second listing has the keyboard")
        self.choose("Window", "Single Panel")
        wait_for(lambda: panel.list.has("focused"), "the listing that is seen has the keyboard")

    def test_about_by_keys(self):
        self.open()
        self.choose("Help", "About")
        self.program.box("About Vantrel").keys("Return")

    # --- The focus is seen.

    def picture(self, part):
        """What the screen shows of something, once that does not change any more."""
        seen = [None]

        def still():
            before, seen[0] = seen[0], desktop.pixels(*part.extents)
            return before == seen[0]
        wait_for(still, f"{part!r} stands still")
        return seen[0]

    def check_frame(self, part):
        """Checks that what has the keyboard shows it; moves on, and returns to where."""
        focused = self.picture(part)
        following = self.tab()
        other = self.picture(part)
        changed = Counter(pair for rows in zip(focused, other) for pair in zip(*rows) if pair[0] != pair[1])
        self.assertGreaterEqual(changed.total(), part.extents[2], f"a frame around {part!r}")
        self.assertGreaterEqual(max(contrast(*pair) for pair in changed), 3, f"the frame of {part!r}")
        return following

    def test_focus_is_seen(self):
        for example in ("Vantrel.starter", "Vantrel.dark"):
            with self.subTest(example=example):
                self.start(settings=read(os.path.join(EXAMPLES, example)))
                panel = self.program.panel(1)
                panel.wait_folder(self.home)
                desktop.xdo("mousemove", 5, desktop.SCREEN[1] - 5)
                drive, *_, folder, _tree, _list = self.in_order(panel)
                for first, count in ((drive, 1), (folder, 3)):
                    self.give(first)
                    part = first
                    for _ in range(count):
                        part = self.check_frame(part)
                self.program.quit()


def contrast(one, other):
    """Contrast of two colours, from 1 to 21."""
    def luminance(colour):
        linear = [c / 12.92 if c <= 0.03928 else ((c + 0.055) / 1.055) ** 2.4 for c in (v / 255 for v in colour)]
        return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]
    a, b = sorted((luminance(one), luminance(other)))
    return (b + 0.05) / (a + 0.05)


def named(table):
    return [table.cell(row, 0).name for row in range(table.size[0])]


class KeyCommands(CommandTest):
    """Commands without a mouse."""

    def down_to(self, panel, name):
        """Moves the current cell of the listing, which has the keyboard then."""
        self.wait_ready()
        panel.list.grab_focus()
        wait_for(lambda: panel.list.has("focused"), "the listing has the keyboard")
        table = panel.list
        wait_for(lambda: name in steady(lambda: named(table)), f"{name} is there")
        names = steady(lambda: named(table))
        for row, step in enumerate(["ctrl+Home", *["Down"] * names.index(name)]):
            key(step)
            wait_for(lambda: table.cell(row, 0).has("focused"), f"{names[row]} has the keyboard")

    def test_open_and_up(self):
        panel = self.open(d={"x": ""})
        self.down_to(panel, "d")
        key("ctrl+o")
        panel.wait_folder(self.in_tree("d"))
        self.down_to(panel, "..")
        key("ctrl+o")
        panel.wait_folder(self.tree)

    def menu_by(self, pressed, item):
        """Opens the context menu by a key, and checks that it is at an item."""
        key(pressed)
        popup = self.program.popup()
        x, y, _, high = popup.window.extents
        left, top, width, height = item.extents
        # Close to the lower edge of the screen it is moved up.
        self.assertTrue(left <= x <= left + width and y <= top + height and top <= y + high, pressed)
        return popup

    def offered(self, pressed, item):
        popup = self.menu_by(pressed, item)
        entries = popup.entries
        popup.dismiss()
        return entries

    def test_context_menu_of_a_row(self):
        panel = self.open(d={}, **{f"f{number:02}": "" for number in range(60)})
        self.down_to(panel, "d")
        for pressed in ("Menu", "shift+F10"):
            self.assertIn("New folder", self.offered(pressed, panel.list.cell(1, 0)))
        key("ctrl+End")  # the last cell of a file, which is scrolled to
        last = panel.list.cell(61, 3)
        wait_for(lambda: last.has("focused"), "the last cell has the keyboard")
        for pressed in ("Menu", "shift+F10"):
            self.assertIn("Sums", self.offered(pressed, last))
        # Scrolled away, the row is still what the menu is for.
        desktop.xdo("mousemove", *panel.list.middle, "click", "--repeat", 40, 4)
        wait_for(lambda: panel.list.cell(0, 0).extents[1] > panel.list.extents[1], "the first rows are seen again")
        key("Menu")
        self.program.popup().choose_by_keys("New name")
        box = self.program.dialog("Rename").wait_active()
        desktop.type_text("last")
        box.keys("Return")
        wait_for(lambda: os.path.exists(self.in_tree("last")), "it is renamed")
        self.assertFalse(os.path.exists(self.in_tree("f59")))

    def test_context_menu_of_the_tree(self):
        panel = self.open(d={"e": {}})
        panel.tree.grab_focus()
        key("Right", "Down")
        panel.wait_folder(self.in_tree("d"))
        for pressed, name in (("Menu", "new"), ("shift+F10", "more")):
            self.menu_by(pressed, panel.branch("d")).choose_by_keys("New folder")
            box = self.program.dialog("Create New Directory")
            self.assertIn(self.in_tree("d"), box.texts)
            box.wait_active()
            desktop.type_text(name)
            box.keys("Return")
            wait_for(lambda: os.path.isdir(self.in_tree("d", name)), "the folder is there")

    def test_dialogs(self):
        panel = self.open(a="1")
        self.down_to(panel, "a")
        key("r")
        box = self.program.dialog("Rename").wait_active()
        desktop.type_text("b")
        box.keys("Tab", "space")  # the button OK
        wait_for(lambda: os.path.exists(self.in_tree("b")), "it is renamed")
        key("n")
        self.program.dialog("Create New Directory").keys("alt+c")
        self.down_to(panel, "b")
        key("c")
        box = self.program.dialog("Vantrel").wait_active()
        desktop.type_text("c")
        box.keys("Return")
        self.program.message("Vantrel").keys("Return")
        wait_for(lambda: os.path.exists(self.in_tree("c")), "it is copied")
        self.program.wait_for_no_box()
        self.down_to(panel, "b")
        key("Delete")
        self.program.message("Vantrel").keys("Right", "Return")
        self.assertTrue(os.path.exists(self.in_tree("b")), "answered No")

    def test_copy_and_move_to_the_other_panel(self):
        panel = self.open(a="1", b="2", d={})
        other = self.program.panel(2)
        other.open_row("d")
        other.wait_folder(self.in_tree("d"))
        for pressed, name, question in (("F5", "a", MANY), ("F6", "b", MOVE)):
            self.down_to(panel, name)
            key(pressed)
            self.confirm(question + self.in_tree("d"))
            self.finished()
        self.assert_tree({"a": "1", "d/": "", "d/a": "1", "d/b": "2"})

    def test_the_tree_is_made_wider_and_narrower(self):
        panel = self.open()
        before = panel.tree.extents[2]
        key("ctrl+greater")
        wait_for(lambda: panel.tree.extents[2] > before, "the tree is wider")
        key("ctrl+less", "ctrl+less")
        wait_for(lambda: panel.tree.extents[2] < before, "the tree is narrower")
