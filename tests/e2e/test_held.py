"""Keys that are held down: one press is one command, and one answer."""

import os

import a11y
from desktop import held, holds, key, wait_for
from files import read
from operations import MANY, OperationTest

#: How long a key is held, in seconds: some forty repeated presses.
HELD = 1.8


class Held(OperationTest):
    def start_in_bin(self):
        self.stand_in("run")
        self.start("drive={bin}=Bin\nassn=|run=run\n")
        panel = self.program.panel(1)
        panel.wait_folder(self.stand_ins)
        panel.select("run")

    def wait_question(self, beginning):
        """Waits for a question, without looking whether it stands still."""
        return wait_for(lambda: next((box for box in self.program.open_boxes() if box.text.startswith(beginning)), None),
                        lambda: f"a box {beginning!r} among {self.program.titles()}")

    def test_return_answers_one_question_of_a_deletion(self):
        names = [f"f{number:02}" for number in range(12)]
        panel = self.open(**{name: "x" for name in names})
        panel.select(*names)
        key("Delete")
        self.program.message("Vantrel").wait_active()
        with held("Return"):
            self.wait_question("Delete file:")
            holds(lambda: sorted(os.listdir(self.tree)) == names, "no file is deleted", HELD)
        self.program.message("Vantrel").keys("Return")  # a fresh press counts
        wait_for(lambda: len(os.listdir(self.tree)) == 11, lambda: os.listdir(self.tree))
        self.program.message("Vantrel").press("Abort")
        self.finished()

    def test_return_answers_no_question_about_replacing(self):
        names = [f"f{number}" for number in range(10)]
        panel = self.open(d={name: "old" for name in names}, **{name: "new" for name in names})
        panel.select(*names)
        self.type_destination("d")
        box = self.program.message("Vantrel").wait_active()
        self.assertEqual(box.text, MANY + self.in_tree("d"))
        with held("Return"):
            self.wait_question("Replace file:")
            holds(lambda: {read(self.in_tree("d", name)) for name in names} == {"old"}, "nothing is replaced", HELD)
        self.program.message("Vantrel").press("Abort")
        self.finished()

    def test_a_command_does_not_repeat(self):
        self.start_in_bin()
        with held("x"):
            self.launched("run")
            holds(lambda: not self.notes("run"), "one start", HELD)

    def test_a_shortcut_does_not_repeat(self):
        self.start_in_bin()
        with held("ctrl"), held("o"):
            self.launched("run")
            holds(lambda: not self.notes("run"), "one start", HELD)

    def test_the_letter_of_a_command_is_not_typed(self):
        panel = self.open(f="1")
        panel.select("f")
        for letter, title, text in (("r", "Rename", "f"), ("n", "Create New Directory", ""), ("c", "Vantrel", "")):
            with held(letter):
                box = self.program.dialog(title)
                field = box.fields[-1]
                holds(lambda: field.text == text, lambda: f"nothing is typed into {title}: {field.text!r}", HELD)
            box.press("Cancel")
            self.finished()
            panel.click_row("f")

    def test_text_repeats_in_its_field(self):
        panel = self.open(f="1")
        panel.select("f")
        key("n")
        box = self.program.dialog("Create New Directory").wait_active()
        with held("a"):
            wait_for(lambda: len(box.fields[-1].text) > 5, "many letters")
        box.press("Cancel")

    def test_an_entry_of_a_menu_is_reached_and_chosen_once(self):
        self.make(f="1")
        self.stand_in("run")
        lines = "".join(f"menu=sendto=*=Entry {number}=run {number}\n" for number in range(8))
        self.start("drive={tree}=Tree\n" + lines)
        panel = self.program.panel(1)
        panel.wait_folder(self.tree)
        panel.select("f")
        key("shift+F10")
        popup = self.program.popup()
        with held("Down"):
            wait_for(lambda: a11y.focus_told(popup.window).name > "Entry 2", "the keyboard goes on through the entries")
        with held("Return"):
            self.launched("run")
            holds(lambda: not self.notes("run"), "one start", HELD)

    def test_keys_move_as_long_as_they_are_held(self):
        panel = self.open(**{f"f{number}": "x" for number in range(9)})
        panel.select("f0")
        with held("Down"):
            wait_for(lambda: panel.selected == ["f8"], lambda: panel.selected)
