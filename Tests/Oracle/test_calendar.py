#!/usr/bin/env python3
"""Compares the calendar's answers with those of Python's zoneinfo, around every clock change and at random.

The answers here go the other way than the calendar's: not from an instant along the clock's changes, but from what
the clock should read back to instants, as PEP 495 does it. Both read the same database, /usr/share/zoneinfo.
"""

import argparse
import hashlib
import math
import random
import subprocess
import sys
import tempfile
import time
import zoneinfo
from datetime import datetime, timedelta, timezone
from pathlib import Path

DAY = 86400
STARTS_PER_MINUTE = 10  # of some fifteen: another seed asks the others
EPOCH = datetime(1970, 1, 1)
DISTANT_PAST = datetime(1, 1, 4)
IMPOSSIBLE_TIMES = [(24, 0), (-1, 0), (0, -1), (0, 60), (23, 60), (1666, 40)]


def whole_seconds(span):
    return span.days * DAY + span.seconds


def seconds(utc):
    return whole_seconds(utc - EPOCH)


class Clock:
    """The local clock of one zone."""

    def __init__(self, name):
        self.zone = zoneinfo.ZoneInfo(name)
        self.epoch = EPOCH.replace(tzinfo=self.zone)
        self.known = {}

    def offset(self, instant):
        utc = self.epoch + timedelta(seconds=instant)
        return whole_seconds(self.zone.fromutc(utc).utcoffset())

    def reading(self, instant):
        return instant + self.offset(instant)

    def first_change(self, after, until):
        """The one change of the offset between two instants."""
        old = self.offset(after)
        while until - after > 1:
            middle = (after + until) // 2
            if self.offset(middle) == old:
                after = middle
            else:
                until = middle
        return until

    def changes(self, first, last):
        """All changes of the offset, as (instant, offset before, offset after)."""
        step = 3 * DAY  # no offset was ever in force for less: Freetown's summer of 1939 had four days
        before = self.offset(first)
        for instant in range(first, last, step):
            after = self.offset(instant + step)
            if after != before:
                yield self.first_change(instant, instant + step), before, after
                before = after

    def occurrences(self, day, minute):
        """When the clock shows that minute of that day (days since 1970), and when it has skipped it."""
        key = day * 1440 + minute
        if key not in self.known:
            self.known[key] = self.find_occurrences(key * 60)
        return self.known[key]

    def find_occurrences(self, reading):
        local = self.epoch + timedelta(seconds=reading)
        first = reading - whole_seconds(local.utcoffset())
        second = reading - whole_seconds(local.replace(fold=1).utcoffset())
        if first == second:
            return (first,), ()
        if first < second:
            return (first, second), ()
        return (), (self.first_change(second, first),) if first - second < DAY else ()

    def next(self, start, minute):
        return self.first(start, self.reading(math.floor(start)) // DAY, minute)

    def first(self, start, today, minute):
        found = []
        for day in (today - 1, today, today + 1):
            shown, skipped = self.occurrences(day, minute)
            if shown and shown[0] == math.floor(start):
                shown = ()  # what the clock shows again is passed over from here
            found += [instant for instant in shown + skipped if instant > start]
        return min(found) if found else self.first(start, today + 1, minute)

    def set(self, instant, minute):
        today = self.reading(math.floor(instant)) // DAY
        midnights = self.occurrences(today, 0)
        start = min(midnights[0] + midnights[1])
        found = []
        for day in range(today - 1, today + 4):
            shown, skipped = self.occurrences(day, minute)
            found += [other for other in shown + (skipped if day >= today else ()) if other >= start]
        return min(found)


class Interview:
    """The questions, and what zoneinfo answers them."""

    def __init__(self, questions, expected, chance):
        self.questions = questions
        self.expected = expected
        self.chance = chance
        self.asked = {"next": 0, "set": 0, "time": 0}

    def ask(self, question, instant, minute, answer):
        self.questions.write(f"{question} {instant!r} {minute // 60} {minute % 60}\n")
        self.expected.write(f"{answer}\n")
        self.asked[question] += 1

    def ask_next(self, clock, start, minute):
        self.ask("next", start, minute, clock.next(start, minute))

    def ask_set(self, clock, instant, minute):
        self.ask("set", instant, minute, clock.set(instant, minute))

    def ask_time(self, clock, instant):
        minute = clock.reading(math.floor(instant)) % DAY // 60
        self.questions.write(f"time {instant!r}\n")
        self.expected.write(f"{minute // 60}:{minute % 60}\n")
        self.asked["time"] += 1

    def ask_around(self, clock, change, before, after):
        low, high = sorted((change + before, change + after))
        edges = (low - 60, low, low + 60, (low + high) // 2, high - 60, high, high + 60)
        minutes = {edge % DAY // 60 for edge in edges} | {self.chance.randrange(1440) for _ in range(1)}
        for minute in sorted(minutes):
            starts = self.starts_around(clock, change, minute, low // DAY)
            for start in self.chance.sample(starts, min(len(starts), STARTS_PER_MINUTE)):
                self.ask_next(clock, start, minute)
            for instant in (change - 1, change + self.chance.randrange(DAY)):
                self.ask_set(clock, instant, minute)
        for instant in (change - 1, change - 0.5, change):
            self.ask_time(clock, instant)

    def starts_around(self, clock, change, minute, day):
        """On the dot, a second and less than a second off, between two readings, somewhere near."""
        starts = {change - 1, change, change + self.chance.uniform(-2, 2) * DAY}
        for other in (day, day + 1):
            shown, skipped = clock.occurrences(other, minute)
            for instant in shown + skipped:
                starts |= {instant - 1, instant - 0.5, instant, instant + 0.5, instant + 1}
            if len(shown) == 2:
                starts.add(self.chance.randrange(*shown))
        return sorted(starts)

    def ask_at_random(self, clock, first, last, times):
        for _ in range(times):
            minute = self.chance.randrange(1440)
            self.ask_next(clock, self.chance.choice((math.floor, float))(self.chance.uniform(first, last)), minute)
            self.ask_set(clock, self.chance.randrange(first, last), minute)
            self.ask_time(clock, self.chance.randrange(first, last))

    def ask_the_impossible(self, clock, instant):
        for hour, minute in IMPOSSIBLE_TIMES:
            for question in ("next", "set"):
                self.questions.write(f"{question} {instant} {hour} {minute}\n")
                self.expected.write("-\n")
                self.asked[question] += 1


def groups_of_names():
    """The names of the database's zones, those of one and the same zone together."""
    groups = {}
    for name in sorted(zoneinfo.available_timezones() - {"localtime"}):
        folder = next(folder for folder in zoneinfo.TZPATH if Path(folder, name).is_file())
        groups.setdefault(hashlib.sha256(Path(folder, name).read_bytes()).digest(), []).append(name)
    return list(groups.values())


def hold(interview, first_year, last_year):
    first, last = (seconds(datetime(year, 1, 1)) for year in (first_year, last_year + 1))
    distant, far = seconds(DISTANT_PAST), seconds(datetime(2101, 1, 1))
    names = changes = 0
    for group in groups_of_names():
        clock = Clock(group[0])
        for name in group:
            interview.questions.write(f"zone {name}\n")
            interview.ask_at_random(clock, first, last, 1)
        for change in clock.changes(first, last):
            interview.ask_around(clock, *change)
            changes += 1
        interview.ask_at_random(clock, first, last, 100)
        interview.ask_at_random(clock, distant, far, 50)
        interview.ask_the_impossible(clock, first)
        names += len(group)
    return names, changes


def differences(questions, expected, answers):
    """Question, expectation and answer wherever the last two differ."""
    zone = ""
    for question in questions:
        if question.startswith("zone "):
            zone = question[5:].strip()
            continue
        expectation, answer = expected.readline().strip(), answers.readline().strip()
        if expectation != answer:
            yield f"{zone}: {question.strip()}: expected {expectation}, got {answer or 'nothing'}"


def main():
    options = argparse.ArgumentParser(description=__doc__)
    options.add_argument("answers", help="the program that answers for the calendar")
    options.add_argument("--seed", type=int, default=random.SystemRandom().randrange(1 << 32))
    options.add_argument("--first-year", type=int, default=2000)
    options.add_argument("--last-year", type=int, default=2040)
    options = options.parse_args()

    print(f"seed {options.seed}, database {zoneinfo.TZPATH[0]}", flush=True)
    began = time.monotonic()
    with tempfile.TemporaryFile("w+") as questions, tempfile.TemporaryFile("w+") as expected, \
            tempfile.TemporaryFile("w+") as answers:
        interview = Interview(questions, expected, random.Random(options.seed))
        names, changes = hold(interview, options.first_year, options.last_year)
        for file in (questions, expected):
            file.seek(0)
        subprocess.run([options.answers], stdin=questions, stdout=answers, check=True)
        for file in (questions, answers):
            file.seek(0)
        found = list(differences(questions, expected, answers))

    print(*found[:20], sep="\n", end="\n" if found else "")
    print(f"{names} names, {changes} clock changes; questions: {interview.asked}; {len(found)} differences; "
          f"{time.monotonic() - began:.0f} s")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
