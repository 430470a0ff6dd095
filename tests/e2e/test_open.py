"""What a double-click on a file starts."""

from case import VantrelTest


class Open(VantrelTest):
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
