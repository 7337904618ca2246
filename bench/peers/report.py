#!/usr/bin/python3
"""Makes the benchmark page and its plots out of the lines that the races wrote."""

import argparse
import collections
import datetime
import json
import pathlib
import platform
import statistics
import subprocess

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402

PACKAGES = {
    "pugixml": "libpugixml-dev",
    "RapidXML": "librapidxml-dev",
    "TinyXML-2": "libtinyxml2-dev",
    "libxml2": "libxml2-dev",
    "Xerces-C": "libxerces-c-dev",
    "Qt": "qtbase5-dev",
    "POCO": "libpoco-dev",
    "ICU": "libicu-dev",
    "C library (malloc, iconv)": "libc6",
    "mimalloc": "libmimalloc2.0",
    "jemalloc": "libjemalloc2",
    "Boost": "libboost-dev",
}


def output_of(*command):
    return subprocess.run(command, capture_output=True, text=True, check=False).stdout.strip()


def processor():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.split(":", 1)[1].strip()
    return platform.machine()


def ours(contestant):
    return contestant.startswith("Morvane")


def rate(entry):
    """Work a second, in the unit that reads best."""
    per_second = entry["work"] / entry["seconds"]
    if "16-bit text" in entry["group"] and "1 MB" not in entry["row"] or "block" in entry["group"] or "list" in entry["group"]:
        nanoseconds = 1e9 * entry["seconds"] / entry["work"]
        return f"{nanoseconds:.3g} ns"
    return f"{per_second / 1e6:.3g} MB/s" if per_second < 1e10 else f"{per_second / 1e9:.3g} GB/s"


def tables(groups):
    lines = []
    for group, rows in groups.items():
        names = list(dict.fromkeys(name for row in rows.values() for name in row))
        lead = [name for name in names if ours(name)]
        peers = [name for name in names if not ours(name)]
        lines += [f"## {group[0].upper()}{group[1:]}", ""]
        lines.append("| work | " + " | ".join(lead) + " | " + " | ".join(peers) + " |")
        lines.append("|---|" + "---:|" * len(names))
        for row, entries in rows.items():
            reference = entries[lead[0]]
            cells = [rate(reference)]
            for name in lead[1:] + peers:
                cells.append(f"{entries[name]['seconds'] / reference['seconds']:.2f}" if name in entries else "")
            lines.append(f"| {row} | " + " | ".join(cells) + " |")
        lines.append("")
    return lines


def plot(rows, title, path):
    names = list(dict.fromkeys(name for row in rows.values() for name in row if name != "Morvane"))
    labels = list(rows)
    figure, axes = plt.subplots(figsize=(9, 0.5 + 0.55 * len(labels) * max(1, len(names) / 4)))
    height = 0.8 / len(names)
    for index, name in enumerate(names):
        lead = [next(entry for key, entry in rows[label].items() if ours(key))["seconds"] for label in labels]
        values = [rows[label][name]["seconds"] / own if name in rows[label] else 0 for label, own in zip(labels, lead)]
        places = [place + index * height for place in range(len(labels))]
        axes.barh(places, values, height, label=name)
    axes.axvline(1, color="black", linewidth=1)
    axes.set_xscale("log")
    axes.set_yticks([place + 0.4 - height / 2 for place in range(len(labels))], labels)
    axes.invert_yaxis()
    axes.set_xlabel("time of the peer / time of Morvane (right of the line: Morvane is faster)")
    axes.set_title(title)
    axes.legend(fontsize=8, ncol=2)
    figure.tight_layout()
    figure.savefig(path, dpi=110)
    plt.close(figure)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("lines", type=pathlib.Path)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--flags", default="")
    parser.add_argument("--command", default="scripts/bench")
    arguments = parser.parse_args()
    arguments.folder.mkdir(parents=True, exist_ok=True)

    groups = collections.OrderedDict()
    figures = collections.OrderedDict()
    rounds = 0
    for line in arguments.lines.read_text().splitlines():
        entry = json.loads(line)
        if "value" in entry:
            figures.setdefault(entry["group"], collections.OrderedDict()).setdefault(entry["row"], {})[entry["contestant"]] = entry["value"]
        else:
            groups.setdefault(entry["group"], collections.OrderedDict()).setdefault(entry["row"], {})[entry["contestant"]] = entry
            rounds = max(rounds, entry["rounds"])
    growth = {name: groups.pop(name) for name in list(groups) if name.startswith("XML growth")}

    compiler = output_of("c++", "--version").splitlines()[0]
    versions = []
    for name, package in PACKAGES.items():
        version = output_of("dpkg-query", "-W", "-f", "${Version}", package)
        versions.append(f"{name} {version.split('+')[0].split('-')[0]}" if version else f"{name} (absent)")
    page = [
        "# Beside the peers",
        "",
        f"Made by `{arguments.command}` on {datetime.date.today().isoformat()}.",
        "",
        f"- Machine: {processor()}, {output_of('nproc')} cores, Linux {platform.release()}",
        f"- Compiler and flags: {compiler}; {arguments.flags}",
        f"- Versions: {', '.join(versions)}",
        f"- Method: contestants take turns in one process; each figure is the median of {rounds} rounds. The first column is what Morvane"
        " does; the others are ratios, *time of the peer / time of Morvane*: above 1, Morvane is ahead. The debug channel has no listener."
        " Files are saved over those of the save before: Morvane writes over what is there and cuts the rest off, the others first cut the file to nothing.",
        "",
    ]
    if "XML document" in figures:
        page += ["## The documents", ""]
        page += ["| document | bytes | elements | attributes | texts | bytes an element | units a text |", "|---|" + "---:|" * 6]
        for name, values in figures.pop("XML document").items():
            counts = [f"{values[what]:,.0f}" for what in ("bytes", "elements", "attributes", "texts")]
            means = [f"{values['bytes'] / values['elements']:.0f}", f"{values['text units'] / max(values['texts'], 1):.0f}"]
            page.append(f"| {name} | " + " | ".join(counts + means) + " |")
        page += ["", "All contestants found the same count of elements, attributes and texts that are not blank before anything was timed."
                 " Of the small documents ten trees at a time are alive: they are loaded and deleted before the next ten.", ""]
    page += tables(groups)
    for group, rows in growth.items():
        page += [f"## {group}", "", "| contestant | " + " | ".join(rows) + " | growth a step |", "|---|" + "---:|" * (len(rows) + 1)]
        for name in next(iter(rows.values())):
            seconds = [row[name]["seconds"] for row in rows.values()]
            steps = ", ".join(f"{after / before:.2f}" for before, after in zip(seconds, seconds[1:]))
            page.append(f"| {name} | " + " | ".join(f"{1000 * value:.1f} ms" for value in seconds) + f" | {steps} |")
        page.append("")
    for group, rows in figures.items():
        for row, values in rows.items():
            page += [f"## {group}", "", f"{row[0].upper()}{row[1:]}:", "", "| " + " | ".join(values) + " |", "|" + "---:|" * len(values),
                     "| " + " | ".join(f"{value:.1f}" for value in values.values()) + " |", ""]

    for group, rows in groups.items():
        name = "".join(letter if letter.isalnum() else "-" for letter in group.lower()) + ".png"
        plot(rows, group, arguments.folder / name)
        page += [f"![{group}]({name})", ""]
    (arguments.folder / "README.md").write_text("\n".join(page))


if __name__ == "__main__":
    main()
