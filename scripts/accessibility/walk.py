#!/usr/bin/python3
"""Reads the console's windows the way a screen reader does, over AT-SPI.

  walk.py ready                  starts the accessibility bus and registry
  walk.py login HOST PASSWORD    fills the login dialog through its accessible
                                 text fields and presses its OK button
  walk.py check TITLE...         walks every window whose title starts with one
                                 of the TITLEs and lists each control a
                                 screen reader could land on that has no name

Exits 1 when a control has no name or a window is missing, 0 otherwise.
"""

import subprocess
import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

APPLICATION = "VELDRANO Administrator"

# Roles a screen reader stops on and announces by name. Containers, labels
# and the rows of a list are named by what they hold and are left out.
NAMED_ROLES = {
    Atspi.Role.PUSH_BUTTON,
    Atspi.Role.TOGGLE_BUTTON,
    Atspi.Role.CHECK_BOX,
    Atspi.Role.RADIO_BUTTON,
    Atspi.Role.COMBO_BOX,
    Atspi.Role.TEXT,
    Atspi.Role.PASSWORD_TEXT,
    Atspi.Role.SPIN_BUTTON,
    Atspi.Role.ENTRY,
    Atspi.Role.LIST,
    Atspi.Role.TREE,
    Atspi.Role.TREE_TABLE,
    Atspi.Role.TABLE,
    Atspi.Role.PAGE_TAB,
    Atspi.Role.PAGE_TAB_LIST,
    Atspi.Role.TOOL_BAR,
    Atspi.Role.STATUS_BAR,
    Atspi.Role.MENU_BAR,
    Atspi.Role.MENU,
    Atspi.Role.MENU_ITEM,
    Atspi.Role.SLIDER,
    Atspi.Role.SCROLL_BAR,
}


def application(timeout=60.0):
    deadline = time.monotonic() + timeout
    while time.monotonic() < deadline:
        desktop = Atspi.get_desktop(0)
        for i in range(desktop.get_child_count()):
            app = desktop.get_child_at_index(i)
            if app is not None and app.get_name() == APPLICATION:
                return app
        time.sleep(0.2)
    desktop = Atspi.get_desktop(0)
    names = [desktop.get_child_at_index(i).get_name() for i in range(desktop.get_child_count())]
    print("accessibility: applications on the bus: %s" % (", ".join(names) or "none"))
    return None


def window(app, title, timeout=20.0):
    deadline = time.monotonic() + timeout
    while time.monotonic() < deadline:
        for i in range(app.get_child_count()):
            child = app.get_child_at_index(i)
            if child is not None and child.get_name().startswith(title):
                return child
        time.sleep(0.2)
    return None


def descendants(node, depth=0):
    if node is None or depth > 40:
        return
    yield node
    # Rows and cells of a long list are data, not controls; one is enough to
    # show the list is readable, and the list itself is checked by name.
    if node.get_role() in (Atspi.Role.TREE, Atspi.Role.TREE_TABLE, Atspi.Role.TABLE,
                           Atspi.Role.LIST):
        return
    for i in range(node.get_child_count()):
        yield from descendants(node.get_child_at_index(i), depth + 1)


def showing(node):
    states = node.get_state_set()
    return states.contains(Atspi.StateType.SHOWING) or node.get_role() in (
        Atspi.Role.PAGE_TAB, Atspi.Role.MENU, Atspi.Role.MENU_ITEM)


def unnamed_controls(win):
    unnamed, seen = [], 0
    for node in descendants(win):
        role = node.get_role()
        if role not in NAMED_ROLES or not showing(node):
            continue
        seen += 1
        if not (node.get_name() or "").strip():
            parent = node.get_parent()
            unnamed.append("%s in %s '%s'" % (node.get_role_name(),
                                             parent.get_role_name() if parent else "?",
                                             parent.get_name() if parent else ""))
    return seen, unnamed


def find(win, role, name=None):
    for node in descendants(win):
        if node.get_role() == role and (name is None or node.get_name() == name):
            return node
    return None


def login(host, password):
    app = application()
    if app is None:
        print("accessibility: the console is not on the accessibility bus")
        return 1
    dialog = window(app, "Login")
    if dialog is None:
        print("accessibility: no Login window")
        return 1
    fields = [n for n in descendants(dialog)
              if n.get_role() in (Atspi.Role.TEXT, Atspi.Role.PASSWORD_TEXT, Atspi.Role.ENTRY)]
    if len(fields) < 2:
        print("accessibility: the login dialog shows %d text fields" % len(fields))
        return 1
    fields[0].set_text_contents(host)
    fields[-1].set_text_contents(password)
    ok = find(dialog, Atspi.Role.PUSH_BUTTON, "OK")
    if ok is None:
        print("accessibility: the login dialog has no button named OK")
        return 1
    ok.do_action(0)
    return 0


def check_window(win, where=""):
    """Checks what a reader sees of win now; answers (failed, what it saw)."""
    # What the bus told before is cached; a page brought to the front since
    # shows other controls.
    win.clear_cache()
    seen, unnamed = unnamed_controls(win)
    print("accessibility: '%s'%s: %d controls, %d without a name" %
          (win.get_name(), where, seen, len(unnamed)))
    for entry in unnamed:
        print("  unnamed: " + entry)
    names = tuple(sorted(n.get_name() for n in descendants(win)
                         if n.get_role() in NAMED_ROLES and showing(n)))
    return (1 if unnamed or seen == 0 else 0), names


def check(titles):
    app = application()
    if app is None:
        print("accessibility: the console is not on the accessibility bus")
        return 1
    failed = 0
    for title in titles:
        win = window(app, title)
        if win is None:
            print("accessibility: no window titled '%s'" % title)
            failed = 1
            continue
        tabs = find(win, Atspi.Role.PAGE_TAB_LIST)
        count = 1
        if tabs is not None:
            count = sum(1 for i in range(tabs.get_child_count())
                        if tabs.get_child_at_index(i).get_role() == Atspi.Role.PAGE_TAB)
        # A reader sees the page in front only: each page in turn, brought to
        # the front with Ctrl+Tab as its user would. Qt's tab buttons come
        # and go on the bus, so they are not pressed through it.
        pages = set()
        for i in range(count):
            result, names = check_window(win, " page %d of %d" % (i + 1, count))
            failed |= result
            pages.add(names)
            if count > 1:
                subprocess.run(["xdotool", "key", "ctrl+Tab"], check=True)
                time.sleep(0.5)
        if len(pages) != count:
            print("accessibility: '%s' showed %d different pages of %d" %
                  (win.get_name(), len(pages), count))
            failed = 1
    return failed


def ready():
    # Asking for the desktop starts the accessibility bus and its registry,
    # so that a program started next finds them there to register with.
    return 0 if Atspi.get_desktop(0) is not None else 1


def main(argv):
    if len(argv) == 2 and argv[1] == "ready":
        return ready()
    if len(argv) >= 4 and argv[1] == "login":
        return login(argv[2], argv[3])
    if len(argv) >= 3 and argv[1] == "check":
        return check(argv[2:])
    print(__doc__)
    return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv))
