"""Arithmetic of schedules."""

import heapq


def list_schedule(durations, slots: int, start_seconds: float = 0) -> float:
    """The end of the last job. Jobs start in order, each as soon as a slot is free. Starts do not
    overlap: each takes its time from the starter, too.

    >>> list_schedule([], 3), list_schedule([2, 3, 4], 1), list_schedule([1, 2], 8)
    (0, 9, 2)
    >>> list_schedule([4, 1, 1, 1, 5], 2)  # 4 beside 1 1 1, then 5 behind the three
    8
    >>> list_schedule([2, 3, 4], 1, 10), list_schedule([2, 2, 2], 3, 10)
    (39, 32)
    """
    free = [0] * slots
    started = 0
    ends = [0]
    for duration in durations:
        started = max(started, heapq.heappop(free)) + start_seconds
        ends.append(started + duration)
        heapq.heappush(free, ends[-1])
    return max(ends)


def covered(intervals) -> float:
    """The total length that the intervals (begin, end) cover.

    >>> covered([]), covered([(5, 9), (0, 3)]), covered([(0, 10), (2, 4), (9, 12)])
    (0, 7, 12)
    """
    total, reached = 0, float("-inf")
    for begin, end in sorted(intervals):
        total += max(end - max(begin, reached), 0)
        reached = max(reached, end)
    return total


def traced_intervals(trace: str) -> list[tuple[int, int]]:
    """Begin and end, in nanoseconds, of every process of a trace of the stand-in extractor.

    >>> traced_intervals("start a b 7 10\\nstart c 8 11\\nend a b 7 20\\nend c 8 30")
    [(10, 20), (11, 30)]
    """
    times = {"start": {}, "end": {}}
    for line in trace.splitlines():
        event, *_name, process, nanoseconds = line.split(" ")
        times.get(event, {})[process] = int(nanoseconds)
    return [(begin, times["end"][process]) for process, begin in times["start"].items()]
