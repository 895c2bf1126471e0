"""Exceptions of zetformula."""


class AmbiguousNameError(KeyError):
    """A display name that several instructions share; ``candidates`` lists their
    identifiers."""

    def __init__(self, message, candidates):
        super().__init__(message)
        self.message = message
        self.candidates = candidates

    def __str__(self):
        return self.message


class InstructionError(RuntimeError):
    """An instruction failed (status 3) or threw, and the caller asked ``check=True``.
    ``result`` is the zetformula.Result of the call."""

    def __init__(self, name, result):
        told = "; ".join(f"{r.source}: {r.text}" for r in result.reports)
        if result.exception is not None:
            what = f"{name}: exception: {result.exception}"
        else:
            what = f"{name}: failed with status {result.status}"
        super().__init__(what + (f"; {told}" if told else ""))
        self.result = result
