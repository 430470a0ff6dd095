"""Reads a panel as a screen reader does, by the library that such programs are written with, and selects a row.

Arguments: the process id of the program, the name of the panel, the name of the item to select. What was read comes out
as JSON. This runs in a process of its own, as the library holds on to the bus that it finds first.
"""

import json
import sys

import pyatspi


def table_of(part):
    table = part.queryTable()
    cells = [[table.getAccessibleAt(row, column) for column in range(table.nColumns)] for row in range(table.nRows)]
    return table, [[cell.name for cell in row] for row in cells]


def find(part, condition):
    found = pyatspi.findDescendant(part, condition, breadth_first=True)
    if found is None:
        sys.exit(f"not found in {part}")
    return found


def named(name):
    return lambda part: part is not None and part.name == name


def main(pid, panel_name, item):
    desktop = pyatspi.Registry.getDesktop(0)
    program = next(child for child in desktop if child is not None and child.get_process_id() == pid)
    panel = find(program, named(panel_name))
    list_part = find(panel, named("File list"))
    listing, rows = table_of(list_part)
    tree, folders = table_of(find(panel, named("Folder tree")))
    status = find(panel, lambda part: part is not None and part.getRole() == pyatspi.ROLE_STATUS_BAR)
    texts = [part.name for part in status if part.getRole() == pyatspi.ROLE_LABEL]
    number = [row[0] for row in rows].index(item)
    done = list_part.queryComponent().grabFocus() and listing.addRowSelection(number)
    states = [listing.getAccessibleAt(row, 0).getState().contains(pyatspi.STATE_SELECTED) for row in range(len(rows))]
    json.dump({
        "columns": [listing.getColumnDescription(column) for column in range(listing.nColumns)],
        "rows": rows,
        "folders": [[name, tree.getAccessibleAt(row, 0).description] for row, (name,) in enumerate(folders)],
        "status": texts,
        "selects": done,
        "selected": [row[0] for row, state in zip(rows, states) if state],
    }, sys.stdout)


if __name__ == "__main__":
    main(int(sys.argv[1]), *sys.argv[2:])
