#!/usr/bin/env python3
"""Attacks the machine with a hostile plug-in and hostile neighbours, through installer-host.

    attack.py [--short | --prove] BUILD

BUILD is a build folder. Prints what did harm, and the figures; ends with the exit status 1 when something did. As root it
attacks as root, as root on another user's files, and as an ordinary user. --short leaves out what takes long: most
exchanges, and as the second and the third user all but what the code tries from inside. --prove takes one protection
away after the other, by a bwrap of its own, and ends with 1 when the attacks that are to notice do not.
"""

import argparse
import ctypes
import fcntl
import json
import os
import pathlib
import pty
import re
import resource
import shutil
import socket
import struct
import subprocess
import sys
import tempfile
import termios
import threading
import time

import jsonschema

NOBODY = 65534
NOT_TRIED = "the attack was not tried"
HOSTS_MEMORY = 2 << 30
BWRAP = shutil.which("bwrap")
LIBC = ctypes.CDLL(None, use_errno=True)
SCHEMA = jsonschema.Draft202012Validator(json.loads(
    (pathlib.Path(__file__).resolve().parents[3] / "docs/report.schema.json").read_text()))
CONTROL = re.compile(r"[\x00-\x08\x0b-\x1f\x7f-\x9f]")

FORGED_EVENTS = [
    "{}", "[]", "null", "0", '""', "{", "}" * 2000, "[" * 60000, "\\x00\\xff\\xfe", '{"event":null}', '{"event":7}',
    '{"event":"nonsense"}', '{"event":{"event":"started"}}', '{"event":"started"}', '{"event":"stepBegins"}',
    '{"event":"stepBegins","step":7,"flags":0}', '{"event":"stepBegins","step":1,"flags":-1}',
    '{"event":"stepBegins","step":"pre","flags":0}', '{"event":"stepEnds","step":1,"flags":0,"type":"","message":""}',
    '{"event":"stepEnds","step":0,"flags":1e99,"type":"","message":""}',
    '{"event":"stepEnds","step":0,"flags":0,"type":[],"message":{}}', '{"event":"finding"}',
    '{"event":"finding","subject":"x","ok":true,"text":"x","status":99999}', '{"event":"notStored","what":"x","reason":"x"}',
    '{"event":"refused","status":0,"text":"x"}', '{"event":"failure","status":0,"text":"x"}', '{"event":"finished"}',
]

# What a bwrap without the protection does with its arguments: what is left out, each with as many words that follow; which
# group of attacks is to notice; and what the harm's name begins with.
WEAKENINGS = {
    "system-call filter": ({"--seccomp": 1}, "inside", "system call"),
    "capabilities dropped": ({"--cap-drop": 1, "--unshare-user": 0, "--disable-userns": 0, "--unshare-all": 0}, "inside",
                             "rights:"),
    "empty environment": ({"--clearenv": 0}, "inside", "environment:"),
    "first process hidden": ({"--tmpfs /proc/1": 0, "--remount-ro /proc/1": 0}, "inside", "/proc/1/"),
    "network of its own": ({"share the network": 0}, "inside", "network:"),
    "the rest read-only": ({"--remount-ro": 1}, "inside", "place /dev"),
    "devices read-only": ({"protected devices": 0}, "inside", "place /dev/null"),
    "descriptors closed": ({"keep a descriptor": 0}, "inside", "descriptor 60"),
    "folders by descriptor": ({"--bind-fd by path": 0}, "exchange", "exchanged"),
    "session of its own": ({"--new-session": 0}, "terminal", "terminal:"),
}

WEAK_BWRAP = """#!/usr/bin/env python3
import os, subprocess, sys, time
dropped, out, words = {dropped}, [], sys.argv[1:]
while words:
    word = words.pop(0)
    if word + " " + words[0] in dropped if words else False:
        del words[:1]
    elif word in dropped:
        del words[:dropped[word]]
    elif word == "--bind-fd" and "--bind-fd by path" in dropped:
        out += ["--bind", os.readlink("/proc/self/fd/" + words.pop(0))]
        time.sleep(0.01)
    elif word == "--unshare-all" and "share the network" in dropped:
        out += [word, "--share-net"]
    elif word == "--":
        out += [word] + words
        break
    else:
        out.append(word)
if "protected devices" in dropped:
    subprocess.run("for device in null zero full; do mount -o remount,bind,rw /dev/$device; done", shell=True, check=True)
if "keep a descriptor" in dropped:
    os.dup2(os.open("/", os.O_RDONLY), 60, inheritable=True)
os.execv("{bwrap}", ["bwrap"] + out)
"""


class Attacker:
    """Attacks as one user, on roots that belong to one."""

    def __init__(self, build, user, owner, rounds, path=None):
        self.build, self.user, self.owner, self.rounds = build, user, owner, rounds
        self.path = path or os.environ["PATH"]
        self.tries, self.harms, self.notes = 0, [], []
        self.work = pathlib.Path(tempfile.mkdtemp(prefix="attack-"))
        self.work.chmod(0o755)
        self.victim = self.folder("victim")

    def record(self, name, harm):
        self.tries += 1
        if harm:
            self.harms.append(f"{name}: {harm}")

    def own(self, path):
        os.chown(path, self.owner, self.owner, follow_symlinks=False)

    def folder(self, name):
        path = self.work / name
        path.mkdir(parents=True)
        self.own(path)
        return path

    def root(self, name="root"):
        shutil.rmtree(self.work / name, ignore_errors=True)
        root = self.folder(name)
        self.folder(name + "/Library")
        self.folder(name + "/Applications")
        return root

    def bundle(self, *order, name="Hostile.bundle"):
        path = self.work / name
        shutil.rmtree(path, ignore_errors=True)
        shutil.copytree(self.build / "tests/installer-host/attack/HostilePlugIn.bundle", path)
        (path / "Contents/Resources").mkdir()
        (path / "Contents/Resources/attack").write_text("\n".join(order) + "\n")
        return path

    def host(self, command, *arguments, timeout=20, **options):
        """The finished process, and how long it took. Signals and endless runs count as harm."""
        line = [self.build / "bin/installer-host", command, f"--timeout={timeout}", *arguments]
        environment = {**os.environ, "PATH": self.path, "ATTACK_SECRET": "1", **options.pop("env", {})}
        for display in ("DISPLAY", "WAYLAND_DISPLAY"):
            environment.pop(display, None)
        identity = {"user": self.user, "group": self.user, "extra_groups": []} if self.user else {}
        start = time.monotonic()
        process = subprocess.run(line, capture_output=True, stdin=subprocess.DEVNULL, env=environment, timeout=120,
                                 **identity, **options)
        process.seconds = time.monotonic() - start
        late = process.seconds > timeout + 8
        self.record(f"{command} ends", f"only after {process.seconds:.0f} s" if late else "")
        crashed = process.returncode < 0 or process.returncode >= 128
        self.record(f"{command} survives", f"status {process.returncode}" if crashed else "")
        return process

    def run(self, root, bundle, *arguments, **options):
        return self.host("run", "--product=5100", "--step=pre", "--format=json", "--root", root, *arguments, bundle,
                         **options)

    def results(self, root, name):
        """Counts what the plug-in tells of its tries."""
        file = root / "Library/results"
        lines = file.read_text(errors="replace").splitlines() if file.exists() else []
        self.record(f"{name}: runs", "" if lines else NOT_TRIED)
        for line in lines:
            word, _, rest = line.partition(" ")
            self.record(rest, "" if word == "refused" else "harm")

    def inside(self):
        """Everything that the code tries from inside."""
        watched = {path: os.stat(path).st_mode for path in ("/dev/null", BWRAP, "/etc/passwd")}
        root, name = self.root(), f"attack-{os.getpid()}"
        listeners = [socket.socket(socket.AF_UNIX) for _ in range(2)]
        listeners[0].bind("\0" + name)
        listeners[1].bind(str(root / "Library/listener"))
        os.chmod(root / "Library/listener", 0o777)
        for listener in listeners:
            listener.listen()
        secret = self.work / "secret"
        secret.write_text("secret")
        kept = [os.open(secret, os.O_RDONLY), os.open("/", os.O_RDONLY)]
        self.run(root, self.bundle("inside", name), pass_fds=kept)
        for resource in [*listeners, *map(os.fdopen, kept[:1])]:
            resource.close()
        os.close(kept[1])
        self.results(root, "inside")
        for path, mode in watched.items():
            self.record(f"{path} is as it was", "" if os.stat(path).st_mode == mode else "its mode changed")

    def forks(self):
        root = self.root()
        process = self.run(root, self.bundle("forks"))
        limits = json.loads(process.stdout).get("limits", [])
        unbound = [limit for limit in limits if limit.startswith("processes: not limited")]
        if unbound:
            self.notes.append(f"not tried, since the report says: {unbound[0]}")
        else:
            self.results(root, "forks")

    def terminal(self):
        """The host has a terminal, as a user's has."""
        host_side, terminal = pty.openpty()
        root = self.root()
        self.run(root, self.bundle("terminal"), start_new_session=True,
                 preexec_fn=lambda: fcntl.ioctl(terminal, termios.TIOCSCTTY, 0))
        os.close(host_side)
        os.close(terminal)
        self.results(root, "terminal")

    def many_values(self):
        """Files that the host names as changed, but does not take apart all."""
        root, files = self.root(), [f"/Library/Preferences/{name}.plist" for name in "12345678"]
        report = self.host("run", "--product=5100", "--step=pre", "--root", root, self.bundle("many values"),
                           timeout=60).stdout.decode()
        taken = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss << 10
        self.record("many values: the host's memory", f"{taken >> 20} MiB" if taken > HOSTS_MEMORY else "")
        for file in files:
            self.record(f"many values: {file}", "" if f"+ file {file}," in report else "is not named")
        self.record("many values: what is too large",
                    "" if f"{files[-1]} cannot be read: it is too large" in report else "is not named")

    def exchange(self):
        """Another process exchanges a folder of the root for a link out of it, all the time."""
        root, evil = self.root(), self.work / "evil"
        if not evil.is_symlink():
            evil.symlink_to(self.victim)
        for name in ("Library", "Applications"):
            done = threading.Event()
            paths = (-100, bytes(root / name), -100, bytes(evil), 2)

            def exchange():
                while not done.is_set():
                    LIBC.renameat2(*paths)
                    time.sleep(0.0003)

            thread = threading.Thread(target=exchange)
            thread.start()
            for _ in range(self.rounds // 2):
                self.host("run", "--product=5100", "--root", root, self.build / "CorvaneInstall.bundle")
                self.record(f"exchanged {name}", "written to the link's target" if any(self.victim.iterdir()) else "")
            done.set()
            thread.join()
            if (root / name).is_symlink():
                LIBC.renameat2(*paths)
        evil.unlink()

    def links(self):
        """Links to where the machine's root is while bubblewrap works, at each place where something might be made."""
        for target in ("/oldroot" + str(self.victim), "/newroot" + str(self.victim), str(self.victim)):
            for place in ("Library", "Applications", "Library/Preferences", "Library/Application Support",
                          "Library/Preferences/com.corvane.updater.plist", "Applications/Corvane"):
                root = self.root()
                path = root / place
                if path.is_dir():
                    path.rmdir()
                path.parent.mkdir(exist_ok=True)
                path.symlink_to(target)
                self.host("run", "--product=5100", "--root", root, self.build / "CorvaneInstall.bundle")
                self.record(f"link {place}", "its target was written to" if any(self.victim.iterdir()) else "")

    def left_behind(self):
        def expect_still(name, file):
            before = file.read_text() if file.exists() else ""
            time.sleep(0.1)
            self.record(name, "it still runs" if (file.read_text() if file.exists() else "") != before else "")

        for attack in ("leave behind", "leave behind and lie", "leave behind and hang"):
            root = self.root()
            process = self.run(root, self.bundle(attack, "/Library/heartbeat"), timeout=1)
            hides = "hang" not in attack and not json.loads(process.stdout).get("leftProcesses")
            self.record(f"{attack}: the report", "names no process" if hides else "")
            self.record("left behind: it ran", "" if (root / "Library/heartbeat").exists() else NOT_TRIED)
            expect_still(attack, root / "Library/heartbeat")
            free = self.folder(attack)
            self.host("run", "--product=1", "--step=pre", "--machine", "--scope", free,
                      self.bundle(attack, str(free / "heartbeat")), timeout=1)
            expect_still(attack + " on the machine", free / "heartbeat")
        self.host("check", self.bundle("at loading", str(self.victim / "left")))
        self.record("at loading: a file", "was left" if any(self.victim.iterdir()) else "")

    def told(self):
        """Forged and endless events, alerts and output."""
        for event in FORGED_EVENTS:
            process = self.run(self.root(), self.bundle("event", event), timeout=5)
            self.record(f"event {event[:60]}", "the run counts as done" if process.returncode == 0 else "")
            self.record(f"event {event[:60]}: a report", fault_of_report(process.stdout))
        text = b"is it?"
        body = struct.pack("<III", 0, 1, len(text)) + text + struct.pack("<I", 2) + b"OK"
        alert = b"CvAlert1" + struct.pack("<I", len(body)) + body
        pieces = {"half an alert": alert[:20], "a long alert": b"CvAlert1\xff\xff\xff\xff", "no alert": b"GET / HTTP/1.1"}
        as_text = {name: "".join(f"\\x{byte:02x}" for byte in piece) for name, piece in pieces.items()}
        for order in [("alert", piece) for piece in as_text.values()] + [
                ("endless alert", "".join(f"\\x{byte:02x}" for byte in alert)), ("endless event", "x" * 4096),
                ("endless event", ""), ("endless output", ""), ("kill", "")]:
            process = self.run(self.root(), self.bundle(*order), timeout=1)
            self.record(f"{order[0]}: a report", fault_of_report(process.stdout))

    def escapes(self):
        bundle = self.bundle("escapes", name="Esc\x1b[2Jape.bundle")
        for form in ("text", "json"):
            root = self.root("ro\x1b[2Jot")
            process = self.host("run", "--product=5100", "--step=pre", f"--format={form}", "--root", root, bundle)
            for name, text in (("report", process.stdout), ("messages", process.stderr)):
                found = CONTROL.search(text.decode(errors="surrogateescape"))
                raw = found or any(0xdc80 <= ord(c) <= 0xdcff for c in text.decode(errors="surrogateescape"))
                self.record(f"escapes in the {form} {name}", f"are in {text!r:.300}" if raw else "")

    def all(self):
        for attack in (self.inside, self.forks, self.terminal, self.many_values, self.links, self.left_behind, self.told,
                       self.escapes, self.exchange):
            attack()


def fault_of_report(text):
    """What is wrong with a report in JSON, or nothing."""
    error = jsonschema.exceptions.best_match(SCHEMA.iter_errors(json.loads(text or "null")))
    return f"{list(error.absolute_path)}: {error.message[:200]}" if error else ""


def weak_path(work, dropped):
    program = work / "bwrap"
    program.write_text(WEAK_BWRAP.replace("{dropped}", repr(dropped)).replace("{bwrap}", BWRAP))
    program.chmod(0o755)
    return f"{work}:{os.environ['PATH']}"


def prove(build):
    unnoticed = 0
    for name, (dropped, attack, expected) in WEAKENINGS.items():
        with tempfile.TemporaryDirectory() as work:
            attacker = Attacker(build, 0, 0, 60, weak_path(pathlib.Path(work), dropped))
            getattr(attacker, attack)()
            shutil.rmtree(attacker.work, ignore_errors=True)
        noticed = sum(harm.startswith(expected) and NOT_TRIED not in harm for harm in attacker.harms)
        unnoticed += not noticed
        print(f"without {name}: {len(attacker.harms)} of {attacker.tries} attacks did harm, {noticed} of them those that "
              "are to notice", flush=True)
        print("".join(f"    {harm}\n" for harm in attacker.harms[:5]), end="")
    print(f"{len(WEAKENINGS)} protections taken away, {len(WEAKENINGS) - unnoticed} noticed")
    return 1 if unnoticed else 0


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--short", action="store_true")
    parser.add_argument("--prove", action="store_true")
    parser.add_argument("build", type=lambda path: pathlib.Path(path).resolve())
    options = parser.parse_args()
    if options.prove:
        return prove(options.build)
    me = os.getuid()
    users = [("as root", 0, 0), ("as root on another user's files", 0, NOBODY), ("as an ordinary user", NOBODY, NOBODY)]
    tries = harms = 0
    for name, user, owner in users if me == 0 else [("as this user", 0, me)]:
        attacker = Attacker(options.build, user, owner, 6 if options.short else 300)
        try:
            if options.short and tries:
                attacker.inside()
            else:
                attacker.all()
        finally:
            shutil.rmtree(attacker.work, ignore_errors=True)
        print(f"{name}: {attacker.tries} attacks, {len(attacker.harms)} did harm", flush=True)
        print("".join(f"    {line}\n" for line in attacker.harms + attacker.notes), end="")
        tries, harms = tries + attacker.tries, harms + len(attacker.harms)
    print(f"{tries} attacks, {harms} did harm")
    return 1 if harms else 0


sys.exit(main())
