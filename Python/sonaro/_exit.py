"""Ends the calls of other threads when the interpreter ends, which would break off within the module otherwise."""
import atexit
import os
import threading

from . import _sonaro
from ._errors import Cancelled

_LONGEST_WAIT = 10


class _Calls:
    """Entered by each call that frees the interpreter's lock."""

    def __init__(self):
        self._reset()
        atexit.register(self._end)
        os.register_at_fork(after_in_child=self._reset)

    def _reset(self):
        self._changed = threading.Condition()
        self._count = 0
        self._has_ended = False

    @staticmethod
    def _is_main():
        return threading.get_ident() == threading.main_thread().ident

    def __enter__(self):
        if not self._is_main():
            with self._changed:
                if self._has_ended:
                    raise Cancelled("the interpreter ends; nothing was written")
                self._count += 1

    def __exit__(self, *_):
        if not self._is_main():
            with self._changed:
                self._count -= 1
                self._changed.notify_all()

    def _end(self):
        with self._changed:
            self._has_ended = True
            if self._count:
                _sonaro.end_calls()
                self._changed.wait_for(lambda: not self._count, _LONGEST_WAIT)


CALLS = _Calls()
