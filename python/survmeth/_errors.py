"""Input that cannot be analysed."""

from survmeth._names import argument_of, sentence_in_python


class RefusedInput(ValueError):
    """Data or arguments that cannot be analysed.

    argument  the argument at fault: "time"; None where it is the data as a whole
    column    the column that it names, or None
    index     the row at fault, from 0 (as data.iloc takes it), or None; the message counts from 1
    what      what stands there
    expected  what was expected instead; may be empty
    """

    def __init__(self, option, column, index, what, expected):
        self.argument = argument_of(option) if option else None
        self.column = column or None
        self.index = index
        self.what = sentence_in_python(what)
        self.expected = sentence_in_python(expected)
        self._parts = (option, column, index, what, expected)
        super().__init__(self._sentence())

    def __reduce__(self):
        return type(self), self._parts

    def _sentence(self):
        place = []
        if self.argument:
            place.append(self.argument)
        if self.column:
            place.append(f'column "{self.column}"')
        if self.index is not None:
            place.append(f"row {self.index + 1}")
        text = (", ".join(place) + ": " if place else "") + self.what
        return text + (f"; expected {self.expected}" if self.expected else "")
