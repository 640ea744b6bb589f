"""What plc log recorded is the past of the panel that shows the same PLC."""

import json
import os
import signal
import subprocess
import time
import unittest

from panel_site import PROJECT, PATIENCE, Plc, Site, comes_true


class Recorded(unittest.TestCase):
    def setUp(self):
        self.site = Site(plcs=())
        self.addCleanup(self.site.close)
        path = self.site.folder / "hall.json"
        path.write_text(json.dumps(PROJECT))
        self.site.plcs["hall"] = Plc(path)
        # Without a configuration the project tells where its PLC is.
        path.write_text(json.dumps({**PROJECT, "plc": {"address": "127.0.0.1", "port": self.site.plc.port}}))
        self.project = str(path)
        self.begin = time.time()
        self.exports = 0

    def log(self, *options):
        """Until there is the value."""
        self.site.plc.set("P.count", 7)
        with subprocess.Popen(
                [os.environ["PLC_COMMAND"], "log", "--project", self.project, "--driver", os.environ["PLC_LIBRARY"],
                 "--output", str(self.site.folder / "record.sqlite"), *options, "P.count"],
                stdout=subprocess.DEVNULL) as logging:
            try:
                comes_true(lambda: ",P.count,7," in self.exported(), "a record")
            finally:
                logging.send_signal(signal.SIGINT)
            self.assertEqual(0, logging.wait(PATIENCE))

    def exported(self):
        self.exports += 1
        file = self.site.folder / f"export{self.exports}.csv"
        subprocess.run(
            [os.environ["PLC_COMMAND"], "log", "--export", str(self.site.folder / "record.sqlite"), "--output", str(file)],
            capture_output=True, timeout=PATIENCE, check=False)
        return file.read_text() if file.exists() else ""

    def past(self, plc):
        panel = self.site.panel()
        found = []

        def is_there():
            found[:] = panel.history(plc, ["P.count"], self.begin, time.time() + 1)
            return found

        comes_true(is_there, "the past")
        return found[0]

    def test_by_the_name_of_the_project_s_file(self):
        self.log()
        self.site.start_with(
            "--listen", f"127.0.0.1:{self.site.port}", "--record", str(self.site.folder / "record.sqlite"),
            self.project)
        self.assertIn(7, self.past("hall")["values"])

    def test_by_the_name_that_the_configuration_has(self):
        self.log("--plc", "Hall 2")
        self.site.settings = {"Hall 2": {"name": "Hall 2", "project": self.project}}
        self.site.start()
        self.assertIn(7, self.past("Hall 2")["values"])

    def test_by_another_name_it_is_told_by_which(self):
        self.log("--plc", "Hall 2")
        self.site.settings = {"Hall 3": {"name": "Hall 3", "project": self.project}}
        self.site.start()
        past = self.past("Hall 3")
        self.assertEqual(["Hall 2"], past["recordedOf"])
        self.assertNotIn(7, past["values"][:1])
        self.assertIn(7, self.past("Hall 2")["values"])


if __name__ == "__main__":
    unittest.main()
