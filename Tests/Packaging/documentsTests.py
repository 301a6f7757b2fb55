#!/usr/bin/python3
"""The documents, compared with the program and the sources: documentsTests.py BUILD_FOLDER Documents.TEST"""

import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from xml.etree import ElementTree

SOURCES = Path(__file__).resolve().parents[2]
BUILD = None
READMES = ["README.md", "README.es.md"]
PAGES = ["Packaging/man/reelkeep.1", "Packaging/man/es/reelkeep.1"]
FOR_USERS = ["README.es.md", "docs/confianza.md"]
ALL = [*READMES, "CONTRIBUTING.md", "docs/confianza.md", "docs/release.md"]


def read(path):
    return (SOURCES / path).read_text(encoding="utf-8")


def extensions():
    """The extensions that the program knows."""
    listed = re.search(r"extensions = \{([^}]*)\}", read("Sources/Reelkeep/Engine/VideoSyncService.cpp"))[1]
    return set(re.findall(r'"(\w+)"', listed))


def code():
    """All sources of the program as one text, with literals joined that are split over two lines."""
    return re.sub(r'"\s*\n\s*"', "", "".join(path.read_text(encoding="utf-8")
                                             for path in sorted((SOURCES / "Sources").rglob("*.cpp"))))


def commands(document):
    """The lines of a document that are commands, without the explanations beside them."""
    lines = re.findall(r"(?m)^(?: {4}| {8})(\S.*)$", read(document))
    return [re.split(r" {2,}|\s#", line)[0].strip() for line in lines]


class Documents(unittest.TestCase):
    def test_extensions_are_those_of_the_program(self):
        program = extensions()
        self.assertEqual(len(program), 12)
        for document in (*READMES, "docs/confianza.md"):
            listed = re.search(r"(?:`\w{3,4}`[\s,uoy]*(?:and )?){12}", read(document))
            self.assertIsNotNone(listed, document)
            self.assertEqual(set(re.findall(r"`(\w+)`", listed[0])), program, document)
        for page in PAGES:
            self.assertEqual(set(re.findall(r"(?m)^\.IR? \.(\w{3,4})(?: [,.])?$", read(page))), program, page)

    def test_manual_pages_name_all_that_the_verdict_does_not_prove(self):
        not_proven = read("docs/confianza.md").split("## Qué no demuestra")[1].split("\n## ")[0]
        points = re.findall(r"(?m)^\*\*N", not_proven)
        self.assertGreater(len(points), 5)
        for page, count in zip(PAGES, ("eight", "ocho")):
            self.assertIn(f" {count} ", read(page))
            self.assertEqual(len(points), 8)  # in these words
            self.assertEqual(re.findall(r"(?m)^\.IP (\d+)\. 3$", read(page)), [str(i + 1) for i in range(len(points))], page)
        steps = re.findall(r"(?m)^(\d+)\. ", read("docs/confianza.md").split("## Antes de formatear")[1])
        self.assertEqual(len(steps), 8)  # as the pages say

    def test_manual_pages_point_to_what_is_installed(self):
        tree = subprocess.run(["cmake", "--install", str(BUILD), "--prefix", "/usr"], check=True, capture_output=True,
                              text=True, env={"DESTDIR": str(self.enterContext(tempfile.TemporaryDirectory())), "PATH": "/usr/bin:/bin"})
        for page in PAGES:
            named = re.findall(r"(?m)^\.IR? (/usr/\S+)", read(page))
            self.assertEqual(len(named), 2, page)
            for path in named:
                self.assertIn(f"{path}\n", tree.stdout, page)

    def test_every_link_leads_somewhere(self):
        for document in ALL:
            for link in re.findall(r"\]\(([^)#]+)(?:#[^)]*)?\)", read(document)):
                self.assertTrue((SOURCES / document).parent.joinpath(link).exists(), f"{document}: {link}")

    def test_every_command_can_be_given(self):
        presets = read("CMakePresets.json")
        version = re.search(r"project\(Reelkeep VERSION ([0-9.]+)", read("CMakeLists.txt"))[1]
        seen = 0
        for document in ALL:
            for command in commands(document):
                where = f"{document}: {command}"
                for script in re.findall(r"(?:^|sudo |^&& )((?:\./|scripts/)[\w./-]+)", command):
                    path = script.removeprefix("./")
                    if script.startswith("scripts/") or path in ("run", "test"):
                        seen += 1
                        self.assertTrue((SOURCES / path).is_file(), where)
                        self.assertTrue((SOURCES / path).stat().st_mode & 0o100, where)
                        for option in re.findall(r" (--[a-z]+)", command):
                            self.assertIn(option, read(path), where)
                for preset in re.findall(r"--preset (\w+)", command):
                    self.assertIn(f'"name": "{preset}"', presets, where)
                for suite in re.findall(r"try-system (\w+)", command):
                    self.assertIn(suite, ("bookworm", "trixie"), where)
                for name, written in re.findall(r"(reelkeep[_-])(\d+\.\d+\.\d+)", command):
                    self.assertEqual(written, version, where)
        self.assertGreater(seen, 15)

    def test_texts_of_the_window_are_those_of_the_program(self):
        program = code()
        for document in FOR_USERS:
            text = re.sub(r"\s+", " ", read(document))
            # Texts of the window begin with a capital; other words are quoted too.
            quoted = set(re.findall(r"«([A-Z][^»]+)»", text))
            self.assertGreater(len(quoted), 1, document)
            for words in quoted:
                self.assertTrue(words.strip() in program, f"{document}: {words}")
        for hidden in (".reelkeep-copia", ".reelkeep-lista"):
            self.assertIn(f'"{hidden}"', program)
            for page in PAGES:
                self.assertIn(hidden.replace("-", r"\-"), read(page))

    def test_readmes_name_the_address_of_the_build(self):
        metainfo = ElementTree.parse(BUILD / "Packaging" / "org.reelkeep.Reelkeep.metainfo.xml")
        home = metainfo.findtext("url[@type='homepage']")
        for readme in READMES:
            if home:
                self.assertIn(home, read(readme), readme)
            else:
                self.assertRegex(re.sub(r"\s+", " ", read(readme)), "no public address yet|no tiene una dirección pública",
                                 readme)

    def test_readmes_agree_on_the_systems(self):
        for readme in READMES:
            rows = re.findall(r"(?m)^\| (Debian \d+) \|", read(readme))
            self.assertEqual(rows, ["Debian 12", "Debian 13"], readme)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    BUILD = Path(sys.argv.pop(1)).absolute()
    unittest.main(verbosity=2)
