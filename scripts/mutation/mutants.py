"""Finds the places of a C++ source at which something can be changed, and writes the source so that
each chosen change can be switched on at run time."""

import hashlib
import re
from dataclasses import dataclass, field

from clang.cindex import CursorKind, Index, TranslationUnit, TypeKind

COMPARISONS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "*"}
LOGIC = {"&&": "||", "||": "&&"}
BITS = {"|": "&", "&": "|", "<<": ">>", ">>": "<<"}
ASSIGNMENTS = {"+=": "-=", "-=": "+=", "|=": "&="}
OPERATORS = {**COMPARISONS, **ARITHMETIC, **LOGIC, **BITS, **ASSIGNMENTS}

# A value that isn't known when the program runs would not compile there.
CONSTANT_CONTEXTS = {
    CursorKind.CASE_STMT, CursorKind.ENUM_CONSTANT_DECL, CursorKind.STATIC_ASSERT,
    CursorKind.TEMPLATE_NON_TYPE_PARAMETER,
}
INTEGERS = {
    TypeKind.INT, TypeKind.UINT, TypeKind.LONG, TypeKind.ULONG, TypeKind.LONGLONG,
    TypeKind.ULONGLONG, TypeKind.SHORT, TypeKind.USHORT,
}
STATEMENTS = {
    CursorKind.CALL_EXPR, CursorKind.BINARY_OPERATOR, CursorKind.UNARY_OPERATOR,
    CursorKind.COMPOUND_ASSIGNMENT_OPERATOR, CursorKind.BREAK_STMT, CursorKind.CONTINUE_STMT,
    CursorKind.UNEXPOSED_EXPR,
}
# Of the log only what a user of scripts must see is behaviour, and what a host asserts.
DELETED_MACROS = {"VELMORA_LOG_ERROR", "VELMORA_ASSERT_FAIL", "VELMORA_ASSERT_FAIL_L"}

PRELUDE = b"""namespace Mutation {
__attribute__((visibility("default"))) bool active(int);
}
#line 1
"""


@dataclass
class Mutant:
    """A change of the bytes from `start` to `end`. The pieces make up the changed source: texts, in
    which `@` stands for the question whether the mutant is at work, and pairs of places."""

    file: str
    function: str
    kind: str
    start: int
    end: int
    line: int
    before: str
    after: str
    pieces: list = field(repr=False)
    wraps: bool = False
    number: int = -1
    occurrence: int = 0

    def key(self):
        """The same as long as the place and its function stay what they are, wherever they move."""
        return (self.file, self.function, self.before, self.after, self.occurrence)

    def rank(self, seed):
        return hashlib.sha256(repr((seed, self.key())).encode()).hexdigest()


def one_line(text):
    return re.sub(r"\s+", " ", text).strip()


class Finder:
    def __init__(self, path, name, arguments):
        unit = Index.create().parse(
            path, args=arguments, options=TranslationUnit.PARSE_DETAILED_PROCESSING_RECORD)
        errors = [d for d in unit.diagnostics if d.severity >= 3]
        if errors:
            raise RuntimeError(f"{path}: {errors[0]}")
        self.path = path
        self.name = name
        with open(path, "rb") as file:
            self.bytes = file.read()
        self.macros = []
        self.mutants = []
        for cursor in unit.cursor.get_children():
            if cursor.kind == CursorKind.MACRO_INSTANTIATION and self.is_here(cursor):
                self.macros.append((*self.extent(cursor), cursor.spelling))
        for cursor in unit.cursor.get_children():
            if self.is_here(cursor) and not cursor.kind.is_preprocessing():
                self.visit(cursor, None, "", False)
        self.count_occurrences()

    def is_here(self, cursor):
        return cursor.location.file is not None and cursor.location.file.name == self.path

    @staticmethod
    def extent(cursor):
        return cursor.extent.start.offset, cursor.extent.end.offset

    def text(self, start, end):
        return self.bytes[start:end].decode()

    def macro_of(self, start, end):
        """The macro of which the place is the whole; an empty name if it is a part of one."""
        for first, last, name in self.macros:
            if first <= start and end <= last:
                return name if start == first else ""
        return None

    def add(self, cursor, kind, after, pieces, place=None, wraps=False):
        start, end = place or self.extent(cursor)
        before = one_line(self.text(start, end))
        self.mutants.append(Mutant(
            self.name, self.function, kind, start, end, cursor.extent.start.line, before,
            one_line(after), pieces, wraps))

    def count_occurrences(self):
        seen = {}
        for mutant in self.mutants:
            key = mutant.key()
            mutant.occurrence = seen.get(key, 0)
            seen[key] = mutant.occurrence + 1

    def visit(self, cursor, parent, function, in_lambda):
        if cursor.kind in CONSTANT_CONTEXTS:
            if cursor.kind == CursorKind.CASE_STMT:
                for child in list(cursor.get_children())[1:]:
                    self.visit(child, cursor, function, in_lambda)
            return
        if cursor.kind == CursorKind.VAR_DECL and re.match(
                r"(static |inline )*constexpr\b", self.text(*self.extent(cursor))):
            return
        if cursor.kind in (CursorKind.CXX_METHOD, CursorKind.FUNCTION_DECL, CursorKind.CONSTRUCTOR,
                           CursorKind.DESTRUCTOR, CursorKind.FUNCTION_TEMPLATE):
            function = cursor.spelling
            self.result = cursor.result_type
        if cursor.kind == CursorKind.LAMBDA_EXPR:
            in_lambda = True
        self.function = function
        start, end = self.extent(cursor)
        macro = self.macro_of(start, end) if end > start else ""
        if macro is None and function:
            self.mutate(cursor, parent, in_lambda)
        elif macro in DELETED_MACROS and parent is not None and \
                parent.kind == CursorKind.COMPOUND_STMT:
            self.delete(cursor)
            return
        children = list(cursor.get_children())
        # Arguments of templates are constants: ahead of the name of a variable, and in that of what
        # is called.
        if cursor.kind == CursorKind.VAR_DECL:
            children = [c for c in children if c.extent.start.offset >= cursor.location.offset]
            if cursor.type.kind == TypeKind.CONSTANTARRAY:
                children = children[1:]
        elif cursor.kind == CursorKind.DECL_REF_EXPR:
            children = []
        for child in children:
            self.visit(child, cursor, function, in_lambda)

    def mutate(self, cursor, parent, in_lambda):
        kind = cursor.kind
        if kind in (CursorKind.BINARY_OPERATOR, CursorKind.COMPOUND_ASSIGNMENT_OPERATOR):
            self.swap_operator(cursor)
        elif kind == CursorKind.CALL_EXPR and cursor.spelling in ("operator==", "operator!="):
            self.force(cursor, "!(", ")", "negated comparison")
        elif kind == CursorKind.UNARY_OPERATOR:
            self.change_unary(cursor)
        elif kind == CursorKind.IF_STMT:
            children = list(cursor.get_children())
            if children[0].kind.is_expression():
                self.force_condition(children[0])
        elif kind == CursorKind.CONDITIONAL_OPERATOR:
            self.force_condition(next(cursor.get_children()))
        elif kind == CursorKind.WHILE_STMT:
            condition = next(cursor.get_children())
            if condition.kind.is_expression():
                self.force_to(condition, "false")
        elif kind == CursorKind.RETURN_STMT:
            self.change_result(cursor, parent, in_lambda)
        elif kind == CursorKind.INTEGER_LITERAL:
            self.change_integer(cursor, parent)
        elif kind == CursorKind.FLOATING_LITERAL:
            text = self.text(*self.extent(cursor))
            self.add(cursor, "constant", f"{text} + 1",
                     [f"(@ ? {text} + 1 : {text})"])
        elif kind == CursorKind.CXX_BOOL_LITERAL_EXPR and parent.kind != CursorKind.RETURN_STMT:
            self.force(cursor, "!", "", "constant")
        if kind in STATEMENTS and parent is not None and parent.kind == CursorKind.COMPOUND_STMT:
            self.delete(cursor)

    def swap_operator(self, cursor):
        left, right = cursor.get_children()
        start, end = self.extent(cursor)
        between = self.text(left.extent.end.offset, right.extent.start.offset)
        operator = between.strip()
        if operator not in OPERATORS:
            return
        other = OPERATORS[operator]
        if left.type.get_canonical().kind in (TypeKind.DOUBLE, TypeKind.FLOAT) and operator == "%":
            return
        if left.type.get_canonical().kind == TypeKind.POINTER and operator in ARITHMETIC:
            return
        sides = (start, left.extent.end.offset), (right.extent.start.offset, end)
        if operator in ASSIGNMENTS:
            pieces = ["(@ ? ", sides[0], f" {other} ", sides[1], " : ", sides[0],
                      f" {operator} ", sides[1], ")"]
        else:
            pieces = ["(@ ? (", sides[0], f") {other} (", sides[1], ") : (", sides[0],
                      f") {operator} (", sides[1], "))"]
        after = self.text(*sides[0]) + f" {other} " + self.text(*sides[1])
        self.add(cursor, "operator", after, pieces)

    def change_unary(self, cursor):
        start, end = self.extent(cursor)
        text = self.text(start, end)
        if text.startswith("!"):
            inner = (start + 1, end)
            self.add(cursor, "operator", self.text(*inner),
                     ["(@ ? static_cast<bool>(", inner, ") : !(", inner, "))"])
        elif text.startswith(("++", "--")) and cursor.type.get_canonical().kind in INTEGERS:
            inner = (start + 2, end)
            other = "--" if text.startswith("++") else "++"
            self.add(cursor, "operator", other + self.text(*inner),
                     [f"(@ ? {other}", inner, f" : {text[:2]}", inner, ")"])

    def change_integer(self, cursor, parent):
        if parent.type.get_canonical().kind in (TypeKind.POINTER, TypeKind.MEMBERPOINTER):
            return
        text = self.text(*self.extent(cursor))
        self.add(cursor, "constant", f"{text} + 1", [f"(@ ? {text} + 1 : {text})"])

    def force(self, cursor, before, behind, kind):
        place = self.extent(cursor)
        self.add(cursor, kind, before + self.text(*place) + behind,
                 [f"(@ ? {before}", place, f"{behind} : ", place, ")"], wraps=True)

    def force_to(self, condition, value):
        place = self.extent(condition)
        self.add(condition, "condition", value,
                 [f"(@ ? {value} : static_cast<bool>(", place, "))"], wraps=True)

    def force_condition(self, condition):
        if self.macro_of(*self.extent(condition)) is None:
            self.force_to(condition, "true")
            self.force_to(condition, "false")

    def change_result(self, cursor, parent, in_lambda):
        values = list(cursor.get_children())
        if not values or self.macro_of(*self.extent(values[0])) is not None:
            return
        place = self.extent(values[0])
        text = self.text(*place)
        value = values[0].type.get_canonical().kind
        if value == TypeKind.BOOL:
            for constant in {"true": ["false"], "false": ["true"]}.get(text, ["true", "false"]):
                self.add(cursor, "result", constant,
                         [f"(@ ? {constant} : static_cast<bool>(", place, "))"], place, True)
        elif in_lambda or parent.kind != CursorKind.COMPOUND_STMT:
            return
        elif self.result.kind not in (TypeKind.LVALUEREFERENCE, TypeKind.VOID) and \
                not self.result.spelling.endswith("Iterator") and \
                text not in ("{}", "nullptr", "*this", "0") and \
                not re.fullmatch(r"[\w:<>]+\(\)", text):
            self.add(cursor, "result", "return {}",
                     ["if (@) { return {}; } ", self.extent(cursor)], wraps=True)

    def delete(self, cursor):
        # A log line or an assertion is one macro, whose parts are nobody's business.
        place = self.extent(cursor)
        self.add(cursor, "deleted", "", ["if (!@) ", place], wraps=True)


def rewrite(source, mutants):
    """The source with all of the mutants in it, none of them at work."""

    def render(start, end, inside):
        result = b""
        position = start
        while inside:
            outer = inside[0]
            within = [m for m in inside[1:] if m.end <= outer.end]
            inside = [m for m in inside[1:] if m.end > outer.end]
            result += source[position:outer.start]
            for piece in outer.pieces:
                if isinstance(piece, str):
                    result += piece.replace("@", f"Mutation::active({outer.number})").encode()
                else:
                    first, last = piece
                    result += render(first, last, [
                        m for m in within if first <= m.start and m.end <= last])
            position = outer.end
        return result + source[position:end]

    # The outermost first; what wraps a place ahead of what takes it apart. Deletions are statements.
    order = sorted(mutants, key=lambda m: (
        m.start, -m.end, m.kind != "deleted", not m.wraps, m.number))
    result = PRELUDE + render(0, len(source), order)
    for mutant in mutants:
        if f"Mutation::active({mutant.number})".encode() not in result:
            raise RuntimeError(f"Not in the source: {mutant}")
    return result
