"""What the tests of copy, move and delete have in common."""

from case import VantrelTest
from desktop import key
from files import listing

ONE = "Copy selected file to: \n\n"
MANY = "Copy selected files to folder: \n\n"
MOVE = "Move selected files to folder: \n\n"
REPLACE_BUTTONS = ["Abort", "No", "Yes", "YesAll"]
ERROR_BUTTONS = ["Abort", "Ignore", "IgnoreAll", "Retry"]


class OperationTest(VantrelTest):
    def open(self, settings=None, prefix=(), **entries):
        """Starts with both panels in the tree, and returns the first."""
        self.make(**entries)
        self.start(settings or "drive={tree}=Tree\ndrive=/=Root\n", prefix=prefix)
        panel = self.program.panel(1)
        panel.wait_folder(self.tree)
        return panel

    # --- The boxes, in the order in which they come.

    def type_destination(self, text):
        """Answers the destination dialog after the key C."""
        key("c")
        box = self.program.dialog("Vantrel")
        self.assertEqual(box.texts, ["Copy selected items to:"])
        box.fill(text)
        box.press("OK")

    def confirm(self, text, button="Yes"):
        """Answers the question before an operation."""
        box = self.program.message("Vantrel")
        self.assertEqual(box.text, text)
        self.assertEqual(sorted(box.buttons), ["No", "Yes"])
        self.assertTrue(box.window.find("push button", "Yes").has("default"), "Yes is the default button")
        box.press(button)

    def copy(self, destination, shown):
        """Copies what is selected by the key; shown is what the question says after its first line."""
        self.type_destination(destination)
        self.confirm(shown)

    def delete(self):
        """Deletes what is selected by the key."""
        key("Delete")
        self.confirm(f"Delete selected files in folder: \n\n{self.tree}")

    def answer(self, buttons, text, button):
        """Answers a question of the operation that runs."""
        box = self.program.message("Vantrel")
        self.assertEqual(box.text, text)
        self.assertEqual(sorted(box.buttons), buttons)
        default = box.window.find("push button", "Yes" if "Yes" in buttons else "Retry")
        self.assertTrue(default.has("default"), "the default button")
        box.press(button)

    def replace(self, source, destination, button):
        box = self.program.message("Vantrel")
        lines = box.text.split("\n")
        self.assertEqual([lines[0], lines[1], lines[4], lines[5]], ["Replace file:", destination, "With file:", source])
        self.assertEqual(sorted(box.buttons), REPLACE_BUTTONS)
        box.press(button)

    def error(self, text, button):
        self.answer(ERROR_BUTTONS, text, button)

    def finished(self):
        """Waits for the end of the operation."""
        self.program.wait_for_no_box()

    def assert_tree(self, expected):
        """What lies on disk, written as listing() does."""
        self.assertEqual(listing(self.tree), expected)
