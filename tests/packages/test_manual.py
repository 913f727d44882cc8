"""Manual page and completions name every command and option, and man and the shells accept them."""
import os
import subprocess
import sys
import tempfile
import unittest

PROGRAM = os.environ["VANTREL_PROGRAM"]
SOURCE = os.environ["VANTREL_SOURCE"]
sys.path.insert(0, os.path.join(SOURCE, "scripts"))
import make_manual  # noqa: E402


class Manual(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory()
        cls.folder = cls.scratch.name
        make_manual.main(PROGRAM, cls.folder)
        cls.commands = make_manual.read_commands(PROGRAM)

    @classmethod
    def tearDownClass(cls):
        cls.scratch.cleanup()

    def text(self, name):
        with open(os.path.join(self.folder, name), encoding="utf-8") as file:
            return file.read()

    def test_commands_are_parsed(self):
        names = [command.name for command in self.commands]
        for name in ("iso2cso", "cso2iso", "iso2dax", "dax2iso", "iso2bin", "bin2iso", "iso2iml", "iml2iso",
                     "check-postgap", "add-postgap", "info", "verify", "list", "extract"):
            self.assertIn(name, names)
        level = [option for option in self.commands[0].options if "--level" in option.names]
        self.assertEqual((level[0].names, level[0].argument), (["-l", "--level"], "N"))
        self.assertIn("Compression level", level[0].text)
        for command in self.commands:
            self.assertIn("Example", command.notes, command.name)
            self.assertTrue(command.summary, command.name)

    def test_every_text_names_every_command_and_option(self):
        for name in ("vantrel.1", "vantrel.bash", "_vantrel", "vantrel.fish"):
            text = self.text(name).replace("\\-", "-")
            for command in self.commands:
                self.assertIn(command.name, text, name)
                for option in command.options:
                    for word in option.names:
                        wanted = word.lstrip("-") if name.endswith("fish") else word
                        self.assertIn(wanted, text, (name, command.name))

    def test_the_help_fits_80_columns(self):
        for words in [["--help"]] + [[command.name, "--help"] for command in self.commands]:
            text = subprocess.run([PROGRAM, *words], check=True, capture_output=True, text=True).stdout
            for line in text.splitlines():
                self.assertLessEqual(len(line), 80, (words, line))

    def test_usage_lines(self):
        for name, usage in (("iso2cso", "[options] FILE..."), ("extract", "[options] FILE [PATH...]"),
                            ("add-postgap", "[options] --count N FILE...")):
            text = subprocess.run([PROGRAM, name, "--help"], check=True, capture_output=True, text=True).stdout
            self.assertIn("Usage: vantrel %s %s\n" % (name, usage), text)

    def test_every_exit_status_is_in_the_manual(self):
        text = self.text("vantrel.1")
        for status in "0", "1", "2", "129", "130", "141", "143":
            self.assertRegex(text.split(".SH EXIT STATUS")[1], r"\b%s\b" % status)

    def test_man_accepts_the_page(self):
        done = subprocess.run(["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z",
                               os.path.join(self.folder, "vantrel.1")], capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def bash_completes(self, *words):
        script = 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); compopt() { :; }; _vantrel; ' \
                 'printf "%s\\n" "${COMPREPLY[@]}"'
        done = subprocess.run(["bash", "-c", script, "bash", os.path.join(self.folder, "vantrel.bash"), *words],
                              capture_output=True, text=True, cwd=self.folder)
        self.assertEqual(done.stderr, "")
        return done.stdout.splitlines()

    def test_bash_completes(self):
        self.assertEqual(self.bash_completes("vantrel", "iso2c"), ["iso2cso"])
        self.assertIn("--level", self.bash_completes("vantrel", "iso2cso", "--"))
        self.assertNotIn("--level", self.bash_completes("vantrel", "verify", "--"))
        self.assertEqual(self.bash_completes("vantrel", "verify", "vantrel.f"), ["vantrel.fish"])
        with open(os.path.join(self.folder, "a game (Disc 1).iso"), "w"):
            pass
        self.assertEqual(self.bash_completes("vantrel", "verify", "a game"), ["a game (Disc 1).iso"])

    def test_zsh_and_fish_accept_theirs(self):
        subprocess.run(["zsh", "-n", os.path.join(self.folder, "_vantrel")], check=True)
        subprocess.run(["fish", "--no-execute", os.path.join(self.folder, "vantrel.fish")], check=True)
        done = subprocess.run(["fish", "--private", "-c",
                               "source %s/vantrel.fish; complete -C 'vantrel iso2c'" % self.folder],
                              capture_output=True, text=True, env={**os.environ, "HOME": self.folder})
        self.assertIn("iso2cso", done.stdout)


if __name__ == "__main__":
    unittest.main()
