"""The main window without a mouse: its bars and views are reached by Tab, its bars used by keys."""

import a11y
from case import BrowseTest
from desktop import key, wait_for


class Keys(BrowseTest):
    def parts(self, panel):
        """What keys can be given to in a panel."""
        bars = (panel.part("frame", "Drive bar"), panel.part("filler", "Path bar"))
        return {*(button for bar in bars for button in bar.find_all("push button")), panel.tree, panel.list}

    def tab(self, name="Tab"):
        """Moves the keyboard, and returns to where."""
        main = self.program.main()
        a11y.forget_focus(main)
        key(name)
        return wait_for(lambda: a11y.focus_told(main), f"{name} moves the keyboard")

    def tab_to(self, part):
        for _ in range(40):
            if self.tab() == part:
                return
        self.fail(f"{part!r} is not reached")

    def test_tab_goes_through_all_and_back(self):
        panel = self.open(a="1")
        other = self.program.panel(2)
        other.wait_folder(self.tree)
        self.tab_to(panel.tree)
        everything = self.parts(panel) | self.parts(other)
        there = [self.tab() for _ in everything]
        self.assertEqual(set(there), everything)
        self.assertEqual(there[-1], panel.tree, "it comes round")
        self.assertEqual(there[0], panel.list, "the listing follows its tree")
        back = [self.tab("shift+Tab") for _ in everything]
        self.assertEqual(back, [*reversed(there[:-1]), panel.tree])

    def test_bars_are_pressed_by_keys(self):
        panel = self.open("a", a={"x": "1"})
        bar = panel.part("filler", "Path bar")
        self.tab_to(bar.find("push button", "tree/"))
        key("space")
        panel.wait_folder(self.tree)
        self.tab_to(panel.part("frame", "Drive bar").find("push button", "Sub"))
        key("space")
        panel.wait_folder(self.in_tree("a"))
