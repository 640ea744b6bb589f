"""A panel with its PLCs, in a folder of their own, for tests of the programs as their users run them.

The programs are named by the environment: PLC_PANEL, PLC_SIMULATOR, PLC_LIBRARY."""

import json
import os
import pathlib
import random
import socket
import subprocess
import sys
import tempfile
import threading
import time

SOURCES = pathlib.Path(__file__).resolve().parents[3]
sys.path.insert(0, str(SOURCES / "docs" / "examples"))

from plc_panel_client import Panel, PanelError  # noqa: E402  (found by the line above)

PATIENCE = 30.0  # s that anything may take on a machine that is busy with other tests


def comes_true(condition, what="what was waited for"):
    end = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > end:
            raise AssertionError(f"{what}: waited in vain")
        time.sleep(0.02)


_reserved = []  # sockets that keep ports for this process


def free_port():
    """A port that nobody listens on, and that no other test takes as long as this process runs, also while
    its server is away. It is none of those that the system gives to whoever asks for any."""
    while True:
        port = random.randint(10240, 32767)
        name = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        try:
            # In the system's table of local sockets; another test has it, or a server.
            name.bind(f"\0plc test port {port}")
            with socket.socket() as probe:
                probe.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
                probe.bind(("", port))
                probe.listen()
        except OSError:
            name.close()
            continue
        _reserved.append(name)
        return port


PROJECT = {
    "name": "Small plant",
    "plc": {"address": "127.0.0.1", "port": 1200},
    "settings": {
        "connectTimeout": 20000, "replyTimeout": 20000, "reconnectDelay": 100, "staleAfter": 20000,
        "retryLimit": 1,
    },
    "areas": [{"index": 0, "size": 4096}],
    "scopes": [
        {
            "name": "P",
            "variables": [
                {"name": "level", "type": "REAL", "unit": "%", "description": "Filling level",
                 "area": 0, "offset": 0},
                {"name": "count", "type": "DINT", "area": 0, "offset": 4},
                {"name": "wide", "type": "LINT", "area": 0, "offset": 8},
                {"name": "on", "type": "BOOL", "area": 0, "offset": 16},
                {"name": "name", "type": "STRING", "length": 19, "area": 0, "offset": 20},
                {"name": "exact", "type": "LREAL", "area": 0, "offset": 48},
                {"name": "list", "type": "INT", "array": [[1, 5]], "area": 0, "offset": 64},
                {"name": "many", "type": "DINT", "array": [[1, 500]], "area": 0, "offset": 128},
            ],
        }
    ],
    "cyclic": ["P.level", "P.count", "P.wide", "P.on", "P.name", "P.exact"],
}
# For tests that wait for the loss of a PLC. A machine that stands still for so long is taken for one, too.
LOST_SOON = {**PROJECT, "settings": {**PROJECT["settings"], "connectTimeout": 1000, "replyTimeout": 500,
                                     "staleAfter": 700}}


class Plc:
    """plc-simulator, which can go away and come back at the same port."""

    def __init__(self, project):
        self.port = free_port()
        self._project = project
        self._process = None
        self.start()

    def start(self):
        self._process = subprocess.Popen(
            [os.environ["PLC_SIMULATOR"], str(self._project), "--quiet", "--port", str(self.port)],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, bufsize=1,
        )
        line = self._process.stdout.readline()
        assert line.startswith("listening on"), line

    def kill(self):
        if self._process:
            self._process.kill()
            self._process.wait()
            self._process.stdin.close()
            self._process.stdout.close()
        self._process = None

    def command(self, line):
        """The answer without its leading "ok"."""
        self._process.stdin.write(line + "\n")
        answer = self._process.stdout.readline().strip()
        assert answer == "ok" or answer.startswith("ok "), f"{line}: {answer}"
        return answer[3:]

    def set(self, label, value):
        self.command(f"set {label} {value}")

    def get(self, label):
        return self.command(f"get {label}")

    def requests(self):
        status = dict(word.split("=") for word in self.command("status").split() if "=" in word)
        return int(status["requests"])


class Site:
    """One PLC called "plant" unless told otherwise."""

    def __init__(self, plcs=("plant",), project=None, **configuration):
        self._folder = tempfile.TemporaryDirectory(prefix="panel")
        self.folder = pathlib.Path(self._folder.name)
        self.port = free_port()
        self.configuration = {"listen": f"127.0.0.1:{self.port}", "audit": "audit.jsonl",
                              "recipes": "recipes", "record": {"file": "record.sqlite"},
                              "socket": "panel.sock"}
        self.configuration.update(configuration)
        path = self.folder / "project.json"
        path.write_text(json.dumps(project or PROJECT))
        self.plcs = {name: Plc(path) for name in plcs}
        self.settings = {name: {"name": name, "project": str(path), "port": plc.port, "cycle": 50}
                         for name, plc in self.plcs.items()}
        self._process = None
        self._panels = []

    @property
    def plc(self):
        return next(iter(self.plcs.values()))

    def start(self, *arguments):
        """Returns when it listens."""
        self.configuration["plcs"] = list(self.settings.values())
        (self.folder / "panel.json").write_text(json.dumps(self.configuration))
        return self.start_with("--config", str(self.folder / "panel.json"), *arguments)

    def start_with(self, *arguments):
        """Without the configuration unless the arguments name it."""
        with open(self.folder / "log", "ab") as log:
            self._process = subprocess.Popen(
                [os.environ["PLC_PANEL"], "--driver", os.environ["PLC_LIBRARY"], *arguments],
                stdout=subprocess.PIPE, stderr=log, stdin=subprocess.DEVNULL, text=True,
            )
        line = self._process.stdout.readline()
        if not line.startswith("listening on"):
            self._end(self._process.kill)
            raise AssertionError(line + (self.folder / "log").read_text())
        return self

    def kill(self):
        self._end(self._process.kill)

    def stop(self):
        """As the service manager ends it. Returns its exit code."""
        return self._end(self._process.terminate)

    def _end(self, how):
        if not self._process:
            return None
        how()
        code = self._process.wait(PATIENCE)
        self._process.stdout.close()
        self._process = None
        return code

    @property
    def pid(self):
        return self._process.pid

    def run(self, *arguments, text=""):
        """The program once more: its exit code and what it prints."""
        done = subprocess.run(
            [os.environ["PLC_PANEL"], *arguments], input=text, capture_output=True, text=True,
            timeout=PATIENCE, check=False,
        )
        return done.returncode, done.stdout + done.stderr

    @property
    def address(self):
        return f"http://127.0.0.1:{self.port}"

    def panel(self, **arguments):
        """A client, closed with the site."""
        self._panels.append(Panel(self.address, **arguments))
        return self._panels[-1]

    def up(self, panel=None):
        """Waits until the values of all PLCs are known; returns a client."""
        panel = panel or self.panel()

        def is_up():
            return {plc["link"]["state"] for plc in panel.plcs()} == {"up"} and all(value.quality == "good" for name in self.plcs
                       for value in panel.read(name, "P.level", "P.count"))

        comes_true(is_up, "values are good")
        return panel

    def audit(self):
        """Records of the audit, without the lines that only hold the chain together."""
        lines = (self.folder / "audit.jsonl").read_text().splitlines()
        return [record for record in map(json.loads, lines) if "action" in record]

    def close(self):
        for panel in self._panels:
            panel.close()
        if self._process:
            self.kill()
        for plc in self.plcs.values():
            plc.kill()
        self._folder.cleanup()


class Events:
    """What a subscription brings, gathered by a thread."""

    def __init__(self, panel, values=()):
        self._lock = threading.Lock()
        self._events = []
        self._stream = panel.subscribe(values)
        self._thread = threading.Thread(target=self._gather, daemon=True)
        self._thread.start()

    def _gather(self):
        try:
            for event in self._stream:
                with self._lock:
                    self._events.append(event)
        except PanelError as error:
            with self._lock:
                self._events.append(error)

    def all(self, kind=object):
        with self._lock:
            return [event for event in self._events if isinstance(event, kind)]

    def forget(self):
        with self._lock:
            self._events.clear()

    def wait(self, kind, condition=lambda event: True):
        found = []

        def is_there():
            found[:] = [event for event in self.all(kind) if condition(event)]
            return bool(found)

        comes_true(is_there, f"a {kind.__name__}")
        return found[0]
