"""Writes what came of each task that ran the plug-in, as lines of JSON into the file $FLEET_RECORD.

The last line has the recap, and the processor time of Ansible's main process.
"""

import json
import os
import time

from ansible.plugins.callback import CallbackBase


class CallbackModule(CallbackBase):
    CALLBACK_VERSION = 2.0
    CALLBACK_TYPE = "aggregate"
    CALLBACK_NAME = "record"

    def write(self, host, what):
        with open(os.environ["FLEET_RECORD"], "a", encoding="utf-8") as file:
            file.write(json.dumps([host, what]) + "\n")

    def v2_runner_on_ok(self, result):
        if result._task.action.endswith("installer_plugin"):
            self.write(result._host.name, result._result)

    def v2_runner_on_failed(self, result, ignore_errors=False):
        self.write(result._host.name, result._result)

    def v2_playbook_on_stats(self, stats):
        self.write(None, [{host: stats.summarize(host) for host in stats.processed}, time.process_time()])
