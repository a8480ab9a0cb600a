"""Walks through the program as someone does who neither sees it nor has a mouse.

Every view is shown by pressing its navigation button through the accessibility bus and filled with what the
stand-in service has. Then all of it must have a role and a name, and Tab must come to every control.
"""

import os
import subprocess
import sys

from bus import Program, Role, State, WalkError

# What the user works with, and so must come to by Tab.
CONTROLS = {Role.PUSH_BUTTON, Role.CHECK_BOX, Role.TEXT, Role.ENTRY, Role.PASSWORD_TEXT, Role.COMBO_BOX,
            Role.PAGE_TAB, Role.LIST, Role.TOGGLE_BUTTON, Role.RADIO_BUTTON, Role.SPIN_BUTTON, Role.SLIDER}
# What says something. Of a field for passwords the platform keeps back both name and description.
NAMED = (CONTROLS - {Role.PASSWORD_TEXT}) | {Role.LIST_ITEM, Role.FRAME, Role.DIALOG, Role.IMAGE, Role.HEADING, Role.SCROLL_BAR,
                    Role.PANEL}
NO_ROLE = {Role.INVALID, Role.UNKNOWN}
MOST_STOPS = 200


class Walk:
    def __init__(self, program):
        self.program = program
        self.faults = []
        self.stops = 0

    def view(self, name, title, *expected_lists):
        """Shows a view, and looks at it."""
        self.show(title)
        self.look(name, *expected_lists)

    def show(self, title):
        # Qt 6.4 calls every button a push button, whatever role its view gives it.
        tab = self.program.wait_for(lambda: self.program.find(Role.PAGE_TAB, title)
                                    or self.program.find(Role.PUSH_BUTTON, title), f'the tab "{title}"')
        self.program.press(title, role=tab.role)
        self.program.wait_for_node(tab.role, title, State.SELECTED)

    def look(self, name, *expected_lists, dialog=None):
        """Looks at all that is in sight, or at what is inside the dialog over it."""
        nodes = [node for node in self.program.nodes()
                 if dialog is None or any(outer.role == Role.DIALOG and outer.name == dialog
                                          for outer in (node, *node.ancestors))]
        for node in nodes:
            self.check_words(name, node)
        for title in expected_lists:
            self.check(any(node.role == Role.LIST_ITEM and node.ancestors[-1].name == title for node in nodes),
                       name, f'the list "{title}" has no rows')
        self.check_tab_order(name, nodes)

    def check_words(self, view, node):
        self.check(node.role not in NO_ROLE, view, f"{node} has no role")
        self.check(node.name.strip() or node.role not in NAMED, view, f"{node} says nothing")

    def check_tab_order(self, view, nodes):
        # A button in a row does what Return on the row does.
        wanted = [node for node in nodes if node.role in CONTROLS and not node.inside(Role.LIST_ITEM)]
        first = self.program.tab()
        reached = {first}
        # At the end of the order stands its beginning again.
        while len(reached) < MOST_STOPS:
            stop = self.program.tab()
            if stop == first:
                break
            reached.add(stop)
        self.stops += len(reached)
        self.check(len(reached) < MOST_STOPS, view, "Tab never comes back to where it started")
        for node in wanted:
            self.check(node.path in reached or self.leads_inside(node, nodes, reached)
                       or not self.program.takes_focus(node), view,
                       f"Tab does not come to {node}")

    @staticmethod
    def leads_inside(node, nodes, reached):
        """A list whose rows hold fields gives the keyboard to them."""
        return node.role == Role.LIST and any(
            inner.path in reached for inner in nodes if node in inner.ancestors)

    def check(self, holds, view, what):
        if not holds:
            self.faults.append(f"{view}: {what}")


def fill_and_look(walk):
    program = walk.program
    program.wait_for_status("Opened two-modules.kvt")
    program.wait_for_node(Role.LIST, "Modules")
    walk.view("main", "MAIN")
    walk.view("convert", "CONVERT")
    walk.view("segments", "SEGMENTS")
    walk.view("search", "SEARCH")
    walk.view("sorter", "SORTER")

    walk.show("XDF MAKER")
    program.write(Role.TEXT, "Email", "demo@vox.invalid")
    program.tab()
    program.keys("type", "demo")
    program.press("LOGIN")
    program.wait_for_status("XDF signed in.")
    program.press("Load catalog")
    program.wait_for(lambda: program.find(Role.LIST_ITEM, None), "the catalogue")
    walk.look("xdf maker", "Catalog")

    walk.show("BIN PATCHER")
    program.press("Load patches")
    program.wait_for(lambda: program.find(Role.LIST_ITEM, None), "the patches")
    walk.look("bin patcher", "Patches")

    walk.show("TOOLS")
    program.write(Role.TEXT, "Paste a DM1 message", "04 FF 5B 00 03 01 64 00 12 7F")
    program.press("Decode")
    program.wait_for_status("2 DTC(s).")
    walk.look("tools", "Decoded faults")
    program.press("VIN2HEX / ASCII")
    program.wait_for_node(Role.DIALOG, "VIN2HEX / ASCII")
    walk.look("vin2hex", dialog="VIN2HEX / ASCII")
    program.press("Close")

    walk.show("STOCK FILES")
    program.press("SEARCH", "Workspace")
    program.wait_for(lambda: program.find(Role.LIST_ITEM, None), "the stock files")
    walk.look("stock files", "Stock files")

    walk.show("FEEDBACK")
    program.write(Role.TEXT, "Description", "As heard")
    program.press("Submit ticket")
    program.wait_for_status("Ticket: ")
    walk.look("feedback", "Log")

    walk.show("MAIN")
    program.press("Hex Editor")
    program.wait_for_node(Role.DIALOG, "Hex Editor")
    walk.look("hex editor", "Bytes of the open file", dialog="Hex Editor")


class Service:
    """The stand-in of the service, from when it listens until the end of the block."""

    def __init__(self, program, folder):
        self.configuration = os.path.join(folder, "service.json")
        self.samples = os.path.join(folder, "samples")
        self.process = subprocess.Popen([program, "--sample-data", self.samples, "--config-file",
                                         self.configuration], stdout=subprocess.PIPE, text=True)

    def __enter__(self):
        # By then it has written its configuration.
        for line in self.process.stdout:
            if line.startswith("Listening"):
                return self
        raise WalkError("the service does not start")

    def __exit__(self, *_):
        self.process.terminate()
        self.process.communicate()


def environment(configuration):
    return dict(os.environ, KVTEDITOR_SERVICE_CONFIG=configuration, QT_QPA_PLATFORM="xcb",
                QT_QUICK_BACKEND="software", QT_ACCESSIBILITY="1", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")


def main():
    editor, stand_in = sys.argv[1:]
    with Service(stand_in, os.environ["HOME"]) as service:
        file = os.path.join(service.samples, "two-modules.kvt")
        with Program([editor, file], environment(service.configuration)) as program:
            walk = Walk(program)
            try:
                fill_and_look(walk)
            except WalkError as error:
                walk.faults.append(f"walk: {error}")
                for node in program.nodes():
                    print(f"in sight: {node}", file=sys.stderr)
    for fault in walk.faults:
        print(fault, file=sys.stderr)
    print(f"walk: {walk.stops} stops, {len(walk.faults)} fault(s)")
    return 1 if walk.faults else 0


if __name__ == "__main__":
    sys.exit(main())
