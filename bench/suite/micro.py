"""The micro-benchmarks, by their own program."""

import json


def measure(bench) -> list[dict]:
    result = bench.scratch / "micro.json"
    bench.run(
        bench.program("bench-micro"),
        *(f"--benchmark_out={result}", "--benchmark_out_format=json"),
        *("--benchmark_repetitions=3", "--benchmark_report_aggregates_only=true"),
    )
    return [
        entry
        for entry in json.loads(result.read_text())["benchmarks"]
        if entry.get("aggregate_name") == "median"
    ]


def as_text(entries) -> str:
    lines = []
    for entry in entries:
        rate = (
            f"{entry['items_per_second'] / 1e6:.1f} million records/s"
            if "items_per_second" in entry
            else f"{entry['bytes_per_second'] / 1e6:.0f} MB/s"
        )
        time = f"{entry['cpu_time']:.3g} {entry['time_unit']}"
        lines.append(f"{entry['run_name']:<32} {time:>12}  {rate}")
    return "\n".join(lines)
