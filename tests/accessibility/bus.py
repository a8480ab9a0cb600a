"""What an assistive tool sees of the program, and what it can do to it."""

import subprocess
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

PATIENCE = 30.0

Role = Atspi.Role
State = Atspi.StateType


class WalkError(Exception):
    """The program does not do what its user waits for."""


class Node:
    """One thing on the bus, as it was when it was looked at."""

    def __init__(self, accessible, ancestors):
        self.accessible = accessible
        self.ancestors = ancestors
        self.path = accessible.path
        self.role = accessible.get_role()
        self.name = accessible.get_name()
        self.description = accessible.get_description()
        self.states = accessible.get_state_set()

    def has(self, state):
        return self.states.contains(state)

    def inside(self, role):
        return any(ancestor.role == role for ancestor in self.ancestors)

    def __str__(self):
        place = " in ".join(f'"{node.name}"' for node in reversed(self.ancestors) if node.name)
        return f'{self.accessible.get_role_name()} "{self.name}"' + (f" in {place}" if place else "")


class Program:
    """The program's window on the bus."""

    def __init__(self, command, environment):
        Atspi.init()
        self.process = subprocess.Popen(command, env=environment)
        self.focused = []
        self.focused_name = ""
        self.announced = []
        self._listener = Atspi.EventListener.new(self._take)
        for kind in ("object:state-changed:focused", "object:property-change:accessible-name"):
            self._listener.register(kind)
        self._application = None

    def __enter__(self):
        try:
            self._application = self.wait_for(self._find, "the program on the accessibility bus")
            self.wait_for(lambda: self.find(Role.FRAME, None, State.ACTIVE), "the window to become active")
        except WalkError:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()

    def wait_for(self, look, what):
        """Whatever is found, once it is; looks again at every event and a few times a second."""
        deadline = time.monotonic() + PATIENCE
        while True:
            found = look()
            if found:
                return found
            if self.process.poll() is not None:
                raise WalkError(f"the program ended with {self.process.returncode} before {what}")
            if time.monotonic() > deadline:
                raise WalkError(f"waited in vain for {what}")
            self._dispatch(0.05)

    def nodes(self):
        """All that is showing."""
        while True:
            try:
                return list(self._showing(self._application, ()))
            except GLib.Error:
                # Something went away while it was looked at; the next look no longer finds it.
                self._dispatch(0.05)

    def find(self, role, name, *states, group=None):
        for node in self.nodes():
            if (node.role == role and name in (None, node.name) and all(map(node.has, states))
                    and group in (None, *(ancestor.name for ancestor in node.ancestors))):
                return node
        return None

    def wait_for_node(self, role, name, *states, group=None):
        return self.wait_for(lambda: self.find(role, name, *states, group=group),
                             f'the {role.value_nick} "{name}"')

    def press(self, name, group=None, role=Role.PUSH_BUTTON):
        """Gives the keyboard to a button through the bus, and presses it there: the platform offers a press
        through the bus, but does nothing at it."""
        self.focus(role, name, group)
        self.keys("key", "space")

    def focus(self, role, name, group=None):
        node = self.wait_for_node(role, name, group=group)
        self.wait_for(lambda: self.takes_focus(node), f"{node} to take the keyboard")

    @staticmethod
    def takes_focus(node):
        """Whether the control can have the keyboard at all, which it cannot while it is disabled: the
        platform calls every control enabled."""
        node.accessible.grab_focus()
        node.accessible.clear_cache()
        return node.accessible.get_state_set().contains(State.FOCUSED)

    def write(self, role, name, text):
        self.focus(role, name)
        self.keys("type", text)

    def keys(self, *arguments):
        subprocess.run(["xdotool", *arguments], check=True)

    def tab(self):
        """Presses Tab; the path of what has the keyboard then."""
        self._dispatch(0)
        # In the hex editor's rows the first one leads to the other column.
        self.focused.clear()
        self.keys("key", *["Tab"] * (2 if self.focused_name == "Bytes of the open file" else 1))
        self.wait_for(lambda: self.focused, "the next control to take the keyboard")
        return self.focused[-1]

    def wait_for_status(self, text):
        self.wait_for(lambda: any(name.startswith(text) for name in self.announced),
                      f'the status "{text}" to be announced')

    def _find(self):
        desktop = Atspi.get_desktop(0)
        desktop.clear_cache()
        for i in range(desktop.get_child_count()):
            child = desktop.get_child_at_index(i)
            if child and child.get_process_id() == self.process.pid:
                return child
        return None

    def _showing(self, accessible, ancestors):
        accessible.clear_cache()
        node = Node(accessible, ancestors)
        if not node.has(State.SHOWING):
            return
        yield node
        for i in range(accessible.get_child_count()):
            child = accessible.get_child_at_index(i)
            if child:
                yield from self._showing(child, (*ancestors, node))

    def _take(self, event):
        try:
            if event.type.endswith("focused"):
                if event.detail1:
                    self.focused.append(event.source.path)
                    self.focused_name = event.source.get_name()
            else:
                self._take_name(event.source)
        except GLib.Error:
            # Of something that is gone already.
            pass

    def _take_name(self, source):
        # The log shows the status too, in rows that are not in sight.
        if source.get_role() == Role.LABEL and source.get_state_set().contains(State.SHOWING):
            self.announced.append(source.get_name())

    @staticmethod
    def _dispatch(seconds):
        """Takes what has arrived, and waits for as long as that for more."""
        context = GLib.MainContext.default()
        if not context.pending() and seconds > 0:
            timer = GLib.timeout_add(int(seconds * 1000), lambda: True)
            context.iteration(True)
            GLib.source_remove(timer)
        while context.pending():
            context.iteration(False)
