#!/usr/bin/env python3
"""Values of PLCs through plc-panel: a client in one file, for Python 3.9 and later, without
anything that Python does not bring along.

    from plc_panel_client import Panel

    panel = Panel("http://127.0.0.1:8080")              # or "unix:/run/plc-panel/hall/panel.sock"
    print(panel.read("plant", "Plant.tank[1].level")[0].value)

    outcome = panel.write("plant", "Plant.pump[1].setpoint", 17.5)
    print(outcome.word, outcome.reason)                 # done, refused, unknown or notSent

    for event in panel.subscribe([("plant", "Plant.tank[1].level")]):
        print(event)                                    # Value, Link, Alarm, Confirmed or Lost

Values are bool, int, float, str, or lists of them; None was never read. Times are seconds since
1970-01-01T00:00:00Z, as time.time() gives them. docs/panel-api.md tells of the interface itself.

From the shell:

    plc_panel_client.py [--panel WHERE] [--user NAME] plcs
    plc_panel_client.py symbols PLC [UNDER]
    plc_panel_client.py read PLC LABEL...
    plc_panel_client.py write PLC LABEL VALUE           VALUE as JSON has it
    plc_panel_client.py watch PLC LABEL...
    plc_panel_client.py history PLC LABEL SECONDS
"""

import argparse
import getpass
import http.client
import json
import math
import os
import socket
import ssl
import sys
import time
import urllib.parse
import uuid
from typing import Any, Callable, Iterable, Iterator, List, NamedTuple, Optional, Tuple

API = "/api/v1"
WIDE_TYPES = ("LINT", "ULINT", "LWORD")  # come and go as texts of digits
QUALITIES = {"g": "good", "s": "stale", "b": "bad"}
SILENCE = 3.0  # s without an event after which nothing is known: the server sends one each second
# Answers to a change that do not say that nothing was done.
NOT_TOLD = (408, 410, 412)


class PanelError(Exception):
    """The server refused a request (status), or could not be reached (status is None)."""

    def __init__(
        self,
        text: str,
        status: Optional[int] = None,
        retry_after: Optional[float] = None,
        labels: Iterable[str] = (),
    ):
        super().__init__(text)
        self.status = status
        self.retry_after = retry_after
        self.labels = list(labels)  # those of a question of the past that lead to nothing

    @property
    def was_refused(self) -> bool:
        """The server says that it did nothing. Otherwise it is not known whether it did."""
        return self.status is not None and 400 <= self.status < 500 and self.status not in NOT_TOLD


class Value(NamedTuple):
    plc: str
    label: str
    value: Any
    quality: str  # "good", "stale" or "bad"
    time: Optional[float]  # when the PLC was asked for it; None: it was never read
    error: str = ""  # why there is no such value


class Confirmed(NamedTuple):
    """All good values of a PLC that no event has changed were asked for at this time or later."""

    plc: str
    time: Optional[float]


class Link(NamedTuple):
    plc: str
    state: str  # "up", "connecting" or "down"
    since: float
    reason: str


class Alarm(NamedTuple):
    id: str
    plc: str
    label: str
    text: str
    condition: str
    state: str  # "active", "ended", "normal" or "unknown"
    since: Optional[float]  # of the occurrence; None: there is none
    ended: Optional[float]
    acknowledged_by: Optional[str]
    details: dict  # all that the server tells


class Lost(NamedTuple):
    """The connection to the server is lost: nothing is known of any value until events come again."""

    reason: str


class Outcome(NamedTuple):
    """How a write ended. Only "done" means that the PLC has taken it."""

    id: str
    word: str  # "done", "refused", "unknown" or "notSent"
    reason: str
    details: dict

    @property
    def is_done(self) -> bool:
        return self.word == "done"


class _UnixConnection(http.client.HTTPConnection):
    def __init__(self, path: str, timeout: float):
        super().__init__("localhost", timeout=timeout)
        self._path = path

    def connect(self) -> None:
        self.sock = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self.sock.settimeout(self.timeout)
        self.sock.connect(self._path)


class Panel:
    """One plc-panel. For one thread; each subscription has a connection of its own."""

    def __init__(
        self,
        where: str = "http://127.0.0.1:8080",
        user: Optional[str] = None,
        password: Optional[str] = None,
        certificate: Optional[str] = None,
        timeout: float = 30.0,
        token: Optional[str] = None,
    ):
        """`where` is "http://HOST:PORT", "https://HOST:PORT" or "unix:PATH"; `certificate` a PEM
        file by which an https server is recognised, in place of the system's authorities. With a
        user, the first request logs in, and so does one after the session has ended. A `token`
        that was made for the program needs no login."""
        self._where = where
        self._user = user
        self._password = password
        self._certificate = certificate
        self._timeout = timeout
        self._token = token
        self._idle: Optional[http.client.HTTPConnection] = None

    def close(self) -> None:
        """Closes the idle connection. Also done by `with Panel(...) as panel:`."""
        self._drop()

    def __enter__(self) -> "Panel":
        return self

    def __exit__(self, *_: Any) -> None:
        self.close()

    # Session

    def login(self) -> dict:
        """Also done by itself when it is needed."""
        body = {"user": self._user, "password": self._password}
        session = self._once("POST", "/session", body)
        self._token = session["token"]
        return session

    def logout(self) -> None:
        if self._token:
            self._once("DELETE", "/session")
        self._token = None

    def session(self) -> dict:
        return self.get("/session")

    # What there is

    def plcs(self) -> List[dict]:
        return self.get("/plcs")["plcs"]

    def symbols(self, plc: str, under: str = "") -> List[dict]:
        """The members of a scope, structure or array; the scopes where `under` is empty.

        At most the first 10,000."""
        return self.get("/symbols", plc=plc, under=under)["symbols"]

    def search(self, plc: str, words: str, limit: int = 200) -> List[dict]:
        """The first values, at most `limit`, whose label or description has all of the words."""
        return self.get("/symbols", plc=plc, search=words, limit=limit)["symbols"]

    # Values

    def read(self, plc: str, *labels: str) -> List[Value]:
        """What is known of these values now; those that nobody reads are read once. A label that
        makes no sense has an error."""
        answer = self.get("/values", plc=plc, label=labels)
        return [_value(value) for value in answer["values"]]

    def write(self, plc: str, label: str, value: Any, write_id: Optional[str] = None) -> Outcome:
        """Sends a write to the PLC, once, and tells how it ended. Raises PanelError where it was
        refused before it was looked at as a write: no right to, no such label."""
        if self._user and not self._token:
            self.login()
        write_id = write_id or uuid.uuid4().hex
        body = {"id": write_id, "plc": plc, "label": label, "value": _json_value(value)}
        try:
            return _outcome(self._request("POST", "/writes", body))
        except PanelError as error:
            if error.was_refused and error.status != 429:
                raise
            return self._outcome_behind(write_id, error)

    def _outcome_behind(self, write_id: str, failure: PanelError) -> Outcome:
        """The answer to a write is lost, or does not tell its outcome. It is never sent again; the
        server is asked what became of it."""
        unknown = Outcome(write_id, "unknown", str(failure), {})
        end = time.monotonic() + self._timeout
        while time.monotonic() < end:
            wait = 0.2
            try:
                found = self.get("/writes/" + urllib.parse.quote(write_id, safe=""))
                if found["outcome"] != "pending":
                    return _outcome(found)
            except PanelError as error:
                if error.status == 404:
                    # Refused as one request too many, or done by a panel that has ended since.
                    return unknown._replace(word="notSent") if failure.was_refused else unknown
                wait = max(wait, error.retry_after or 0.0)
            time.sleep(min(wait, max(0.0, end - time.monotonic())))
        return unknown

    def subscribe(self, values: Iterable[Tuple[str, str]] = (), alarms: bool = True) -> Iterator:
        """Events without end: Value for each change of these (plc, label), Confirmed, Link, Alarm.
        When the connection is lost there is one Lost; when it is back, all values are told again.
        A label that makes no sense comes once each time, as a Value with an error. Ends with
        PanelError where the server refuses it."""
        wanted = list(values)
        wait = 0.5
        while True:
            try:
                for event in self._follow(wanted):
                    wait = 0.5
                    if alarms or not isinstance(event, Alarm):
                        yield event
                reason = "the server has ended the stream"
            except (OSError, http.client.HTTPException, ValueError) as error:
                reason = str(error) or type(error).__name__
            except PanelError as error:
                if error.status is not None and error.status not in (404, 429, 503):
                    raise
                wait = max(wait, error.retry_after or 0.0)
                reason = str(error)
            yield Lost(reason)
            time.sleep(wait)
            wait = min(2 * wait, 10.0)

    def _follow(self, wanted: List[Tuple[str, str]]) -> Iterator:
        path = API + "/events"
        rows: List[dict] = []
        if wanted:
            body = {"values": [{"plc": plc, "label": label} for plc, label in wanted]}
            subscription = self._request("POST", "/subscriptions", body)
            rows = subscription["values"]
            path += "?" + urllib.parse.urlencode({"subscription": subscription["id"]})
        connection, response = self._logged_in(lambda: self._open_stream(path))
        try:
            yield from (_mistaken(row) for row in rows if "error" in row)
            for name, data in _events(response):
                yield from _decoded(name, data, rows)
        finally:
            connection.close()

    def _open_stream(self, path: str) -> tuple:
        connection = self._connection(SILENCE)
        try:
            connection.request("GET", path, headers=self._headers({"Accept": "text/event-stream"}))
            response = connection.getresponse()
            if response.status != 200:
                _raise_refusal(response, response.read())
        except BaseException:
            connection.close()
            raise
        return connection, response

    # The past

    def history(
        self, plc: str, labels: Iterable[str], start: float, end: float, points: int = 1000
    ) -> List[dict]:
        """One series for each label, as docs/panel-api.md has them; times in ms.

        A value that the PLC has and that was never recorded has "recorded": False; "recordedOf" names
        PLCs that there are no more by whose names there is something. For labels that neither have,
        PanelError names them in its labels. Of averages "coverage" is the part of each step that is
        known, and "qualities" what held in the rest.
        """
        return self.get(
            "/history", plc=plc, label=list(labels), **_span(start, end), points=points
        )["series"]

    def history_csv(self, plc: str, labels: Iterable[str], start: float, end: float) -> str:
        """Every change."""
        return self._request(
            "GET", "/history.csv", query=dict(plc=plc, label=list(labels), **_span(start, end))
        )

    # Alarms and recipes

    def alarms(self) -> List[Alarm]:
        return [_alarm(alarm) for alarm in self.get("/alarms")["alarms"]]

    def alarm_history(self, start: float, end: float, limit: int = 1000) -> List[dict]:
        return self.get("/alarms/history", **_span(start, end), limit=limit)["alarms"]

    def acknowledge(self, alarm: Alarm) -> None:
        """The occurrence that `alarm` shows; PanelError with status 409 when it is another now."""
        since = None if alarm.since is None else round(alarm.since * 1000)
        self._request("POST", f"/alarms/{alarm.id}/acknowledge", {"since": since})

    def recipes(self) -> List[dict]:
        return self.get("/recipes")["recipes"]

    def save_recipe(self, name: str, plc: str, labels: Iterable[str]) -> None:
        self._request("PUT", _recipe(name), {"plc": plc, "labels": list(labels)})

    def remove_recipe(self, name: str) -> None:
        self._request("DELETE", _recipe(name))

    def compare_recipe(self, name: str) -> List[dict]:
        return self.get(_recipe(name) + "/comparison")["values"]

    def restore_recipe(self, name: str, restore_id: Optional[str] = None) -> dict:
        """Writes what differs, reads it back, and reports. Sent once: after a PanelError that was no
        refusal (was_refused) it is not known what was written."""
        body = {"id": restore_id or uuid.uuid4().hex}
        return self._request("POST", _recipe(name) + "/restore", body)

    # Requests

    def get(self, path: str, **query: Any) -> Any:
        """Any resource of the interface: get("/statistics")."""
        return self._request("GET", path, query=query)

    def _request(self, method: str, path: str, body: Any = None, query: Any = None) -> Any:
        return self._logged_in(lambda: self._once(method, path, body, query))

    def _logged_in(self, ask: Callable[[], Any]) -> Any:
        """Asks after a login where one is needed, or turns out to be."""
        if self._user and not self._token:
            self.login()
        try:
            return ask()
        except PanelError as error:
            if error.status != 401 or not self._user:
                raise
        self.login()
        return ask()

    def _once(self, method: str, path: str, body: Any = None, query: Any = None) -> Any:
        target = API + path
        if query:
            target += "?" + urllib.parse.urlencode(query, doseq=True)
        sent = None if body is None else json.dumps(body).encode()
        try:
            response, content = self._exchange(method, target, sent)
        except (OSError, http.client.HTTPException) as error:
            self._drop()
            raise PanelError(f"{self._where}: {str(error) or type(error).__name__}") from error
        if response.status >= 400:
            _raise_refusal(response, content)
        if not content:
            return None
        if response.headers.get_content_type() != "application/json":
            return content.decode()
        return json.loads(content)

    def _exchange(self, method: str, target: str, body: Optional[bytes]):
        """What is sent twice when an idle connection turns out to be closed changes nothing."""
        headers = self._headers({"Content-Type": "application/json"} if body is not None else {})
        if method != "GET":
            self._drop()
        for attempt in (1, 2):
            is_used = self._idle is not None
            connection = self._idle or self._connection(self._timeout)
            self._idle = connection
            try:
                connection.request(method, target, body, headers)
                response = connection.getresponse()
                return response, response.read()
            except (ConnectionError, http.client.BadStatusLine):
                self._drop()
                if not is_used or attempt == 2 or method != "GET":
                    raise
        raise AssertionError("not reached")

    def _headers(self, headers: dict) -> dict:
        if self._token:
            headers["Authorization"] = "Bearer " + self._token
        return headers

    def _drop(self) -> None:
        if self._idle:
            self._idle.close()
        self._idle = None

    def _connection(self, timeout: float) -> http.client.HTTPConnection:
        if self._where.startswith("unix:"):
            return _UnixConnection(self._where[len("unix:") :], timeout)
        parts = urllib.parse.urlsplit(self._where)
        if parts.scheme == "https":
            context = ssl.create_default_context(cafile=self._certificate)
            return http.client.HTTPSConnection(
                parts.hostname or "", parts.port, timeout=timeout, context=context
            )
        return http.client.HTTPConnection(parts.hostname or "", parts.port, timeout=timeout)


def _raise_refusal(response: http.client.HTTPResponse, content: bytes) -> None:
    labels: List[str] = []
    try:
        body = json.loads(content)
        text = body["error"]
        labels = body.get("labels", [])
    except (ValueError, KeyError, TypeError):
        text = response.reason
    after = response.getheader("Retry-After", "")
    raise PanelError(text, response.status, float(after) if after.isdigit() else None, labels)


def _span(start: float, end: float) -> dict:
    return {"from": round(start * 1000), "to": round(end * 1000)}


def _seconds(milliseconds: Optional[int]) -> Optional[float]:
    return None if milliseconds is None else milliseconds / 1000


def _recipe(name: str) -> str:
    return "/recipes/" + urllib.parse.quote(name, safe="")


def _json_value(value: Any) -> Any:
    """As the server takes it: numbers that JSON does not have, or has not exactly, as texts."""
    if isinstance(value, (list, tuple)):
        return [_json_value(one) for one in value]
    if isinstance(value, float) and not math.isfinite(value):
        return "nan" if math.isnan(value) else "inf" if value > 0 else "-inf"
    if isinstance(value, int) and not isinstance(value, bool) and abs(value) > 2**53:
        return str(value)
    return value


def _decoded_value(value: Any, type_text: str) -> Any:
    if isinstance(value, list):
        return [_decoded_value(one, type_text) for one in value]
    if not isinstance(value, str):
        return value
    base = type_text.partition("*")[0]
    if base in WIDE_TYPES:
        return int(value)
    return float(value) if base in ("REAL", "LREAL") else value


def _value(found: dict) -> Value:
    value = _decoded_value(found["value"], found.get("type") or "")
    return Value(
        found["plc"],
        found["label"],
        value,
        found["quality"],
        _seconds(found["time"]),
        found.get("error", ""),
    )


def _mistaken(row: dict) -> Value:
    return Value(row["plc"], row["label"], None, "stale", None, row["error"])


def _outcome(found: dict) -> Outcome:
    return Outcome(found["id"], found["outcome"], found.get("reason") or "", found)


def _alarm(found: dict) -> Alarm:
    return Alarm(
        found["id"],
        found["plc"],
        found["label"],
        found["text"],
        found["condition"],
        found["state"],
        _seconds(found["since"]),
        _seconds(found["ended"]),
        found["acknowledgedBy"],
        found,
    )


def _events(response: http.client.HTTPResponse) -> Iterator[Tuple[str, dict]]:
    """The events of a text/event-stream."""
    name, data = "", ""
    while True:
        line = response.readline().decode()
        if not line:
            return
        line = line.rstrip("\r\n")
        if line.startswith("event:"):
            name = line[6:].strip()
        elif line.startswith("data:"):
            data += line[5:].strip()
        elif not line:
            if data:
                yield name, json.loads(data)
            name, data = "", ""


def _decoded(name: str, data: dict, rows: List[dict]) -> Iterator:
    if name == "values":
        for place, value, quality, when in data["rows"]:
            row = rows[place]
            decoded = _decoded_value(value, row.get("type") or "")
            yield Value(data["plc"], row["label"], decoded, QUALITIES[quality], _seconds(when))
        yield Confirmed(data["plc"], _seconds(data["confirmed"]))
    elif name == "link":
        yield Link(data["plc"], data["state"], data["since"] / 1000, data["reason"])
    elif name == "alarm":
        yield _alarm(data)


def _print_history(panel: Panel, arguments: argparse.Namespace) -> None:
    now = time.time()
    labels, seconds = arguments.rest[:-1], float(arguments.rest[-1])
    sys.stdout.write(panel.history_csv(arguments.plc, labels, now - seconds, now))


def _run(panel: Panel, arguments: argparse.Namespace) -> int:
    if arguments.command == "plcs":
        for plc in panel.plcs():
            print(plc["name"], plc["link"]["state"], plc["link"]["reason"])
    elif arguments.command == "symbols":
        for symbol in panel.symbols(arguments.plc, "".join(arguments.rest)):
            print(symbol["label"], symbol["type"], symbol.get("unit") or "")
    elif arguments.command == "read":
        values = panel.read(arguments.plc, *arguments.rest)
        for value in values:
            if value.error:
                print(f"{value.label}: {value.error}", file=sys.stderr)
            else:
                print(value.label, json.dumps(value.value), value.quality)
        return 1 if any(value.error for value in values) else 0
    elif arguments.command == "write":
        label, value = arguments.rest
        outcome = panel.write(arguments.plc, label, json.loads(value))
        print(outcome.word, outcome.reason)
        return 0 if outcome.is_done else 1
    elif arguments.command == "watch":
        for event in panel.subscribe([(arguments.plc, label) for label in arguments.rest]):
            print(event, flush=True)
    else:
        _print_history(panel, arguments)
    return 0


def main() -> int:
    commands = ["plcs", "symbols", "read", "write", "watch", "history"]
    parser = argparse.ArgumentParser(description="Values of PLCs through plc-panel.")
    parser.add_argument("--panel", default="http://127.0.0.1:8080", metavar="WHERE")
    parser.add_argument("--user", help="the password is in PLC_PANEL_PASSWORD, or asked for; "
        "without a user PLC_PANEL_TOKEN may hold a token")
    parser.add_argument("--certificate", metavar="FILE")
    parser.add_argument("command", choices=commands)
    parser.add_argument("plc", nargs="?", default="")
    parser.add_argument("rest", nargs="*", metavar="argument")
    arguments = parser.parse_args()
    password = os.environ.get("PLC_PANEL_PASSWORD")
    if arguments.user and password is None:
        password = getpass.getpass()
    token = None if arguments.user else os.environ.get("PLC_PANEL_TOKEN")
    panel = Panel(arguments.panel, arguments.user, password, arguments.certificate, token=token)
    try:
        return _run(panel, arguments)
    except PanelError as error:
        print(error, file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        return 130


if __name__ == "__main__":
    sys.exit(main())
