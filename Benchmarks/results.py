"""The table that compare prints, and its verdict: used by compare."""

import shutil

TOLERANCE = 1.1  # a goal missed by less may be the machine's noise


def is_missed(value: str, goal: str) -> bool:
    """Whether a value such as "0.25" or "369 MiB" is more than a tenth off a goal such as "<= 0.2" or ">= 2"."""
    if not goal:
        return False
    measured = float(value.split()[0])
    relation, limit = goal.split()[0], float(goal.split()[1])
    return measured > limit * TOLERANCE if relation == "<=" else measured < limit / TOLERANCE


class Results:
    """Prints rows as they are added; `finish` prints the verdict."""

    def __init__(self) -> None:
        self.missed: list[str] = []
        self.left_out: dict[str, str] = {}  # reasons by program or section
        print("| work | program | ratio | goal |\n|---|---|---|---|", flush=True)

    def row(self, work: str, what: str, value: str, goal: str) -> None:
        print(f"| {work} | {what} | {value} | {goal} |", flush=True)
        if is_missed(value, goal):
            self.missed.append(f"{work}, {what}: {value} instead of {goal}")

    def installed(self, programs: list[str]) -> list[str]:
        """Those that can be started; the others count as left out."""
        for program in programs:
            if not shutil.which(program):
                self.left_out[program] = "not installed"
        return [program for program in programs if program not in self.left_out]

    def finish(self) -> int:
        """Prints what was left out and which goals were missed. Returns the exit code: 1 if any was."""
        for what, reason in self.left_out.items():
            print(f"Left out: {what}, {reason}.")
        for goal in self.missed:
            print(f"MISSED by more than a tenth: {goal}")
        if not self.missed:
            print("No goal was missed by more than a tenth.")
        return 1 if self.missed else 0
