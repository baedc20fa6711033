# Stands for the user of a program that shows an alert: says what is to be seen, and presses keys and buttons.
#
#     alert_user.py [--window-manager] [--do ACTION]... -- COMMAND...
#
# Runs COMMAND on the display at hand, with the pointer in a corner, and waits for its alert. Prints what a screen reader is
# told of it:
#     alert TITLE
#     line TEXT (quoted; for each line of the text as it is wrapped)
#     button TITLE [default] [focused] [outside] (from left to right; outside of the screen)
# then takes each ACTION, printing "still up" when the alert has not gone half a second after it:
#     key:NAME, click:N (the button with this index), press (where the pointer is), picture:FILE (of the screen),
#     signal:NAME (to the command), kill (the process of the panel), next (waits for one more alert)
# and at the end "exit STATUS", "left behind" if the panel outlives the command, and "error LINE" for each line that the
# command wrote to standard error.

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


# What `what()` gives as soon as it is something, or its last answer.
def wait_for(what, seconds=PATIENCE):
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


# The alert, once it is on the screen and has the focus; not that of the process `but`.
def find_alert(but=None):
    for node in all_below(Atspi.get_desktop(0)):
        if (node.get_role() == Atspi.Role.ALERT and node.get_state_set().contains(Atspi.StateType.ACTIVE)
                and node.get_process_id() != but):
            return node
    return None


def place(button):
    return Atspi.Component.get_extents(button, Atspi.CoordType.SCREEN)


def buttons_of(alert):
    buttons = [node for node in all_below(alert) if node.get_role() == Atspi.Role.PUSH_BUTTON]
    return sorted(buttons, key=lambda button: place(button).x)


def line_at(label, offset):
    return Atspi.Text.get_string_at_offset(label, offset, Atspi.TextGranularity.LINE)


def lines_of(label):
    offset = 0
    while offset < Atspi.Text.get_character_count(label):
        line = line_at(label, offset)
        if line.end_offset <= offset:  # where a line is wrapped, its end and the start of the next are one place
            line = line_at(label, offset + 1)
        yield line.content
        offset = max(line.end_offset, offset + 1)


def describe(alert):
    print("alert", alert.get_name())
    for label in (node for node in all_below(alert) if node.get_role() == Atspi.Role.LABEL):
        for line in lines_of(label):
            print("line", repr(line))
    width, height = map(int, subprocess.check_output(["xdotool", "getdisplaygeometry"]).split())
    for button in buttons_of(alert):
        states, area = button.get_state_set(), place(button)
        inside = min(area.x, area.y) >= 0 and area.x + area.width <= width and area.y + area.height <= height
        print("button", button.get_name(),
              *["default"] * states.contains(Atspi.StateType.IS_DEFAULT),
              *["focused"] * states.contains(Atspi.StateType.FOCUSED),
              *["outside"] * (not inside))


def take(action, alert, program):
    kind, _, value = action.partition(":")
    if kind == "key":
        subprocess.check_call(["xdotool", "key", value])
    elif kind == "click":
        area = place(buttons_of(alert)[int(value)])
        x, y = area.x + area.width // 2, area.y + area.height // 2
        subprocess.check_call(["xdotool", "mousemove", str(x), str(y), "click", "1"])
    elif kind == "press":
        subprocess.check_call(["xdotool", "click", "1"])
    elif kind == "picture":
        subprocess.check_call(["import", "-window", "root", value])
    elif kind == "signal":
        program.send_signal(signal.Signals["SIG" + value])
    elif kind == "kill":
        os.kill(alert.get_process_id(), signal.SIGKILL)


def is_running(process):
    try:
        with open(f"/proc/{process}/stat") as file:
            return file.read().rpartition(")")[2].split()[0] != "Z"
    except (FileNotFoundError, ProcessLookupError):  # gone before it is opened, or before it is read
        return False


def start_window_manager():
    subprocess.Popen(["evilwm", "--fn", "fixed"], stderr=subprocess.DEVNULL)
    is_there = ["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"]
    if not wait_for(lambda: b"window id" in subprocess.check_output(is_there)):
        sys.exit("alert_user: the window manager does not come")


# Describes the alert and takes the actions; the panel's process id at last.
def answer(program, actions):
    alert = wait_for(lambda: find_alert() or program.poll() is not None)
    if not isinstance(alert, Atspi.Accessible):
        sys.exit("alert_user: no alert came")
    describe(alert)
    panel = alert.get_process_id()
    for action in actions:
        if action == "next":
            alert = wait_for(lambda: find_alert(but=panel))
            panel = alert.get_process_id()
            continue
        take(action, alert, program)
        if not wait_for(lambda: program.poll() is not None or not is_running(panel), 0.5):
            print("still up")
    return panel


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--window-manager", action="store_true")
    parser.add_argument("--do", action="append", default=[])
    parser.add_argument("command", nargs="+")
    arguments = parser.parse_args()
    sys.stdout.reconfigure(line_buffering=True)
    if arguments.window_manager:
        start_window_manager()
    subprocess.check_call(["xdotool", "mousemove", "1", "1"])
    program = subprocess.Popen(arguments.command, stderr=subprocess.PIPE, text=True)
    try:
        panel = answer(program, arguments.do)
        errors = program.communicate(timeout=PATIENCE)[1]
    finally:
        program.kill()
    print("exit", program.returncode)
    if not wait_for(lambda: not is_running(panel), 5):
        print("left behind")
    for line in errors.splitlines():
        print("error", line)


main()
