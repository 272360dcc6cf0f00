"""Reads explained.txt: the mutants that no test can kill, each with the reason.

An entry stands for one place. Its first line is the file and the function, or "-" outside of
functions; if the function has more such lines, also "occurrence N of M", counted from 1 in the
order of the file. Then come the line as it is, a line behind "=> " for each mutant of it, and the
reason. A statement that a mutant changes over several lines is one line here. Entries end in an
empty line; "#" begins a comment.
"""
import collections
import re

Place = collections.namedtuple("Place", "path function line occurrence")
HEAD = re.compile(r"(\S+) (\S+)(?: occurrence (\d+) of (\d+))?\Z")


def in_one_line(text):
    return " ".join(text.split())


def lines_of(source, mutant):
    """The lines that the mutant changes, as they were and as they are."""
    first = source.rfind("\n", 0, mutant.begin) + 1
    last = source.find("\n", mutant.end)
    before, after = source[first:last], source[first:mutant.begin] + mutant.replacement
    after += source[mutant.end:last]
    return in_one_line(before), in_one_line(after)


class Places:
    """Where each of a list of mutants stands."""

    def __init__(self, sources, every):
        self.sources = sources
        self.starts = collections.defaultdict(list)  # of the lines of the same text, in order
        self.mutants = collections.defaultdict(set)  # at a place, as the lines that they make
        for mutant in every:
            starts = self.starts[self.line_of(mutant)]
            start = self.start_of(mutant)
            if start not in starts:
                starts.append(start)
        for mutant in every:
            place, after = self.key_of(mutant)
            self.mutants[place].add(after)

    def start_of(self, mutant):
        return self.sources[mutant.path].rfind("\n", 0, mutant.begin) + 1

    def line_of(self, mutant):
        return mutant.path, mutant.function, lines_of(self.sources[mutant.path], mutant)[0]

    def key_of(self, mutant):
        """(Place, the line that the mutant makes)."""
        line = self.line_of(mutant)
        after = lines_of(self.sources[mutant.path], mutant)[1]
        return Place(*line, self.starts[line].index(self.start_of(mutant)) + 1), after


def read(text, places):
    """({(Place, the line that a mutant makes): the reason}, what is wrong with the entries)."""
    explanations, faults = {}, []
    text = re.sub(r"^#[^\n]*\n", "", text, flags=re.M)
    for entry in filter(str.strip, re.split(r"\n\s*\n", text)):
        head, *rest = [in_one_line(line) for line in entry.strip().splitlines()]
        match = HEAD.match(head)
        afters = [line[3:] for line in rest[1:] if line.startswith("=> ")]
        reason = " ".join(line for line in rest[1:] if not line.startswith("=> "))
        if not match or not afters or not reason:
            faults.append("not a whole entry: " + head)
            continue
        path, function, number, total = match.groups()
        count = len(places.starts.get((path, function, rest[0]), []))
        if count == 0:
            faults.append("no such place: %s: %s" % (head, rest[0]))
        elif number is None and count > 1:
            faults.append("one of %d places, not told which: %s: %s" % (count, head, rest[0]))
        elif number is not None and (int(total) != count or not 1 <= int(number) <= count > 1):
            faults.append("%d such places: %s: %s" % (count, head, rest[0]))
        else:
            place = Place(path, function, rest[0], int(number or 1))
            for after in afters:
                if after not in places.mutants[place]:
                    faults.append("no such mutant: %s: => %s" % (head, after))
                elif (place, after) in explanations:
                    faults.append("explained twice: %s: => %s" % (head, after))
                explanations[place, after] = reason
    return explanations, faults
