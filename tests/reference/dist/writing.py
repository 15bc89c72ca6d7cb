"""Writes a table, its numbers exact."""

import math
import os

from mpmath import mpf

HERE = os.path.dirname(os.path.abspath(__file__))


def write(name, arguments, rows):
    with open(os.path.join(HERE, name + ".csv"), "w") as out:
        print(",".join(list(arguments) + ["value", "rest", "k"]), file=out)
        for args, value, k in rows:
            high = float(value)
            rest = 0.0 if math.isinf(high) else float(value - mpf(high))
            print(",".join([a.hex() if isinstance(a, float) else str(a) for a in args] +
                           [high.hex(), rest.hex(), f"{float(k):.6g}"]), file=out)
    print(name, len(rows))


def logspace(random_source, low, high):
    return math.exp(random_source.uniform(math.log(low), math.log(high)))
