"""Alarms as clients see them."""

import time
import unittest

from panel_site import LOST_SOON, PROJECT, Events, Site, comes_true
from plc_panel_client import Alarm, PanelError

HIGH = {"label": "P.level", "above": 80, "deadband": 5, "text": "Too high"}
OFF = {"label": "P.on", "is": True, "text": "Switched on"}
BLIND = {"label": "P.count", "notGood": True, "delay": 1000, "text": "Not known"}


class WithAlarms(unittest.TestCase):
    project = PROJECT

    def setUp(self):
        self.site = Site(project=self.project)
        self.addCleanup(self.site.close)
        self.site.settings["plant"]["alarms"] = [HIGH, OFF, BLIND]
        self.site.start()
        self.panel = self.site.up()
        self.plc = self.site.plc
        self.wait("Too high", "normal")

    def alarm(self, text):
        return next(alarm for alarm in self.panel.alarms() if alarm.text == text)

    def wait(self, text, state):
        comes_true(lambda: self.alarm(text).state == state, f"{text} is {state}")
        return self.alarm(text)


class LostPlcTest(WithAlarms):
    project = LOST_SOON

    def test_while_the_plc_is_away_nothing_is_known(self):
        self.plc.set("P.level", "90")
        since = self.wait("Too high", "active").since
        self.plc.command("offline")
        unknown = self.wait("Too high", "unknown")
        self.assertEqual(since, unknown.since)
        self.wait("Not known", "active")
        self.plc.set("P.level", "10")
        self.plc.command("online")
        ended = self.wait("Too high", "ended")
        self.assertTrue(ended.details["endUnseen"])
        self.assertTrue(ended.details["gap"])
        self.wait("Not known", "ended")


class AlarmsTest(WithAlarms):
    def test_an_alarm_begins_is_acknowledged_and_ends(self):
        events = Events(self.panel)
        before = time.time()
        self.plc.set("P.level", "90")
        begun = events.wait(Alarm, lambda e: e.text == "Too high" and e.state == "active")
        self.assertEqual("above 80", begun.condition.replace(".0", ""))
        self.assertEqual(90, begun.details["value"])
        self.assertLess(abs(begun.since - before), 30)
        self.assertIsNone(begun.acknowledged_by)
        self.panel.acknowledge(begun)
        self.assertEqual("local", self.alarm("Too high").acknowledged_by)
        events.wait(Alarm, lambda e: e.acknowledged_by == "local")
        self.plc.set("P.level", "76")
        self.plc.set("P.on", "TRUE")
        self.wait("Switched on", "active")
        self.assertEqual("active", self.alarm("Too high").state, "in the deadband")
        self.plc.set("P.level", "75")
        self.wait("Too high", "normal")
        past = self.panel.alarm_history(before - 30, time.time() + 30)
        high = next(alarm for alarm in past if alarm["text"] == "Too high")
        self.assertEqual("ended", high["state"])
        self.assertGreaterEqual(high["ended"], high["since"])
        self.assertEqual("local", high["acknowledgedBy"])
        records = [r for r in self.site.audit() if r["action"] == "acknowledge"]
        self.assertEqual("done", records[-1]["outcome"])

    def test_another_occurrence_is_not_acknowledged(self):
        self.plc.set("P.on", "TRUE")
        first = self.wait("Switched on", "active")
        self.plc.set("P.on", "FALSE")
        self.wait("Switched on", "ended")
        self.plc.set("P.on", "TRUE")
        second = self.wait("Switched on", "active")
        self.assertEqual(1, second.details["unacknowledgedBefore"])
        with self.assertRaises(PanelError) as caught:
            self.panel.acknowledge(first)
        self.assertEqual(409, caught.exception.status)
        self.panel.acknowledge(second)
        with self.assertRaises(PanelError) as caught:
            self.panel.acknowledge(second._replace(id="nothing"))
        self.assertEqual(404, caught.exception.status)

    def test_alarms_outlive_the_program(self):
        self.plc.set("P.level", "90")
        begun = self.wait("Too high", "active")
        self.plc.set("P.on", "TRUE")
        self.wait("Switched on", "active")
        # Answered when this and all before is on the disk.
        self.panel.acknowledge(begun)
        self.site.kill()
        self.plc.set("P.on", "FALSE")
        self.site.start()
        again = self.wait("Too high", "active")
        self.assertEqual(begun.since, again.since)
        self.assertEqual("local", again.acknowledged_by)
        self.assertTrue(again.details["restart"])
        off = self.wait("Switched on", "ended")
        self.assertTrue(off.details["endUnseen"])

    def test_alarms_that_make_no_sense_are_told_at_the_start(self):
        self.site.stop()
        for alarm, words in (({"label": "P.on", "above": 1}, "P.on"),
                             ({"label": "P.nothing", "above": 1}, "P.nothing"),
                             ({"label": "P.list[1]*2", "above": 1}, "one value")):
            self.site.settings["plant"]["alarms"] = [alarm]
            with self.assertRaises(AssertionError) as caught:
                self.site.start()
            self.assertIn(words, str(caught.exception))


if __name__ == "__main__":
    unittest.main()
