#!/usr/bin/env python3
"""Measures how long a rollout takes with how many machines, and prints the tables of docs/fleet.md.

    fleet.py ARCHIVE

ARCHIVE is what tools/archive made. The machines are folders behind one ssh server, so this computer does the work of the
controller and that of all machines. Ansible's own share is told by processor times.
"""

import collections
import itertools
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


def measure(fleet, names):
    """One rollout to these machines, over new connections."""
    fleet.sshd.close_connections()
    before = processor_seconds()
    play = fleet.play(machines.EVERYWHERE, "--limit", ",".join(names))
    if len(play.recap) != len(names) or any(line["failures"] or line["unreachable"] for line in play.recap.values()):
        sys.exit(f"fleet: a rollout failed: {play.recap}")
    return Times(play.seconds, processor_seconds() - before, play.main_seconds)


def print_row(name, times):
    print(f"| {name} | " + " | ".join(f"{time:.1f}" for time in times) + " |", flush=True)


def measure_all(fleet):
    names = list(fleet.hosts)
    untouched = iter(names)
    for count in COUNTS:
        few = list(itertools.islice(untouched, count))
        print_row(f"the first, {count} machines, 20 forks, pipelining", measure(fleet, few))
    for forks, pipelining, counts in SETTINGS:
        fleet.configure(forks, pipelining)
        for count in counts:
            words = "pipelining" if pipelining else "no pipelining"
            print_row(f"a later one, {count} machines, {forks} forks, {words}", measure(fleet, names[:count]))


def main():
    with tempfile.TemporaryDirectory(prefix="fleet.") as name:
        work = pathlib.Path(name)
        with machines.Fleet(work, machines.Sshd(work / "ssh")) as fleet:
            for number in range(sum(COUNTS)):
                fleet.add_folder(f"machine-{number}", pathlib.Path(sys.argv[1]).resolve(), machines.furnish)
            print(f"Seconds, on {os.cpu_count()} processors\n\n"
                  "| rollout | in all | processor time of Ansible | of its main process |\n|---|---|---|---|")
            measure_all(fleet)


main()
