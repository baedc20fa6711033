#!/usr/bin/env python3
"""Measures how long a rollout takes with how many machines, and prints the tables of docs/fleet.md.

    fleet.py ARCHIVE

ARCHIVE is what tools/archive made. The machines are folders behind one ssh server, so this computer does the work of the
controller and that of all machines. Ansible's own share is told by processor times.
"""

import collections
import os
import pathlib
import resource
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "tests/deploy"))
import machines  # noqa: E402

COUNTS = (1, 5, 20, 40)
FEW = COUNTS[:3]  # where the rest only takes long
# Forks, pipelining, and the numbers of machines.
SETTINGS = ((20, True, COUNTS), (5, True, COUNTS), (20, False, FEW), (5, False, FEW))
Times = collections.namedtuple("Times", "all ansible main")


def processor_seconds():
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def measure(fleet, count):
    """One rollout to so many machines, over new connections."""
    fleet.sshd.close_connections()
    before = processor_seconds()
    play = fleet.play(machines.EVERYWHERE, "--limit", ",".join(list(fleet.hosts)[:count]))
    if len(play.recap) != count or any(line["failures"] or line["unreachable"] for line in play.recap.values()):
        sys.exit(f"fleet: a rollout failed: {play.recap}")
    return Times(play.seconds, processor_seconds() - before, play.main_seconds)


def print_row(name, times):
    print(f"| {name} | " + " | ".join(f"{time:.1f}" for time in times) + " |", flush=True)


def main():
    with tempfile.TemporaryDirectory(prefix="fleet.") as name:
        work = pathlib.Path(name)
        with machines.Fleet(work, machines.Sshd(work / "ssh")) as fleet:
            for number in range(COUNTS[-1]):
                fleet.add_folder(f"machine-{number}", pathlib.Path(sys.argv[1]).resolve(), machines.furnish)
            print(f"Seconds, on {os.cpu_count()} processors\n\n"
                  "| rollout | in all | processor time of Ansible | of its main process |\n|---|---|---|---|")
            print_row(f"the first, {COUNTS[-1]} machines, 20 forks, pipelining", measure(fleet, COUNTS[-1]))
            for forks, pipelining, counts in SETTINGS:
                fleet.configure(forks, pipelining)
                for count in counts:
                    words = "pipelining" if pipelining else "no pipelining"
                    print_row(f"a later one, {count} machines, {forks} forks, {words}", measure(fleet, count))


main()
