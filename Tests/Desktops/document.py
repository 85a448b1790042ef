"""Writes docs/desktops.md and the pictures in it from the results that were kept."""

import json
import shutil

from checks import COLUMNS, NONE, YES

HEAD = """# On real desktops

Written by `Tests/Desktops/run --write`; do not edit. Each row is a Debian 12 of its own with the desktop's packages, booted with
systemd, logind, and a session without a screen; the product comes from its own package, and a pointer clicks as a user would.
Idle times are set to a minute or so, and waited for twice: with the cup off, as the control, and with the cup on.

"""

MEANING = """## What the columns say

- **the cup shows**: after the first run, with the Welcome window's button pressed, it is found in the panel's pixels.
- **contrast off, on**: of the strongest quarter of the cup's pixels with the panel's color; "yes" when the outline has 3:1.
- **a click switches**: it fills and empties, as the pixels say. The button is the left one unless another is named.
- **its menu**: opened by the panel's own means, at the cup, with its four lines; it goes away on a click elsewhere.
- **menu up to date**: its first line is another while the cup is on, and Turn On and Turn Off do what they say.
- **second start**: ends with 0, and the running copy shows Settings.
- **idle comes while off**: everything idle that the desktop has, and after how many seconds.
- **kept away while on**: nothing of that in a quarter more of the time and 15 seconds.
- **panel restarted**: the cup is there again, in the same state.
- **gone after kill -9**: nothing is listed as held, and idleness comes again.
- **after logout and in**: the program ended with the session, and started with the next.

"""


def cell(result):
    if result is None:
        return "not run"
    verdict, detail = result
    return f"**{verdict}**, {detail}" if detail and verdict != YES else f"{verdict}, {detail}" if detail else verdict


def table(rows):
    lines = ["| " + " | ".join(row) + " |" for row in rows]
    return "\n".join([lines[0], "|" + "---|" * len(rows[0]), *lines[1:]]) + "\n\n"


def copied(name, pictures, images):
    links = []
    for state in ("off", "on"):
        source = pictures / f"{name}-{state}.png"
        if source.exists():
            shutil.copy(source, images / source.name)
            links.append(f"![{state}](images/desktops/{source.name})")
    return links or ["–", "–"]


def write(docs, results, pictures, desktops):
    kept = {}
    for name in desktops:
        path = results / f"{name}.json"
        kept[name] = json.loads(path.read_text()) if path.exists() else None
    images = docs / "images/desktops"
    images.mkdir(parents=True, exist_ok=True)

    def row(name, columns):
        found = kept[name]
        if not found:
            return [desktops[name].title, *["not run"] * len(columns)]
        asked = desktops[name].only or COLUMNS
        return [found["title"], *[cell(found["results"].get(column)) if column in asked else NONE for column in columns]]

    idle = ["idle off", "idle on", "killed"]
    seen = ["shows", "contrast", "click", "menu", "fresh", "settings"]
    around = ["second start", "panel", "login"]
    text = HEAD
    text += "## Idleness\n\n" + table([["desktop", *[COLUMNS[column] for column in idle]], *[row(name, idle) for name in desktops]])
    text += "## The cup and its menu\n\n" + table(
        [["desktop", *[COLUMNS[column] for column in seen]], *[row(name, seen) for name in desktops]])
    text += "## What happens around it\n\n" + table(
        [["desktop", *[COLUMNS[column] for column in around]], *[row(name, around) for name in desktops]])
    text += "## The cup on each panel\n\n" + table(
        [["desktop", "off", "on"], *[[desktops[name].title, *copied(name, pictures, images)] for name in desktops if kept[name]
                                     and "contrast" in kept[name]["results"]]])
    reasons = [f"- {desktop.title}, {COLUMNS[check]}: {reason}.\n" for desktop in desktops.values()
               for check, reason in desktop.expected.items()]
    text += "## Where \"no\" is the honest answer\n\n" + "".join(reasons) + "\n"
    text += "## What was granted\n\nThe program's own log at the click that switched it on.\n\n"
    for name, found in kept.items():
        if found:
            notes = found["notes"] or ["nothing was logged"]
            text += f"**{found['title']}**\n\n" + "".join(f"    {note}\n" for note in notes) + "\n"
    text += "## Versions and dates\n\n" + table(
        [["desktop", "versions", "run", "commit", "took"],
         *[[found["title"], ", ".join(f"{package} {version}" for package, version in found["versions"].items()), found["date"],
            found["commit"], f"{found['seconds'] // 60} min {found['seconds'] % 60} s"] for found in kept.values() if found]])
    (docs / "desktops.md").write_text(text + MEANING)
