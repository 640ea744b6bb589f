"""Writes while links are cut, PLCs refuse, replies are lost and the panel is killed: what clients were
told, what the audit says and what the PLC has must agree.

    test_faults.py [--writes N] [--seed N]      1,000 writes take some minutes"""

import argparse
import copy
import random
import sys
import threading
import time
import unittest

from panel_site import LOST_SOON, PanelError, Site, comes_true

WRITERS = 3
FAULTS = (
    "disconnect", "offline", "fail-writes", "fail-writes", "delay", "delay", "drop", "half", "late", "kill",
)

options = argparse.Namespace(writes=60, seed=1)


def project(writes):
    made = copy.deepcopy(LOST_SOON)
    made["areas"][0]["size"] = 128 + 4 * writes
    made["scopes"][0]["variables"][-1]["array"] = [[1, writes]]
    return made


class Trouble:
    """One fault after the other, chosen by a seed."""

    def __init__(self, site, lock, seed):
        self._random = random.Random(seed)
        self._site = site
        self._lock = lock  # of the PLC's commands
        self._writers_left = threading.Event()
        self._thread = threading.Thread(target=self._run)
        self.happened = []
        self._thread.start()

    def stop(self):
        self._writers_left.set()
        self._thread.join()

    def _run(self):
        while not self._writers_left.wait(self._random.uniform(0.1, 0.8)):
            fault = self._random.choice(FAULTS)
            if fault == "kill" and self._random.random() < 0.7:
                continue
            self.happened.append(fault)
            self._begin(fault)
            self._writers_left.wait(self._random.uniform(0.02, 0.3))
            self._end(fault)

    def _command(self, line):
        with self._lock:
            self._site.plc.command(line)

    def _begin(self, fault):
        if fault == "kill":
            self._site.kill()
            self._site.start()
        elif fault == "fail-writes":
            self._command("fail-writes on")
        elif fault == "delay":
            self._command(f"delay {self._random.choice((20, 200, 700))}")
        elif fault in ("drop", "half"):
            self._command(f"{fault} 1")
        elif fault == "late":
            self._command("late 1 650")
        else:
            self._command(fault)

    def _end(self, fault):
        if fault == "offline":
            self._command("online")
        elif fault == "fail-writes":
            self._command("fail-writes off")
        elif fault == "delay":
            self._command("delay 0")


class FaultsTest(unittest.TestCase):
    def setUp(self):
        self.site = Site(project=project(options.writes))
        self.addCleanup(self.site.close)
        self.site.start()
        self.site.up()
        self.lock = threading.Lock()
        self.outcomes = {}  # by the number of the write

    def write_some(self, writer):
        panel = self.site.panel(timeout=8)
        numbers = random.Random(f"{options.seed} {writer}")
        for number in range(1 + writer, options.writes + 1, WRITERS):
            try:
                outcome = panel.write("plant", f"P.many[{number}]", number, f"w{number}")
                self.outcomes[number] = outcome.word
            except PanelError as error:
                self.outcomes[number] = f"error {error}"
            if self.outcomes[number] == "done":
                # What is sent again would show.
                with self.lock:
                    self.assertEqual(str(number), self.site.plc.get(f"P.many[{number}]"))
                    self.site.plc.set(f"P.many[{number}]", -number)
            time.sleep(numbers.uniform(0, 0.3))

    def write_all(self):
        failures = []

        def write(writer):
            try:
                self.write_some(writer)
            except Exception as error:  # shown by the thread that waits
                failures.append(error)

        trouble = Trouble(self.site, self.lock, options.seed)
        threads = [threading.Thread(target=write, args=(writer,)) for writer in range(WRITERS)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        trouble.stop()
        self.assertEqual([], failures, trouble.happened)
        return trouble

    def audited(self):
        """Of each write how often it was asked for, and its outcomes."""
        found = {}
        for record in self.site.audit():
            entry = found.setdefault(record["id"], [0, []])
            if record.get("outcome"):
                entry[1].append(record["outcome"])
            else:
                entry[0] += 1
        return found

    def test_outcomes_audit_and_plc_agree(self):
        trouble = self.write_all()
        panel = self.site.up()
        audited = self.audited()
        words = {}
        for number in range(1, options.writes + 1):
            word = self.outcomes[number]
            words[word] = words.get(word, 0) + 1
            has = int(self.site.plc.get(f"P.many[{number}]"))
            asked, ends = audited.get(f"w{number}", (0, []))
            with self.subTest(seed=options.seed, number=number, word=word, plc=has, audit=ends,
                              faults=trouble.happened):
                self.assertIn(word, ("done", "refused", "notSent", "unknown"))
                self.assertIn(has, {"done": [-number], "unknown": [0, number]}.get(word, [0]))
                self.assertLessEqual(asked, 1, "asked for once")
                self.assertLessEqual(len(ends), 1, "one outcome")
                if has:
                    self.assertEqual(1, asked, "nothing is sent that is not on record")
                if word != "unknown":
                    self.assertEqual([word], ends)
                elif ends:
                    # The client may know less than the panel, which was killed behind it.
                    self.assertIn((ends[0], has != 0),
                                  (("unknown", True), ("unknown", False), ("done", True),
                                   ("refused", False), ("notSent", False)))
                # A reply that is to be lost may still be waiting for its turn.
                label = f"P.many[{number}]"
                comes_true(lambda: panel.read("plant", label)[0].quality == "good", label)
                self.assertEqual(has, panel.read("plant", label)[0].value)
        code, printed = self.site.run("audit", str(self.site.folder / "audit.jsonl"))
        self.assertEqual(0, code, printed)
        print(f"{options.writes} writes, seed {options.seed}: {words}; {len(trouble.happened)} faults",
              file=sys.stderr)


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("--writes", type=int, default=options.writes)
    parser.add_argument("--seed", type=int, default=options.seed)
    options, rest = parser.parse_known_args()
    unittest.main(argv=sys.argv[:1] + rest)
