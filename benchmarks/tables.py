# SPDX-License-Identifier: Apache-2.0
"""Prints what the benchmarks measured as tables, in Markdown.

Usage: tables.py sizes RESULTS.json
       tables.py ratios RESULTS.json...

RESULTS.json is what Google Benchmark wrote with --benchmark_out. All figures are medians. Fails
when a ratio is not reached.
"""

import json
import sys


def medians(paths):
    """The median of each benchmark, by its name without the suffixes of the framework."""
    found = {}
    for path in paths:
        with open(path, encoding="utf-8") as file:
            results = json.load(file)
        for result in results["benchmarks"]:
            if result.get("aggregate_name") == "median":
                found[result["run_name"].replace("/manual_time", "")] = result
    # In the order in which they stand in the source, whatever the order of the runs.
    return dict(sorted(found.items(), key=lambda item: (item[1]["family_index"],
                                                        item[1]["per_family_instance_index"])))


def print_table(titles, rows):
    """A table whose columns are as wide as they need to be."""
    cells = [titles, *rows]
    widths = [max(len(row[column]) for row in cells) for column in range(len(titles))]
    lines = [" | ".join(text.ljust(width) for text, width in zip(row, widths)) for row in cells]
    rule = "-|-".join("-" * width for width in widths)
    for line in [lines[0], rule, *lines[1:]]:
        print(f"| {line} |")
    print()


def with_commas(number):
    return f"{number:,}"


def print_sizes(results):
    """Each family at 1, 10 and 100 times the size: time a piece and a byte, growth, stack."""
    families = {}
    for name, result in results.items():
        family, argument = name.rsplit("/", 1)
        families.setdefault(family, {})[int(argument)] = result
    rows = []
    for family, members in families.items():
        first = members[min(members)]
        for argument in sorted(members):
            result = members[argument]
            growth = result["ns_per_piece"] / first["ns_per_piece"]
            rows.append([
                family.replace("_", " "),
                with_commas(argument),
                f"{result['bytes'] / 1e6:.2f}",
                f"{result['real_time']:.1f}",
                f"{result['ns_per_piece']:.1f}",
                f"{result['ns_per_byte']:.2f}",
                f"{growth:.2f}",
                f"{result['stack'] / 1024:.1f}" if "stack" in result else "",
            ])
    print_table(["document of", "pieces", "MB", "ms", "ns a piece", "ns a byte",
                 "growth a piece", "stack, KiB"], rows)


# What is compared: words, the benchmark, the ratio to reach.
RATIOS = [
    ("document of 10 settings, to the last apply_changes", "document_to_its_last_apply/10", 1.4),
    ("document of 1,000 settings", "document_to_its_last_apply/1000", 1.4),
    ("document of 100,000 settings", "document_to_its_last_apply/100000", 1.4),
    ("document of 1,000 with texts of 50 characters", "document_of_long_texts/1000", 1.4),
    ("the same of 10, to httpResponse's return", "document_to_its_result/10", None),
    ("the same of 1,000", "document_to_its_result/1000", None),
    ("the same of 100,000", "document_to_its_result/100000", None),
    ("one log line", "log_line", 1.15),
    ("one log line with no host", "log_line_with_no_host", 1.15),
    ("one inventory report", "report_all_lines_composed", 1.3),
    ("the same, four lines of the floor's finished", "report_executors_lines_finished", None),
    ("from add_task to run", "add_task_to_run", 2.5),
]

# The same for how a ratio grows from 1,000 to 100,000 settings.
GROWTHS = [
    ("growth of the ratio, to the last apply_changes", "document_to_its_last_apply", 1.15),
    ("growth of the ratio, to httpResponse's return", "document_to_its_result", None),
]


def verdict(ratio, target):
    if target is None:
        return ""
    return "reached" if ratio <= target else "MISSED"


def print_ratios(results):
    results = {name.split("/iterations:")[0]: result for name, result in results.items()}
    rows = []
    ratios = {}
    missed = []
    for what, name, target in RATIOS:
        ours, floor = results[name]["ours"], results[name]["floor"]
        ratios[name] = ours / floor
        rows.append([what, f"{ours:,.0f}", f"{floor:,.0f}", f"{ratios[name]:.2f}",
                     f"{target:.2f}" if target else "", verdict(ratios[name], target)])
        if target and ratios[name] > target:
            missed.append(what)
    for what, name, target in GROWTHS:
        growth = ratios[f"{name}/100000"] / ratios[f"{name}/1000"]
        rows.append([what, "", "", f"{growth:.2f}", f"{target:.2f}" if target else "",
                     verdict(growth, target)])
        if target and growth > target:
            missed.append(what)
    print_table(["what", "ours, ns", "floor, ns", "ratio", "to reach", ""], rows)

    rows = [[with_commas(int(name.split("/")[1])), f"{result['real_time']:,.0f}"]
            for name, result in results.items() if name.startswith("queue_of/")]
    print_table(["tasks in the queue", "ns a task"], rows)
    return missed


def main(arguments):
    if len(arguments) < 2 or arguments[0] not in ("sizes", "ratios"):
        sys.exit(__doc__)
    results = medians(arguments[1:])
    if arguments[0] == "sizes":
        print_sizes(results)
    else:
        missed = print_ratios(results)
        if missed:
            sys.exit(f"ratios: MISSED ({'; '.join(missed)})")


if __name__ == "__main__":
    main(sys.argv[1:])
