#!/usr/bin/python
"""Runs an installer plug-in's steps on a machine with installer-host, or undoes what a run changed."""

from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
---
module: installer_plugin
short_description: Run an installer plug-in's steps, or undo what they changed
version_added: 1.0.0
description:
  - Runs the steps of an installer plug-in with C(installer-host), and reports what that changed on the disk.
  - What changed is what C(installer-host) found by looking at the disk before and after. It is not what the plug-in says.
  - The program and the bundle must be on the target. The role C(corvane.installer.rollout) brings them there.
options:
  state:
    description:
      - With C(installed), the plug-in's steps have run for the product. They run each time. A run that finds everything in
        place changes nothing.
      - With C(undone), what the run that wrote I(journal) changed is put back, where nobody changed it since.
    type: str
    choices: [installed, undone]
    default: installed
  bundle:
    description: The plug-in's bundle, a folder on the target. Required with I(state=installed).
    type: path
  product:
    description: The numeric code of the product that is installed. Required with I(state=installed).
    type: int
  language:
    description:
      - The installation's language as a classic Mac OS code.
      - 0 is English, 1 French, 2 German, 3 Italian, 6 Spanish, 11 Japanese. The plug-in gets any other code unchanged.
    type: int
    default: 0
  step:
    description: The steps to run.
    type: str
    choices: [pre, post, both]
    default: both
  root:
    description:
      - A folder on the target that stands in for the machine. Only C(Library) and C(Applications) in it change, and the
        plug-in's code is confined to them.
      - Give this or I(machine).
    type: path
  machine:
    description:
      - Work on the machine itself. The plug-in's code is not confined then.
      - Give this or I(root).
    type: bool
    default: false
  scope:
    description:
      - The folders to look at before and after, with I(machine=true). The program's default is C(/Library) and
        C(/Applications).
      - C(installer-host) refuses it in check mode.
    type: list
    elements: path
    default: []
  timeout:
    description: The seconds after which the run is ended, from 1 to 86400, or 0 for no limit. The program's default is 60.
    type: int
  journal:
    description:
      - A file on the target, with what it takes to undo the run. It holds old values of preferences, so it stays there, and
        only its path is returned.
      - With I(state=installed), the run writes it. Its folder is made with mode 0700 where it is missing. In check mode
        nothing is written.
      - A journal holds one run. Where it exists already, the module makes a dry run. When that finds everything in place,
        the task is done. When it finds that something would change, the task fails. Then undo the earlier run, or name
        another journal.
      - A journal that was undone gives way to a new one.
      - With I(state=undone), the file to undo, and required.
    type: path
  executable:
    description: The program, as a path or as a name to look for in C(PATH).
    type: path
    default: installer-host
attributes:
  check_mode:
    description: Makes the changes on a copy of the root, with C(--dry-run). The result is that of the run itself.
    support: full
  diff_mode:
    description: Shows the report's old and new values of preferences, Finder flags, and files and folders.
    support: full
author:
  - Corvane (developers@corvane.com)
"""

EXAMPLES = r"""
- name: Install product 5100 in French
  corvane.installer.installer_plugin:
    bundle: /usr/lib/x86_64-linux-gnu/CorvaneInstall.bundle
    product: 5100
    language: 1
    machine: true
    journal: /var/lib/corvane/journals/spring.json

- name: Install product 3100 in a folder that stands in for a machine
  corvane.installer.installer_plugin:
    bundle: /opt/corvane/lib/CorvaneInstall.bundle
    executable: /opt/corvane/bin/installer-host
    product: 3100
    root: /srv/images/studio

- name: Undo the first of these
  corvane.installer.installer_plugin:
    state: undone
    machine: true
    journal: /var/lib/corvane/journals/spring.json
"""

RETURN = r"""
changed:
  description: Whether anything but times changed on the disk, or in check mode would have changed. A failed run tells it, too.
  returned: always
  type: bool
summary:
  description: The changes, counted.
  returned: when the run came to a report
  type: str
  sample: 3 created, 2 changed, 3 keys added
error:
  description: Why the run failed.
  returned: on failure
  type: dict
  contains:
    status:
      description: The exit status of C(installer-host). Its manual page explains them.
      type: int
    what:
      description: What happened.
      type: str
    whatToDo:
      description: What can be done about it, if that is known.
      type: str
  sample:
    status: 6
    what: "the private root cannot be used: '/srv/images/studio/Library' is not a folder"
    whatToDo: A link could lead out of the root. Put a folder in its place.
journal:
  description: The path of the journal on the target, or null when the run wrote none.
  returned: always
  type: str
rc:
  description: The exit status of C(installer-host).
  returned: when it was started
  type: int
report:
  description: The whole report. C(report.schema.json) describes it.
  returned: when C(installer-host) wrote one
  type: dict
"""

import json
import os
import re

from ansible.module_utils.basic import AnsibleModule
from ansible.module_utils.common.text.converters import to_text


def quoted(value):
    """As JSON, and without the control characters that JSON leaves in: names may hold what a terminal obeys."""
    return re.sub("[\x7f-\x9f]", lambda found: "\\u%04x" % ord(found.group()), json.dumps(value, ensure_ascii=False))


def text_of(value):
    """A value of a property list on one line, each part with its type."""
    inner = value["value"]
    if value["type"] == "array":
        return "[" + ", ".join(map(text_of, inner)) + "]"
    if value["type"] == "dictionary":
        return "{" + ", ".join("%s: %s" % (quoted(key), text_of(inner[key])) for key in sorted(inner)) + "}"
    return "%s (%s)" % (quoted(inner), value["type"])


def entry_line(path, entry):
    parts = [entry["type"], "mode %s" % entry["mode"], "owner %d:%d" % (entry["owner"], entry["group"])]
    parts += ["%d bytes" % entry["size"]] if entry["size"] is not None else []
    parts += ["to %s" % quoted(entry["target"])] if entry["target"] is not None else []
    parts += ["device %s" % entry["device"]] if entry["device"] is not None else []
    parts += ["%s=%s" % (quoted(name), value) for name, value in sorted(entry["attributes"].items())]
    return "%s: %s" % (quoted(path), ", ".join(parts))


def entry_pair(entry):
    """How an entry of the report looked before and after. Where that looks the same, what differs stands after it."""
    before = entry["before"] and entry_line(entry["from"] or entry["path"], entry["before"])
    after = entry["after"] and entry_line(entry["path"], entry["after"])
    return before, after + " (other %s)" % ", ".join(entry["differs"]) if before == after else after


def key_pair(change):
    return tuple(side and "%s = %s" % (quoted(change["key"]), text_of(side))
                 for side in (change["before"], change["after"]))


def flags_pair(change):
    return tuple("%s: 0x%04x" % (quoted(change["path"]), side["flags"])
                 if side["flags"] is not None else None for side in (change["before"], change["after"]))


def diff_of(report):
    """What the report says changed, in the form in which Ansible shows differences: one for each group of lines."""
    groups = {}
    for change in report.get("preferences", []):
        groups.setdefault(quoted(change["path"]), []).append(key_pair(change))
    for item in report.get("restored", []):
        groups.setdefault(quoted(item["path"]), []).append(undone_pair(item))
    groups["Finder flags"] = [flags_pair(change) for change in report.get("finderFlags", [])]
    groups["files and folders"] = [entry_pair(entry) for entry in report.get("entries", [])]
    diff = []
    for name, pairs in groups.items():
        before, after = ("".join(line + "\n" for line in side if line) for side in (zip(*pairs) if pairs else ([], [])))
        if before != after:
            diff.append({"before_header": name, "after_header": name, "before": before, "after": after})
    return diff


def undone_line(item, side):
    name = item["what"] + (" " + quoted(item["name"]) if item["name"] else "")
    if side is None or side == item["what"]:
        return side
    return "%s = %s" % (name, text_of(side) if isinstance(side, dict) else side)


def undone_pair(item):
    """What undoing found, and what it put in its place."""
    return undone_line(item, item["from"]), undone_line(item, item["to"])


def arguments_of(params, dry_run):
    """The command line after the program's name."""
    place = ["--machine"] if params["machine"] else []
    place += ["--root", params["root"]] if params["root"] else []
    common = place + ["--format", "json"] + (["--dry-run"] if dry_run else [])
    if params["state"] == "undone":
        return ["undo"] + common + [params["journal"]]
    own = ["--product=%d" % params["product"], "--language=%d" % params["language"], "--step", params["step"]]
    own += ["--timeout=%d" % params["timeout"]] if params["timeout"] is not None else []
    own += ["--journal", params["journal"]] if params["journal"] and not dry_run else []
    for folder in params["scope"]:
        own += ["--scope", folder]
    return ["run"] + common + own + [params["bundle"]]


def read_report(output):
    try:
        report = json.loads(to_text(output, errors="surrogate_or_strict"))
    except ValueError:
        return None
    return report if isinstance(report, dict) and "exitStatus" in report else None


def fail(module, what, what_to_do, status=None, **more):
    error = {"status": status, "what": what, "whatToDo": what_to_do}
    module.fail_json(msg=what + ("\n" + what_to_do if what_to_do else ""), error=error, **more)


def journal_state(path):
    """How far the run of the journal at `path` came; None where there is no journal."""
    try:
        with open(path, "rb") as file:
            journal = json.loads(to_text(file.read()))
        return journal["state"] if "journal" in journal else None
    except (OSError, ValueError, LookupError, TypeError):
        return None


def prepare_journal(module):
    """Makes the place for a new journal."""
    path = module.params["journal"]
    try:
        os.makedirs(os.path.dirname(os.path.abspath(path)), 0o700, exist_ok=True)
        if journal_state(path) == "undone":
            os.unlink(path)
    except OSError as error:
        fail(module, "the place of the journal could not be made ready: %s" % error, "Name another place in 'journal'.",
             changed=False, journal=None)


def find_program(module):
    program = module.get_bin_path(module.params["executable"])
    if program is None:
        fail(module, "%s is not on this machine" % module.params["executable"],
             "Install the package installer-host, or say in 'executable' where the program is.", changed=False, journal=None)
    return program


def run(module, dry_run):
    """The report of the program; without one the module ends here."""
    arguments = [find_program(module)] + arguments_of(module.params, dry_run)
    status, output, messages = module.run_command(arguments, encoding=None)
    report = read_report(output)
    if report is None:
        fail(module, "installer-host ended with status %d and without a report" % status,
             to_text(messages, errors="replace").strip() or None, status, changed=not dry_run, journal=None, rc=status)
    return report


def run_steps(module):
    """Runs the steps, and tells; where the journal holds an earlier run, only makes sure that they would change nothing."""
    path = module.params["journal"]
    if not path or journal_state(path) in (None, "undone"):
        if path and not module.check_mode:
            prepare_journal(module)
        tell(module, run(module, module.check_mode))
    report = run(module, True)
    if report.get("changed") and report["error"] is None:
        fail(module, "the journal '%s' holds an earlier run, and another would change: %s" % (path, report["summary"]),
             "Undo the earlier run first, or name another journal.", changed=False, journal=path, report=report)
    tell(module, report, changed=False, journal=path)


def tell(module, report, **known):
    """Ends the module with what the report says, but for what is known otherwise."""
    result = {
        "changed": report.get("changed", False),
        "journal": report.get("journal"),
        "rc": report["exitStatus"],
        "report": report,
    }
    result.update(known)
    if "summary" in report:
        result["summary"] = report["summary"]
    if module._diff:
        result["diff"] = diff_of(report) if result["changed"] else []
    for alert in report.get("alerts", []):
        module.warn("the plug-in showed the alert %s, answered with %s" % (quoted(alert["text"]), quoted(alert["answer"])))
    for item in report.get("left", []):
        module.warn("left alone: %s of %s: %s" % (item["what"], quoted(item["path"]), item["reason"]))
    error = report["error"]
    if error is not None:
        fail(module, error["what"], error["whatToDo"], error["status"], **result)
    module.exit_json(**result)


def main():
    module = AnsibleModule(
        argument_spec={
            "state": {"type": "str", "choices": ["installed", "undone"], "default": "installed"},
            "bundle": {"type": "path"},
            "product": {"type": "int"},
            "language": {"type": "int", "default": 0},
            "step": {"type": "str", "choices": ["pre", "post", "both"], "default": "both"},
            "root": {"type": "path"},
            "machine": {"type": "bool", "default": False},
            "scope": {"type": "list", "elements": "path", "default": []},
            "timeout": {"type": "int"},
            "journal": {"type": "path"},
            "executable": {"type": "path", "default": "installer-host"},
        },
        required_if=[("state", "installed", ("bundle", "product")), ("state", "undone", ("journal",))],
        supports_check_mode=True,
    )
    if module.params["state"] == "undone":
        tell(module, run(module, module.check_mode))
    run_steps(module)


if __name__ == "__main__":
    main()
