#!/usr/bin/env python3
"""Turns the JSON output of bigint_bench into the table of docs/math.md.

  bigint_bench --benchmark_repetitions=3 --benchmark_report_aggregates_only=true \
               --benchmark_format=json > out.json
  bench/bigint_table.py out.json

Uses the median of the repetitions' CPU time (on a shared machine the
wall-clock time also counts other processes' turns); the growth exponent is
log(t(100000) / t(10000)) / log(10). ModPow rows are by operand bits, the
others by decimal digits.
"""
import json
import math
import sys


def main():
    data = json.load(open(sys.argv[1]))
    times = {}
    for b in data['benchmarks']:
        if b.get('aggregate_name', 'median') != 'median':
            continue
        name, size = b['run_name'].split('/')[:2]
        op, lib = name.rsplit('_', 1)
        times[(op, lib, int(size))] = b['cpu_time']  # microseconds
    ops = sorted({k[0] for k in times}, key=['Multiply', 'Square', 'ToString', 'Parse', 'Divide', 'ModPow'].index)
    print('| operation | digits (bits) | qvcl3 (us) | GMP (us) | ratio |')
    print('| --- | ---: | ---: | ---: | ---: |')
    for op in ops:
        for n in sorted(k[2] for k in times if k[0] == op and k[1] == 'Qv'):
            q, g = times.get((op, 'Qv', n)), times.get((op, 'Gmp', n))
            if q is None or g is None:
                continue
            print('| %s | %d | %.2f | %.2f | %.2f |' % (op, n, q, g, q / g))
    print()
    print('| operation | qvcl3 exponent | GMP exponent |')
    print('| --- | ---: | ---: |')
    for op in ops:
        row = []
        for lib in ('Qv', 'Gmp'):
            a, b = times.get((op, lib, 10000)), times.get((op, lib, 100000))
            row.append('%.2f' % (math.log(b / a) / math.log(10)) if a and b else '-')
        print('| %s | %s | %s |' % (op, row[0], row[1]))


main()
