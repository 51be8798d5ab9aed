#!/usr/bin/env python3
"""Writes integer test cases and their results, computed by Python, to stdout.

Usage: oracle.py SEED [SCALE [MAX_LIMBS]]

Line formats (numbers in signed lower-case hexadecimal):
  pair A B                 sets the operands of the following lines
  add|sub|mul R            A op B
  divt|remt|divf|modf R    truncating / floor quotient and remainder (B != 0)
  mod R                    A mod |B| (non-negative; B != 0)
  gcd R
  and|or|xor|andnot R      two's complement bitwise operations
  not R                    ~A
  cmp C                    -1, 0 or 1
  bits L C                 bit length and bit count of A (decimal)
  shl N R / shr N R        A << N, A >> N (N decimal)
  testbit N V              bit N of A (decimal, 0 or 1)
  pow X E R                X ** E (E decimal)
  modpow X E M R           pow(X, E, M)
  modinv X M R             inverse of X modulo M, or "none"
  radix K X TEXT           X written in radix K (lower case)
  double X TEXT            X as a correctly rounded double, printed by repr
"""
import math
import random
import sys

sys.set_int_max_str_digits(0)

rng = random.Random(int(sys.argv[1]))
scale = float(sys.argv[2]) if len(sys.argv) > 2 else 1.0
max_limbs = int(sys.argv[3]) if len(sys.argv) > 3 else 3000
out = []


def h(x):
    return format(x, 'x') if x >= 0 else '-' + format(-x, 'x')


def magnitude(limbs):
    """A non-negative number of about `limbs` 64-bit limbs, shaped to stress
    carries and quotient estimates as well as plain random bits."""
    bits = max(1, limbs * 64 - rng.randrange(64))
    kind = rng.randrange(6)
    if kind <= 1:
        return rng.getrandbits(bits) | (1 << (bits - 1))
    if kind == 2:  # long runs of ones and zeros
        x, pos = 0, 0
        while pos < bits:
            run = rng.randrange(1, 200)
            if rng.randrange(2):
                x |= ((1 << run) - 1) << pos
            pos += run
        return (x & ((1 << bits) - 1)) | (1 << (bits - 1))
    if kind == 3:  # all ones, or a power of two, plus or minus a little
        base = (1 << bits) - 1 if rng.randrange(2) else 1 << bits
        return max(1, base + rng.randrange(-3, 4))
    if kind == 4:  # random limbs, many of them zero or all ones
        x = 0
        for i in range(limbs):
            c = rng.randrange(4)
            limb = 0 if c == 0 else (1 << 64) - 1 if c == 1 else rng.getrandbits(64)
            x |= limb << (64 * i)
        return x | (1 << (limbs * 64 - 1))
    top = rng.getrandbits(64) | (1 << 63)  # a 2^k-1 pattern in the low limbs
    return (top << (64 * (limbs - 1))) | ((1 << (64 * (limbs - 1))) - 1)


def signed(limbs):
    x = magnitude(limbs)
    return -x if rng.randrange(2) else x


def size(small, medium, large):
    r = rng.random()
    if r < small:
        n = rng.randrange(1, 12)
    elif r < small + medium:
        n = rng.randrange(12, 200)
    elif r < small + medium + large:
        n = rng.randrange(200, 1200)
    else:
        n = rng.randrange(1200, 3000)
    return min(n, max_limbs)


def emit_pair(a, b):
    out.append('pair %s %s' % (h(a), h(b)))
    out.append('add %s' % h(a + b))
    out.append('sub %s' % h(a - b))
    out.append('mul %s' % h(a * b))
    out.append('cmp %d' % ((a > b) - (a < b)))
    if b != 0:
        q = abs(a) // abs(b)
        qt = q if (a >= 0) == (b >= 0) else -q
        rt = a - qt * b
        out.append('divt %s' % h(qt))
        out.append('remt %s' % h(rt))
        out.append('divf %s' % h(a // b))
        out.append('modf %s' % h(a % b))
        out.append('mod %s' % h(a % abs(b)))
    out.append('gcd %s' % h(math.gcd(a, b)))
    if max(abs(a), abs(b)).bit_length() > 64 * 300:
        return  # the linear operations are covered well enough by smaller operands
    out.append('and %s' % h(a & b))
    out.append('or %s' % h(a | b))
    out.append('xor %s' % h(a ^ b))
    out.append('andnot %s' % h(a & ~b))
    out.append('not %s' % h(~a))
    bit_count = bin(a if a >= 0 else ~a).count('1')
    out.append('bits %d %d' % ((a if a >= 0 else ~a).bit_length(), bit_count))
    n = rng.randrange(0, 64 * 3 + 1) if rng.randrange(2) else rng.randrange(0, max(1, abs(a).bit_length() + 70))
    out.append('shl %d %s' % (n, h(a << n)))
    out.append('shr %d %s' % (n, h(a >> n)))
    for n in (rng.randrange(0, abs(a).bit_length() + 130), abs(a).bit_length(), 0):
        out.append('testbit %d %d' % (n, (a >> n) & 1))


def to_radix(x, radix):
    if x < 0:
        return '-' + to_radix(-x, radix)
    if radix == 10:
        return str(x)
    if radix == 16:
        return format(x, 'x')
    if radix == 8:
        return format(x, 'o')
    if radix == 2:
        return format(x, 'b')
    digits = '0123456789abcdefghijklmnopqrstuvwxyz'
    # Divide and conquer so that big values stay fast.
    if x < radix ** 64:
        s = ''
        while x:
            x, d = divmod(x, radix)
            s = digits[d] + s
        return s or '0'
    k = 32
    while radix ** (2 * k) <= x:
        k *= 2
    hi, lo = divmod(x, radix ** k)
    low = to_radix(lo, radix)
    return to_radix(hi, radix) + '0' * (k - len(low)) + low


def count(n):
    return max(1, int(n * scale))


def main():
    for _ in range(count(1200)):
        if rng.randrange(3) == 0:
            a, b = signed(size(0.6, 0.37, 0.03)), signed(size(0.8, 0.2, 0.0))
        else:
            n = size(0.55, 0.415, 0.028)
            a = signed(n)
            b = signed(max(1, n + rng.randrange(-2, 3)))
        if rng.randrange(20) == 0:
            b = 0
        if rng.randrange(2):
            a, b = b, a
        emit_pair(a, b)

    for _ in range(count(150)):
        x = signed(rng.randrange(1, 8))
        e = rng.randrange(0, 70)
        if rng.randrange(10) == 0:
            x = rng.choice([0, 1, -1, 2, -2, 1 << 64])
        out.append('pow %s %d %s' % (h(x), e, h(x ** e)))

    for _ in range(count(150)):
        m = magnitude(rng.randrange(1, 10))
        x = signed(rng.randrange(1, 12))
        e = magnitude(rng.randrange(1, 4))
        if rng.randrange(4) == 0:
            e = rng.randrange(0, 20)
        elif rng.randrange(6) == 0:  # the widest window
            e = magnitude(rng.randrange(11, 16))
            m = magnitude(rng.randrange(1, 4))
        if rng.randrange(10) == 0:
            m = rng.choice([1, 2, 3, 1 << 64])
        out.append('modpow %s %s %s %s' % (h(x), h(e), h(m), h(pow(x, e, m))))
        if rng.randrange(3) == 0:
            try:
                inv = pow(x, -1, m)
                out.append('modpow %s %s %s %s' % (h(x), h(-e), h(m), h(pow(inv, e, m))))
            except ValueError:
                pass

    for _ in range(count(300)):
        m = magnitude(size(0.6, 0.38, 0.02))
        x = signed(rng.randrange(1, 40))
        if rng.randrange(4) == 0:
            m |= 1
        try:
            r = h(pow(x, -1, m))
        except ValueError:
            r = 'none'
        out.append('modinv %s %s %s' % (h(x), h(m), r))

    for _ in range(count(400)):
        radix = rng.choice([2, 10, 16, 36, 10, 3, 7, 8, 32, rng.randrange(2, 37)])
        n = size(0.6, 0.37, 0.03)
        if radix == 10 or radix not in (2, 4, 8, 16, 32):
            n = min(n, 1500)
        x = signed(n)
        if rng.randrange(30) == 0:
            x = 0
        out.append('radix %d %s %s' % (radix, h(x), to_radix(x, radix)))

    for _ in range(count(400)):
        x = signed(rng.randrange(1, 20))
        if rng.randrange(3) == 0:
            x >>= rng.randrange(0, 64 * 15)
        try:
            d = repr(float(x))
        except OverflowError:  # rounds beyond the largest double
            d = 'inf' if x > 0 else '-inf'
        out.append('double %s %s' % (h(x), d))

    # Beyond the sizes above: division through Newton's reciprocal in two
    # blocks (from 2,800 limbs of divisor and quotient), products of operands up to 24,000 limbs
    # through the transform of three quarters of a power of two, and
    # decimal text long enough for the reciprocals of the powers of ten.
    # Quotients shorter than, as long as and longer than the divisor, and
    # exact quotients (remainder 0 and divisor - 1).
    for i in range(count(10)):
        bn = min(rng.randrange(5900, 8000), max_limbs)
        qn = min([rng.randrange(1, 12), rng.randrange(bn // 3, bn), bn + rng.randrange(-3, 4),
                  2 * bn + rng.randrange(0, 50)][i % 4], max_limbs)
        b = magnitude(bn)
        a = magnitude(bn + qn)
        if i % 5 == 3:
            a = b * magnitude(qn) + rng.choice([0, b - 1])
        if i % 3 == 1:
            a, b = -a, -b if i % 2 else b
        out.append('pair %s %s' % (h(a), h(b)))
        out.append('mul %s' % h(a * b))
        q = abs(a) // abs(b)
        qt = q if (a >= 0) == (b >= 0) else -q
        out.append('divt %s' % h(qt))
        out.append('remt %s' % h(a - qt * b))
        out.append('modf %s' % h(a % b))
    # Divisors whose remainders are wrapped in three quarters of a power of
    # two (5,191 limbs, 100,000 digits: 6,144) and either side of where that
    # length steps up (6,142 and 6,143 limbs), quotients as long as them.
    for i in range(count(4)):
        bn = min([5191, 6142, 6143, rng.randrange(3072, 6142)][i % 4], max_limbs)
        b = magnitude(bn)
        a = magnitude(bn + min(bn + rng.randrange(-2, 3), max_limbs))
        if i % 2:
            a = b * (a // b) + rng.choice([0, b - 1])
        out.append('pair %s %s' % (h(a), h(b)))
        q = a // b
        out.append('divt %s' % h(q))
        out.append('remt %s' % h(a - q * b))
    # Around the switch to Newton's reciprocal: divisors and quotients just
    # below, at and above it, dividends with remainders 0 and divisor - 1.
    for i in range(count(6)):
        bn = min(rng.randrange(3600, 4200), max_limbs)
        qn = min(rng.randrange(3600, 4200), max_limbs)
        b = magnitude(bn)
        a = b * magnitude(qn) + [0, b - 1, rng.getrandbits(64 * bn) % b][i % 3]
        if i % 2:
            a = -a
        out.append('pair %s %s' % (h(a), h(b)))
        q = abs(a) // abs(b)
        qt = q if (a >= 0) == (b >= 0) else -q
        out.append('divt %s' % h(qt))
        out.append('remt %s' % h(a - qt * b))
        out.append('divf %s' % h(a // b))
        out.append('modf %s' % h(a % b))
    # Conversions long enough for one reciprocal per level (powers from the
    # transform's threshold on): powers of the radix and their neighbours,
    # multiples of a power (long runs of zero digits), another radix.
    for i in range(count(4)):
        limbs = min(rng.randrange(3700, 4500), max_limbs)
        k = limbs * 64 * 3 // 10 + 1  # about limbs limbs of decimal digits
        x = [10 ** k, 10 ** k - 1, 10 ** k + 1, magnitude(limbs // 2) * 10 ** (k // 2)][i % 4]
        out.append('radix 10 %s %s' % (h(x), str(x)))
    x = magnitude(min(4000, max_limbs))
    out.append('radix 7 %s %s' % (h(x), to_radix(x, 7)))
    # Around the sizes where conversions start to divide through kept
    # dividers and to multiply through kept power transforms (powers of
    # 505 and 1,010 limbs): all nines, a power and its neighbours, long runs
    # of zero digits, and radices 7 and 36.
    for i in range(count(10)):
        limbs = min(rng.randrange(700, 2200), max_limbs)
        k = limbs * 64 * 3 // 10 + 1
        x = [10 ** k - 1, 10 ** k, 10 ** k + 1, magnitude(limbs),
             magnitude(limbs // 3) * 10 ** (2 * k // 3) + magnitude(2)][i % 5]
        if i == 7:
            x = -x
        out.append('radix 10 %s %s' % (h(x), str(x)))
    for radix in (7, 36):
        x = magnitude(min(rng.randrange(1000, 2200), max_limbs))
        out.append('radix %d %s %s' % (radix, h(x), to_radix(x, radix)))
    # Divisors just above a power of two (one top bit, then zeros) and all
    # ones: the reciprocal's first limbs at both of its extremes. Quotients
    # of 4,900 to 5,600 limbs make the reciprocal's top step a wrapped
    # product of one operand under the transform's threshold.
    for i in range(count(4)):
        bn = min(rng.randrange(3800, 4600), max_limbs)
        qn = min(rng.randrange(4900, 5600), max_limbs)
        b = (1 << (64 * bn - 1)) + rng.getrandbits(64) if i % 2 == 0 else (1 << (64 * bn)) - 1
        a = b * magnitude(qn) + [b - 1, rng.getrandbits(64 * bn) % b][i // 2 % 2]
        out.append('pair %s %s' % (h(a), h(b)))
        q = a // b
        out.append('divt %s' % h(q))
        out.append('remt %s' % h(a - q * b))
        out.append('divf %s' % h(q))
        out.append('modf %s' % h(a % b))
    for i in range(count(3)):
        x = magnitude(min(rng.randrange(16300, 17000), max_limbs))
        if i == 1:
            x = 10 ** (19 * min(16600, max_limbs)) - 1  # nine all the way: every block's remainder maximal
        if i == 2:
            x = -x
        out.append('radix 10 %s %s' % (h(x), str(x)))

    sys.stdout.write('\n'.join(out))
    sys.stdout.write('\n')


main()
