class RefusedInput(ValueError):
    argument: str | None
    column: str | None
    index: int | None
    what: str
    expected: str
    def __init__(
        self, option: str | None, column: str | None, index: int | None, what: str, expected: str
    ) -> None: ...
