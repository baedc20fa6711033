"""Stands for the user of a program that shows an alert: says what is to be seen, and presses keys and buttons.

    alert_user.py [--window-manager] [--pointer X,Y] [--picture FILE] [--do ACTION]... -- COMMAND...

Runs COMMAND on the display at hand and waits for its alert. Prints what a screen reader is told of it, a line for each of
    alert TITLE             lines COUNT (of the text, as it is wrapped)
    text TEXT (quoted)      button TITLE [default] [focused] [outside] (from left to right; outside of the screen)
then takes each ACTION, printing "still up" when the alert has not gone half a second after it:
    key:NAME    click:N (the button with this index)    press (where the pointer is)
    signal:NAME (to the command)    kill (the process of the panel)
and at the end "exit STATUS", after "left behind" if the panel outlives the command.
"""

import argparse
import os
import signal
import subprocess
import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

PATIENCE = 20


def wait_for(what, seconds=PATIENCE):
    """What `what()` gives as soon as it is something, or its last answer."""
    end = time.monotonic() + seconds
    while not (found := what()) and time.monotonic() < end:
        time.sleep(0.02)
    return found


def all_below(node):
    for i in range(node.get_child_count()):
        child = node.get_child_at_index(i)
        if child is not None:
            yield child
            yield from all_below(child)


def find_alert():
    """The alert, once it is on the screen and has the focus."""
    for node in all_below(Atspi.get_desktop(0)):
        if node.get_role() == Atspi.Role.ALERT and node.get_state_set().contains(Atspi.StateType.ACTIVE):
            return node
    return None


def place(button):
    return Atspi.Component.get_extents(button, Atspi.CoordType.SCREEN)


def buttons_of(alert):
    buttons = [node for node in all_below(alert) if node.get_role() == Atspi.Role.PUSH_BUTTON]
    return sorted(buttons, key=lambda button: place(button).x)


def count_lines(label):
    length, lines, offset = Atspi.Text.get_character_count(label), 0, 0
    while offset < length:
        offset = Atspi.Text.get_string_at_offset(label, offset, Atspi.TextGranularity.LINE).end_offset
        lines += 1
    return lines


def describe(alert):
    print("alert", alert.get_name())
    for label in (node for node in all_below(alert) if node.get_role() == Atspi.Role.LABEL):
        print("text", repr(Atspi.Text.get_text(label, 0, -1)))
        print("lines", count_lines(label))
    screen = place(Atspi.get_desktop(0))
    width, height = map(int, subprocess.check_output(["xdotool", "getdisplaygeometry"]).split())
    for button in buttons_of(alert):
        states, area = button.get_state_set(), place(button)
        inside = min(area.x, area.y) >= 0 and area.x + area.width <= width and area.y + area.height <= height
        print("button", button.get_name(),
              *["default"] * states.contains(Atspi.StateType.IS_DEFAULT),
              *["focused"] * states.contains(Atspi.StateType.FOCUSED),
              *["outside"] * (not inside))


def take(action, alert, panel, program):
    kind, _, value = action.partition(":")
    if kind == "key":
        subprocess.check_call(["xdotool", "key", value])
    elif kind == "click":
        area = place(buttons_of(alert)[int(value)])
        x, y = area.x + area.width // 2, area.y + area.height // 2
        subprocess.check_call(["xdotool", "mousemove", str(x), str(y), "click", "1"])
    elif kind == "press":
        subprocess.check_call(["xdotool", "click", "1"])
    elif kind == "signal":
        program.send_signal(signal.Signals["SIG" + value])
    elif kind == "kill":
        os.kill(panel, signal.SIGKILL)


def is_running(process):
    try:
        with open(f"/proc/{process}/stat") as file:
            return file.read().rpartition(")")[2].split()[0] != "Z"
    except FileNotFoundError:
        return False


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--window-manager", action="store_true")
    parser.add_argument("--pointer", default="1,1")
    parser.add_argument("--picture")
    parser.add_argument("--do", action="append", default=[])
    parser.add_argument("command", nargs="+")
    arguments = parser.parse_args()
    sys.stdout.reconfigure(line_buffering=True)
    if arguments.window_manager:
        subprocess.Popen(["evilwm"], stderr=subprocess.DEVNULL)
        wait_for(lambda: b"window id" in subprocess.check_output(["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"]))
    subprocess.check_call(["xdotool", "mousemove", *arguments.pointer.split(",")])
    program = subprocess.Popen(arguments.command)
    alert = wait_for(lambda: find_alert() or program.poll() is not None)
    if not isinstance(alert, Atspi.Accessible):
        program.kill()
        sys.exit("alert_user: no alert came")
    panel = alert.get_process_id()
    describe(alert)
    if arguments.picture:
        subprocess.check_call(["import", "-window", "root", arguments.picture])
    for action in arguments.do:
        take(action, alert, panel, program)
        if wait_for(lambda: program.poll() is not None, 0.5) is False:
            print("still up")
    try:
        status = program.wait(PATIENCE)
    except subprocess.TimeoutExpired:
        program.kill()
        sys.exit("alert_user: the command does not end")
    if wait_for(lambda: not is_running(panel), 5) is False:
        print("left behind")
    print("exit", status)


main()
