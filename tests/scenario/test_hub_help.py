"""The hub's help, man page and documentation name the same settings, with the same defaults."""

import re
import subprocess
import unittest

from harness import places

MAN = places.CHECKOUT / "packaging" / "man" / "corvane-hub.8"
DOCUMENT = places.CHECKOUT / "docs" / "hub.md"
# Such as "  --http-port PORT        And on which TCP port; 0 lets the system choose (default 8080)".
IN_HELP = re.compile(r"^  (--[a-z-]+) ([A-Z]+) {1,}((?:.|\n {10,})*)$", re.MULTILINE)
DEFAULT = re.compile(r"^(.*) \(default (.*)\)$")


def settings_in_help() -> dict[str, tuple[str, str]]:
    """Meaning and default by option, of the options that are settings."""
    text = subprocess.run([places.binaries() / "corvane-hub", "--help"], capture_output=True,
                          text=True, check=True).stdout
    found = {}
    for option, _, words in IN_HELP.findall(text):
        meaning = re.sub(r"\s*\n\s*", " ", words)
        match = DEFAULT.match(meaning)
        found[option] = (match[1], match[2]) if match else (meaning, "")
    return found


def settings_in_document() -> dict[str, tuple[str, str]]:
    found = {}
    for line in DOCUMENT.read_text(encoding="utf-8").splitlines():
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if line.startswith("| ") and len(cells) == 4 and cells[0] not in ("section", "---"):
            section, key, default, meaning = cells
            option = "--" + ("" if section == "hub" else section + "-") + key.replace("_", "-")
            found[option] = (meaning, default)
    return found


def settings_in_man_page() -> dict[str, str]:
    """The defaults that are told, by option."""
    found = {}
    for entry in MAN.read_text(encoding="utf-8").split("\n.TP\n")[1:]:
        head, _, words = entry.partition("\n")
        option = re.match(r'\.BI (\\-\\-[a-z\\-]+) " ', head)
        if option:
            plain = words.replace("\\-", "-").replace("\n", " ")
            default = re.search(r"(\S+) unless set", plain)
            none = default is None or default[1] in ("none", "name")
            found[option[1].replace("\\-", "-")] = "" if none else default[1].rstrip(",;")
    return found


class Help(unittest.TestCase):
    def test_has_every_setting_as_the_documentation_has_it(self) -> None:
        told = settings_in_help()
        self.assertGreater(len(told), 20)
        self.assertEqual(told, settings_in_document())

    def test_has_every_setting_as_the_man_page_has_it(self) -> None:
        self.assertEqual({option: default for option, (_, default) in settings_in_help().items()},
                         settings_in_man_page())

    def test_fits_a_terminal(self) -> None:
        text = subprocess.run([places.binaries() / "corvane-hub", "--help"], capture_output=True,
                              text=True, check=True).stdout
        self.assertEqual([line for line in text.splitlines() if len(line) > 84], [])
