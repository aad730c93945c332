"""corvanectl's help, man page and completion name everything; its methods are the daemon's."""

import json
import re
import socket
import subprocess

from harness import places
from harness.corvanectl import DONE, PORT, Operated, about, program

MAN = places.CHECKOUT / "packaging" / "man" / "corvanectl.1"
COMPLETION = places.CHECKOUT / "packaging" / "completion" / "corvanectl.bash"
LISTED = re.compile(r"^  ([a-z][a-z-]*) {2,}\S", re.MULTILINE)
OPTION = re.compile(r"--[a-z][a-z-]*")
INVALID_PARAMS, UNKNOWN_METHOD = -32602, -32601


class Described(Operated):
    def help(self, *command: str) -> str:
        return self.done(*command, "--help")

    def commands(self, *command: str) -> list[str]:
        """The commands that follow, as the help lists them in its groups."""
        text = self.help(*command).partition("Examples:")[0]
        return LISTED.findall(text)

    def innermost(self) -> list[tuple[str, ...]]:
        """Every command, without those that only hold others."""
        found = []
        for first in self.commands():
            inner = self.commands(first)
            found += [(first, second) for second in inner] or [(first,)]
        return found

    def options(self, *command: str) -> set[str]:
        """The options of the command itself, as its help lists them."""
        section = re.search(r"\nOptions:\n((?:  .*\n)+)", self.help(*command))[1]
        return set(OPTION.findall("\n".join(line[:26] for line in section.splitlines())))


class Help(Described):
    def test_is_there_for_every_command_with_examples_of_it(self) -> None:
        commands = self.innermost()
        self.assertGreater(len(commands), 20)
        for command in commands:
            with about(command):
                text = self.help(*command)
                self.assertIn("Usage: corvanectl " + " ".join(command), text)
                self.assertRegex(text, r"Examples:\n  corvanectl (--\S+ (\S+ )?)?"
                                 + " ".join(command))

    def test_tells_the_exit_statuses(self) -> None:
        text = self.help()
        for line in ("0  done", "1  the daemon or the receiver refused", "2  the command line",
                     "3  the daemon cannot be reached"):
            self.assertIn(f"\n  {line}", text)

    def test_fits_a_terminal(self) -> None:
        for command in ((), *self.innermost()):
            for line in self.help(*command).splitlines():
                self.assertLessEqual(len(line), 100, (command, line))

    def test_examples_are_understood(self) -> None:
        """Each that can do no harm: without a daemon it fails for that reason alone."""
        for command in self.innermost():
            examples = re.findall(r"^  corvanectl (.*)$", self.help(*command), re.MULTILINE)
            for example in examples:
                words = example.partition("|")[0].split()
                status = self.ctl("--port", "1", *words).status if "--host" not in words else 3
                offline = command[0] in ("config", "methods")
                missing_file = {"firmware": 2, "record": 1}.get(command[0])
                needs_file = command[0] == "record" or command == ("firmware", "upgrade")
                wanted = missing_file if needs_file else 0 if offline else 3
                self.assertEqual(status, wanted, example)

    def test_version_is_that_of_the_project(self) -> None:
        wanted = re.search(r"project\(corvane VERSION (\S+)",
                           (places.CHECKOUT / "CMakeLists.txt").read_text())[1]
        self.assertEqual(self.done("--version"), f"corvanectl {wanted}\n")


class ManPage(Described):
    def setUp(self) -> None:
        super().setUp()
        run = subprocess.run(["man", "-l", "--warnings", str(MAN)], capture_output=True, text=True,
                             check=False, env={**self.environment(), "MANWIDTH": "1000",
                                               "LC_ALL": "C.UTF-8", "MANPAGER": "cat"})
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        self.text = re.sub(r"[ \u2010]+", lambda found: "-" if "\u2010" in found[0] else " ",
                           run.stdout)

    def test_names_every_command_and_its_options(self) -> None:
        for command in self.innermost():
            heading = re.compile(rf"^ *{' '.join(command)}\b.*$", re.MULTILINE)
            with about(command):
                self.assertRegex(self.text, heading)
                headings = "\n".join(heading.findall(self.text))
                for option in self.options(*command) - {"--help"}:
                    self.assertIn(option, headings)

    def test_names_every_option_of_all_commands(self) -> None:
        for option in self.options():
            self.assertRegex(self.text, rf"\n *(-h, )?{option}\b")

    def test_names_the_exit_statuses_and_the_environment(self) -> None:
        for status in range(4):
            self.assertRegex(self.text, rf"\n *{status} [A-Z]")
        self.assertIn("CORVANE_CONFIG", self.text)


class Completion(Described):
    def complete(self, *words: str) -> list[str]:
        """What is offered for the last word."""
        script = ("source /usr/share/bash-completion/bash_completion; source \"$1\"; shift\n"
                  "COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); COMPREPLY=()\n"
                  "COMP_LINE=\"$*\"; COMP_POINT=${#COMP_LINE}\n"
                  "compopt() { :; }\n"  # there is no completion under way that it could change
                  "_corvanectl; printf '%s\\n' \"${COMPREPLY[@]}\"")
        run = subprocess.run(["bash", "-c", script, "bash", str(COMPLETION), program(), *words],
                             capture_output=True, text=True, check=False, cwd=self.folder,
                             env=self.environment())
        self.assertEqual((run.returncode, run.stderr), (0, ""), run)
        return run.stdout.split("\n")[:-1] if run.stdout.strip() else []

    def test_offers_every_command(self) -> None:
        self.assertEqual(sorted(self.complete("")), sorted(self.commands()))
        for first in self.commands():
            if inner := self.commands(first):
                self.assertEqual(sorted(self.complete(first, "")), sorted(inner))

    def test_offers_every_option_of_a_command(self) -> None:
        inherited = self.options()
        for command in self.innermost():
            wanted = (inherited | self.options(*command)) - {"--version"}
            if command[0] == "config":
                wanted |= self.options("config")
            with about(command):
                self.assertEqual(set(self.complete(*command, "-")), wanted)
        self.assertEqual(set(self.complete("-")), inherited)

    def test_offers_what_begins_as_the_word_does(self) -> None:
        self.assertEqual(sorted(self.complete("ref")), ["reference-format", "reference-position",
                                                        "refresh"])
        self.assertEqual(self.complete("--json", "--port", "5314", "sbas", "o"), ["on", "off"])
        self.assertEqual(self.complete("reference-format", "R"), ["RTCM3", "RTCM2"])
        self.assertEqual(self.complete("tracking", "--w"), ["--watch"])
        self.assertEqual(self.complete("sbas", "on", ""), [])

    def test_offers_values_that_are_accepted(self) -> None:
        for command in ("sbas", "glonass-corrections", "gps-logging", "reference-format",
                        "ionosphere", "reset"):
            for value in self.complete(command, ""):
                arguments = (command, value, *(("--yes",) if value == "factory" else ()))
                self.assertEqual(self.ctl("--port", "1", *arguments).status, 3, arguments)
        for sentence in self.complete("nmea", ""):
            for period in self.complete("nmea", sentence, ""):
                self.assertEqual(self.ctl("--port", "1", "nmea", sentence, period).status, 3)

    def test_offers_the_keys_of_a_section(self) -> None:
        listed = json.loads(self.done("--json", "config", "list", "--all"))["settings"]
        keys = {entry["key"] for entry in listed if entry["section"] == "Corvane"}
        for command in ("get", "set", "unset"):
            self.assertEqual(set(self.complete("config", command, "")), keys)
        self.assertEqual(self.complete("config", "--section", "platform", "get", ""),
                         ["rpc_listen"])
        self.assertEqual(self.complete("config", "set", "baud"), ["baud_rate"])
        for section in self.complete("config", "get", "--section", ""):
            self.assertTrue(self.complete("config", "get", "--section", section, ""))

    def test_offers_the_methods_and_files(self) -> None:
        methods = [entry["method"] for entry in self.document("methods")["methods"]]
        self.assertEqual(sorted(self.complete("call", "")), sorted(methods))
        (self.folder / "a file.shex").touch()
        self.assertEqual(self.complete("firmware", "upgrade", "a"), ["a file.shex"])
        self.assertEqual(self.complete("config", "--file", "a"), ["a file.shex"])

    def test_is_loaded_for_the_program(self) -> None:
        run = subprocess.run(["bash", "-c", f"source {COMPLETION}; complete -p corvanectl"],
                             capture_output=True, text=True, check=True)
        self.assertEqual(run.stdout, "complete -F _corvanectl corvanectl\n")


class Methods(Described):
    def call(self, method: str, *arguments: object) -> dict:
        with socket.create_connection(("127.0.0.1", PORT)) as stream, stream.makefile("rw") as file:
            file.write(json.dumps({"jsonrpc": "2.0", "id": 1, "method": method,
                                   "params": arguments}) + "\n")
            file.flush()
            return json.loads(file.readline())

    def described(self) -> list[dict]:
        return self.document("methods")["methods"]

    def test_are_told_without_a_daemon(self) -> None:
        text = self.done("methods")
        for entry in self.described():
            self.assertIn(f"{entry['method']}({entry['arguments']})\n    {entry['effect']}\n", text)

    def test_are_exactly_those_that_the_daemon_answers(self) -> None:
        source = places.CHECKOUT / "src" / "corvane" / "src" / "RPC" / "NovatelMPIServer.cpp"
        table = source.read_text().partition("kMethods[] = {")[2].partition("\n};")[0]
        registered = re.findall(r'^ +\{"(\w+)", \{', table, re.MULTILINE)
        self.assertEqual([entry["method"] for entry in self.described()], registered)
        self.operated()
        for name in registered:
            answer = self.call(name)
            self.assertNotEqual(answer.get("error", {}).get("code"), UNKNOWN_METHOD, name)
        self.assertEqual(self.call("novatel_Nothing")["error"]["code"], UNKNOWN_METHOD)

    def test_take_the_arguments_that_are_told(self) -> None:
        self.operated()
        good = {"integer": 0, "number": 6378137.0, "text": "VARN1"}
        lenient = ("RequestNMEA", "novatel_SetIonosphereMode",
                   "novatel_SetReferenceOutputBandwidth")  # judge themselves what they are given
        for entry in self.described():
            kinds = [each.rpartition(": ")[2] for each in filter(None,
                                                                 entry["arguments"].split(", "))]
            with about(entry["method"]):
                answer = self.call(entry["method"], *(good[kind] for kind in kinds))
                self.assertIn("result", answer)
                if kinds and entry["method"] not in lenient:
                    for wrong in ([], [[]] * len(kinds)):
                        error = self.call(entry["method"], *wrong)["error"]
                        self.assertEqual(error["code"], INVALID_PARAMS)

    def test_answer_nothing_where_that_is_told(self) -> None:
        self.operated()
        silent = [entry["method"] for entry in self.described() if not entry["answer"]]
        self.assertEqual(silent, ["novatel_SetReferenceOutputBandwidth"])
        self.assertIsNone(self.call(silent[0], 1)["result"])
        self.assertEqual(self.ctl("call", silent[0], "1").status, DONE)
