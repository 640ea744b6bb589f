"""The examples of docs/panel-api.md, run as they stand there: what is answered has the members that the
document shows, no more and no fewer."""

import json
import re
import subprocess
import unittest

from panel_site import PATIENCE, SOURCES, Site, comes_true

ADDRESS = "http://127.0.0.1:8080"
# Members that are always as the document shows them.
FIXED = {"event", "name", "title", "plc", "label", "type", "unit", "quality", "kind", "step", "text", "condition",
         "recipe", "outcome", "status", "reason", "verified", "equal", "written", "notWritten", "notKnown"}


def examples():
    """Each block of commands with the block of what comes of it, "" where the document shows nothing."""
    document = (SOURCES / "docs" / "panel-api.md").read_text()
    blocks = re.findall(r"^```(\w+)\n(.*?)^```$", document, re.MULTILINE | re.DOTALL)
    for (language, commands), (kind, shown) in zip(blocks, blocks[1:] + [("", "")]):
        if language == "sh":
            yield commands, shown if kind in ("json", "text") else ""


def answers(text):
    """JSON documents, one behind the other."""
    decoder, found = json.JSONDecoder(), []
    while text.strip():
        document, end = decoder.raw_decode(text.lstrip())
        found.append(document)
        text = text.lstrip()[end:]
    return found


def events(text):
    """Those that are whole, as {"event", "data"}, and "id" where they have one."""
    for block in text.split("\n\n")[:-1]:
        event = dict(line.split(": ", 1) for line in block.splitlines())
        yield {**event, "data": json.loads(event["data"])}


def differences(shown, answered, where="", name=""):
    """Where an answer is made otherwise than the document shows it. What is null in one of them may be
    anything in the other one; of lists the elements that both have count."""
    if shown is None or answered is None:
        return []
    if isinstance(shown, dict) and isinstance(answered, dict):
        if shown.keys() != answered.keys():
            return [f"{where}: shown {sorted(shown)}, answered {sorted(answered)}"]
        return [one for key in shown for one in differences(shown[key], answered[key], f"{where}/{key}", key)]
    if isinstance(shown, list) and isinstance(answered, list):
        if shown and not answered:
            return [f"{where}: nothing is answered"]
        return [one for i, pair in enumerate(zip(shown, answered)) for one in differences(*pair, f"{where}/{i}")]
    numbers = (int, float)
    is_alike = type(shown) is type(answered) or (
        isinstance(shown, numbers) and isinstance(answered, numbers) and bool not in (type(shown), type(answered)))
    if not is_alike or (name in FIXED and shown != answered):
        return [f"{where}: shown {shown!r}, answered {answered!r}"]
    return []


class Examples(unittest.TestCase):
    def setUp(self):
        self.project = json.loads((SOURCES / "simulator" / "demo" / "plant.json").read_text())
        self.site = self.make_site()

    def make_site(self, **configuration):
        site = Site(plcs=("Dairy",), project=self.project, **configuration)
        self.addCleanup(site.close)
        site.settings["Dairy"]["alarms"] = [
            {"label": "Plant.tank[1].level", "above": 20, "text": "Tank 1 is nearly full"}]
        return site

    def output(self, site, commands, limit=PATIENCE):
        script = commands.replace(ADDRESS, site.address).replace("…", "anna-secret-9")
        done = subprocess.run(
            ["timeout", str(limit), "bash", "-c", script], cwd=site.folder, capture_output=True, text=True,
            timeout=2 * PATIENCE, check=False)
        return done.stdout

    def check(self, site, commands, shown):
        wrong = []

        def is_as_shown():
            if shown.startswith("id:"):
                # A stream has no end.
                wrong[:] = self.event_differences(shown, self.output(site, commands, 5))
            else:
                found = answers(self.output(site, commands))
                wrong[:] = differences(json.loads(shown), found[-1]) if found else ["no answer"]
            return not wrong

        try:
            comes_true(is_as_shown, commands)
        except AssertionError as error:
            raise AssertionError(f"{error}: {wrong}") from None

    def event_differences(self, shown, output):
        """For each event of the document one that is like it."""
        found = list(events(output))
        wrong = []
        for event in events(shown + "\n"):
            tried = [differences(event, one) for one in found if one["event"] == event["event"]]
            if [] not in tried:
                wrong += min(tried, key=len, default=[f"no {event['event']}"])
        return wrong

    def test_each_answers_as_the_document_shows(self):
        self.site.start()
        panel = self.site.panel()
        comes_true(lambda: panel.read("Dairy", "Plant.pump[1].flow")[0].quality == "good", "values are good")
        checked = 0
        for commands, shown in examples():
            if "token" in commands:
                continue
            if "/restore" in commands:
                self.site.plc.set("Plant.pump[1].setpoint", "20")
            with self.subTest(commands):
                if shown:
                    self.check(self.site, commands, shown)
                else:
                    self.assertNotIn("error", answers(self.output(self.site, commands))[-1])
            checked += 1
        self.assertEqual(8, checked)

    def test_a_token_is_taken_out_of_the_answer_and_sent(self):
        site = self.make_site(users="users")
        site.run("user", "add", "anna", "viewer", "--users", str(site.folder / "users"), text="anna-secret-9\n")
        site.start()
        (commands,) = [commands for commands, _ in examples() if "token" in commands]
        (plcs,) = answers(self.output(site, commands))
        self.assertEqual(["Dairy"], [plc["name"] for plc in plcs["plcs"]])

    def test_the_client_for_python_does_what_the_document_shows(self):
        self.site.start()
        document = (SOURCES / "docs" / "panel-api.md").read_text()
        (program,) = re.findall(r"^```python\n(.*?)^```$", document, re.MULTILINE | re.DOTALL)
        before = self.site.panel()
        comes_true(lambda: before.read("Dairy", "Plant.pump[1].flow")[0].quality == "good", "values are good")
        # It would follow the value for ever.
        exec(program.replace(ADDRESS, self.site.address) + "        break\n", {"print": lambda *texts: None})
        comes_true(lambda: before.read("Dairy", "Plant.pump[1].setpoint")[0].value == 17.5, "it was written")


if __name__ == "__main__":
    unittest.main()
