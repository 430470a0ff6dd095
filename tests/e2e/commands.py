"""What the tests of the commands have in common."""

from operations import OperationTest

#: An entry of every keyword, and of one that there is not.
MENU = [
    "menu=properties=.|*=Facts=",
    "menu=totalsize=.|*=Usage=",
    "menu=checksum=*=Sums=",
    "menu=separator",
    "menu=newdir=.=New folder=",
    "menu=rename=.|*=New name=",
    "menu=copy=.|*=Copy=",
    "menu=delete=.|*=Remove=",
    "menu=sendto=txt|md=Send=sender  --to   \"somebody here\" $HOME",
    "menu=clipboard=.|*=Paths=",
    "menu=compare=*=Compare=comparer -x",
    "menu=execute=sh|*=Run=",
    "menu=terminal=.|*=Shell=terminal -a -b",
    "menu=terminalex=*=Shell with it=terminal -e",
    "menu=bogus=.|*=Nothing=",
    "menu=separator",
]


class CommandTest(OperationTest):
    def open(self, *lines, **entries):
        settings = ["drive={tree}=Tree", "drive=/=Root", *lines, *MENU]
        return super().open("\n".join(settings), **entries)

    def choose(self, panel, item, label):
        panel.row_menu(item).choose(label)
