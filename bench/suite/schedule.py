"""Arithmetic of schedules."""

import heapq


def list_schedule(durations, slots: int, start_seconds: float = 0) -> float:
    """When the last of the jobs ends that are started in order, one at a time, each as soon as a
    slot is free. A start takes its time from the one who starts, too."""
    free = [0.0] * slots
    end = started = 0.0
    for duration in durations:
        started = max(started, heapq.heappop(free)) + start_seconds
        heapq.heappush(free, started + duration)
        end = max(end, started + duration)
    return end


def covered(intervals) -> float:
    """The length of what the intervals (begin, end) cover together."""
    total = 0
    reached = float("-inf")
    for begin, end in sorted(intervals):
        total += max(end - max(begin, reached), 0)
        reached = max(reached, end)
    return total
