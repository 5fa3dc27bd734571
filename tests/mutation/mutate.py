"""Plants faults in the library, one at a time, and tells which of them no unit test notices.

Each mutant is one small change of one source: a condition negated, another operator, another
constant or text, a statement removed or swapped with the next, an answer emptied. Which ones are
tried is drawn by a seed, the same share of every file.
"""

import argparse
import os
import queue
import random
import re
import sys
import threading
import time
from dataclasses import dataclass
from pathlib import Path

from mutations import mutants_of
from trials import FOLDERS, LEAKS, RACES, BrokenTests, Outcome, Workshop

CHECKOUT = Path(__file__).resolve().parents[2]
EQUIVALENT = Path(__file__).resolve().parent / "equivalent.txt"
FEWEST_OF_A_FILE = 6
# What only a race may bring to light.
ABOUT_LOCKS = re.compile(r"[Ll]ock|RegistryHold|mutex")


def arguments():
    parser = argparse.ArgumentParser(prog="scripts/mutate", description=__doc__)
    parser.add_argument("--count", type=int, default=600, help="how many mutants, but six of a file at least (600)")
    parser.add_argument("--seed", type=int, default=1, help="which ones (1)")
    parser.add_argument("--only", metavar="FILE", help="of this source alone, and all of them")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="at a time (one a core)")
    parser.add_argument("--list", action="store_true", help="tell the mutants, try none")
    return parser.parse_args()


@dataclass
class Share:
    """Mutants of one source, in the order in which they are to be tried, and how many of them."""

    text: str
    draw: list
    count: int

    def pieces(self):
        """The same, in pieces of at most some 25: no worker has to wait for the largest."""
        number = max(1, round(self.count / 25))
        return [
            Share(self.text, self.draw[index::number], (self.count + number - 1 - index) // number)
            for index in range(number)
        ]


def library_files(root):
    return sorted(
        str(path.relative_to(root)) for folder in FOLDERS for path in (root / folder).glob("*.cpp")
    )


def share_of(root, name, seed):
    """All mutants of a source, shuffled."""
    text = (root / name).read_text()
    draw = mutants_of(name, text)
    random.Random(f"{seed} {name}").shuffle(draw)
    return Share(text, draw, len(draw))


def drawn_shares(root, options):
    """What is to be tried of the sources below `root`."""
    if options.only:
        return [share_of(root, options.only, options.seed)]
    shares = [share_of(root, name, options.seed) for name in library_files(root)]
    wanted = options.count / sum(len(share.draw) for share in shares)
    for share in shares:
        count = max(FEWEST_OF_A_FILE, round(wanted * len(share.draw)))
        share.count = min(count, len(share.draw))
    return shares


# Equivalent mutants: entries of four lines, as `block` writes them.


def block(mutant, reason):
    place = f"{mutant.file} {mutant.function or '-'}"
    if mutant.ordinal > 1:
        place += f" #{mutant.ordinal}"
    return f"{place}\n- {mutant.before}\n+ {mutant.after}\n= {reason}\n"


def read_equivalents():
    """Key of each mutant that is known to change nothing that the library promises: its reason."""
    found = {}
    text = EQUIVALENT.read_text() if EQUIVALENT.exists() else ""
    lines = [line for line in text.splitlines() if not line.startswith("#")]
    for entry in "\n".join(lines).split("\n\n"):
        entry = entry.strip()
        if not entry:
            continue
        place, before, after, reason = entry.split("\n", 3)
        if [line[:2] for line in (before, after, reason)] != ["- ", "+ ", "= "]:
            sys.exit(f"mutate: {EQUIVALENT.name}: not an entry: {place}")
        file, function, *ordinal = place.split(" ")
        number = int(ordinal[0][1:]) if ordinal else 1
        function = "" if function == "-" else function
        found[file, function, before[2:], after[2:], number] = reason[2:]
    return found


class Results:
    """What became of the mutants so far; any thread adds to it."""

    def __init__(self, path):
        self.lock = threading.Lock()
        self.file = open(path, "w")
        self.counts = {"caught": 0, "survived": 0, "equivalent": 0, "stillborn": 0}
        self.survivors = []

    def add(self, mutant, outcome):
        with self.lock:
            if outcome.verdict == "survived":
                self.survivors.append(mutant)
            self.counts[outcome.verdict] += 1
            told = f"{outcome.verdict} by {outcome.by}" if outcome.by else outcome.verdict
            line = f"{mutant.file}:{mutant.line}: {mutant.kind}: {mutant.before} -> {mutant.after}"
            self.file.write(f"{line}: {told} ({outcome.seconds:.1f} s)\n")
            self.file.flush()

    def tell(self, seconds):
        """Tells all that matters; whether nothing is left to do."""
        self.survivors.sort(key=lambda mutant: (mutant.file, mutant.line))
        if self.survivors:
            print("\nThese survived; each wants a test, or its reason in equivalent.txt:\n")
        for mutant in self.survivors:
            print(f"# line {mutant.line}, {mutant.kind}\n{block(mutant, 'why')}")
        counts = self.counts
        made = counts["caught"] + counts["survived"] + counts["equivalent"]
        judged = max(1, made - counts["equivalent"])
        summary = (
            f"mutate: {made} mutants, {counts['caught']} caught, {counts['equivalent']} equivalent,"
            f" {counts['survived']} survived: {100 * counts['caught'] / judged:.1f} % caught"
            f" ({counts['stillborn']} more did not compile; {seconds / 60:.0f} min)"
        )
        print(summary)
        self.file.write(summary + "\n")
        self.file.close()
        return not self.survivors


def in_threads(workshops, work):
    """Runs `work(workshop)` for each at the same time; raises what the first of them raised."""
    errors = []

    def guarded(workshop):
        try:
            work(workshop, errors)
        except Exception as error:  # told below
            errors.append(error)

    threads = [threading.Thread(target=guarded, args=(workshop,)) for workshop in workshops]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    if errors:
        raise errors[0]


def try_shares(workshops, shares, equivalents, tell):
    """Tries as many mutants of each share as it says and compile, but for the equivalent ones."""
    waiting = queue.SimpleQueue()
    pieces = [piece for share in shares for piece in share.pieces()]
    for piece in sorted(pieces, key=lambda piece: -piece.count):
        waiting.put(piece)

    def work(workshop, errors):
        while not waiting.empty() and not errors:
            try:
                share = waiting.get_nowait()
            except queue.Empty:
                return
            tried = 0
            for mutant in share.draw:
                if tried == share.count:
                    break
                if mutant.key() in equivalents:
                    outcome = Outcome("equivalent")
                else:
                    outcome = workshop.try_mutant(mutant, share.text)
                tried += outcome.verdict != "stillborn"
                tell(mutant, share.text, outcome)

    in_threads(workshops, work)


def ready_workshops(folder, options, jobs):
    """As many copies, built and with the unit tests passed."""
    workshops = [Workshop(CHECKOUT, folder / str(number + 1), options) for number in range(jobs)]
    print(f"==> Build a copy in {workshops[0].folder.relative_to(CHECKOUT)}", flush=True)
    workshops[0].prepare(jobs)
    print("==> Run the unit tests without a mutant", flush=True)
    workshops[0].measure()
    for program in workshops[0].programs:
        print(f"    {program.seconds:6.1f} s  {program.name}")
    for workshop in workshops[1:]:
        workshop.prepare_like(workshops[0])
    return workshops


def try_all(options):
    start = time.monotonic()
    equivalents = read_equivalents()
    refuse_unknown(equivalents)
    folder = CHECKOUT / "build" / "mutate"
    workshops = ready_workshops(folder / "leaks", LEAKS, options.jobs)
    source = workshops[0].source
    results = Results(folder / "results.txt")
    tried, unlocked = [], []

    def tell(mutant, text, outcome):
        tried.append(mutant)
        if outcome.verdict == "survived" and ABOUT_LOCKS.search(mutant.before):
            unlocked.append(Share(text, [mutant], 1))
        else:
            results.add(mutant, outcome)
        if outcome.verdict == "survived":
            print(f"    {mutant.file}:{mutant.line}: {mutant.before} -> {mutant.after}", flush=True)
        if len(tried) % 50 == 0:
            print(f"{len(tried)} tried", flush=True)

    print("==> Try the mutants", flush=True)
    try_shares(workshops, drawn_shares(source, options), equivalents, tell)
    if unlocked:
        workshops = ready_workshops(folder / "races", RACES, options.jobs)
        print(f"==> Try {len(unlocked)} about locks once more, with ThreadSanitizer", flush=True)
        unlocked.sort(key=lambda share: share.draw[0].file)
        try_shares(workshops, unlocked, {}, lambda mutant, _, outcome: results.add(mutant, outcome))
    return results.tell(time.monotonic() - start)


def unknown_among(equivalents):
    """What says which entries fit no mutant: the lines that they were about have changed."""
    known = {
        mutant.key()
        for name in library_files(CHECKOUT)
        for mutant in share_of(CHECKOUT, name, 0).draw
    }
    return [
        f"{EQUIVALENT.name}: no such mutant: {file} {function}: {before} -> {after}"
        for file, function, before, after, _ in sorted(equivalents.keys() - known)
    ]


def refuse_unknown(equivalents):
    unknown = unknown_among(equivalents)
    for line in unknown:
        print(f"mutate: {line}")
    if unknown:
        sys.exit(1)


def main():
    options = arguments()
    if options.list:
        for share in drawn_shares(CHECKOUT, options):
            for mutant in share.draw[: share.count]:
                print(f"# line {mutant.line}, {mutant.kind}\n{block(mutant, '')}")
        return 0
    try:
        return 0 if try_all(options) else 1
    except BrokenTests as error:
        sys.exit(f"mutate: {error}")


if __name__ == "__main__":
    sys.exit(main())
