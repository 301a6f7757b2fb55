#!/usr/bin/python3
"""The scripts that install packages and summarise tests: scriptsTests.py BUILD_FOLDER Scripts.TEST

Scripts of a few lines stand in for package managers and log how they were called."""

import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOURCES = Path(__file__).resolve().parents[2]
INSTALL = SOURCES / "scripts" / "install-packages"
TOOLS = ("bash", "sh", "env", "awk", "tr", "sed", "cat", "grep", "head", "mktemp", "rm", "dirname")


def needs(section, column):
    """The names in a column of a section of packages.txt, each with its alternatives."""
    here, names = "", []
    for line in (SOURCES / "packages.txt").read_text(encoding="utf-8").splitlines():
        words = line.partition("#")[0].split()
        if words and words[0].startswith("["):
            here = words[0][1:-1]
        elif words and here == section and words[column] != "-":
            names += [need.split("/") for need in words[column].split(",")]
    return names


class Scripts(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.tools = self.folder / "tools"
        self.tools.mkdir()
        for tool in TOOLS:
            (self.tools / tool).symlink_to(shutil.which(tool))
        self.asked = self.folder / "asked"

    def play(self, name, script):
        """Adds a program to the path that logs its arguments in `asked`, a line for each call."""
        program = self.tools / name
        program.write_text(f"#!/bin/sh\necho \"{name} $*\" >>'{self.asked}'\n{script}\n", encoding="utf-8")
        program.chmod(0o755)

    def install(self, *sections):
        return subprocess.run([shutil.which("bash"), str(INSTALL), *sections], env={"PATH": str(self.tools)}, text=True,
                              stdin=subprocess.DEVNULL, capture_output=True)

    def lines(self, program):
        return [line for line in self.asked.read_text().splitlines() if line.startswith(program)]

    def play_apt(self, update="exit 0", install="exit 0"):
        self.play("dpkg-query", "exit 1")
        self.play("apt-cache", "echo Filename: pool/x.deb")
        self.play("apt-get", f"""case "$*" in
            *--assume-no*) echo 'Need to get 186 MB of archives.'
                echo 'After this operation, 790 MB of additional disk space will be used.'; exit 1 ;;
            *update*) {update} ;;
            *) {install} ;;
            esac""")
        self.play("sudo", 'exec "$@"')

    def test_every_need_has_a_name_for_every_system(self):
        for line in (SOURCES / "packages.txt").read_text(encoding="utf-8").splitlines():
            words = line.partition("#")[0].split()
            if words and not words[0].startswith("["):
                self.assertEqual(len(words), 4, line)
                self.assertNotEqual(words[0], "-", line)
        for column in (1, 2, 3):
            for section in ("build", "run"):
                self.assertEqual(len(needs(section, column)), len(needs(section, 0)), section)

    def test_prints_what_apt_will_install_before_it_does(self):
        self.play_apt()
        result = self.install("build", "run")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        names = " ".join(need[0] for section in ("build", "run") for need in needs(section, 0))
        self.assertIn(f"Installing: {names}\n    to download: 186 MB\n    on the disk: 790 MB\n", result.stdout)
        asked = self.lines("apt-get")
        self.assertEqual(len(asked), 2)
        self.assertTrue(asked[1].endswith(f"install --no-install-recommends {names}"), asked[1])

    def test_installs_nothing_that_is_installed(self):
        self.play_apt()
        self.play("dpkg-query", "printf installed")
        result = self.install("build", "run", "tour", "test")
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))
        self.assertFalse(self.lines("apt-get"))

    def test_takes_the_alternative_that_the_system_has(self):
        self.play_apt()
        self.play("apt-cache", 'case "$2" in qt6-svg-dev) exit 100 ;; esac; echo Filename: pool/x.deb')
        self.assertEqual(self.install("build").returncode, 0)
        self.assertIn(" libqt6svg6-dev", self.lines("apt-get")[-1])
        self.assertNotIn(" qt6-svg-dev", self.lines("apt-get")[-1])

    def test_without_a_network_ends_with_a_sentence_and_a_command_to_paste(self):
        noise = "; ".join(f"echo 'E: Failed to fetch package {number}' >&2" for number in range(20))
        self.play_apt(update=f"{noise}; exit 100", install=f"{noise}; exit 100")
        result = self.install("build")
        self.assertEqual(result.returncode, 1)
        said = result.stderr.splitlines()
        self.assertLessEqual(len(said), 5)
        self.assertIn("Is there a network?", said[-2])
        names = " ".join(need[0] for need in needs("build", 0))
        self.assertEqual(said[-1].strip(), f"sudo apt-get install --no-install-recommends {names}")
        self.assertEqual(len(self.lines("apt-get")), 4)  # size, install, update, install again

    def test_reports_packages_that_the_lists_do_not_have(self):
        self.play_apt()
        self.play("apt-cache", 'case "$2" in *svg*) exit 100 ;; esac; echo Filename: pool/x.deb')
        result = self.install("build")
        self.assertEqual(result.returncode, 1)
        self.assertIn("do not have: qt6-svg-dev or libqt6svg6-dev.", result.stderr)
        self.assertFalse([line for line in self.lines("apt-get") if " install " in line])

    def test_uses_the_managers_of_other_systems(self):
        managers = {"dnf": (1, "dnf -y install", "rpm"), "zypper": (2, "zypper --non-interactive install --no-recommends", "rpm"),
                    "pacman": (3, "pacman -S --needed --noconfirm", "pacman")}
        for manager, (column, command, query) in managers.items():
            with self.subTest(manager):
                self.asked.unlink(missing_ok=True)
                self.play("sudo", 'exec "$@"')
                self.play("rpm", 'case "$*" in *cmake*) exit 0 ;; esac; exit 1')
                self.play(manager, 'case "$*" in "-T cmake") exit 0 ;; -T*) exit 1 ;; esac; exit ${STATUS:-0}')
                names = [need[0] for need in needs("build", column) + needs("run", column) if need != ["cmake"]]
                result = self.install("build", "run")
                self.assertEqual((result.returncode, result.stderr), (0, ""))
                self.assertEqual(self.lines(command), [f"{command} {' '.join(names)}"])
                self.assertTrue(self.lines(query))

                self.play(manager, 'case "$*" in -T*) exit 1 ;; esac; exit 1')
                result = self.install("build", "run")
                self.assertEqual(result.returncode, 1)
                self.assertRegex(result.stderr.splitlines()[-1], rf"^    sudo {manager} .* {names[-1]}$")
                (self.tools / manager).unlink()

    def test_stops_if_nothing_can_install(self):
        result = self.install("build")
        self.assertEqual(result.returncode, 1)
        self.assertIn("    qt6-svg-dev or libqt6svg6-dev\n", result.stderr)
        self.assertNotIn("|", result.stderr)
        self.assertIn('"c++" is missing, so nothing can be built.', result.stderr.splitlines()[-1])

        for tool in ("c++", "cmake", "ninja"):
            self.play(tool, "exit 0")
        self.assertEqual(self.install("build").returncode, 0)

    def summary(self, *builds):
        result = subprocess.run([str(SOURCES / "scripts" / "summarise-tests"), *map(str, builds)], text=True,
                                stdin=subprocess.DEVNULL, capture_output=True)
        self.assertEqual(result.stderr, "")
        return result.returncode, [part.splitlines() for part in result.stdout.strip().split("\n\n")]

    def report(self, tests):
        """A build with what ctest reports: names, seconds, results, and what the tests printed."""
        build = self.folder / "release"
        (build / "suites").mkdir(parents=True)
        results = {"run": "", "fail": '<failure message=""/>', "notrun": '<skipped message=""/>'}
        cases = [f'<testcase name="{name}" classname="{name}" time="{time}" status="{status}">{results[status]}'
                 f"<system-out>{said}\n</system-out></testcase>" for name, time, status, said in tests]
        (build / "tests.xml").write_text(f"<testsuite>{''.join(cases)}</testsuite>", encoding="utf-8")
        return build

    def suite(self, build, name, tests):
        cases = [f'<testcase name="{test}" classname="{name}" status="run" time="{time}">{result}</testcase>'
                 for test, time, result in tests]
        (build / "suites" / f"{name.replace('/', '-')}.xml").write_text(
            f"<testsuites><testsuite name=\"{name}\">{''.join(cases)}</testsuite></testsuites>", encoding="utf-8")

    def test_reasons_of_skips_and_the_longest_tests_are_summarised(self):
        build = self.report([("Slow.test/1  # GetParam() = &quot;1&quot;", 61.25, "run", ""),
                             *[("Fast.test", 0.1, "run", "a.cpp:1: Skipped\nnot at all")] * 20,
                             ("Skipped.test", 0.2, "notrun", "x.cpp:7: Skipped\nneeds root"),
                             ("Skipped.test", 0.2, "notrun", "x.cpp:9: Skipped\nneeds root"),
                             ("Skipped.test", 0.2, "notrun", "NOT CHECKED: no formatter"),
                             ("Skipped.test", 0.2, "notrun", "test_window ... skipped 'there is no weston here'"),
                             ("Skipped.test", 0.2, "notrun", "mute"),
                             ("Of/Suite", 9, "run", "")])
        self.suite(build, "Of/Suite", [("isSlow", 8, ""), ("isRoot", 0, '<skipped message="y.cpp:3&#x0A;needs root&#x0A;"/>')])
        status, (skips, longest, total) = self.summary(build)
        self.assertEqual({tuple(line.split(None, 1)) for line in skips[1:]},
                         {("3", "needs root"), ("1", "NOT CHECKED: no formatter"), ("1", "there is no weston here"),
                          ("1", "Skipped.test")})
        self.assertEqual(len(longest), 11)
        self.assertEqual([line.split() for line in longest[1:3]],
                         [["61.2", "s", "release", "Slow.test/1"], ["8.0", "s", "release", "Of/Suite.isSlow"]])
        self.assertEqual((status, total), (0, ["22 passed, 0 failed, 6 skipped"]))

    def test_a_suite_that_ends_early_counts_as_failed(self):
        build = self.report([("Alone", 1, "fail", ""), ("WithAFailure", 1, "fail", ""), ("Killed", 1, "fail", ""),
                             ("LeakAtTheEnd", 1, "fail", "")])
        self.suite(build, "WithAFailure", [("is", 1, '<failure message="no"/>'), ("isNot", 1, "")])
        self.suite(build, "LeakAtTheEnd", [("is", 1, "")])
        status, (*_, total) = self.summary(build)
        self.assertEqual((status, total), (1, ["2 passed, 4 failed, 0 skipped"]))

    def test_a_build_without_a_report_counts_as_failed(self):
        status, (*_, total) = self.summary(self.folder / "asan")
        self.assertEqual((status, total), (1, ["0 passed, 1 failed, 0 skipped"]))


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.argv.pop(1)
    unittest.main(verbosity=2)
