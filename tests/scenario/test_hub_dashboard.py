"""The hub's dashboard: the real page in a real browser, beside a program that publishes."""

import time

from harness.browser import ESCAPE, TAB
from harness.dashboard import CLIPPED, CONTRAST, OVERFLOW, PAGE, RECEIVER, STOP, Dashboard
from harness.waiting import wait_until

PLACE = (52.123456789, -5.987654321, 48.9)


class Values(Dashboard):
    """What the page shows is what was published."""

    def test_position_accuracy_and_quality_are_shown_as_published(self) -> None:
        publisher = self.publisher()
        # Northwards at 3 m/s and eastwards at 4: 5 m/s, and atan2(4, 3) is 53.13 degrees.
        # The same deviation along each axis is the same in each direction; the horizontal one is
        # the root of 2 times 0.4 m.
        with self.going_on(lambda: publisher.position(
                *PLACE, velocity=(4.0, 3.0, 0.0), sx=0.4, sy=0.4, sz=0.4, differentialAge=2.5)):
            self.open()
            self.wait_for_state("live")
            self.assertEqual(self.icon(), "favicon-live.svg")
            wanted = {"latitude": "52.123456789° N", "longitude": "5.987654321° W",
                      "height": "48.900 m", "sigmaHorizontal": "0.566 m", "sigmaUp": "0.400 m",
                      "speed": "5.00 m/s", "course": "53.1°", "satellitesUsed": "14",
                      "satellites": "GPS 9, GLONASS 5", "differentialAge": "2.5 s",
                      "velocityEast": "4.00 m/s", "velocityNorth": "3.00 m/s"}
            self.assertEqual({name: self.field(name) for name in wanted}, wanted)
            self.assertEqual(self.browser.text("#quality"), "Best")
            self.assertIn("narrow-lane integer", self.browser.text("#fix"))
            self.assertIn("Best ±0.566 m", self.browser.title())

    def test_the_solutions_own_dilutions_are_shown_nowhere(self) -> None:
        publisher = self.publisher()
        with self.going_on(lambda: publisher.position(*PLACE, hdop=71.25, vdop=93.75)):
            self.open()
            self.wait_for_state("live")
            shown = self.browser.script("return document.documentElement.textContent")
        for number in ("71.2", "71.3", "93.7", "93.8"):
            self.assertNotIn(number, shown)
        self.assertEqual([self.browser.text(f"#{name}") for name in ("pdop", "hdop", "vdop")],
                         ["–"] * 3)

    def test_sky_and_dilutions_come_from_the_sentences(self) -> None:
        publisher = self.publisher()
        publisher.position(*PLACE)
        publisher.sentence("GPGSV,1,1,03,07,64,120,47,09,20,010,,37,30,158,39")
        publisher.sentence("GPGSA,A,3,07,37,,,,,,,,,,,1.6,0.9,1.3")
        self.open()
        self.browser.wait_for_text("#sky-summary", "3 in view, 2 used")
        self.assertEqual([self.browser.text(f"#{name}") for name in ("pdop", "hdop", "vdop")],
                         ["1.6", "0.9", "1.3"])
        rows = self.browser.script("return [...document.querySelectorAll('#sky-rows tr')]"
                                   ".map((row) => [...row.cells].map((cell) => cell.textContent))")
        self.assertEqual(rows, [["G07", "64°", "120°", "47", "used"],
                                ["G09", "20°", "10°", "–", "not tracked"],
                                ["S124", "30°", "158°", "39", "used"]])

    def test_every_system_has_its_bars_and_the_page_says_why_some_have_no_place(self) -> None:
        publisher = self.publisher()
        publisher.position(*PLACE)
        publisher.sky((7, 47.0), (7, 38.0), (38, 41.0), (124, 39.0))
        self.open()
        self.browser.wait_for_text("#signals-summary", "3 satellites")
        self.assertEqual(self.column("#signals-plot h3"), ["GPS (1)", "GLONASS (1)", "SBAS (1)"])
        self.assertEqual(self.column("#signals-plot .bar-name"), ["G07", "R01", "S124"])
        self.assertEqual(self.column("#signals-plot .bar-value"), ["47", "38", "41", "39"])
        heights = self.browser.script(
            "return [...document.querySelectorAll('.bar-fill')].map((each) => each.offsetHeight"
            " / each.parentElement.offsetHeight * 60)")
        for height, value in zip(heights, (47, 38, 41, 39), strict=True):
            self.assertAlmostEqual(height, value, delta=0.5)
        self.assertIn("GPGSV", self.browser.text("#sky"))
        self.assertIn("C/N0 bars only", self.browser.text("#sky"))

    def test_the_receiver_its_diagnostics_and_events_are_told_in_words(self) -> None:
        publisher = self.publisher()
        for key, value in {"component_00.componentType": "1", "component_00.model": "L12RTGV",
                           "component_00.psn": "DAB07170027",
                           "component_00.softwareVersion": "3.907"}.items():
            publisher.status(key, value, RECEIVER)
        publisher.status("ReceiverCPUIdlePercentage", "43", RECEIVER, level="info")
        publisher.raise_diagnostic(79141, 2, time=time.time() - 100)
        publisher.event("<b>Sending</b> buffered command: unlogall", level="error")
        self.open()
        self.browser.wait_for_text("#receiver-model", "L12RTGV")
        self.assertEqual(self.browser.text("#receiver-serial"), "DAB07170027")
        self.assertEqual(self.browser.text("#receiver-firmware"), "3.907")
        self.assertEqual(self.browser.text("#receiver-idle"), "43 %")
        self.assertEqual(self.column("#diagnostics-rows .code"), ["79141, 2"])
        self.assertRegex(self.column("#diagnostics-rows .age")[0], r"^1 min 4\d s$")
        self.assertIn("filter", self.column("#diagnostics-rows .words")[0])
        self.assertEqual(self.browser.text("#diagnostics-badge"), "1 diagnostic raised")
        self.assertEqual(self.column("#events-rows .words"),
                         ["<b>Sending</b> buffered command: unlogall"])
        self.assertIn("error", self.column("#events-rows .level")[0])

    def test_logs_have_their_rates_and_ports_their_checksums(self) -> None:
        publisher = self.publisher()

        def publish() -> None:
            publisher.data("QRS_42", f"{time.time():.6f},2393,1.000000")
            publisher.status("checksum_stats", "1204,3")
            publisher.activity(40, 160)

        with self.going_on(publish, every=0.1):
            self.open()
            wait_until("a rate of about ten a second", lambda: any(
                8 <= float(each.removesuffix("/s")) <= 11
                for each in self.column("#log-rows .number:nth-child(5)")), 15.0,
                state=lambda: self.column("#log-rows .number"))
            self.assertEqual(self.column("#log-rows .log"), ["BESTPOS"])
            self.assertEqual(self.column("#checksum-rows .number")[:2], ["1\u202f204", "3"])
            self.assertEqual(self.column("#activity-rows .number")[:2], ["40", "160"])

    def test_the_track_is_drawn_in_metres_from_its_first_point(self) -> None:
        publisher = self.publisher()
        self.open()
        # A ten-thousandth of a degree of latitude at 52 degrees is 11.127 m long.
        for step in range(3):
            publisher.position(52.0 + step * 1e-4, 5.0, 45.0)
            time.sleep(1.0)
        self.browser.wait_for_text("#track-summary", "22.3 m north of the first point")
        self.assertIn("22.3 m along the track", self.browser.text("#track-summary"))
        inked = self.browser.script(
            "const c = document.getElementById('track-canvas');"
            "const d = c.getContext('2d').getImageData(0, 0, c.width, c.height).data;"
            "return d.filter((each, i) => i % 4 === 3 && each > 0).length")
        self.assertGreater(inked, 1000)
        self.browser.script("document.querySelector('input[value=scatter]').click()")
        # About their mean they lie 11.127 m to the south, on it, and as much to the north.
        self.browser.wait_for_text("#track-summary", "CEP50 11.13 m")


    def test_the_plots_begin_with_what_the_hub_has_kept(self) -> None:
        publisher = self.publisher()
        for step in range(3):
            publisher.position(52.0 + step * 1e-4, 5.0, 45.0)
            time.sleep(1.0)
        wait_until("the hub to keep three positions", lambda: len(self.history()) == 3, 10.0,
                   state=self.history)
        self.open()
        self.browser.wait_for_text("#track-summary", "22.3 m north of the first point")
        self.browser.wait_for_text(".chart-summary", "Horizontal: 0.0")

    def test_without_a_history_the_page_says_so_and_begins_with_itself(self) -> None:
        self.hub.kill()
        self.start_hub("--history-days=0")
        self.open()
        self.browser.wait_for_text("#history-note", "The hub keeps no history")


class Age(Dashboard):
    """Whatever shows a state shows its age."""

    def test_what_is_no_longer_told_becomes_old(self) -> None:
        publisher = self.publisher()
        publisher.sky((7, 47.0))

        def publish() -> None:
            publisher.activity(40, 160)

        with self.going_on(publish, every=0.5):
            with self.going_on(lambda: publisher.position(*PLACE)):
                self.open()
                self.wait_for_state("live")
                self.assertFalse(self.is_old("position"))
            self.wait_for_state("old")
            self.assertRegex(self.browser.text("#headline"), r"^The last solution is \d+ s old$")
            self.assertTrue(self.is_old("position"))
            self.assertTrue(self.browser.text("#position-age").startswith("old: "))
            self.assertIn("old", self.browser.title())
            wait_until("the bars to be old too", lambda: self.is_old("signals"))

    def test_a_receiver_without_a_position_is_told_from_one_that_is_old(self) -> None:
        publisher = self.publisher()
        with self.going_on(publisher.solution):
            self.open()
            self.wait_for_state("no position")
            self.assertEqual(self.field("latitude"), "–")
            self.assertEqual(self.browser.text("#quality"), "No position")
            self.assertFalse(self.is_old("position"))

    def test_a_silent_receiver_is_told_from_a_daemon_that_is_gone(self) -> None:
        publisher = self.publisher()
        publisher.position(*PLACE)
        publisher.activity(40, 160)
        publisher.status("started", "started")
        with self.going_on(lambda: publisher.activity(0, 0), every=0.5):
            self.open()
            self.wait_for_state("silent")
            self.assertIn("silent", self.browser.text("#headline"))
            self.assertTrue(self.is_old("position"))
            self.assertFalse(self.is_old("diagnostics"))
        publisher.close()
        self.wait_for_state("gone")
        self.assertIn("The daemon is gone", self.browser.text("#headline"))
        wait_until("the diagnostics to be old", lambda: self.is_old("diagnostics"))
        self.assertFalse(self.is_old("events"))
        wait_until("the status to be old", lambda: "old: " in self.column("#status-rows .age")[0])

    def test_a_daemon_that_never_was_there_is_not_there_either(self) -> None:
        self.open()
        self.wait_for_state("gone")
        self.assertEqual(self.browser.text("#solution-age"), "none yet")
        self.assertEqual(self.browser.text("#position-age"), "none yet")

    def test_without_the_hub_the_page_counts_on_and_comes_back_by_itself(self) -> None:
        publisher = self.publisher()
        with self.going_on(lambda: publisher.position(*PLACE)):
            self.open()
            self.wait_for_state("live")
        self.hub.kill()
        self.wait_for_state("disconnected")
        headlines = set()
        wait_until("the seconds to go on", lambda: headlines.add(self.browser.text("#headline"))
                   or len(headlines) >= 2)
        for headline in headlines:
            self.assertRegex(headline, r"^No connection to the hub for \d+ s$")
        self.assertTrue(self.browser.title().startswith("\u2717 No connection to the hub"))
        self.assertEqual(self.icon(), "favicon-bad.svg")
        for section in ("position", "track", "sky", "signals", "series", "receiver",
                        "diagnostics", "programs", "events"):
            shows_something = self.browser.text(f"#{section} .chip") != "none yet"
            self.assertEqual(self.is_old(section), shows_something, section)
        self.start_hub()
        self.wait_for_state("gone", 15.0)

    def test_state_and_age_are_in_sight_wherever_the_page_is_scrolled_to(self) -> None:
        self.open()
        self.wait_for_state("gone")
        self.browser.script("window.scrollTo({top: 1e6, behavior: 'instant'})")
        top = self.browser.script(
            "return document.elementFromPoint(innerWidth / 2, 20).closest('#banner') !== null")
        self.assertTrue(top)


class Use(Dashboard):
    """With a keyboard, on a phone, by day and by night, without a network."""

    def test_the_slash_key_leads_to_the_search_and_escape_empties_it(self) -> None:
        publisher = self.publisher()
        publisher.status("checksum_stats", "1204,3")
        publisher.status("ReceiverStatus", "0x00000000", RECEIVER)
        self.open()
        self.browser.wait_for_text("#status-found", "2 keys")
        self.browser.press("/")
        self.assertEqual(self.browser.script("return document.activeElement.id"), "search")
        self.browser.press(*"STATS 1204")
        self.browser.wait_for_text("#status-found", "1 of 2 keys")
        self.assertEqual(self.column("#status-rows .key"), ["checksum_stats"])
        self.browser.press(*" nothing/")
        self.browser.wait_for_text("#status-none", 'holds "STATS 1204 nothing/"')
        self.browser.press(ESCAPE)
        self.browser.wait_for_text("#status-found", "2 keys")
        self.assertEqual(self.column("#status-rows .value"), ["1204,3", "0x00000000"])

    def test_the_first_tab_offers_to_skip_and_every_stop_can_be_seen(self) -> None:
        self.open()
        self.browser.press(TAB)
        self.assertEqual(self.browser.text(":focus"), "Skip to the position")
        stops: dict[str, bool] = {}
        while (stop := self.browser.script(STOP)) is not None:
            name, is_outlined = stop
            self.assertNotIn(name, stops, "the focus goes round in a circle")
            stops[name] = is_outlined
            self.browser.press(TAB)
        self.assertEqual([name for name, is_outlined in stops.items() if not is_outlined], [])
        for name in ("Receiver", "track", "3600", "All of the solution", "search"):
            self.assertIn(name, stops)

    def test_nothing_is_asked_of_anybody_else_and_the_browser_complains_of_nothing(self) -> None:
        publisher = self.publisher()
        with self.going_on(lambda: publisher.position(*PLACE)):
            wait_until("the hub to keep a history", self.history)
            self.open()
            self.wait_for_state("live")
            self.browser.script("document.querySelector('input[value=scatter]').click()")
            self.browser.prefer(prefers_color_scheme="dark")
            time.sleep(1.5)
        asked = self.browser.requests()
        self.assertIn(f"{PAGE}api/stream", asked)
        self.assertEqual([each for each in asked if not each.startswith(PAGE)], [])
        self.assertEqual(self.browser.complaints(), [])

    def test_a_phone_shows_it_all_without_scrolling_sideways(self) -> None:
        publisher = self.publisher()
        publisher.sky(*((prn, 40.0) for prn in range(1, 33)))
        publisher.status("a_key_without_any_place_to_break_" * 3, "0123456789" * 30)
        publisher.event("words without end " * 20 + "x" * 300)
        publisher.raise_diagnostic(70950, 4)
        with self.going_on(lambda: publisher.position(*PLACE)):
            self.open()
            self.wait_for_state("live")
            for width in (320, 390, 768, 1024, 1920):
                self.browser.use_screen(width, 844)
                time.sleep(0.3)
                self.assertEqual(self.browser.script(OVERFLOW), 0, f"at {width} pixels")
                self.assertEqual(self.browser.script(CLIPPED), [], f"at {width} pixels")

    def test_texts_can_be_read_by_day_and_by_night_live_and_old(self) -> None:
        publisher = self.publisher()
        publisher.sky((7, 47.0), (38, 41.0))
        publisher.event("an error", level="error")
        publisher.raise_diagnostic(70950, 4)
        publisher.status("started", "started")
        with self.going_on(lambda: publisher.position(*PLACE)):
            self.open()
            self.wait_for_state("live")
            self._expect_contrast()
        self.wait_for_state("old")
        self._expect_contrast()
        self.hub.kill()
        self.wait_for_state("disconnected")
        self._expect_contrast()

    def _expect_contrast(self) -> None:
        for scheme in ("light", "dark"):
            self.browser.prefer(prefers_color_scheme=scheme, prefers_reduced_motion="reduce")
            time.sleep(0.5)
            self.assertEqual(self.browser.script(CONTRAST), [], scheme)

    def test_a_canvas_has_a_pixel_for_each_of_the_screens(self) -> None:
        self.open()
        self.browser.command("Emulation.setDeviceMetricsOverride", width=800, height=600,
                             deviceScaleFactor=3, mobile=False)
        self.browser.open(PAGE)
        self.wait_for_state("gone")
        ratios = self.browser.script("return [...document.querySelectorAll('canvas')]"
                                     ".map((each) => each.width / each.clientWidth)")
        self.assertEqual(len(ratios), 5)
        for ratio in ratios:
            self.assertAlmostEqual(ratio, 3.0, delta=0.02)
