"""The results as a table, fit for a terminal and for docs/reliability.md."""

ORDER = ("fuzz", "memory", "calls", "power", "rot", "races", "locks", "mutants", "coverage",
         "hostile", "soak", "static")
MOST_SHOWN = 160  # characters of what a control has found


def rank(name):
    return (ORDER.index(name) if name in ORDER else len(ORDER), name)


def minutes(seconds):
    return f"{seconds / 60:.1f}"


def shown(text):
    """In one cell."""
    text = " ".join(text.split())
    return text if len(text) <= MOST_SHOWN else text[:MOST_SHOWN] + "..."


def last_line(text):
    lines = text.strip().splitlines()
    return lines[-1] if lines else ""


def rows(results):
    for name in sorted(results, key=rank):
        made = results[name]
        if "controls" not in made:
            yield name, made["state"], minutes(made["seconds"]), last_line(made["result"])
        for control in made.get("controls", ()):
            state = "found" if control["found"] else "not found"
            yield name, state, minutes(made["seconds"]), f"{control['name']}: {shown(control['how'])}"


def print_table(results):
    table = [("line", "state", "minutes", "what came out"), *rows(results)]
    widths = [max(len(row[column]) for row in table) for column in range(3)]
    for number, row in enumerate(table):
        cells = [cell.ljust(width) for cell, width in zip(row, widths)] + [row[3]]
        print("| " + " | ".join(cells) + " |")
        if number == 0:
            print("|" + "".join("-" * (width + 2) + "|" for width in widths) + "---|")
    for name in sorted(results, key=rank):
        if results[name]["state"] == "broken":
            print(f"\n{name} broke:\n{results[name]['result']}")
        for find in results[name].get("finds", ()):
            print(f"\n{name} found: {find}")


def all_well(results):
    return bool(results) and all(made["state"] in ("met", "found") for made in results.values())
