import os
from typing import Any, Callable, Optional, Sequence, Tuple, Union

_Path = Union[str, "os.PathLike[str]"]

TIMELINES: Tuple[str, ...]
COLUMNS: Tuple[str, ...]

def render(
    timeline: _Path,
    output: _Path,
    client: Any,
    *,
    pieces: Optional[int] = None,
    report: Union[bool, _Path] = True,
    folder: Optional[_Path] = None,
    retries: int = 2,
    progress: Optional[Callable[[int, int], object]] = None,
    **options: Any,
) -> dict[str, Any]: ...
def render_all(
    folder: _Path,
    client: Any,
    output: Optional[_Path] = None,
    *,
    retries: int = 2,
    progress: Optional[Callable[[int, int, dict[str, Any]], object]] = None,
    table: Optional[_Path] = None,
    format: str = "wav",
    **options: Any,
) -> list[dict[str, Any]]: ...
def write_table(rows: Sequence[dict[str, Any]], path: _Path) -> None: ...
