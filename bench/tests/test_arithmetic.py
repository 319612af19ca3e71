import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))

from suite import inputs, schedule, trace


class Arithmetic(unittest.TestCase):
    def test_schedule_starts_each_job_in_the_slot_that_is_free_first(self):
        for durations, slots, start, end in [
            ([], 3, 0, 0),
            ([2, 3, 4], 1, 0, 9),
            ([4, 1, 1, 1, 5], 2, 0, 8),  # 4 | 1 1 1, then 5 behind the three
            ([1, 2], 8, 0, 2),
            ([2, 3, 4], 1, 10, 39),
            ([2, 2, 2], 3, 10, 32),
        ]:
            self.assertEqual(schedule.list_schedule(durations, slots, start), end)

    def test_cover_counts_overlaps_once_and_leaves_gaps_out(self):
        for intervals, length in [
            ([], 0),
            ([(5, 9), (0, 3)], 7),
            ([(0, 10), (2, 4), (9, 12)], 12),
        ]:
            self.assertEqual(schedule.covered(intervals), length)


class Files(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.path = Path(directory.name) / "file"

    def test_made_view_file_has_the_size_and_ends_with_a_line(self):
        header, records = b"A!N!\r\nJ!x!\r\n", b"S!GND!\r\nS!VDD_CORE!\r\n"
        for size in (13, 20, 1000):
            inputs.write_view_file(self.path, header, records, size)
            content = self.path.read_bytes()
            self.assertLess(abs(len(content) - size), len(records))
            self.assertTrue(content.endswith(b"!\r\n"))
            self.assertTrue(content.startswith(header + b"S!GND!\r\n"))
        self.assertEqual(inputs.split_view_file(self.path)[0], header)

    def test_trace_pairs_the_processes_and_refuses_one_without_an_end(self):
        self.path.write_text("start a b.txt 7 10\nstart c.txt 8 11\nend a b.txt 7 20\n")
        with self.assertRaises(ValueError):
            trace.intervals(self.path)
        with self.path.open("a") as file:
            file.write("end c.txt 8 30\n")
        self.assertEqual(trace.intervals(self.path), [(10, 20), (11, 30)])


if __name__ == "__main__":
    unittest.main()
