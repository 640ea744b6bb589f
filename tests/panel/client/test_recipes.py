"""Recipes as clients use them."""

import unittest

from panel_site import Site
from plc_panel_client import PanelError

LABELS = ["P.level", "P.count", "P.wide", "P.name", "P.exact", "P.list[1]*3"]


class RecipesTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.site = Site().start()
        cls.panel = cls.site.up()
        cls.plc = cls.site.plc

    @classmethod
    def tearDownClass(cls):
        cls.site.close()

    def setUp(self):
        self.plc.command("fail-writes off")
        self.plc.set("P.level", "-0.0")
        self.plc.set("P.count", "1")
        self.plc.set("P.wide", "9007199254740993")
        self.plc.set("P.name", "'milk'")
        self.plc.set("P.exact", "LREAL#nan")
        self.plc.set("P.list[2]", "22")
        self.panel.save_recipe("Summer/1", "plant", LABELS)

    def compared(self):
        return {value["label"]: value for value in self.panel.compare_recipe("Summer/1")}

    def test_a_set_is_listed_with_what_it_holds(self):
        listed = self.panel.recipes()
        self.assertEqual(["Summer/1"], [recipe["name"] for recipe in listed])
        self.assertEqual((6, "plant", "local"),
                         (listed[0]["values"], listed[0]["plc"], listed[0]["savedBy"]))
        whole = self.panel.get("/recipes/Summer%2F1")
        self.assertEqual([0, 22, 0], whole["values"][5]["saved"])
        self.assertEqual("9007199254740993", whole["values"][2]["saved"])
        self.panel.save_recipe("Winter", "plant", ["P.count"])
        self.panel.remove_recipe("Winter")
        self.assertEqual(["Summer/1"], [recipe["name"] for recipe in self.panel.recipes()])

    def test_a_comparison_tells_what_differs_bit_by_bit(self):
        self.assertEqual({True}, {value["equal"] for value in self.compared().values()})
        self.plc.set("P.level", "0.0")
        self.plc.set("P.list[3]", "3")
        compared = self.compared()
        self.assertFalse(compared["P.level"]["equal"])
        self.assertFalse(compared["P.list[1]*3"]["equal"])
        self.assertEqual([0, 22, 3], compared["P.list[1]*3"]["now"])
        self.assertTrue(compared["P.exact"]["equal"])
        self.plc.set("P.list[3]", "0")

    def test_a_restore_writes_what_differs_and_reads_it_back(self):
        self.plc.set("P.count", "2")
        self.plc.set("P.name", "'butter'")
        self.plc.set("P.exact", "1.5")
        report = self.panel.restore_recipe("Summer/1", "r1")
        self.assertEqual((3, 3, 0, 0), (report["written"], report["equal"], report["notWritten"],
                                        report["notKnown"]))
        self.assertEqual({True}, {value["verified"] for value in report["values"]})
        count = report["values"][1]
        self.assertEqual((1, 2, 1, "done"), (count["saved"], count["before"], count["after"],
                                             count["outcome"]))
        self.assertEqual("1", self.plc.get("P.count"))
        self.assertEqual("LREAL#nan", self.plc.get("P.exact"))
        self.plc.set("P.count", "9")
        self.assertEqual(report, self.panel.restore_recipe("Summer/1", "r1"))
        self.assertEqual("9", self.plc.get("P.count"), "the same id restores once")
        written = [r for r in self.site.audit() if r["action"] == "write"]
        self.assertLessEqual({"P.count", "P.name", "P.exact"}, {r["label"] for r in written})
        restores = [r for r in self.site.audit() if r["action"] == "restore recipe"]
        self.assertEqual("Summer/1", restores[0]["label"])
        self.assertEqual(["", "done"], [r["outcome"] for r in restores if r["id"] == "r1"],
                         "asking again is no second restore")

    def test_a_restore_is_told_again_also_when_its_recipe_is_gone(self):
        self.panel.save_recipe("Autumn", "plant", ["P.count"])
        self.plc.set("P.count", "5")
        report = self.panel.restore_recipe("Autumn", "autumn")
        self.assertEqual(1, report["written"])
        self.panel.remove_recipe("Autumn")
        self.assertEqual(report, self.panel.restore_recipe("Autumn", "autumn"))
        for name, status in (("Summer/1", 409), ("Winter", 409)):
            with self.assertRaises(PanelError) as caught:
                self.panel.restore_recipe(name, "autumn")
            self.assertEqual(status, caught.exception.status)
        with self.assertRaises(PanelError) as caught:
            self.panel.restore_recipe("Autumn", "another")
        self.assertEqual(404, caught.exception.status)
        restores = [r for r in self.site.audit() if r["id"] == "autumn"]
        self.assertEqual(["", "done"], [r["outcome"] for r in restores])

    def test_a_refused_value_is_not_verified(self):
        self.plc.set("P.count", "3")
        self.plc.command("fail-writes on")
        report = self.panel.restore_recipe("Summer/1", "refused")
        self.assertEqual((0, 5, 1, 0), (report["written"], report["equal"], report["notWritten"],
                                        report["notKnown"]))
        count = report["values"][1]
        self.assertEqual(("refused", 3, False), (count["outcome"], count["after"], count["verified"]))
        self.assertEqual("3", self.plc.get("P.count"))
        end = [r for r in self.site.audit() if r["id"] == "refused"][-1]
        self.assertEqual(("restore recipe", "refused"), (end["action"], end["outcome"]))

    def test_nothing_is_kept_when_a_value_cannot_be_read(self):
        with self.assertRaises(PanelError) as caught:
            self.panel.save_recipe("Half", "plant", ["P.count", "P.nothing"])
        self.assertEqual(503, caught.exception.status)
        self.assertIn("P.nothing", str(caught.exception))
        self.plc.command("offline")
        try:
            with self.assertRaises(PanelError):
                self.panel.save_recipe("Half", "plant", ["P.count"])
            end = [r for r in self.site.audit() if r["action"] == "save recipe"][-1]
            self.assertEqual(("outcome", "notDone"), (end["phase"], end["outcome"]))
            report = self.panel.restore_recipe("Summer/1", "offline")
            self.assertEqual("notSent", [r for r in self.site.audit() if r["id"] == "offline"][-1]
                             ["outcome"])
            self.assertEqual({"notSent"}, {value["outcome"] for value in report["values"]})
            self.assertEqual({None}, {value["verified"] for value in report["values"]})
            self.assertEqual({None}, {value["equal"] for value in self.compared().values()})
        finally:
            self.plc.command("online")
            self.site.up(self.panel)
        self.assertNotIn("Half", [recipe["name"] for recipe in self.panel.recipes()])

    def test_what_is_not_there_is_not_found(self):
        for call in (lambda: self.panel.compare_recipe("x"), lambda: self.panel.restore_recipe("x"),
                     lambda: self.panel.remove_recipe("../x"),
                     lambda: self.panel.save_recipe("x", "mill", ["P.count"])):
            with self.assertRaises(PanelError) as caught:
                call()
            self.assertEqual(404, caught.exception.status)


if __name__ == "__main__":
    unittest.main()
