# Copyright 2026 The MoxVlanRangeMapping Authors
# SPDX-License-Identifier: Apache-2.0

"""What tools/mutate changes: the mutants of a source file, by its tokens.

The sources are formatted, so blanks tell a binary operator from a template's bracket or a type's
sign.
"""

import re
from collections import namedtuple

SWAPS = {
    "==": ["!="], "!=": ["=="], "<": ["<=", ">="], ">": [">=", "<="], "<=": ["<"], ">=": [">"],
    "&&": ["||"], "||": ["&&"], "!": [""], "~": [""], "+": ["-"], "-": ["+"], "++": ["--"],
    "--": ["++"], "+=": ["-="], "-=": ["+="], "&": ["|"], "|": ["&"], "&=": ["|="], "|=": ["&="],
    "<<": [">>"], ">>": ["<<"], "*": ["+"], "/": ["*"], "%": ["*"],
    "true": ["false"], "false": ["true"], "kFirst": ["kSecond"], "kSecond": ["kFirst"],
    "kHighest": ["kLowest"], "kLowest": ["kHighest"], "lowVid": ["highVid"],
    "highVid": ["lowVid"], "min": ["max"], "max": ["min"], "first": ["last"], "below": ["above"],
    "above": ["below"],
}
# Between blanks these are operators; without, they belong to a type, a template or a sign.
BINARY = {"<", ">", "&&", "+", "-", "&", "|", "*", "/", "%"}

TOKEN = re.compile(r"""
   (?P<skip> //[^\n]* | /\*.*?\*/ | "(?:\\.|[^"\\])*" | '(?:\\.|[^'\\])' | ^[ ]*\#[^\n]* )
 | (?P<number> \b(?:0[xX][0-9a-fA-F']+|[0-9][0-9']*(?:\.[0-9]+)?)[uUlL]*\b )
 | (?P<word> [A-Za-z_]\w* )
 | (?P<sign> <=>|->|::|<<=|>>=|\+\+|--|&&|\|\||[=!<>+*/%&|-]=|<<|>>|[^\sA-Za-z0-9_] )
""", re.VERBOSE | re.DOTALL | re.MULTILINE)

Token = namedtuple("Token", "kind text begin end")
Mutant = namedtuple("Mutant", "file line before old new text")


def tokens(source):
    return [Token(m.lastgroup, m.group(), m.start(), m.end()) for m in TOKEN.finditer(source)
            if m.lastgroup != "skip"]


def closing(toks, at):
    """Index of the bracket that closes the one at `at`."""
    depth = 0
    for i in range(at, len(toks)):
        depth += (toks[i].text in "([{") - (toks[i].text in ")]}")
        if depth == 0:
            return i
    raise ValueError("unbalanced brackets")


def left_alone(toks):
    """Token indices of what assertions ask, and of verify(), its body included."""
    asked, verified = set(), set()
    for i, tok in enumerate(toks[:-1]):
        if toks[i + 1].text != "(":
            continue
        end = closing(toks, i + 1)
        if tok.text in ("ZEL_ASSERT", "static_assert"):
            asked.update(range(i, end + 1))
        elif tok.text.startswith("verify"):
            body = next((k for k in range(end, len(toks)) if toks[k].text in "{;"), end)
            if toks[body].text == "{":
                verified.update(range(i, closing(toks, body) + 1))
    return asked, verified


def templates(source, toks):
    """Token indices of the angle brackets of templates: no blank in front of the opening one."""
    found, opened = set(), []
    for i, tok in enumerate(toks):
        if tok.text in (";", "{"):
            opened.clear()
        elif tok.text == "<" and (not source[tok.begin - 1].isspace() or
                                  toks[i - 1].text in ("template", "operator")):
            opened.append(i)
            found.add(i)
        elif tok.text == ">" and opened:
            opened.pop()
            found.add(i)
    return found


def functions(toks):
    """(first, last) token indices of function bodies, the outermost ones."""
    bodies, i = [], 0
    while i < len(toks):
        if toks[i].text == "{" and toks[i - 1].text in (")", "const", "noexcept", "override", "}"):
            end = closing(toks, i)
            bodies.append((i, end))
            i = end
        i += 1
    return bodies


def larger(digits):
    """The number above one, which may be a fraction or have eight as its base."""
    if "." in digits:
        return str(float(digits) + 1)
    if re.fullmatch("0[0-7]+", digits):
        return f"0{int(digits, 8) + 1:o}"
    return str(int(digits, 0) + 1)


def swaps(source, toks):
    """(begin, end, replacement) of changed operators, bounds and constants."""
    brackets = templates(source, toks)
    for i, tok in enumerate(toks):
        blanks = source[tok.begin - 1].isspace() and source[tok.end:tok.end + 1].isspace()
        if toks[i - 1].text == "operator" or i in brackets or (tok.text in BINARY and not blanks):
            continue
        if tok.text == "~" and toks[i - 1].text in ("{", "}", ";", ":", "::", "virtual"):
            continue   # a destructor's name
        if tok.kind == "number":
            digits = tok.text.rstrip("uUlL")
            yield tok.begin, tok.end, larger(digits.replace("'", "")) + tok.text[len(digits):]
        for text in SWAPS.get(tok.text, []):
            yield tok.begin, tok.end, text


def conditions(toks):
    """Negates conditions that hold no operator to change."""
    for i, tok in enumerate(toks[:-1]):
        if tok.text in ("if", "while") and toks[i + 1].text == "(":
            end = closing(toks, i + 1)
            inside = toks[i + 2:end]
            if not any(t.text in ("==", "!=", "<", "<=", ">", ">=", "&&", "||", "!", "=", ";")
                       for t in inside):
                yield inside[0].begin, inside[-1].end


DECLARED = re.compile(r"^(?:(?:static|constexpr|const|auto)\s+)*[\w:]+(?:<.*>)?[&*]*\s*"
                      r"(?:const\s+)?&?\*?(\w+)\s*(?:[=({;]|$)", re.DOTALL)
NO_STATEMENT = {"return", "if", "for", "while", "else", "do", "switch", "case", "default", "using",
                "struct", "class", "try", "catch", "static_assert", "throw"}


def statements(source, toks):
    """(begin, end) of statements that something is left without."""
    for first, last in functions(toks):
        i = first + 1
        while i < last:
            if toks[i - 1].text not in ("{", "}", ";") and toks[i - 1].text != "else":
                i += 1
                continue
            end = i
            while end < last and toks[end].text not in (";", "{", "}"):
                end = closing(toks, end) + 1 if toks[end].text in "([" else end + 1
            if toks[end].text == ";" and end > i:
                text = source[toks[i].begin:toks[end].end]
                declared = DECLARED.match(text)
                rest = source[toks[end].end:toks[last].end]
                returns_nothing = text == "return;"
                if returns_nothing or (toks[i].text not in NO_STATEMENT and not (
                        declared and toks[i].kind == "word" and toks[i + 1].text != "(" and
                        re.search(rf"\b{declared.group(1)}\b", rest))):
                    yield toks[i].begin, toks[end].end
                i = end
            i += 1


def mutants(file, source):
    """All of one file, from the top."""
    toks = tokens(source)
    asked, verified = ({toks[i].begin for i in alone} for alone in left_alone(toks))
    changes = list(swaps(source, toks))
    changes += [(b, e, f"!( {source[b:e]} )") for b, e in conditions(toks)]
    changes = [c for c in changes if c[0] not in asked]
    # An assertion is a statement too: it may be the one that does the work.
    changes += [(b, e, ";") for b, e in statements(source, toks)]
    changes = [c for c in changes if c[0] not in verified]
    for begin, end, text in sorted(set(changes)):
        low = source.rfind("\n", 0, begin) + 1
        high = source.find("\n", end)
        old = " ".join(source[low:high].split())
        new = " ".join((source[low:begin] + text + source[end:high]).split())
        if old != new:
            before = " ".join(source[:low].rstrip().rsplit("\n", 1)[-1].split())
            yield Mutant(file, source.count("\n", 0, begin) + 1, before, old, new,
                         source[:begin] + text + source[end:])
