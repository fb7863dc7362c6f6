"""The text form of the tables: one word that says what the line is, then its values.

    case NAME               a new function from here on, the settings below back to none
    parameter KEY KIND TEXT a parameter; KIND is int, float or text
    tolerance exact | absolute T | relative T | rms T SKIP
                            how far a result may be off: not at all, each value by T, each value by
                            T times itself, or the root of the mean of the squared errors by T with
                            SKIP values left out at both ends
    argument VALUES         a vector, one line an argument, in their order
    result VALUES           what the function gives for the arguments above; "none" when it fails
    reset                   the memory is forgotten
"""

import os

FOLDER = os.path.dirname(os.path.abspath(__file__))


def text(value):
    """The shortest decimal that reads back as the same double."""
    value = float(value)
    return repr(int(value)) if value == int_or_nan(value) and not is_negative_zero(value) \
        else repr(value)


def int_or_nan(value):
    return float(int(value)) if abs(value) < 2.0**53 else float("nan")


def is_negative_zero(value):
    return value == 0.0 and str(value)[0] == "-"


class Table:
    def __init__(self, name, *comments):
        self.path = os.path.join(FOLDER, name + ".txt")
        self.lines = ["# " + comment for comment in comments]

    def add(self, *words):
        self.lines.append(" ".join(str(word) for word in words))

    def case(self, name, tolerance, **parameters):
        self.add("case", name)
        for key, value in parameters.items():
            self.parameter(key.replace("__", "."), value)
        self.add("tolerance", tolerance)

    def parameter(self, key, value):
        kind = {int: "int", float: "float", str: "text"}[type(value)]
        self.add("parameter", key, kind, value)

    def frame(self, arguments, result):
        for argument in arguments:
            self.add("argument", *map(text, argument))
        if result is None:
            self.add("result none")
        else:
            self.add("result", *map(text, result))

    def write(self):
        with open(self.path, "w", encoding="ascii") as file:
            file.write("\n".join(self.lines) + "\n")
