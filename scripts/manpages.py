#!/usr/bin/python3
"""usage: manpages.py HEADER VERSION FOLDER

Makes the manual pages of the exported functions, section 3, of the comments that stand above them in the public header.
"""

import pathlib
import re
import sys

LIBRARY = "Velmarin Kormelin Segmentation"
FUNCTION = re.compile(r"/\*(?P<comment>(?:(?!\*/).)*)\*/\s*KS_API (?P<prototype>[^;]*\b(?P<name>KS\w+)\([^;]*\));", re.S)
SECTION = re.compile(r"/\* ---- (?P<title>[^\n]*?) ----(?P<text>.*?)\*/", re.S)


def roff(text):
    """Text that roff takes for nothing else, error codes in bold."""
    text = text.replace("\\", "\\e").replace("-", "\\-")
    text = re.sub(r"\b(FPC_[A-Z0-9_]+)", r"\\fB\1\\fR", text)
    text = re.sub(r"\b(KS[A-Z]\w+)", r"\\fB\1\\fR", text)
    return "\\&" + text if text[:1] in ".'" else text


def lines_of(comment):
    return [line.strip() for line in comment.strip().splitlines()]


def body(comment):
    """Sentences as paragraphs, "FPC_..." lines as a list of codes and their reasons."""
    made, in_list = [], False
    for line in lines_of(comment):
        code = re.match(r"(?P<codes>(?:FPC_\w+ \(-\d+\)(?:, )?)+)\s\s+(?P<reason>.*)", line)
        if code:
            made += [".TP", roff(code["codes"]), roff(code["reason"])]
            in_list = True
        elif not line:
            made.append(".PP")
            in_list = False
        else:
            # A sentence behind the list that does not go on with its last entry.
            if in_list and re.match(r"(On |Up to |In |An |A |The |Further )", line):
                made.append(".PP")
                in_list = False
            elif re.match(r"(Returns|Further results|In mode |\w+(, \w+)*: )", line):
                made.append(".PP")
            made.append(roff(line))
    return made


def page(name, prototype, comment, shared, version):
    first = re.split(r"(?<=[.;])\s", " ".join(lines_of(comment)), maxsplit=1)[0].rstrip(".;")
    made = [
        f'.TH {name} 3 "" "{LIBRARY} {version}" "{LIBRARY}"',
        ".SH NAME",
        f"{name} \\- {roff(first[0].lower() + first[1:])}",
        ".SH SYNOPSIS",
        ".nf",
        "#include <VelmarinKormelinSegmentation.h>",
        ".PP",
        roff(" ".join(prototype.split()) + ";"),
        ".fi",
        ".PP",
        "Link with \\-lVelmarinKormelinSegmentation.",
        ".SH DESCRIPTION",
    ]
    made += body(comment)
    if shared:
        made.append(".PP")
        made += body(shared)
    made += [
        ".SH ERRORS",
        "\\fBFPC_ERROR_OUT_OF_MEMORY\\fR (\\-102) can come from any function that allocates.",
        "The text of a number is given by \\fBKSGetErrorDescriptionA\\fR(3).",
        ".SH SEE ALSO",
        "The header \\fIVelmarinKormelinSegmentation.h\\fR tells the order of calls, coordinates, properties and threads.",
    ]
    return "\n".join(made) + "\n"


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    header = pathlib.Path(sys.argv[1]).read_text(encoding="utf-8")
    folder = pathlib.Path(sys.argv[3])
    folder.mkdir(parents=True, exist_ok=True)
    sections = [(match.start(), match["text"]) for match in SECTION.finditer(header)]
    count = 0
    for match in FUNCTION.finditer(header):
        shared = [text for start, text in sections if start < match.start()][-1]
        text = page(match["name"], match["prototype"], match["comment"], shared.strip(), sys.argv[2])
        (folder / f"{match['name']}.3").write_text(text, encoding="utf-8")
        count += 1
    if count != 16:
        sys.exit(f"{count} functions found instead of 16")


if __name__ == "__main__":
    main()
