#!/usr/bin/env python3
"""Writes decimal test cases and their results, computed by Python's decimal
module, to stdout.

Usage: decimal_oracle.py SEED [SCALE]

A decimal is written as UNSCALED:SCALE (unscaled in decimal). Lines:
  parse TEXT D                    TEXT read as a decimal
  format D PLAIN SCI ENG          plain, scientific and engineering text
  add|sub|mul A B R               exact results
  cmp A B C                       numeric comparison, -1, 0 or 1
  div A B SCALE MODE R            A / B rounded to SCALE places; R may be "raise"
  setscale A SCALE MODE R         likewise for a change of scale
  exact A B R                     exact quotient, or "none"
  strip A R                       trailing zeros removed
  toint A R                       truncated to an integer (decimal)
  todouble A TEXT                 correctly rounded double (repr)
  fromdouble TEXT EXACT SHORT     exact value of the double; its shortest form, stripped
MODE is one of UP DOWN CEILING FLOOR HALF_UP HALF_DOWN HALF_EVEN UNNECESSARY.
"""
import decimal
import random
import sys
from decimal import Decimal

sys.set_int_max_str_digits(0)

rng = random.Random(int(sys.argv[1]))
scale_factor = float(sys.argv[2]) if len(sys.argv) > 2 else 1.0
out = []

MODES = {
    'UP': decimal.ROUND_UP, 'DOWN': decimal.ROUND_DOWN, 'CEILING': decimal.ROUND_CEILING,
    'FLOOR': decimal.ROUND_FLOOR, 'HALF_UP': decimal.ROUND_HALF_UP, 'HALF_DOWN': decimal.ROUND_HALF_DOWN,
    'HALF_EVEN': decimal.ROUND_HALF_EVEN, 'UNNECESSARY': None,
}
WIDE = dict(prec=decimal.MAX_PREC, Emax=decimal.MAX_EMAX, Emin=decimal.MIN_EMIN)


def ctx(**kw):
    args = dict(WIDE)
    args.update(kw)
    return decimal.Context(**args)


def unscaled():
    r = rng.random()
    digits = rng.randrange(1, 6) if r < 0.4 else rng.randrange(1, 40) if r < 0.9 else rng.randrange(40, 400)
    if rng.randrange(8) == 0:
        x = int('9' * digits) if rng.randrange(2) else 10 ** (digits - 1)
        x += rng.randrange(-2, 3)
    elif rng.randrange(6) == 0:  # ends in 5s and 0s, to land on half-way points
        x = rng.randrange(10 ** digits) * 10 ** rng.randrange(0, 4) + 5 * 10 ** rng.randrange(0, 3)
    else:
        x = rng.randrange(10 ** digits)
    if rng.randrange(12) == 0:
        x = 0
    return -x if rng.randrange(2) else x


def make():
    return (unscaled(), rng.randrange(-25, 45))


def dec(d):
    u, s = d
    return Decimal(u).scaleb(-s, context=ctx())


def text(d):
    return '%d:%d' % d


def from_decimal(x):
    sign, digits, exp = x.as_tuple()
    u = int(''.join(map(str, digits))) if digits else 0
    return '%d:%d' % (-u if sign else u, -exp)


def quantize(x, scale, mode):
    q = Decimal(1).scaleb(-scale)
    if MODES[mode] is None:
        c = ctx(rounding=decimal.ROUND_DOWN)
        r = x.quantize(q, context=c)
        return None if r != x else r
    return x.quantize(q, rounding=MODES[mode], context=ctx())


def divide(a, b, scale, mode):
    x, y = dec(a), dec(b)
    if x == 0:
        return from_decimal(Decimal(0).scaleb(-scale))
    # Rounding first to a few more digits than needed with ROUND_05UP keeps
    # the information the final rounding needs (whether the rest was zero).
    prec = max(3, x.adjusted() - y.adjusted() + 1 + scale + 4)
    c = ctx(prec=prec, rounding=decimal.ROUND_05UP)
    q = c.divide(x, y)
    inexact = c.flags[decimal.Inexact]
    if MODES[mode] is None:
        if inexact:
            return 'raise'
        r = quantize(q, scale, mode)
        return 'raise' if r is None else from_decimal(r)
    return from_decimal(quantize(q, scale, mode))


def random_text():
    sign = rng.choice(['', '', '-', '+'])
    intpart = ''.join(rng.choice('0123456789') for _ in range(rng.randrange(0, 30)))
    frac = ''.join(rng.choice('0123456789') for _ in range(rng.randrange(0, 30)))
    if not intpart and not frac:
        intpart = '0'
    s = sign + intpart
    if frac or rng.randrange(4) == 0:
        s += '.' + frac
    if s.endswith('.') and not intpart:
        s += '0'
    if rng.randrange(2):
        s += rng.choice('eE') + rng.choice(['', '+', '-']) + str(rng.randrange(0, 400))
    return s


def random_double():
    r = rng.randrange(5)
    if r == 0:
        return rng.uniform(-1e6, 1e6)
    if r == 1:
        return float(rng.randrange(-2 ** 60, 2 ** 60))
    if r == 2:
        import struct
        while True:
            v = struct.unpack('<d', rng.getrandbits(64).to_bytes(8, 'little'))[0]
            if v == v and abs(v) != float('inf'):
                return v
    if r == 3:
        return rng.choice([0.1, 0.5, -2.5, 1e22, 1e23, 5e-324, 2.2250738585072014e-308, 1.7976931348623157e308, 1e15, 123456.789])
    return rng.random() * 10 ** rng.randrange(-320, 300)


def count(n):
    return max(1, int(n * scale_factor))


def main():
    for _ in range(count(300)):
        t = random_text()
        out.append('parse %s %s' % (t, from_decimal(Decimal(t))))

    for _ in range(count(500)):
        a = make()
        d = dec(a)
        out.append('format %s %s %s %s' % (text(a), format(d, 'f'), str(d), d.to_eng_string()))

    for _ in range(count(600)):
        a, b = make(), make()
        if rng.randrange(4) == 0:
            b = (b[0], a[1] + rng.randrange(-2, 3))
        x, y = dec(a), dec(b)
        c = ctx()
        out.append('add %s %s %s' % (text(a), text(b), from_decimal(c.add(x, y))))
        out.append('sub %s %s %s' % (text(a), text(b), from_decimal(c.subtract(x, y))))
        out.append('mul %s %s %s' % (text(a), text(b), from_decimal(c.multiply(x, y))))
        out.append('cmp %s %s %d' % (text(a), text(b), (x > y) - (x < y)))
        if b[0] != 0:
            for _ in range(2):
                scale = rng.randrange(-5, 40)
                mode = rng.choice(list(MODES))
                out.append('div %s %s %d %s %s' % (text(a), text(b), scale, mode, divide(a, b, scale, mode)))

    for _ in range(count(600)):
        a = make()
        scale = a[1] + rng.randrange(-6, 3)
        mode = rng.choice(list(MODES))
        r = quantize(dec(a), scale, mode)
        out.append('setscale %s %d %s %s' % (text(a), scale, mode, 'raise' if r is None else from_decimal(r)))

    for _ in range(count(300)):  # exactly half-way cases, both parities
        k = rng.randrange(1, 25)
        u = (rng.randrange(10 ** rng.randrange(1, 20)) * 10 ** k + 5 * 10 ** (k - 1)) * rng.choice([1, -1])
        a = (u, rng.randrange(-5, 30))
        mode = rng.choice(list(MODES))
        r = quantize(dec(a), a[1] - k, mode)
        out.append('setscale %s %d %s %s' % (text(a), a[1] - k, mode, 'raise' if r is None else from_decimal(r)))
        b = (rng.choice([2, 4, 8, 16, 20, 40, -2, -8]), rng.randrange(-2, 3))
        scale = rng.randrange(-3, 6)
        out.append('div %s %s %d %s %s' % (text(a), text(b), scale, mode, divide(a, b, scale, mode)))

    for _ in range(count(300)):
        a = make()
        b = (rng.choice([1, 2, 3, 4, 5, 6, 7, 8, 16, 25, 125, 40, 80, 1024, 3125, 12, 99]) * rng.choice([1, 1, 10, 100, -1]),
             rng.randrange(-5, 10))
        if rng.randrange(3) == 0:
            b = make()
            if b[0] == 0:
                continue
        c = ctx(prec=20000)
        q = c.divide(dec(a), dec(b))
        out.append('exact %s %s %s' % (text(a), text(b), 'none' if c.flags[decimal.Inexact] else from_decimal(q)))

    for _ in range(count(300)):
        u = unscaled() * 10 ** rng.randrange(0, 30)
        a = (u, rng.randrange(-10, 40))
        out.append('strip %s %s' % (text(a), from_decimal(dec(a).normalize(context=ctx()))))
        out.append('toint %s %d' % (text(a), int(dec(a))))

    for _ in range(count(400)):
        a = make()
        if rng.randrange(3) == 0:
            a = (a[0], rng.randrange(-330, 360))
        if rng.randrange(6) == 0:
            a = (unscaled(), rng.choice([-300, -308, -309, 320, 323, 324, 325, 340]) + rng.randrange(-3, 3))
        out.append('todouble %s %s' % (text(a), repr(float(dec(a)))))

    for _ in range(count(300)):
        v = random_double()
        exact = Decimal(v)
        short = Decimal(repr(v)).normalize(context=ctx())
        out.append('fromdouble %s %s %s' % (repr(v), from_decimal(exact), from_decimal(short)))

    sys.stdout.write('\n'.join(out))
    sys.stdout.write('\n')


main()
