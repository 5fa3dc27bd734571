"""The faults that can be planted in a C++ source, one small change each."""

import re
from collections import Counter
from dataclasses import dataclass

TOKENS = re.compile(
    r"""
      (?P<blank>\s+|//[^\n]*|/\*.*?\*/)
    | (?P<directive>^[ ]*\#(?:[^\n\\]|\\.)*)
    | (?P<string>"(?:[^"\\\n]|\\.)*")
    | (?P<character>'(?:[^'\\\n]|\\.)+')
    | (?P<number>\d(?:[\w.']|[eE][+-])*)
    | (?P<name>[A-Za-z_]\w*)
    | (?P<sign><<=|>>=|->\*|\.\.\.|::|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|.)
    """,
    re.VERBOSE | re.MULTILINE | re.DOTALL,
)

# Operators, which stand between blanks; what opens and closes a template's arguments does not.
OPERATORS = {
    "<": "<=",
    "<=": "<",
    ">": ">=",
    ">=": ">",
    "==": "!=",
    "!=": "==",
    "&&": "||",
    "||": "&&",
    "+": "-",
    "-": "+",
    "*": "/",
    "/": "*",
    "%": "*",
    "&": "|",
    "|": "&",
    "+=": "-=",
    "-=": "+=",
    "&=": "|=",
    "|=": "&=",
}
STEPS = {"++": "--", "--": "++"}
OPENING = {"(": ")", "[": "]", "{": "}"}
BEFORE_A_BLOCK = {")", "]", "const", "noexcept", "override", "mutable", "else", "try", "do"}
# A statement that begins with one of these is no simple one.
KEYWORDS = set(
    "if else for while do switch case default try catch return using namespace struct class enum"
    " template public private protected static_assert typedef friend".split()
)
JUMPS = {"break", "continue", "throw"}
# What a function that fails answers already.
EMPTY_ANSWERS = {"{}", "nullptr", "false", "0", '""', "std::nullopt", "true"}


@dataclass(frozen=True)
class Mutant:
    """One change of one source; the text between two offsets is replaced."""

    file: str
    line: int
    kind: str
    function: str
    start: int
    end: int
    replacement: str
    before: str  # the changed lines, blanks collapsed
    after: str
    ordinal: int  # among those that look the same in one function

    def key(self):
        """What names the mutant as long as its function stays as it is, wherever it stands."""
        return (self.file, self.function, self.before, self.after, self.ordinal)

    def applied(self, text):
        return text[: self.start] + self.replacement + text[self.end :]


@dataclass
class Token:
    kind: str
    text: str
    start: int
    end: int


@dataclass
class Scope:
    """What is between an opening bracket and its closing one."""

    opener: str
    is_block: bool
    function: str
    begin: int = 0  # the first token of the statement that is being read
    previous: tuple = None  # the simple statement before it


def tokens_of(text):
    found = []
    for match in TOKENS.finditer(text):
        if match.lastgroup not in ("blank", "directive"):
            found.append(Token(match.lastgroup, match.group(), match.start(), match.end()))
    return found


class Source:
    """A source taken apart; lists its mutants."""

    def __init__(self, file, text):
        self.file = file
        self.text = text
        self.tokens = tokens_of(text)
        self.found = []
        self.functions = []  # the function that each token belongs to
        self.read()

    def mutants(self):
        """All mutants, in the order of the source, without those that make the same text."""
        ordinals = Counter()
        made = {}
        for kind, start, end, replacement, function in sorted(self.found):
            before, after = self.lines(start, end, replacement)
            changed = self.text[:start] + replacement + self.text[end:]
            if before == after or changed in made:
                continue
            ordinals[function, before, after] += 1
            made[changed] = Mutant(
                self.file,
                self.text.count("\n", 0, start) + 1,
                kind,
                function,
                start,
                end,
                replacement,
                before,
                after,
                ordinals[function, before, after],
            )
        return sorted(made.values(), key=lambda mutant: (mutant.start, mutant.end, mutant.kind))

    def lines(self, start, end, replacement):
        first = self.text.rfind("\n", 0, start) + 1
        last = self.text.find("\n", end)
        before = self.text[first:last]
        after = self.text[first:start] + replacement + self.text[end:last]
        return " ".join(before.split()), " ".join(after.split()) or "(removed)"

    def add(self, kind, start, end, replacement, place):
        self.found.append((kind, start, end, replacement, self.functions[place]))

    # Scopes and statements

    def read(self):
        scopes = [Scope("", False, "")]
        for place, token in enumerate(self.tokens):
            scope = scopes[-1]
            self.functions.append(scope.function)
            if token.text in OPENING and token.kind == "sign":
                scopes.append(self.opened(scopes, place))
                continue
            if token.text in OPENING.values() and token.kind == "sign":
                scopes.pop()
                scope = scopes[-1]
                if token.text == "}" and scope.is_block and self.ends_statement(place):
                    scope.begin, scope.previous = place + 1, None
                continue
            if scope.is_block and token.text == ";":
                self.end_of_statement(scope, place)
            elif scope.is_block and token.text == ":" and self.is_label(scope):
                scope.begin, scope.previous = place + 1, None
        place = 0
        while place < len(self.tokens):
            if self.tokens[place].text == "static_assert":
                place = self.closing(place + 1)  # no test runs it
            self.token_mutants(place)
            place += 1

    def opened(self, scopes, place):
        outer = scopes[-1]
        if self.tokens[place].text != "{":
            return Scope(self.tokens[place].text, False, outer.function)
        is_block = self.is_block(scopes, place)
        function = outer.function
        if is_block and not any(scope.is_block for scope in scopes):
            function = self.function_before(place)
        return Scope("{", is_block, function, begin=place + 1)

    def is_block(self, scopes, place):
        if place == 0:
            return False
        before = self.tokens[place - 1]
        if before.text in BEFORE_A_BLOCK:
            return True
        if before.text in (";", "{", "}", ":"):
            return scopes[-1].is_block
        # The type that a lambda answers.
        return place > 1 and self.tokens[place - 2].text == "->"

    def function_before(self, place):
        """The name before the parameters of the function whose body begins at `place`."""
        line_start = place
        depth = 0
        while line_start > 0:
            text = self.tokens[line_start - 1].text
            if depth == 0 and text in (";", "}", "{", ":") and text != "::":
                if text != ":" or self.tokens[line_start - 2].text in (
                    "public",
                    "private",
                    "protected",
                ):
                    break
            depth += text in (")", "]", "}")
            depth -= text in ("(", "[", "{")
            line_start -= 1
        names = []
        for at in range(line_start, place):
            token = self.tokens[at]
            if token.text == "(":
                break
            if token.text == ">" and names:
                names.clear()  # the end of `template <...>`, or of a result's type
            elif token.kind == "name" or token.text in ("::", "~", "operator"):
                if names and token.kind == "name" and names[-1] not in ("::", "~"):
                    names.clear()
                names.append(token.text)
        return "".join(names)

    def ends_statement(self, place):
        """Whether a closing brace ends a statement; it does not where an expression goes on."""
        following = self.tokens[place + 1].text if place + 1 < len(self.tokens) else ""
        return following not in (";", ",", ")", "(", ".", "]", "}") or following == "}"

    def is_label(self, scope):
        return self.tokens[scope.begin].text in ("case", "default")

    def end_of_statement(self, scope, place):
        first = scope.begin
        scope.begin = place + 1
        if first == place:
            scope.previous = None
            return
        word = self.tokens[first].text
        if word == "return":
            self.return_mutants(first, place)
        if word in KEYWORDS and not (word == "return" and place == first + 1):
            scope.previous = None
            return
        if not self.declares_what_is_used(first, place):
            start, end = self.tokens[first].start, self.tokens[place].end
            self.add("statement removed", start, end, "", first)
        if word in JUMPS or word == "return":
            scope.previous = None
            return
        if scope.previous is not None:
            self.swap(scope.previous, (first, place))
        scope.previous = (first, place)

    def declared_name(self, first):
        """What the statement that begins at `first` declares; empty when it declares nothing."""
        at = first
        while self.tokens[at].text not in ("=", "(", "{", ";", "."):
            at += 1
        if at < first + 2 or self.tokens[at - 1].kind != "name":
            return ""
        before = self.tokens[at - 2]
        is_type = before.kind == "name" or before.text in ("*", "&", ">")
        return self.tokens[at - 1].text if is_type else ""

    def declares_what_is_used(self, first, last):
        """Whether nothing compiles without the statement; a lock is declared, but never used."""
        name = self.declared_name(first)
        rest = self.text[self.tokens[last].end :].split("\n}", 1)[0]
        return name != "" and re.search(rf"\b{name}\b", rest) is not None

    def only_declares(self, first, last):
        """Whether the statement has no effect but a new variable."""
        calls = any(token.text == "(" for token in self.tokens[first:last])
        return self.declared_name(first) != "" and not calls

    def swap(self, left, right):
        if self.only_declares(*left) or self.only_declares(*right):
            return
        left_start, left_end = self.tokens[left[0]].start, self.tokens[left[1]].end
        right_start, right_end = self.tokens[right[0]].start, self.tokens[right[1]].end
        swapped = (
            self.text[right_start:right_end]
            + self.text[left_end:right_start]
            + self.text[left_start:left_end]
        )
        self.add("statements swapped", left_start, right_end, swapped, left[0])

    def return_mutants(self, first, last):
        start, end = self.tokens[first + 1].start, self.tokens[last].start
        if first + 1 < last and self.text[start:end] not in EMPTY_ANSWERS:
            self.add("answer emptied", start, end, "{}", first)

    # Tokens

    def token_mutants(self, place):
        token = self.tokens[place]
        if not self.functions[place] and token.kind == "sign":
            return
        if token.kind == "string":
            if self.tokens[place - 1].text != "extern":
                self.replace("text changed", place, '"~' + token.text[1:])
        elif token.kind == "character":
            self.replace("constant changed", place, self.other_character(token.text))
        elif token.kind == "number":
            self.number_mutant(place)
        elif token.text in ("true", "false"):
            self.replace("constant changed", place, "false" if token.text == "true" else "true")
        elif token.text in ("if", "while", "for"):
            self.condition_mutant(place)
        elif token.text in OPERATORS and self.is_between_blanks(token):
            if self.tokens[place - 1].text != "template":
                self.replace("operator changed", place, OPERATORS[token.text])
        elif token.text in STEPS:
            self.replace("operator changed", place, STEPS[token.text])
        elif token.text == "!":
            self.replace("negation removed", place, "")
        elif token.text == "?":
            self.choice_mutant(place)

    def replace(self, kind, place, replacement):
        token = self.tokens[place]
        self.add(kind, token.start, token.end, replacement, place)

    def is_between_blanks(self, token):
        return self.text[token.start - 1].isspace() and self.text[token.end].isspace()

    @staticmethod
    def other_character(literal):
        if literal[1] == "\\":
            return "'x'"
        return "'" + chr(ord(literal[1]) + 1) + "'"

    def number_mutant(self, place):
        text = self.tokens[place].text
        match = re.fullmatch(r"(0[xX])?([0-9a-fA-F']+)([uUlL]*)", text)
        if match:
            base = 16 if match.group(1) else 10
            value = int(match.group(2).replace("'", ""), base) + 1
            shown = f"0x{value:X}" if match.group(1) else str(value)
            self.replace("constant changed", place, shown + match.group(3))
        elif re.fullmatch(r"[\d.]+", text):
            self.replace("constant changed", place, str(float(text) + 1.0))

    def closing(self, place):
        """The token that closes what the token at `place` opens."""
        depth = 0
        for at in range(place, len(self.tokens)):
            text = self.tokens[at].text
            if self.tokens[at].kind == "sign":
                depth += text in OPENING
                depth -= text in OPENING.values()
            if depth == 0:
                return at
        raise ValueError(f"{self.file}: a bracket is not closed")

    def condition_mutant(self, place):
        opening = place + 1
        if self.tokens[opening].text != "(":
            return
        closing = self.closing(opening)
        if self.tokens[place].text == "for":
            ends = [at for at in range(opening, closing) if self.tokens[at].text == ";"]
            if len(ends) != 2:
                return
            opening, closing = ends
        if self.is_negated_by_one_token(opening + 1, closing):
            return
        start, end = self.tokens[opening + 1].start, self.tokens[closing].start
        self.add("condition negated", start, end, f"!({self.text[start:end]})", place)

    def is_negated_by_one_token(self, first, last):
        """Whether changing the condition's one operator does what negating it would."""
        texts = [token.text for token in self.tokens[first:last]]
        if any(text in ("&&", "||", "<", "<=", ">", ">=") for text in texts):
            return False
        return texts[0] == "!" or sum(text in ("==", "!=") for text in texts) == 1

    def choice_mutant(self, place):
        colon = self.at_same_depth(place + 1, (":",))
        end = self.at_same_depth(colon + 1, (";", ",", ":", ")", "]", "}"))
        first = self.text[self.tokens[place + 1].start : self.tokens[colon - 1].end]
        second = self.text[self.tokens[colon + 1].start : self.tokens[end - 1].end]
        self.add(
            "condition negated",
            self.tokens[place + 1].start,
            self.tokens[end - 1].end,
            f"{second} : {first}",
            place,
        )

    def at_same_depth(self, place, wanted):
        at = place
        while self.tokens[at].text not in wanted or self.tokens[at].kind != "sign":
            is_opening = self.tokens[at].kind == "sign" and self.tokens[at].text in OPENING
            at = (self.closing(at) if is_opening else at) + 1
        return at


def mutants_of(file, text):
    """All mutants of a source, in the order in which they stand."""
    return Source(file, text).mutants()
