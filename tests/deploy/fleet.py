#!/usr/bin/env python3
"""Rolls the plug-in out with Ansible to folders that stand for machines, over ssh and on this machine, and undoes it.

    fleet.py ARCHIVE
    fleet.py --packages FOLDER

ARCHIVE is what tools/archive made. With --packages, the Debian packages in FOLDER are rolled out to a Debian root that stands
for a machine; as root. Prints what is wrong, and the counts; ends with the exit status 1 when something is.
"""

import argparse
import ast
import json
import pathlib
import re
import subprocess
import sys
import tempfile

import machines
from machines import EVERYWHERE

PROJECT = pathlib.Path(__file__).resolve().parents[2]
UPDATER, PRODUCT = "com.corvane.updater", "com.corvane.audioplugins.Ambrel"
OLD_VALUES = {UPDATER: {"UpdateInterval": 7, "Töne": ["a", 1, True, {"x": b"\0"}]}, PRODUCT: {"Lang": "en"}}

# The kinds of machines: how the root is made, what the rollout is told of it, whether the rollout changes the root, and the
# exit status of a host that fails there.
KINDS = {
    "empty": (None, {}, True, None),
    "furnished": (machines.furnish, {"rollout_language": 1}, True, None),
    "old-values": (lambda root: machines.write_preferences(root, OLD_VALUES), {"rollout_language": 2}, True, None),
    "other-product": (machines.furnish, {"rollout_product": 3100}, True, None),
    "no-such-product": (None, {"rollout_product": -5}, False, None),
    "link": (machines.link_library, {}, False, 6),
    "blocked": (machines.block_updater, {}, True, 7),
    "hanging": (machines.block_status, {"rollout_timeout": 1}, True, 9),
    "no-bundle": (None, {"rollout_bundle": "/nowhere.bundle"}, False, 3),
    "two-places": (None, {"rollout_machine": True}, False, 2),
}
LOCAL_KINDS = ["empty", "furnished", "old-values", "link"]
GONE = "gone"  # nothing listens on this machine's port
# Of Ansible's own tests, those that fetch nothing.
OFFLINE_SANITY = """
    action-plugin-docs compile empty-init future-import-boilerplate ignores line-endings metaclass-boilerplate no-assert
    no-illegal-filenames no-main-display no-smart-quotes no-unicode-literals pslint replace-urlopen shebang shellcheck symlinks
    use-argspec-type-path use-compat-six
""".split()


class Tester:
    def __init__(self, fleet):
        self.fleet, self.faults, self.checks = fleet, [], 0

    def expect(self, name, found, wanted):
        self.checks += 1
        if found != wanted:
            self.faults.append(f"{name}: found {found!r} instead of {wanted!r}")

    def kind_of(self, host):
        return KINDS[self.fleet.hosts[host]["kind"]]

    def expect_results(self, name, play, may_change=True):
        """The result of each host, and its line in the recap, are what its kind of machine gives."""
        self.expect(f"{name}: who was unreachable", [host for host in play.recap if play.recap[host]["unreachable"]], [GONE])
        self.expect(f"{name}: results", set(play.results), set(self.fleet.hosts) - {GONE})
        for host, result in play.results.items():
            _, _, changes, status = self.kind_of(host)
            self.expect(f"{name}: {host}: changed", result["changed"], changes and may_change)
            self.expect(f"{name}: {host}: error", result.get("error", {}).get("status"), status)
            self.expect(f"{name}: {host}: failures in the recap", play.recap[host]["failures"], int(status is not None))

    def same(self, name, checked, run):
        """Check mode said what the run then did."""
        for host in run.results:
            for key in ("changed", "failed", "diff", "error", "rc", "msg"):
                self.expect(f"{name}: {host}: {key}", checked.results[host].get(key), run.results[host].get(key))
            self.expect(f"{name}: {host}: changes in the recap", checked.recap[host]["changed"], run.recap[host]["changed"])

    def roll_out(self):
        before, self.roots = self.fleet.look(), self.fleet.look("root")
        checked = self.fleet.play(EVERYWHERE, "--check", "--diff")
        self.expect_results("check mode", checked)
        self.expect("after check mode", self.fleet.look(), before)
        run = self.fleet.play(EVERYWHERE, "--diff")
        self.expect_results("run", run)
        self.same("run", checked, run)
        self.expect_disk()
        after = self.fleet.look()
        again = self.fleet.play(EVERYWHERE)
        self.expect_results("second run", again, may_change=False)
        self.expect("second run: changed tasks", {line["changed"] for line in again.recap.values()}, {0})
        self.expect("after the second run", self.fleet.look(), after)

    def expect_disk(self):
        """What the rollout stored, by another reader, and the journals, which lie on the machines and nowhere else."""
        for host in self.fleet.hosts:
            folder = self.fleet.folder(host)
            if host.startswith("old-values"):
                preferences = folder / f"root/Library/Preferences/{PRODUCT}.plist"
                self.expect(f"{host}: preferences", machines.contents(preferences), {"Lang": "de"})
            journals = [(path, oct(path.stat().st_mode)) for path in folder.rglob("spring.json")]
            ran = host != GONE and self.kind_of(host)[3] in (None, 7, 9)
            self.expect(f"{host}: journal", journals, [(folder / "journals/spring.json", "0o100600")] if ran else [])
        everywhere, there = self.fleet.work.rglob("spring.json"), self.fleet.work.glob("machines/*/journals/spring.json")
        self.expect("journals outside of the machines", set(everywhere) - set(there), set())

    def undo(self):
        """Each root is as it was before the rollout; where no run came to a journal, undoing fails."""
        checked = self.fleet.play("corvane.installer.undo", "--check", "--diff")
        run = self.fleet.play("corvane.installer.undo", "--diff")
        self.same("undo", checked, run)
        made = {"Applications", "Library"}  # by the host, for every run
        for host, root in self.fleet.look("root").items():
            added = {pathlib.Path(path).name for path in root.keys() - self.roots[host].keys()} - made
            self.expect(f"undo: {host}: what is new", added, set())
            before = self.roots[host]
            self.expect(f"undo: {host}: what stood there", {path: root.get(path) for path in before}, before)
        for host, result in run.results.items():
            _, _, changes, status = self.kind_of(host)
            self.expect(f"undo: {host}: changed", result["changed"], changes)
            self.expect(f"undo: {host}: failed", "error" in result, status not in (None, 7, 9))
        again = self.fleet.play("corvane.installer.undo")
        self.expect("second undo", {result["changed"] for result in again.results.values()}, {False})

    def end_early(self):
        """A batch in which too many fail is the last."""
        hosts = ["link-ssh-1", "empty-ssh-1"]
        play = self.fleet.play("corvane.installer.roll_out", rollout_hosts=hosts, rollout_batches=[1, "100%"])
        self.expect("a failing pilot: the machines that were visited", list(play.recap), hosts[:1])
        play = self.fleet.play(EVERYWHERE, "--check", "--limit", "empty-ssh-1", rollout_prefix="/nowhere")
        self.expect("without the host", play.results["empty-ssh-1"]["error"]["what"],
                    "/nowhere/bin/installer-host is not on this machine")

    def documents(self):
        """What ansible-doc prints is what the module takes, and Ansible's own checks find nothing."""
        name = "corvane.installer.installer_plugin"
        documented = json.loads(self.fleet.ansible("ansible-doc", "-j", name).stdout)[name]["doc"]["options"]
        source = ast.parse((self.fleet.collection / "plugins/modules/installer_plugin.py").read_text())
        taken = next(ast.literal_eval(node.value) for node in ast.walk(source)
                     if isinstance(node, ast.keyword) and node.arg == "argument_spec")
        self.expect("options", {option: {key: text[key] for key in text if key in ("type", "choices", "default", "elements")}
                                for option, text in documented.items()}, taken)
        version = re.search(r"^ +VERSION (\S+)", (PROJECT / "CMakeLists.txt").read_text(), re.MULTILINE)[1]
        manifest = json.loads((self.fleet.collection / "MANIFEST.json").read_text())
        self.expect("the collection's version", manifest["collection_info"]["version"], version)
        role = self.fleet.ansible("ansible-doc", "-t", "role", "corvane.installer.rollout")
        self.expect("ansible-doc of the role", "rollout_product" in role.stdout, True)
        for command in (["ansible-lint", "--offline", "--nocolor"], ["ansible-test", "sanity", "--color", "no", "--python",
                        f"3.{sys.version_info[1]}", *(f"--test={test}" for test in OFFLINE_SANITY)]):
            told = self.fleet.ansible(*command, folder=self.fleet.collection)
            self.expect(f"{command[0]}:\n{told.stdout}", told.returncode, 0)


    def packages(self):
        """A machine that has never seen the packages gets them, and uses them on itself."""
        undo = "corvane.installer.undo"
        for name, arguments, result, changed_tasks in (
                ("fresh, check mode", [EVERYWHERE, "--check"], None, 1), ("fresh", [EVERYWHERE], True, 3),
                ("check mode", [EVERYWHERE, "--check"], False, 0), ("again", [EVERYWHERE], False, 0),
                ("undo, check mode", [undo, "--check"], True, 1), ("undo", [undo], True, 1), ("undo again", [undo], False, 0)):
            play = self.fleet.play(*arguments)
            self.expect(f"{name}: changed", play.results.get("debian", {}).get("changed"), result)
            self.expect(f"{name}: recap", {key: play.recap["debian"][key] for key in ("changed", "failures", "unreachable")},
                        {"changed": changed_tasks, "failures": 0, "unreachable": 0})


def add_folders(fleet, archive):
    for kind, (make, told, _, _) in KINDS.items():
        for connection, count in (("ssh", 2), ("local", int(kind in LOCAL_KINDS))):
            for number in range(1, count + 1):
                name = f"{kind}-{connection}-{number}"
                fleet.add_folder(name, archive, make, kind=kind, ansible_connection=connection, **told)
    fleet.add_folder(GONE, archive, None, ansible_port=machines.free_port())


def debian_sshd():
    architecture = subprocess.check_output(["dpkg", "--print-architecture"], text=True).strip()
    command = [PROJECT / "tools/in-debian-root", architecture, "fleet-machine", "/project/tests/deploy/debian-machine"]
    return machines.Sshd(PROJECT / "build/fleet-machine/ssh", command, inside="/project/build/ssh")


def add_debian(fleet, packages):
    files = [str(next(packages.glob(f"{name}_*.deb"))) for name in ("libcvbase1", "installer-host", "corvane-install")]
    fleet.add("debian", rollout_machine=True, rollout_package_files=files)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--packages", action="store_true")
    parser.add_argument("place", type=lambda path: pathlib.Path(path).resolve())
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="fleet.") as name:
        work = pathlib.Path(name)
        sshd = debian_sshd() if options.packages else machines.Sshd(work / "ssh")
        with machines.Fleet(work, sshd) as fleet:
            (add_debian if options.packages else add_folders)(fleet, options.place)
            tester = Tester(fleet)
            everything = [tester.documents, tester.roll_out, tester.end_early, tester.undo]
            for test in [tester.packages] if options.packages else everything:
                test()
                print(f"fleet: {test.__name__}: {tester.checks} checks, {len(tester.faults)} faults", flush=True)
    print("".join(f"    {fault[:3000]}\n" for fault in tester.faults), end="")
    return 1 if tester.faults else 0


if __name__ == "__main__":
    sys.exit(main())
