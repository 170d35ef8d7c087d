"""Turns the soundings of a small lake into a chart of its depths."""

from collections import defaultdict
from dataclasses import dataclass
from statistics import mean

SPEED_OF_SOUND = 1447.0  # metres per second in fresh water at ten degrees


@dataclass(frozen=True)
class Sounding:
    east: float
    north: float
    echo: float  # seconds there and back

    @property
    def depth(self) -> float:
        return self.echo * SPEED_OF_SOUND / 2


def chart(soundings: list[Sounding], cell: float = 5.0) -> dict[tuple[int, int], float]:
    """Mean depth of every square cell that was sounded at least once."""
    cells = defaultdict(list)
    for sounding in soundings:
        cells[int(sounding.east // cell), int(sounding.north // cell)].append(sounding.depth)
    return {place: mean(depths) for place, depths in cells.items()}


def deepest(depths: dict[tuple[int, int], float]) -> str:
    if not depths:
        return "Nothing was sounded."
    (column, row), depth = max(depths.items(), key=lambda item: item[1])
    return f"{depth:.1f} m in column {column}, row {row}"


if __name__ == "__main__":
    line = [Sounding(east=i * 2.5, north=17.0, echo=0.012 + 0.0009 * (i % 11)) for i in range(60)]
    print(deepest(chart(line)))
