"""The client for Python against the program itself."""

import http.client
import http.server
import json
import math
import os
import re
import shutil
import signal
import socket
import subprocess
import sys
import threading
import time
import unittest

from panel_site import LOST_SOON, PATIENCE, SOURCES, Events, Site, comes_true, free_port
import plc_panel_client
from plc_panel_client import Confirmed, Link, Lost, Panel, PanelError, Value


class Cutter:
    """Leads connections to a panel, and cuts those that carry a write when it has gone through."""

    def __init__(self, port):
        self._target = port
        self._server = socket.create_server(("127.0.0.1", 0))
        self.port = self._server.getsockname()[1]
        self.cuts = 0
        threading.Thread(target=self._accept, daemon=True).start()

    def _accept(self):
        while True:
            try:
                client, _ = self._server.accept()
            except OSError:
                return
            threading.Thread(target=self._serve, args=(client,), daemon=True).start()

    def _serve(self, client):
        with client, socket.create_connection(("127.0.0.1", self._target)) as panel:
            request = client.recv(65536)
            while b"POST" in request and not request.endswith(b"}"):
                request += client.recv(65536)
            panel.sendall(request)
            answer = panel.recv(65536)
            if request.startswith(b"POST"):
                self.cuts += 1
                return
            while answer:
                client.sendall(answer)
                panel.settimeout(0.2)
                try:
                    answer = panel.recv(65536)
                except OSError:
                    return

    def close(self):
        self._server.close()


class Answers:
    """A server that answers each POST with one status, and each GET with the next of a list; the last
    one counts for all that follow."""

    def __init__(self, status, *answers):
        outer = self
        self.sent = 0
        self._answers = list(answers)

        class Handler(http.server.BaseHTTPRequestHandler):
            def answer(self, status, body):
                content = json.dumps(body).encode()
                self.send_response(status)
                self.send_header("Content-Type", "application/json")
                self.send_header("Content-Length", str(len(content)))
                self.end_headers()
                self.wfile.write(content)

            def do_POST(self):
                outer.sent += 1
                self.rfile.read(int(self.headers["Content-Length"]))
                self.answer(status, {"error": "why"})

            def do_GET(self):
                answers = outer._answers
                self.answer(*(answers.pop(0) if len(answers) > 1 else answers[0]))

            def log_message(self, *_):
                pass

        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.address = f"http://127.0.0.1:{self._server.server_port}"
        threading.Thread(target=self._server.serve_forever, args=(0.02,), daemon=True).start()

    def close(self):
        self._server.shutdown()
        self._server.server_close()


PENDING = (200, {"id": "a", "outcome": "pending"})
DONE = (200, {"id": "a", "outcome": "done", "reason": ""})
NO_SUCH = (404, {"error": "there is no write of this id"})
BUSY = (503, {"error": "busy"})


class UntoldOutcomeTest(unittest.TestCase):
    def write(self, status, *answers, timeout=10.0):
        server = Answers(status, *answers)
        self.addCleanup(server.close)
        with Panel(server.address, timeout=timeout) as panel:
            outcome = panel.write("plant", "P.count", 1, "a")
        self.assertEqual(1, server.sent)
        return outcome.word, outcome.reason

    def test_an_answer_that_tells_no_outcome_is_followed_by_the_question_for_it(self):
        for status in (408, 410, 429, 500, 503):
            with self.subTest(status=status):
                self.assertEqual(("done", ""), self.write(status, PENDING, BUSY, DONE))

    def test_what_the_server_cannot_tell_is_not_known(self):
        for status in (408, 410, 500, 503):
            with self.subTest(status=status):
                self.assertEqual(("unknown", "why"), self.write(status, NO_SUCH))
        self.assertEqual(("unknown", "why"), self.write(503, PENDING, timeout=0.5))
        self.assertEqual(("unknown", "why"), self.write(503, BUSY, timeout=0.5))

    def test_one_request_too_many_that_the_server_does_not_know_was_not_sent(self):
        self.assertEqual(("notSent", "why"), self.write(429, NO_SUCH))

    def test_a_refused_request_is_an_error(self):
        for status in (400, 403, 404, 409):
            with self.subTest(status=status), self.assertRaises(PanelError) as caught:
                self.write(status, DONE)
            self.assertEqual((status, True), (caught.exception.status, caught.exception.was_refused))

    def test_a_restore_that_was_not_refused_may_have_been_done(self):
        for status, was_refused in ((403, True), (409, True), (408, False), (412, False), (503, False)):
            server = Answers(status, NO_SUCH)
            self.addCleanup(server.close)
            with self.subTest(status=status), Panel(server.address) as panel:
                with self.assertRaises(PanelError) as caught:
                    panel.restore_recipe("Summer")
                self.assertEqual(was_refused, caught.exception.was_refused)
                self.assertEqual(1, server.sent)


class SilenceTest(unittest.TestCase):
    def test_a_stream_that_falls_silent_is_lost(self):
        self.assertEqual(3.0, plc_panel_client.SILENCE)
        server = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(server.close)
        link = {"time": 1000, "plc": "plant", "state": "up", "since": 1000, "reason": ""}

        def begin():
            self.stream = server.accept()[0]
            self.stream.recv(65536)
            self.stream.sendall(b"HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\n\r\n"
                                b"event: link\ndata: " + json.dumps(link).encode() + b"\n\n")

        threading.Thread(target=begin, daemon=True).start()
        events = Panel(f"http://127.0.0.1:{server.getsockname()[1]}").subscribe()
        self.assertEqual(Link("plant", "up", 1.0, ""), next(events))
        self.assertIsInstance(next(events), Lost)
        self.stream.close()


class MisspeltLabels(unittest.TestCase):
    def test_the_first_of_a_second_are_told_what_may_have_been_meant(self):
        site = Site().start()
        self.addCleanup(site.close)
        values = [{"plc": "plant", "label": f"P.leve{i}"} for i in range(20000)]
        answer = site.up()._request("POST", "/subscriptions", {"values": values})["values"]
        for i, value in enumerate(answer):
            hint = ' (did you mean "level"?)' if i < 5 else ""
            self.assertEqual(f'P.leve{i}: scope "P" has no "leve{i}"{hint}', value["error"])


class ClientTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.site = Site().start()
        cls.panel = cls.site.up()
        cls.plc = cls.site.plc

    @classmethod
    def tearDownClass(cls):
        cls.site.close()

    def known(self, label, value):
        comes_true(lambda: self.panel.read("plant", label)[0].value == value, f"{label} = {value}")

    def test_plcs_and_symbols_are_listed(self):
        plc = self.panel.plcs()[0]
        self.assertEqual("plant", plc["name"])
        self.assertEqual("up", plc["link"]["state"])
        self.assertEqual(["P"], [scope["label"] for scope in self.panel.symbols("plant")])
        symbols = {symbol["label"]: symbol for symbol in self.panel.symbols("plant", "P")}
        self.assertEqual("REAL", symbols["P.level"]["type"])
        self.assertEqual("%", symbols["P.level"]["unit"])
        self.assertIn("P.level", [found["label"] for found in self.panel.search("plant", "filling")])

    def test_values_of_each_kind_come_as_pythons_own(self):
        self.plc.set("P.level", "2.5")
        self.plc.set("P.wide", "-9007199254740993")
        self.plc.set("P.on", "TRUE")
        self.plc.set("P.name", "'Grüße'")
        self.plc.set("P.exact", "LREAL#-inf")
        self.plc.set("P.list[2]", "-7")
        self.known("P.level", 2.5)
        self.known("P.wide", -9007199254740993)
        self.known("P.on", True)
        self.known("P.name", "Grüße")
        self.known("P.exact", -math.inf)
        value = self.panel.read("plant", "P.list[1]*3")[0]
        self.assertEqual([0, -7, 0], value.value)
        self.assertEqual("good", value.quality)
        self.assertLess(abs(time.time() - value.time), PATIENCE)

    def test_a_label_that_leads_nowhere_tells_why(self):
        good, bad = self.panel.read("plant", "P.level", "P.levl")
        self.assertEqual("", good.error)
        self.assertIsNone(bad.value)
        self.assertIn('did you mean "level"', bad.error)
        wrong = Events(self.panel, [("plant", "P.level"), ("plant", "P.levl"), ("mill", "P.level")])
        told = wrong.wait(Value, lambda e: e.label == "P.levl")
        self.assertIn('did you mean "level"', told.error)
        self.assertIsNone(told.value)
        self.assertEqual("there is no such PLC", wrong.wait(Value, lambda e: e.plc == "mill").error)
        wrong.wait(Value, lambda e: e.plc == "plant" and e.label == "P.level" and not e.error)

    def test_the_past_tells_what_is_not_recorded_and_what_there_is_not(self):
        span = (time.time() - 10, time.time())
        comes_true(lambda: "recorded" not in self.panel.history("plant", ["P.level"], *span)[0])
        series = self.panel.history("plant", ["P.level", "P.list[1]"], *span)
        self.assertEqual([False], [one["recorded"] for one in series if "recorded" in one])
        self.assertIn(",plant,P.list[1],,,not recorded", self.panel.history_csv("plant", ["P.list[1]"], *span))
        with self.assertRaisesRegex(PanelError, 'did you mean "level"') as refused:
            self.panel.history("plant", ["P.level", "P.levl"], *span)
        self.assertEqual((404, ["P.levl"]), (refused.exception.status, refused.exception.labels))

    def test_a_write_tells_that_it_is_done(self):
        outcome = self.panel.write("plant", "P.count", 41)
        self.assertEqual("done", outcome.word)
        self.assertTrue(outcome.is_done)
        self.assertEqual("41", self.plc.get("P.count"))

    def test_wide_integers_and_lists_are_written_exactly(self):
        self.assertTrue(self.panel.write("plant", "P.wide", -9007199254740995).is_done)
        self.assertEqual("-9007199254740995", self.plc.get("P.wide"))
        self.assertTrue(self.panel.write("plant", "P.list[4]*2", [5, -6]).is_done)
        self.assertEqual("-6", self.plc.get("P.list[5]"))

    def test_a_refused_write_tells_number_and_words(self):
        self.plc.set("P.count", "7")
        self.plc.command("fail-writes on")
        try:
            outcome = self.panel.write("plant", "P.count", 8)
        finally:
            self.plc.command("fail-writes off")
        self.assertEqual("refused", outcome.word)
        self.assertEqual(0x40, outcome.details["status"])
        self.assertIn("64", outcome.reason.replace("0x0040", "64").replace("0x40", "64"))
        self.assertEqual("7", self.plc.get("P.count"))

    def test_what_makes_no_sense_is_an_error_and_no_write(self):
        for label, value, status in (("P.nothing", 1, 400), ("P.count", "x", 400)):
            with self.assertRaises(PanelError) as caught:
                self.panel.write("plant", label, value)
            self.assertEqual(status, caught.exception.status)
        with self.assertRaises(PanelError) as caught:
            self.panel.write("mill", "P.count", 1)
        self.assertEqual(404, caught.exception.status)

    def test_the_same_id_writes_once(self):
        self.assertTrue(self.panel.write("plant", "P.count", 50, "once").is_done)
        self.plc.set("P.count", "51")
        self.assertTrue(self.panel.write("plant", "P.count", 50, "once").is_done)
        self.assertEqual("51", self.plc.get("P.count"))
        with self.assertRaises(PanelError) as caught:
            self.panel.write("plant", "P.count", 52, "once")
        self.assertEqual(409, caught.exception.status)

    def test_a_write_whose_answer_is_lost_is_asked_for_and_not_sent_again(self):
        cutter = Cutter(self.site.port)
        self.addCleanup(cutter.close)
        panel = Panel(f"http://127.0.0.1:{cutter.port}", timeout=10)
        self.addCleanup(panel.close)
        outcome = panel.write("plant", "P.count", 60)
        self.assertEqual("done", outcome.word)
        self.assertEqual("60", self.plc.get("P.count"))
        self.assertEqual(1, cutter.cuts)

    def test_a_write_to_nobody_is_not_known(self):
        panel = Panel(f"http://127.0.0.1:{free_port()}", timeout=0.5)
        self.assertEqual("unknown", panel.write("plant", "P.count", 60).word)

    def test_a_subscription_begins_with_all_and_goes_on_with_changes(self):
        self.plc.set("P.count", "70")
        self.known("P.count", 70)
        events = Events(self.panel, [("plant", "P.count"), ("plant", "P.wide")])
        self.assertEqual(70, events.wait(Value, lambda e: e.label == "P.count").value)
        self.assertIsInstance(events.wait(Value, lambda e: e.label == "P.wide").value, int)
        self.assertEqual("up", events.wait(Link).state)
        events.forget()
        before = time.time()
        self.plc.set("P.count", "71")
        changed = events.wait(Value)
        self.assertEqual(("plant", "P.count", 71, "good"), changed[:4])
        self.assertGreater(changed.time, before - PATIENCE)
        events.wait(Confirmed, lambda e: e.time and e.time >= before)

    def test_as_many_values_as_may_be_followed_fit_into_a_request(self):
        values = [{"plc": "plant", "label": "P." + "x" * 68}] * 20000
        answer = self.panel._request("POST", "/subscriptions", {"values": values})
        self.assertEqual(20000, len(answer["values"]))
        self.panel._request("DELETE", "/subscriptions/" + answer["id"])
        with self.assertRaises(PanelError) as caught:
            self.panel._request("POST", "/subscriptions", {"values": values * 2})
        self.assertEqual(413, caught.exception.status)

    def test_the_socket_of_the_file_system_serves_too(self):
        panel = Panel(f"unix:{self.site.folder}/panel.sock")
        self.addCleanup(panel.close)
        self.assertEqual("plant", panel.plcs()[0]["name"])
        self.assertTrue(panel.write("plant", "P.count", 80).is_done)

    def test_an_idle_connection_that_the_server_has_closed_does_not_matter(self):
        panel = self.site.panel()
        panel.plcs()
        panel._idle.sock.shutdown(socket.SHUT_RDWR)
        self.assertEqual("plant", panel.plcs()[0]["name"])

    def test_the_program_in_the_shell(self):
        def run(*arguments):
            command = [sys.executable, str(SOURCES / "docs/examples/plc_panel_client.py"),
                       "--panel", self.site.address, *arguments]
            return subprocess.run(command, capture_output=True, text=True, timeout=PATIENCE)

        self.assertEqual("plant up \n", run("plcs").stdout)
        self.assertEqual("done \n", run("write", "plant", "P.count", "90").stdout)
        self.known("P.count", 90)
        self.assertEqual("P.count 90 good\n", run("read", "plant", "P.count").stdout)
        failed = run("read", "nowhere", "P.count")
        self.assertEqual(1, failed.returncode)
        self.assertIn("nowhere", failed.stderr)
        mixed = run("read", "plant", "P.count", "P.cuont")
        self.assertEqual((1, "P.count 90 good\n"), (mixed.returncode, mixed.stdout))
        self.assertIn('did you mean "count"', mixed.stderr)

    def test_the_interface_is_served_as_it_is_documented(self):
        documented = json.loads((SOURCES / "docs/openapi.json").read_text())
        self.assertEqual(documented, self.panel.get("/openapi.json"))


class LostPanelTest(unittest.TestCase):
    def test_a_subscription_tells_the_loss_and_goes_on_with_the_next_panel(self):
        site = Site().start()
        self.addCleanup(site.close)
        events = Events(site.up(), [("plant", "P.count")])
        events.wait(Value)
        site.kill()
        events.wait(Lost)
        events.forget()
        site.plc.set("P.count", "5")
        site.start()
        events.wait(Value, lambda e: e.value == 5 and e.quality == "good")

    def test_a_plc_that_goes_away_is_told(self):
        site = Site(project=LOST_SOON).start()
        self.addCleanup(site.close)
        events = Events(site.up(), [("plant", "P.count")])
        events.wait(Value, lambda e: e.quality == "good")
        site.plc.command("offline")
        events.wait(Link, lambda e: e.state == "down")
        events.wait(Value, lambda e: e.quality == "stale")
        outcome = site.panel().write("plant", "P.count", 1)
        self.assertEqual("notSent", outcome.word)
        events.forget()
        site.plc.command("online")
        events.wait(Value, lambda e: e.quality == "good")


class UsersTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.site = Site(users="users")
        for name, role in (("vera", "viewer"), ("otto", "operator"), ("emma", "engineer")):
            code, printed = cls.site.run("user", "add", name, role, "--users",
                                         str(cls.site.folder / "users"), text=f"{name}-secret-9\n")
            assert code == 0, printed
        cls.site.start()
        cls.site.up(cls.as_user("emma"))

    @classmethod
    def tearDownClass(cls):
        cls.site.close()

    @classmethod
    def as_user(cls, name):
        """Logged in, once the tests before have not logged in too often."""
        panel = cls.not_yet_as_user(name)

        def logs_in():
            try:
                return panel.login()
            except PanelError as error:
                if error.status != 429:
                    raise
                time.sleep(error.retry_after)

        comes_true(logs_in, "a login")
        return panel

    @classmethod
    def not_yet_as_user(cls, name):
        return cls.site.panel(user=name, password=f"{name}-secret-9")

    def refusal(self, call):
        with self.assertRaises(PanelError) as caught:
            call()
        return caught.exception.status

    def test_nobody_gets_nothing(self):
        self.assertEqual(401, self.refusal(self.site.panel().plcs))

    def test_a_wrong_password_is_refused(self):
        panel = self.site.panel(user="vera", password="wrong")
        self.assertEqual(401, self.refusal(panel.plcs))

    def test_a_viewer_reads_and_does_not_write(self):
        panel = self.as_user("vera")
        self.assertEqual("viewer", panel.get("/session")["role"])
        self.assertEqual(403, self.refusal(lambda: panel.write("plant", "P.count", 1)))

    def test_the_audit_names_who_wrote(self):
        panel = self.as_user("otto")
        panel.write("plant", "P.count", 3)
        records = [record for record in self.site.audit() if record["action"] == "write"]
        self.assertEqual({"otto"}, {record["user"] for record in records})
        self.assertEqual("done", records[-1]["outcome"])

    def test_a_session_that_the_server_has_forgotten_is_opened_again(self):
        panel = self.as_user("vera")
        panel.plcs()
        self.site.stop()
        self.site.start()
        self.assertEqual("plant", panel.plcs()[0]["name"])

    def test_a_subscription_logs_in_by_itself(self):
        for values in ((), [("plant", "P.count")]):
            events = Events(self.not_yet_as_user("vera"), values)
            self.assertEqual("up", events.wait(Link).state)

    def test_a_subscription_goes_on_behind_a_restart_of_the_panel(self):
        for values in ((), [("plant", "P.count")]):
            events = Events(self.not_yet_as_user("vera"), values)
            events.wait(Link)
            self.site.stop()
            events.wait(Lost)
            events.forget()
            self.site.start()
            events.wait(Link)
            self.assertEqual([], events.all(PanelError))
        # Whatever test comes next finds the PLC as the others do.
        self.site.up(self.as_user("vera"))

    def test_a_wrong_password_ends_a_subscription(self):
        events = Events(self.site.panel(user="vera", password="wrong"))
        self.assertEqual(401, events.wait(PanelError).status)

    def test_a_program_with_a_token_needs_no_login(self):
        users = str(self.site.folder / "users")
        self.assertEqual(0, self.site.run("user", "add", "prom", "viewer", "--users", users,
                                          text="prom-secret-9\n")[0])
        code, token = self.site.run("user", "token", "prom", "--users", users)
        self.assertEqual(0, code)
        self.assertRegex(token, r"\A[A-Za-z0-9_-]{43}\n\Z")
        self.assertNotIn(token.strip(), (self.site.folder / "users").read_text())
        self.assertIn("prom  viewer  has a token", self.site.run("user", "list", "--users", users)[1])
        panel = self.site.panel(token=token.strip())
        self.assertEqual(401, self.refusal(panel.plcs), "it is not read yet")
        os.kill(self.site.pid, signal.SIGHUP)
        comes_true(lambda: panel.get("/session")["user"] == "prom")
        self.assertEqual("plant", panel.plcs()[0]["name"])
        self.assertEqual(403, self.refusal(lambda: panel.write("plant", "P.count", 1)))
        self.assertEqual(403, self.refusal(lambda: panel.get("/audit")))
        self.scrape(token.strip())
        events = Events(panel, [("plant", "P.count")])
        events.wait(Link)
        self.assertEqual(0, self.site.run("user", "revoke", "prom", "--users", users)[0])
        os.kill(self.site.pid, signal.SIGHUP)
        comes_true(lambda: panel.get("/session")["user"] is None)
        self.assertEqual(401, events.wait(PanelError).status)
        self.assertEqual((2, 'there is no user "nobody"'),
                         self.said("user", "token", "nobody", "--users", users))

    def said(self, *arguments):
        code, printed = self.site.run(*arguments)
        return code, printed.strip().partition(": ")[2]

    def scrape(self, token):
        """As Prometheus does with the configuration of the manual."""
        connection = http.client.HTTPConnection("127.0.0.1", self.site.port)
        self.addCleanup(connection.close)
        connection.request("GET", "/metrics", headers={"Authorization": "Bearer " + token})
        response = connection.getresponse()
        metrics = response.read()
        self.assertEqual(200, response.status)
        self.assertIn(b'plc_up{source="plant"} 1', metrics)
        promtool = shutil.which("promtool")
        if not promtool:
            return
        done = subprocess.run([promtool, "check", "metrics"], input=metrics, capture_output=True)
        self.assertEqual((0, b""), (done.returncode, done.stdout + done.stderr))
        manual = (SOURCES / "docs/panel.md").read_text()
        configuration = re.search(r"```yaml\n(scrape_configs:.*?)```", manual, re.S).group(1)
        for name in ("panel.token", "panel.crt"):
            (self.site.folder / name).write_text(token)
        path = self.site.folder / "prometheus.yml"
        path.write_text(configuration.replace("/etc/prometheus", str(self.site.folder)))
        done = subprocess.run([promtool, "check", "config", str(path)], capture_output=True, text=True)
        self.assertEqual(0, done.returncode, done.stdout + done.stderr)

    def test_one_user_leaves_the_others_their_share_of_what_is_followed(self):
        def follow(panel, count, last):
            values = [{"plc": "plant", "label": "P.many[1]"}] * count
            values.append({"plc": "plant", "label": last})
            return panel._request("POST", "/subscriptions", {"values": values})["id"]

        vera = self.as_user("vera")
        ids = [follow(vera, 19999, f"P.many[{i}]") for i in (2, 3)]
        ids.append(follow(vera, 9900, "P.many[4]"))
        self.assertEqual(503, self.refusal(lambda: follow(vera, 200, "P.many[5]")))
        self.assertEqual(503, self.refusal(lambda: follow(self.as_user("vera"), 200, "P.many[5]")))
        follow(self.as_user("otto"), 19999, "P.many[6]")
        for one in ids:
            vera._request("DELETE", "/subscriptions/" + one)
        follow(vera, 200, "P.many[5]")

    def test_after_the_logout_the_token_is_worth_nothing(self):
        panel = self.as_user("vera")
        panel.plcs()
        token = panel._token
        panel.logout()
        connection = http.client.HTTPConnection("127.0.0.1", self.site.port)
        self.addCleanup(connection.close)
        connection.request("GET", "/api/v1/plcs", headers={"Authorization": f"Bearer {token}"})
        self.assertEqual(401, connection.getresponse().status)


if __name__ == "__main__":
    unittest.main()
