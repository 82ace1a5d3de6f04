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
    pieces: Optional[int] = ...,
    report: Union[bool, _Path] = ...,
    folder: Optional[_Path] = ...,
    retries: int = ...,
    progress: Optional[Callable[[int, int], object]] = ...,
    **options: Any,
) -> dict[str, Any]: ...
def render_all(
    folder: _Path,
    client: Any,
    output: Optional[_Path] = ...,
    *,
    retries: int = ...,
    progress: Optional[Callable[[int, int, dict[str, Any]], object]] = ...,
    table: Optional[_Path] = ...,
    format: str = ...,
    **options: Any,
) -> list[dict[str, Any]]: ...
def write_table(rows: Sequence[dict[str, Any]], path: _Path) -> None: ...
