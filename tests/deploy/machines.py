"""What stands for a fleet: folders that stand for machines, one sshd that leads to them, and Ansible that works on them."""

import collections
import hashlib
import json
import os
import pathlib
import plistlib
import shutil
import socket
import stat
import subprocess
import time

HERE = pathlib.Path(__file__).resolve().parent
PROJECT = HERE.parents[1]
EVERYWHERE = HERE / "everywhere.yml"
SSHD = shutil.which("sshd", path="/usr/sbin:/usr/local/sbin:" + os.environ["PATH"])
SSHD_CONFIG = """
ListenAddress 127.0.0.1
Port {port}
HostKey {folder}/host_key
AuthorizedKeysFile {folder}/user_key.pub
PidFile none
StrictModes no
PasswordAuthentication no
KbdInteractiveAuthentication no
UsePAM no
MaxStartups 200
Subsystem sftp internal-sftp
"""


def free_port():
    with socket.socket() as listener:
        listener.bind(("127.0.0.1", 0))
        return listener.getsockname()[1]


class Sshd:
    """A server of its own, with keys of its own, on a port of its own, for as long as the context lasts.

    `folder` holds what it needs. It runs where `command` starts it, and there its folder is `inside`.
    """

    def __init__(self, folder, command=(SSHD,), inside=None):
        self.folder, self.command, self.inside, self.port = folder, command, inside or folder, free_port()

    def __enter__(self):
        shutil.rmtree(self.folder, ignore_errors=True)
        (self.folder / "control").mkdir(parents=True)
        for name in ("host_key", "user_key"):
            subprocess.check_call(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", self.folder / name])
        host_key = (self.folder / "host_key.pub").read_text()
        (self.folder / "known_hosts").write_text(f"[127.0.0.1]:{self.port} {host_key}")
        (self.folder / "config").write_text(SSHD_CONFIG.format(port=self.port, folder=self.inside))
        if os.getuid() == 0:
            os.makedirs("/run/sshd", mode=0o755, exist_ok=True)  # sshd wants it of root; the system's service makes it
        self.process = subprocess.Popen([*self.command, "-D", "-f", f"{self.inside}/config", "-E", f"{self.inside}/log"])
        while socket.socket().connect_ex(("127.0.0.1", self.port)) != 0:
            if self.process.poll() is not None:
                raise SystemExit(f"fleet: sshd does not start; {self.folder}/log may say why")
            time.sleep(0.05)
        return self

    def close_connections(self):
        for connection in (self.folder / "control").glob("*"):
            subprocess.run(["ssh", "-F", "/dev/null", "-O", "exit", "-o", f"ControlPath={connection}", "fleet"],
                           stderr=subprocess.DEVNULL)

    def __exit__(self, *_):
        self.close_connections()
        self.process.terminate()
        self.process.wait()

    def ssh_arguments(self):
        return (f"-F /dev/null -o ControlMaster=auto -o ControlPersist=60s -o IdentitiesOnly=yes "
                f"-o UserKnownHostsFile={self.folder}/known_hosts -o GlobalKnownHostsFile=/dev/null")


Play = collections.namedtuple("Play", "results recap seconds main_seconds")


class Fleet:
    """The machines, in a folder of their own, and Ansible with the collection; it reads no settings of the user's."""

    def __init__(self, work, sshd):
        self.work, self.sshd, self.hosts, self.record = work, sshd, {}, work / "record"
        self.collection = work / ".ansible/collections/ansible_collections/corvane/installer"
        self.environment = {**os.environ, "HOME": str(work), "ANSIBLE_CONFIG": str(work / "ansible.cfg"),
                            # ansible-lint looks in what is before the last slash.
                            "ANSIBLE_COLLECTIONS_PATH": str(work / ".ansible/collections") + "/.",
                            "FLEET_RECORD": str(self.record), "LC_ALL": "C.UTF-8"}

    def __enter__(self):
        self.sshd.__enter__()
        self.configure()
        told = self.ansible("ansible-galaxy", "collection", "install", "--offline", PROJECT / "deploy/ansible")
        if told.returncode != 0:
            raise SystemExit(f"fleet: the collection cannot be installed:\n{told.stdout}")
        return self

    def __exit__(self, *_):
        self.sshd.__exit__()

    def configure(self, forks=20, pipelining=True):
        (self.work / "ansible.cfg").write_text(
            f"[defaults]\nforks={forks}\n"
            f"interpreter_python=/usr/bin/python3\ncallback_plugins={HERE}/callbacks\ncallbacks_enabled=record\n"
            f"[ssh_connection]\npipelining={pipelining}\n"
            f"ssh_args={self.sshd.ssh_arguments()}\n")

    def folder(self, host):
        return self.work / "machines" / host

    def add(self, name, **told):
        """Adds a machine, which has a connection of its own, as if it had an address of its own."""
        self.hosts[name] = {
            "ansible_control_path": f"{self.sshd.folder}/control/{name}",
            "ansible_host": "127.0.0.1", "ansible_port": self.sshd.port, "rollout_product": 5100,
            "ansible_ssh_private_key_file": f"{self.sshd.folder}/user_key", **told,
        }

    def add_folder(self, name, archive, make, **told):
        """Adds a machine that is a folder; `make` furnishes its root."""
        machine = self.folder(name)
        (machine / "root").mkdir(parents=True)
        if make:
            make(machine / "root")
        self.add(name, rollout_root=f"{machine}/root", rollout_folder=f"{machine}/host", rollout_delivery="archive",
                 rollout_archive=str(archive), rollout_journal=f"{machine}/journals/spring.json",
                 ansible_remote_tmp=f"{machine}/tmp", **told)

    def ansible(self, program, *arguments, folder=None):
        return subprocess.run([program, *arguments], env=self.environment, cwd=folder or self.work, text=True,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)

    def play(self, playbook, *arguments, **variables):
        """Runs a playbook, on all machines at once: what came of the plug-in's task on each, the recap, and the times."""
        inventory = self.work / "inventory.json"
        inventory.write_text(json.dumps({"machines": {"hosts": self.hosts}}))
        self.record.write_text("")
        start = time.monotonic()
        told = self.ansible("ansible-playbook", "-i", inventory, playbook, *arguments, "-e", json.dumps(variables))
        seconds = time.monotonic() - start
        results = dict(map(json.loads, self.record.read_text().splitlines()))
        if None not in results:
            raise SystemExit(f"fleet: ansible-playbook failed:\n{told.stdout}")
        recap, main_seconds = results.pop(None)
        return Play(results, recap, seconds, main_seconds)

    def look(self, part=""):
        """All that lies on the machines, or in a part of them, but for Ansible's own temporary files."""
        return {host: look(self.folder(host) / part, without=self.folder(host) / "tmp") for host in self.hosts}


def furnish(root):
    updater = root / "Library/Application Support/Corvane/Updater"
    updater.mkdir(parents=True)
    (updater / "install_status.txt").write_text("UpdatesEnabled\n")
    (root / "Applications/Corvane").mkdir(parents=True)
    (root / "Applications/Corvane/Icon\r").touch()


def write_preferences(root, values, form=plistlib.FMT_XML):
    folder = root / "Library/Preferences"
    folder.mkdir(parents=True)
    for domain, keys in values.items():
        path = folder / f"{domain}.plist"
        path.write_bytes(plistlib.dumps(keys, fmt=form))
        path.chmod(0o640)


def link_library(root):
    (root.parent / "elsewhere").mkdir()
    (root / "Library").symlink_to("../elsewhere")


def block_updater(root):
    (root / "Library/Preferences/com.corvane.updater.plist").mkdir(parents=True)


def block_status(root):
    furnish(root)
    status = root / "Library/Application Support/Corvane/Updater/install_status.txt"
    status.unlink()
    os.mkfifo(status)


def contents(path):
    """What a file holds: of a property list its values, however they are written."""
    data = path.read_bytes()
    try:
        return plistlib.loads(data) if path.suffix == ".plist" else hashlib.sha256(data).hexdigest()
    except plistlib.InvalidFileException:
        return data


def look(folder, without):
    """All that lies in a folder, with mode, owner, attributes and contents."""
    found = {}
    for path in sorted(folder.rglob("*")):
        if path == without or without in path.parents:
            continue
        status = path.lstat()
        what = os.readlink(path) if path.is_symlink() else contents(path) if stat.S_ISREG(status.st_mode) else None
        attributes = {name: os.getxattr(path, name, follow_symlinks=False).hex()
                      for name in os.listxattr(path, follow_symlinks=False)}
        found[str(path)] = (oct(status.st_mode), status.st_uid, status.st_gid, attributes, what)
    return found
