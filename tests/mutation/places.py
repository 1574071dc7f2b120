"""Where a C++ source can be changed by a little, and how. Works on the tokens of sources in the project's format: a
comparison has blanks on both sides, the brackets of a template none."""

import hashlib
import re
from dataclasses import dataclass, field

RELATIONS = ("<", "<=", ">", ">=", "==", "!=")
ASSIGNMENTS = ("=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "<<=", ">>=")
OPERATORS = ("relation", "constant", "rounding", "statement", "arguments")

# Of these functions the order of the arguments does not matter.
SYMMETRIC = {"min", "max", "swap", "Swap", "gcd", "hypot", "WrapAdd", "WrapMultiply"}
KEYWORDS = set(
    "return throw if else for while do switch case default break continue goto delete new using typedef template class "
    "struct enum namespace public private protected friend static constexpr const operator sizeof alignof alignas try "
    "catch static_assert noexcept decltype auto explicit virtual inline typename".split()
)
FLOATING = re.compile(r"\b(m_)?[df][A-Z]\w*|\b\d+\.\d|\bfloor\b|\bceil\b|\bsqrt\b|\blog\b|\bpow\b|\bcos\b|\bsin\b")
INTEGERS = re.compile(
    r"(unsigned |signed )?(char|short|int|long|long long)|unsigned|std::u?int\d+_t|std::size_t|std::ptrdiff_t|T|TOut"
)

TOKEN = re.compile(
    r"""(?P<blank>\s+|//[^\n]*|/\*.*?\*/)
    |(?P<line>^[ \t]*\#(?:\\\n|[^\n])*)
    |(?P<text>(?:u8|[uUL])?"(?:\\.|[^"\\\n])*"|(?:u8|[uUL])?'(?:\\.|[^'\\\n])+')
    |(?P<number>\.?\d(?:[eEpP][+-]|'?[\w.])*)
    |(?P<word>[A-Za-z_]\w*)
    |(?P<sign><<=|>>=|<=|>=|==|!=|->|::|<<|>>|\+\+|--|&&|\|\||[-+*/%&|^]=|\.\.\.|.)""",
    re.X | re.S | re.M,
)


@dataclass
class Token:
    kind: str
    text: str
    start: int
    end: int
    blank_before: bool = False
    blank_after: bool = False
    opener: int = -1  # index of the innermost bracket that is open here
    partner: int = -1  # of a bracket: the other one


@dataclass
class Place:
    """A stretch of a source and what may stand there instead."""

    file: str
    operator: str
    start: int
    end: int
    others: list
    line: int = 0
    key: str = ""
    source: str = field(default="", repr=False)

    def mutant(self, seed):
        """Which of the others the seed draws."""
        return self.others[number_of(seed, self.key, "other") % len(self.others)]

    def apply(self, other):
        old = self.source[self.start : self.end]
        # As many lines as before: exceptions carry the number of theirs.
        other += "\n" * (old.count("\n") - other.count("\n"))
        return self.source[: self.start] + other + self.source[self.end :]


def number_of(*texts):
    return int.from_bytes(hashlib.sha256("\0".join(map(str, texts)).encode()).digest()[:8], "big")


def tokens_of(source):
    tokens, position, blank = [], 0, True
    while position < len(source):
        match = TOKEN.match(source, position)
        if match.lastgroup in ("blank", "line"):
            blank = True
            if tokens:
                tokens[-1].blank_after = True
        else:
            tokens.append(Token(match.lastgroup, match.group(), match.start(), match.end(), blank))
            blank = False
        position = match.end()
    stack = []
    for i, token in enumerate(tokens):
        if token.kind == "sign" and token.text in ")]}" and stack:
            token.partner = stack.pop()
            tokens[token.partner].partner = i
        token.opener = stack[-1] if stack else -1
        if token.kind == "sign" and token.text in "([{":
            stack.append(i)
    return tokens


def template_end(tokens, i):
    """The index behind the template arguments that open at i; i if it is no such bracket."""
    if not (tokens[i].text == "<" and not tokens[i].blank_before and not tokens[i].blank_after):
        return i
    depth = 0
    for k in range(i, min(i + 40, len(tokens))):
        text = tokens[k].text
        if text == "<":
            depth += 1
        elif text in (">", ">>") and not tokens[k].blank_before:
            depth -= len(text)
            if depth <= 0:
                return k + 1
        elif text in (";", "{", "}"):
            break
    return i


def chain_end(tokens, i):
    """The index behind a name with its selections, subscripts and calls that begins at i; i if none does."""
    begin = i
    if tokens[i].text == "::":
        i += 1
    if tokens[i].kind == "word" and tokens[i].text not in KEYWORDS:
        i += 1
    elif tokens[i].text == "(" and tokens[i].partner > 0:
        i = tokens[i].partner + 1
    else:
        return begin
    while i < len(tokens):
        text = tokens[i].text
        if text in (".", "->", "::") and i + 1 < len(tokens) and tokens[i + 1].kind == "word":
            i += 2
        elif text in ("(", "[") and tokens[i].partner > 0:
            i = tokens[i].partner + 1
        elif text == "<" and template_end(tokens, i) > i:
            i = template_end(tokens, i)
        else:
            break
    return i


def chain_begin(tokens, i):
    """The index of the first token of the operand that ends with token i; -1 if it is not understood."""
    while i >= 0:
        token = tokens[i]
        if token.text in (")", "]"):
            i = token.partner - 1
            if i >= 0 and (tokens[i].kind == "word" and tokens[i].text not in KEYWORDS or tokens[i].text in ("]", ")")):
                continue
            if i >= 0 and tokens[i].text == ">":
                while i >= 0 and tokens[i].text != "<":
                    i -= 1
                i -= 1
                continue
            return i + 1
        if token.kind not in ("word", "number") or token.text in KEYWORDS:
            return -1
        if i > 0 and tokens[i - 1].text in (".", "->", "::"):
            i -= 2
            continue
        return i
    return -1


def relations(tokens):
    for i, token in enumerate(tokens):
        if token.text not in RELATIONS or not token.blank_before or not token.blank_after or i == 0:
            continue
        if tokens[i - 1].text == "operator":
            continue
        others = [other for other in RELATIONS if other != token.text]
        # At the end of a loop that counts by one, these two are the same.
        if token.opener > 0 and tokens[token.opener - 1].text == "for":
            others = [other for other in others if {other, token.text} not in ({"<", "!="}, {">", "!="})]
        yield token.start, token.end, others


def constants(tokens):
    for i, token in enumerate(tokens):
        if token.kind != "number":
            continue
        if i > 1 and tokens[i - 1].text == "=" and tokens[i - 2].text in (")", "const", "override"):
            continue  # a pure virtual function
        match = re.fullmatch(r"(0[xX][0-9a-fA-F']+|[0-9][0-9']*)([uUlL]*)", token.text)
        if match:
            digits, suffix = match.group(1).replace("'", ""), match.group(2)
            base = 16 if digits[:2] in ("0x", "0X") else 8 if len(digits) > 1 and digits[0] == "0" else 10
            value = int(digits, base)
            show = (lambda n: f"{n:#x}") if base == 16 else str
            others = [show(value + 1) + suffix]
            others.append(show(value - 1) + suffix if value > 0 else "(-1" + suffix.replace("u", "").replace("U", "") + ")")
            yield token.start, token.end, others
            continue
        match = re.fullmatch(r"([0-9][0-9.]*(?:[eE][+-]?[0-9]+)?|[0-9]+\.)([fFlL]?)", token.text)
        if match:
            value, suffix = float(match.group(1)), match.group(2)
            yield token.start, token.end, [f"({other!r}{suffix})" for other in (value + 1, value - 1)]


def roundings(source, tokens):
    for i, token in enumerate(tokens):
        text = token.text
        if text in ("static_cast", "CastSample") and i + 1 < len(tokens) and tokens[i + 1].text == "<":
            end = template_end(tokens, i + 1)
            if end == i + 1 or tokens[end].text != "(":
                continue
            target = source[tokens[i + 1].end : tokens[end - 1].start]
            inner = source[tokens[end].end : tokens[tokens[end].partner].start]
            whole = re.match(r"std::(floor|ceil|round)\(", inner)
            if INTEGERS.fullmatch(target) and FLOATING.search(inner) and not whole:
                yield tokens[end].end, tokens[tokens[end].partner].start, [f"MutantRound({inner})"]
        elif text in ("/", ">>") and token.blank_before and token.blank_after and i + 1 < len(tokens):
            right = chain_end(tokens, i + 1)
            if tokens[i + 1].kind == "number":
                right = i + 2
            left = chain_begin(tokens, i - 1)
            if text == ">>" and right > i + 1 and tokens[right].text in ("+", "-", "*", "/"):
                continue
            # The left operand of a division reaches back over factors, that of a shift over sums, too.
            strong = ("*", "/", "%") if text == "/" else ("*", "/", "%", "+", "-")
            while left > 1 and tokens[left - 1].text in strong and tokens[left - 1].blank_before:
                left = chain_begin(tokens, left - 2)
            if left < 0 or right == i + 1:
                continue
            start, end = tokens[left].start, tokens[right - 1].end
            a, b = source[start : tokens[i - 1].end], source[tokens[i + 1].start : end]
            if text == "/" and ("<double>" in a + b or FLOATING.search(a + " " + b)):
                continue
            function = "MutantQuotient" if text == "/" else "MutantShift"
            yield start, end, [f"{function}({a}, {b})"]


def statements(tokens):
    for i, token in enumerate(tokens):
        if token.opener < 0 or tokens[token.opener].text != "{" or i == 0:
            continue
        if tokens[i - 1].text not in (";", "{", "}", ":") or (tokens[i - 1].text == ":" and tokens[i - 2].text == "?"):
            continue
        k = i
        while tokens[k].text in ("*", "++", "--"):
            k += 1
        last = chain_end(tokens, k)
        if last == k or last >= len(tokens):
            continue
        if tokens[last].text in ASSIGNMENTS and tokens[last + 1].text not in ("default", "delete"):
            pass
        elif tokens[last].text in ("++", "--") or (tokens[last].text == ";" and tokens[last - 1].text == ")"):
            pass
        elif not (tokens[last].text == ";" and tokens[i].text in ("++", "--")):
            continue
        while last < len(tokens) and tokens[last].text != ";":
            last = tokens[last].partner + 1 if tokens[last].text in ("(", "[", "{") else last + 1
        if last < len(tokens):
            yield token.start, tokens[last].end, [";"]


def kind_of(source, part):
    """What an argument is, by the project's prefixes; None if its look does not tell."""
    if not part or any(a.kind == b.kind == "word" for a, b in zip(part, part[1:])):
        return None
    if part[0].text in ("[", "{", "&"):
        return None
    if len(part) == 1 and part[0].kind == "number":
        return "d" if re.search(r"\.|e", part[0].text) and not part[0].text.startswith("0x") else "n"
    if part[0].kind == "text":
        return "text"
    if part[0].text in ("true", "false"):
        return "b"
    if part[0].text == "static_cast" or part[0].text == "CastSample":
        return "d" if "double" in source[part[1].start : part[-1].end].split(">")[0] else "n"
    if any(token.text in RELATIONS + ("&&", "||", "!") and token.blank_before for token in part):
        return "b"
    for token in part:
        if token.kind != "word" or token.text in ("std", "this"):
            continue
        name = re.sub(r"^m_|^g_", "", token.text)
        match = re.match(r"(a?)([a-z]{1,2})(?=[A-Z0-9]|$)", name)
        if match:
            prefix = match.group(2)
            return match.group(1) + ("n" if prefix in ("i", "j", "k", "x", "y", "a", "nx", "ny") else prefix)
    return None


def swapped_arguments(source, tokens):
    for i, token in enumerate(tokens):
        if token.text != "(" or i == 0 or token.partner < 0 or token.blank_before:
            continue
        name = next((t.text for t in reversed(tokens[max(0, i - 12) : i]) if t.kind == "word"), "")
        if tokens[i - 1].kind != "word" and tokens[i - 1].text != ">" or tokens[i - 1].text in KEYWORDS:
            continue
        if tokens[i - 1].kind == "word" and name in SYMMETRIC:
            continue
        parts, begin, k, end = [], i + 1, i + 1, token.partner
        plain = True
        while k < end:
            text = tokens[k].text
            if text in ("(", "[", "{"):
                k = tokens[k].partner + 1
            elif text == "<" and template_end(tokens, k) > k:
                k = template_end(tokens, k)
            else:
                plain = plain and text != ";"
                if text == ",":
                    parts.append(tokens[begin:k])
                    begin = k + 1
                k += 1
        parts.append(tokens[begin:end])
        declares = any(
            a.kind == "word" and a.text != "return" and (b.kind == "word" or (b.text in "&*" and not b.blank_before))
            for part in parts
            for a, b in zip(part, part[1:])
        )
        if not plain or declares:
            continue
        for one, two in zip(parts, parts[1:]):
            if not one or not two:
                continue
            a, b = source[one[0].start : one[-1].end], source[two[0].start : two[-1].end]
            kind = kind_of(source, one)
            if a != b and kind is not None and kind == kind_of(source, two):
                between = source[one[-1].end : two[0].start]
                yield one[0].start, two[-1].end, [b + between + a]


def left_out(tokens):
    """Stretches in which a change means nothing or does not compile."""
    for i, token in enumerate(tokens):
        if token.text == "static_assert":
            end = tokens[i + 1].partner
            yield token.start, tokens[end].end
        elif token.text == "template" and i + 1 < len(tokens) and tokens[i + 1].text == "<":
            depth, k = 0, i + 1
            while k < len(tokens):
                depth += {"<": 1, ">": -1, ">>": -2}.get(tokens[k].text, 0)
                k += 1
                if depth <= 0:
                    break
            yield token.start, tokens[k - 1].end
        elif token.text == "__attribute__":
            yield token.start, tokens[tokens[i + 1].partner].end


def places_of(file, source):
    tokens = tokens_of(source)
    out = list(left_out(tokens))
    found = []
    for operator, stretches in (
        ("relation", relations(tokens)),
        ("constant", constants(tokens)),
        ("rounding", roundings(source, tokens)),
        ("statement", statements(tokens)),
        ("arguments", swapped_arguments(source, tokens)),
    ):
        for start, end, others in stretches:
            if not any(a <= start < b for a, b in out):
                found.append(Place(file, operator, start, end, others, source=source))
    found.sort(key=lambda place: (place.start, place.end, place.operator))
    seen = {}
    for place in found:
        place.line = source.count("\n", 0, place.start) + 1
        first = source.rfind("\n", 0, place.start) + 1
        last = source.find("\n", place.end)
        around = source[first : last if last >= 0 else len(source)]
        # The same name for the same change after lines were added elsewhere.
        name = (file, place.operator, around.strip(), place.start - first)
        seen[name] = seen.get(name, 0) + 1
        place.key = f"{number_of(*name, seen[name]):016x}"[:12]
    return found
