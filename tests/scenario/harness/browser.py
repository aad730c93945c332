"""A web browser without a window, driven over the WebDriver protocol (W3C) by its own driver."""

import base64
import json
import re
import shutil
import subprocess
import urllib.error
import urllib.request
from pathlib import Path

from harness.waiting import PATIENCE, wait_until

DRIVER, BROWSER = "chromedriver", "chromium"
_STARTED = re.compile(r"started successfully on port (\d+)")
_OPTIONS = [
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--no-first-run",
    # Of its own accord it asks for nothing: every request is the page's.
    "--disable-background-networking", "--disable-component-update", "--disable-sync",
    "--disable-quic", "--disable-extensions", "--no-default-browser-check",
]
ESCAPE, TAB, ENTER = "\ue00c", "\ue004", "\ue007"


def is_there() -> bool:
    return bool(shutil.which(DRIVER) and shutil.which(BROWSER))


class Browser:
    """One driver with one browser. `folder` takes its profile and the driver's output."""

    def __init__(self, folder: Path) -> None:
        folder.mkdir(parents=True, exist_ok=True)
        self._output = folder / "driver.out"
        with open(self._output, "wb") as output:
            self._driver = subprocess.Popen([DRIVER, "--port=0"], stdin=subprocess.DEVNULL,
                                            stdout=output, stderr=subprocess.STDOUT)
        self._session = ""
        try:
            port = wait_until("the driver to start", lambda: _STARTED.search(self._said()),
                              state=self._said)
            self._base = f"http://127.0.0.1:{port[1]}/session"
            options = {"binary": shutil.which(BROWSER),
                       "args": [*_OPTIONS, f"--user-data-dir={folder / 'profile'}"]}
            wanted = {"browserName": "chrome", "goog:chromeOptions": options,
                      "goog:loggingPrefs": {"browser": "ALL", "performance": "ALL"}}
            session = self._call("POST", "", {"capabilities": {"alwaysMatch": wanted}})
            self._session = "/" + session["sessionId"]
        except BaseException:
            self.close()
            raise

    def _said(self) -> str:
        return self._output.read_text(errors="replace")

    def _call(self, method: str, path: str, content: dict | None = None):
        data = None if content is None else json.dumps(content).encode()
        request = urllib.request.Request(self._base + self._session + path, data, method=method,
                                         headers={"Content-Type": "application/json"})
        try:
            with urllib.request.urlopen(request, timeout=60) as answer:
                return json.load(answer)["value"]
        except urllib.error.HTTPError as error:
            raise AssertionError(f"{path}: {error.read().decode(errors='replace')}") from error

    def close(self) -> None:
        try:
            if self._session:
                self._call("DELETE", "")
        finally:
            self._driver.terminate()
            self._driver.wait()

    # --- what a person does

    def open(self, address: str) -> None:
        self._call("POST", "/url", {"url": address})

    def press(self, *keys: str) -> None:
        """Keys one after the other, wherever the focus is."""
        presses = [{"type": kind, "value": key} for key in keys for kind in ("keyDown", "keyUp")]
        self._call("POST", "/actions",
                   {"actions": [{"type": "key", "id": "keyboard", "actions": presses}]})

    def use_screen(self, width: int, height: int, **settings) -> None:
        """As if on such a screen, however narrow."""
        self.command("Emulation.setDeviceMetricsOverride", width=width, height=height,
                     deviceScaleFactor=1, mobile=False, **settings)

    def prefer(self, **features: str) -> None:
        """Such as prefers_color_scheme="dark"."""
        wanted = [{"name": name.replace("_", "-"), "value": value}
                  for name, value in features.items()]
        self.command("Emulation.setEmulatedMedia", features=wanted)

    # --- what there is to see

    def script(self, text: str, *arguments):
        """What the body of a function returns."""
        return self._call("POST", "/execute/sync", {"script": text, "args": list(arguments)})

    def text(self, selector: str) -> str:
        """Of the first such element, as it is rendered."""
        return self.script("return document.querySelector(arguments[0])?.innerText ?? ''",
                           selector).strip()

    def title(self) -> str:
        return self._call("GET", "/title")

    def wait_for_text(self, selector: str, wanted: str, seconds: float = PATIENCE) -> None:
        """Until the element's text holds the wanted one."""
        wait_until(f"{selector} to hold {wanted!r}", lambda: wanted in self.text(selector),
                   seconds, state=lambda: self.text(selector))

    def picture(self, path: Path) -> None:
        """What is in sight, as a PNG file."""
        path.write_bytes(base64.b64decode(self._call("GET", "/screenshot")))

    # --- what it tells of itself

    def command(self, name: str, **parameters):
        """One of the DevTools protocol."""
        return self._call("POST", "/goog/cdp/execute", {"cmd": name, "params": parameters})

    def _log(self, kind: str) -> list[dict]:
        return self._call("POST", "/se/log", {"type": kind})

    def complaints(self) -> list[str]:
        """What the page and the browser have written to the console since the last call."""
        return [entry["message"] for entry in self._log("browser")]

    def requests(self) -> list[str]:
        """The addresses of all requests since the last call."""
        events = [json.loads(entry["message"])["message"] for entry in self._log("performance")]
        return [event["params"]["request"]["url"] for event in events
                if event["method"] == "Network.requestWillBeSent"]
