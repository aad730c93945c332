"""The base of the tests of the hub's dashboard: a hub, a browser, and what the page shows."""

import contextlib
import json
import shutil
import tempfile
import threading
import unittest
import urllib.error
import urllib.request
from collections.abc import Callable, Iterator
from pathlib import Path

from harness import browser
from harness.browser import Browser
from harness.hub import HTTP_PORT, SERVICES_PORT, Hub
from harness.publisher import PORT_HANDLER, Publisher
from harness.scenario import Scenario
from harness.waiting import wait_until

PAGE = f"http://127.0.0.1:{HTTP_PORT}/"
RECEIVER = "NovatelReceiverStatus"

# The values of one column of a table's rows that can be seen.
COLUMN = """return [...document.querySelectorAll(arguments[0])]
    .filter((each) => each.offsetParent).map((each) => each.innerText.trim())"""
OVERFLOW = "return document.documentElement.scrollWidth - document.documentElement.clientWidth"
# Texts of elements that reach out of what encloses them, but for what is there to be scrolled or
# is hidden from sight on purpose.
CLIPPED = """
    const page = document.documentElement.clientWidth;
    return [...document.querySelectorAll('main *')].filter((each) =>
        each.checkVisibility() && !each.closest('.visually-hidden, thead, svg')
        && each.getBoundingClientRect().right > page).map((each) => each.outerHTML.slice(0, 80))"""
# The name of what has the focus and whether an outline shows it; of a radio button, its label has
# it. Nothing behind the last one.
STOP = """
    const at = document.activeElement;
    if (at === document.body) return null;
    const style = getComputedStyle(at.matches('.choice input') ? at.nextElementSibling : at);
    return [at.id || at.textContent.trim() || at.value,
            style.outlineStyle !== 'none' && parseFloat(style.outlineWidth) >= 2]"""
# The contrast of each text with the ground behind it (WCAG 2): the lowest ones below 4.5.
CONTRAST = """
    const canvas = Object.assign(document.createElement('canvas'), {width: 1, height: 1});
    const context = canvas.getContext('2d', {willReadFrequently: true});
    const mix = (colours) => {
        context.clearRect(0, 0, 1, 1);
        for (const colour of colours) {
            context.fillStyle = colour;
            context.fillRect(0, 0, 1, 1);
        }
        return [...context.getImageData(0, 0, 1, 1).data].slice(0, 3);
    };
    const luminance = (rgb) => rgb.map((each) => each / 255)
        .map((each) => each <= 0.04045 ? each / 12.92 : ((each + 0.055) / 1.055) ** 2.4)
        .reduce((sum, each, i) => sum + each * [0.2126, 0.7152, 0.0722][i], 0);
    const grounds = (each) =>
        each ? [...grounds(each.parentElement), getComputedStyle(each).backgroundColor] : ['white'];
    const low = [];
    for (const each of document.querySelectorAll('body :not(svg *, canvas, .visually-hidden)')) {
        const own = [...each.childNodes].some((node) => node.nodeType === 3 && node.data.trim());
        if (!own || !each.checkVisibility() || each.closest('.visually-hidden, noscript')) continue;
        const ground = grounds(each);
        const [text, back] = [[...ground, getComputedStyle(each).color], ground]
            .map((colours) => luminance(mix(colours)) + 0.05);
        const contrast = Math.max(text, back) / Math.min(text, back);
        if (contrast < 4.5) low.push(`${contrast.toFixed(2)} ${each.outerHTML.slice(0, 80)}`);
    }
    return low"""


@unittest.skipUnless(browser.is_there(), "there is no chromium with its driver")
class Dashboard(Scenario):
    """One browser for all tests of a class; a hub and a page for each."""

    @classmethod
    def setUpClass(cls) -> None:
        folder = Path(tempfile.mkdtemp(prefix="browser."))
        cls.addClassCleanup(shutil.rmtree, folder, ignore_errors=True)
        cls.browser = Browser(folder)
        cls.addClassCleanup(cls.browser.close)

    def setUp(self) -> None:
        super().setUp()
        self.start_hub()
        # Asked for and thrown away: both logs begin with this test.
        self.browser.complaints()
        self.browser.requests()

    def start_hub(self, *arguments: str) -> None:
        self.hub = Hub(self.folder / "hub", *arguments, ports=(SERVICES_PORT, HTTP_PORT))
        self.addCleanup(self.hub.kill)

    def publisher(self) -> Publisher:
        publisher = Publisher()
        self.addCleanup(publisher.close)
        for name in (PORT_HANDLER, RECEIVER):
            publisher.register(name)
        return publisher

    def open(self) -> None:
        self.browser.use_screen(1280, 900)
        self.browser.prefer(prefers_color_scheme="light")
        self.browser.open(PAGE)

    def history(self) -> list[float]:
        """The latitudes that the hub has kept; none while it cannot be asked yet."""
        with contextlib.suppress(urllib.error.HTTPError), \
                urllib.request.urlopen(f"{PAGE}api/history/positions?points=5000") as answer:
            return json.load(answer)["latitude"]
        return []

    @contextlib.contextmanager
    def going_on(self, publish: Callable[[], None], every: float = 0.1) -> Iterator[None]:
        """Publishes again and again meanwhile, as a daemon does."""
        is_over = threading.Event()

        def go_on() -> None:
            while not is_over.wait(every):
                publish()

        publish()
        thread = threading.Thread(target=go_on)
        thread.start()
        try:
            yield
        finally:
            is_over.set()
            thread.join()

    def field(self, name: str) -> str:
        return self.browser.script(
            "return document.querySelector(arguments[0]).textContent", f"[data-field={name}]")

    def icon(self) -> str:
        return self.browser.script(
            "return document.querySelector('link[rel=icon]').getAttribute('href')")

    def column(self, selector: str) -> list[str]:
        return self.browser.script(COLUMN, selector)

    def wait_for_state(self, state: str, seconds: float = 10.0) -> None:
        """The page's own word for how things are."""
        def present() -> str:
            return self.browser.script("return document.body.dataset.state")

        wait_until(f"the page to be {state}", lambda: present() == state, seconds, state=present)

    def is_old(self, section: str) -> bool:
        return self.browser.script("return document.getElementById(arguments[0])"
                                   ".classList.contains('is-old')", section)
