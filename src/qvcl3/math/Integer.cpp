#include "Integer.h"

#include "MathError.h"
#include "Montgomery.h"

#include <cmath>
#include <limits>

namespace qv {
namespace math {
namespace detail {

namespace {

Int makeInt(int sign, Mag m)
{
    return Int(sign, std::move(m));
}

int64_t asSigned(uint64_t v) noexcept
{
    if (v <= static_cast<uint64_t>(std::numeric_limits<int64_t>::max()))
        return static_cast<int64_t>(v);
    return -static_cast<int64_t>(~v) - 1;
}

// count (<= 64) bits of m starting at bit from.
uint64_t extractBits(const Mag& m, uint64_t from, unsigned count) noexcept
{
    size_t limb = static_cast<size_t>(from / 64);
    unsigned shift = static_cast<unsigned>(from % 64);
    uint64_t v = limb < m.size() ? m[limb] >> shift : 0;
    if (shift && limb + 1 < m.size())
        v |= m[limb + 1] << (64 - shift);
    return count == 64 ? v : v & ((uint64_t(1) << count) - 1);
}

bool anyBitBelow(const Mag& m, uint64_t bit) noexcept
{
    return !m.empty() && bit > 0 && magLowestSetBit(m) < bit;
}

} // namespace

Int intFromInt64(int64_t v)
{
    uint64_t m = v < 0 ? 0 - static_cast<uint64_t>(v) : static_cast<uint64_t>(v);
    return makeInt(v < 0 ? -1 : 1, magFromU64(m));
}

Int intFromUInt64(uint64_t v)
{
    return makeInt(1, magFromU64(v));
}

Int intFromDouble(double v)
{
    if (!std::isfinite(v))
        raise(MathError::NotFinite);
    int e;
    double f = std::frexp(std::fabs(v), &e);
    if (e <= 0)
        return Int();
    Mag m = magFromU64(static_cast<uint64_t>(std::ldexp(f, 53)));
    m = e >= 53 ? magShiftLeft(m, static_cast<uint64_t>(e - 53)) : magShiftRight(m, static_cast<uint64_t>(53 - e));
    return makeInt(v < 0 ? -1 : 1, std::move(m));
}

int64_t intToInt64(IntRef a) noexcept
{
    return asSigned(intToUInt64(a));
}

uint64_t intToUInt64(IntRef a) noexcept
{
    uint64_t low = a.mag.empty() ? 0 : a.mag[0];
    return a.sign < 0 ? 0 - low : low;
}

double roundToDouble(bool negative, const Mag& m, int64_t exp2, bool sticky) noexcept
{
    const double sign = negative ? -1.0 : 1.0;
    if (m.empty())
        return 0.0;
    const int64_t bits = static_cast<int64_t>(magBitLength(m));
    const int64_t lead = bits - 1 + exp2;
    if (lead > 1023)
        return sign * std::numeric_limits<double>::infinity();
    int64_t precision = 53;
    if (lead < -1022)
        precision = lead + 1075;
    if (precision <= 0) {
        // Below half the smallest subnormal, or exactly half of it (a tie
        // that goes to the even neighbour, zero).
        bool aboveHalf = precision == 0 && (sticky || !magIsPowerOfTwo(m));
        return aboveHalf ? sign * std::ldexp(1.0, -1074) : sign * 0.0;
    }
    uint64_t q;
    int64_t e;
    const int64_t shift = bits - precision;
    if (shift > 0) {
        q = extractBits(m, static_cast<uint64_t>(shift), static_cast<unsigned>(precision));
        bool half = magTestBit(m, static_cast<uint64_t>(shift - 1));
        bool rest = sticky || anyBitBelow(m, static_cast<uint64_t>(shift - 1));
        if (half && (rest || (q & 1)))
            ++q;
        e = exp2 + shift;
    } else {
        q = m[0];
        e = exp2;
    }
    return sign * std::ldexp(static_cast<double>(q), static_cast<int>(e));
}

double intToDouble(IntRef a) noexcept
{
    return roundToDouble(a.sign < 0, a.mag, 0, false);
}

int intCompare(IntRef a, IntRef b) noexcept
{
    if (a.sign != b.sign)
        return a.sign < b.sign ? -1 : 1;
    int c = magCompare(a.mag, b.mag);
    return a.sign < 0 ? -c : c;
}

bool intEquals(IntRef a, IntRef b) noexcept
{
    return a.sign == b.sign && a.mag == b.mag;
}

uint32_t intHash(IntRef a) noexcept
{
    // 31 * h + word over the 32-bit words, most significant first.
    uint32_t h = 0;
    for (size_t i = a.mag.size(); i-- > 0;) {
        uint32_t hi = static_cast<uint32_t>(a.mag[i] >> 32), lo = static_cast<uint32_t>(a.mag[i]);
        if (hi || i + 1 != a.mag.size())
            h = 31 * h + hi;
        h = 31 * h + lo;
    }
    return a.sign < 0 ? 0u - h : h;
}

Int intNegate(IntRef a)
{
    return makeInt(-a.sign, a.mag);
}

Int intAbs(IntRef a)
{
    return makeInt(1, a.mag);
}

Int intAdd(IntRef a, IntRef b)
{
    if (b.sign == 0)
        return makeInt(a.sign, a.mag);
    if (a.sign == 0)
        return makeInt(b.sign, b.mag);
    if (a.sign == b.sign)
        return makeInt(a.sign, magAdd(a.mag, b.mag));
    int c = magCompare(a.mag, b.mag);
    if (c == 0)
        return Int();
    return c > 0 ? makeInt(a.sign, magSub(a.mag, b.mag)) : makeInt(b.sign, magSub(b.mag, a.mag));
}

Int intSub(IntRef a, IntRef b)
{
    return intAdd(a, IntRef(-b.sign, b.mag));
}

Int intMul(IntRef a, IntRef b)
{
    return makeInt(a.sign * b.sign, magMul(a.mag, b.mag));
}

Int intMulSmall(IntRef a, int64_t b)
{
    uint64_t m = b < 0 ? 0 - static_cast<uint64_t>(b) : static_cast<uint64_t>(b);
    return makeInt(b < 0 ? -a.sign : a.sign, magMulSmall(a.mag, m));
}

void intDivRem(IntRef a, IntRef b, Int* q, Int* r)
{
    Mag qm, rm;
    magDivMod(a.mag, b.mag, q ? &qm : nullptr, r ? &rm : nullptr);
    if (q)
        *q = makeInt(a.sign * b.sign, std::move(qm));
    if (r)
        *r = makeInt(a.sign, std::move(rm));
}

void intFloorDivMod(IntRef a, IntRef b, Int* q, Int* r)
{
    Int tq, tr;
    intDivRem(a, b, &tq, &tr);
    if (tr.sign != 0 && tr.sign != b.sign) {
        tq = intSub(tq, intFromInt64(1));
        tr = intAdd(tr, b);
    }
    if (q)
        *q = std::move(tq);
    if (r)
        *r = std::move(tr);
}

Int intMod(IntRef a, IntRef m)
{
    if (m.sign <= 0)
        raise(MathError::NonPositiveModulus);
    Mag r;
    magDivMod(a.mag, m.mag, nullptr, &r);
    if (a.sign < 0 && !r.empty())
        r = magSub(m.mag, r);
    return makeInt(1, std::move(r));
}

Int intPow(IntRef a, int64_t exponent)
{
    if (exponent < 0)
        raise(MathError::NegativeExponent);
    int sign = a.sign < 0 && (exponent & 1) ? -1 : 1;
    return makeInt(sign, magPow(a.mag, static_cast<uint64_t>(exponent)));
}

namespace {

// Residues kept normalised and reduced by division after every product; for
// even moduli, which Montgomery's method cannot take.
class DivisionResidues {
public:
    explicit DivisionResidues(const Mag& m) : m_modulus(m) {}
    Mag toForm(const Mag& x) const { return x; }
    Mag fromForm(const Mag& x) const { return x; }
    void mul(Mag& r, const Mag& a, const Mag& b)
    {
        Mag product = &a == &b ? magSqr(a) : magMul(a, b);
        magDivMod(product, m_modulus, nullptr, &r);
    }

private:
    const Mag& m_modulus;
};

// b^e for b already reduced and not zero, e not zero: a left-to-right sliding
// window over the odd powers b, b^3, ..., b^(2^k - 1).
template <class Residues>
Mag slidingWindowPower(Residues& ring, const Mag& base, const Mag& e)
{
    const uint64_t bits = magBitLength(e);
    const unsigned k = bits > 671 ? 6 : bits > 239 ? 5 : bits > 79 ? 4 : bits > 23 ? 3 : bits > 6 ? 2 : 1;
    std::vector<Mag> odd(size_t(1) << (k - 1));
    odd[0] = ring.toForm(base);
    if (odd.size() > 1) {
        Mag b2 = odd[0];
        ring.mul(b2, odd[0], odd[0]);
        for (size_t i = 1; i < odd.size(); ++i) {
            odd[i] = b2;
            ring.mul(odd[i], odd[i - 1], b2);
        }
    }
    Mag result;
    int64_t i = static_cast<int64_t>(bits) - 1;
    bool first = true;
    while (i >= 0) {
        if (!magTestBit(e, static_cast<uint64_t>(i))) {
            ring.mul(result, result, result);
            --i;
            continue;
        }
        int64_t low = i - static_cast<int64_t>(k) + 1;
        if (low < 0)
            low = 0;
        while (!magTestBit(e, static_cast<uint64_t>(low)))
            ++low;
        uint64_t window = extractBits(e, static_cast<uint64_t>(low), static_cast<unsigned>(i - low + 1));
        if (first) {
            result = odd[window >> 1];
            first = false;
        } else {
            for (int64_t s = 0; s < i - low + 1; ++s)
                ring.mul(result, result, result);
            ring.mul(result, result, odd[window >> 1]);
        }
        i = low - 1;
    }
    return ring.fromForm(result);
}

} // namespace

Int intModPow(IntRef base, IntRef exponent, IntRef m)
{
    if (m.sign <= 0)
        raise(MathError::NonPositiveModulus);
    if (m.mag.size() == 1 && m.mag[0] == 1)
        return Int();
    Int b = exponent.sign < 0 ? intModInverse(base, m) : intMod(base, m);
    const Mag& e = exponent.mag;
    if (e.empty())
        return intFromInt64(1);
    if (b.sign == 0)
        return Int();
    if (m.mag[0] & 1) {
        Montgomery ring(m.mag);
        return makeInt(1, slidingWindowPower(ring, b.mag, e));
    }
    DivisionResidues ring(m.mag);
    return makeInt(1, slidingWindowPower(ring, b.mag, e));
}

Int intGcd(IntRef a, IntRef b)
{
    return makeInt(1, magGcd(a.mag, b.mag));
}

namespace {

Int shiftRightBy(IntRef a, uint64_t n)
{
    if (a.sign >= 0)
        return makeInt(a.sign, magShiftRight(a.mag, n));
    // Rounds toward negative infinity: one more when bits fall off.
    Mag q = magShiftRight(a.mag, n);
    if (anyBitBelow(a.mag, n))
        q = magAddSmall(q, 1);
    return makeInt(-1, std::move(q));
}

Int shiftLeftBy(IntRef a, uint64_t n)
{
    return makeInt(a.sign, magShiftLeft(a.mag, n));
}

uint64_t magnitudeOf(int64_t n) noexcept
{
    return n < 0 ? 0 - static_cast<uint64_t>(n) : static_cast<uint64_t>(n);
}

// The n-limb two's complement form of a (n > a.mag.size()).
Mag toTwos(IntRef a, size_t n)
{
    Mag v(n);
    std::copy(a.mag.begin(), a.mag.end(), v.begin());
    if (a.sign < 0) {
        for (Limb& x : v)
            x = ~x;
        add1(v.data(), v.data(), n, 1);
    }
    return v;
}

Int fromTwos(Mag v)
{
    if (!v.empty() && (v.back() >> 63)) {
        for (Limb& x : v)
            x = ~x;
        add1(v.data(), v.data(), v.size(), 1);
        trim(v);
        return makeInt(-1, std::move(v));
    }
    trim(v);
    return makeInt(1, std::move(v));
}

template <class Op>
Int bitwise(IntRef a, IntRef b, Op op)
{
    const size_t n = std::max(a.mag.size(), b.mag.size()) + 1;
    Mag x = toTwos(a, n);
    Mag y = toTwos(b, n);
    for (size_t i = 0; i < n; ++i)
        x[i] = op(x[i], y[i]);
    return fromTwos(std::move(x));
}

void checkBitIndex(int64_t n)
{
    if (n < 0)
        raise(MathError::NegativeBitIndex);
}

Int singleBit(int64_t n)
{
    return makeInt(1, magShiftLeft(magFromU64(1), static_cast<uint64_t>(n)));
}

} // namespace

Int intShiftLeft(IntRef a, int64_t n)
{
    if (a.sign == 0)
        return Int();
    return n >= 0 ? shiftLeftBy(a, static_cast<uint64_t>(n)) : shiftRightBy(a, magnitudeOf(n));
}

Int intShiftRight(IntRef a, int64_t n)
{
    if (a.sign == 0)
        return Int();
    return n >= 0 ? shiftRightBy(a, static_cast<uint64_t>(n)) : shiftLeftBy(a, magnitudeOf(n));
}

Int intAnd(IntRef a, IntRef b)
{
    return bitwise(a, b, [](Limb x, Limb y) { return x & y; });
}

Int intOr(IntRef a, IntRef b)
{
    return bitwise(a, b, [](Limb x, Limb y) { return x | y; });
}

Int intXor(IntRef a, IntRef b)
{
    return bitwise(a, b, [](Limb x, Limb y) { return x ^ y; });
}

Int intAndNot(IntRef a, IntRef b)
{
    return bitwise(a, b, [](Limb x, Limb y) { return x & ~y; });
}

Int intNot(IntRef a)
{
    // ~a == -a - 1
    if (a.sign >= 0)
        return makeInt(-1, magAddSmall(a.mag, 1));
    return makeInt(1, magSubSmall(a.mag, 1));
}

bool intTestBit(IntRef a, int64_t n)
{
    checkBitIndex(n);
    const uint64_t bit = static_cast<uint64_t>(n);
    if (a.sign >= 0)
        return magTestBit(a.mag, bit);
    // Two's complement of m: zeros below m's lowest set bit, that bit, then
    // the complement of m.
    const uint64_t low = magLowestSetBit(a.mag);
    if (bit < low)
        return false;
    if (bit == low)
        return true;
    return !magTestBit(a.mag, bit);
}

Int intSetBit(IntRef a, int64_t n)
{
    if (intTestBit(a, n))
        return makeInt(a.sign, a.mag);
    return intOr(a, singleBit(n));
}

Int intClearBit(IntRef a, int64_t n)
{
    if (!intTestBit(a, n))
        return makeInt(a.sign, a.mag);
    return intAndNot(a, singleBit(n));
}

Int intFlipBit(IntRef a, int64_t n)
{
    checkBitIndex(n);
    return intXor(a, singleBit(n));
}

int64_t intBitLength(IntRef a) noexcept
{
    int64_t bits = static_cast<int64_t>(magBitLength(a.mag));
    if (a.sign < 0 && magIsPowerOfTwo(a.mag))
        --bits;
    return bits;
}

int64_t intBitCount(IntRef a) noexcept
{
    int64_t count = static_cast<int64_t>(magPopCount(a.mag));
    if (a.sign < 0)
        count += static_cast<int64_t>(magLowestSetBit(a.mag)) - 1;
    return count;
}

int64_t intLowestSetBit(IntRef a) noexcept
{
    return a.sign == 0 ? -1 : static_cast<int64_t>(magLowestSetBit(a.mag));
}

std::string intToString(IntRef a, int radix)
{
    std::string digits = magToString(a.mag, radix);
    return a.sign < 0 ? "-" + digits : digits;
}

namespace {

struct DigitValues {
    unsigned char of[128];
    DigitValues() noexcept
    {
        for (int c = 0; c < 128; ++c)
            of[c] = 255;
        for (int c = '0'; c <= '9'; ++c)
            of[c] = static_cast<unsigned char>(c - '0');
        for (int c = 'a'; c <= 'z'; ++c)
            of[c] = of[c - 'a' + 'A'] = static_cast<unsigned char>(c - 'a' + 10);
    }
};

template <class Char>
Int parseText(const Char* text, size_t length, int radix)
{
    if (!isValidRadix(radix))
        raise(MathError::BadRadix);
    size_t i = 0;
    bool negative = false;
    if (length > 0 && (text[0] == Char('+') || text[0] == Char('-'))) {
        negative = text[0] == Char('-');
        i = 1;
    }
    if (i == length)
        raise(MathError::MalformedNumber);
    std::vector<unsigned char> digits(length - i);
    // One table look-up per character; anything that is not a digit of
    // the radix (other characters, other ASCII, code units above 127) maps
    // to a value no radix accepts.
    static const DigitValues values;
    const uint32_t limit = static_cast<uint32_t>(radix);
    for (size_t k = 0; i < length; ++i, ++k) {
        const auto c = static_cast<uint32_t>(static_cast<typename std::make_unsigned<Char>::type>(text[i]));
        const uint32_t v = c < 128 ? values.of[c] : 255;
        if (v >= limit)
            raise(MathError::MalformedNumber);
        digits[k] = static_cast<unsigned char>(v);
    }
    return makeInt(negative ? -1 : 1, magFromDigits(digits.data(), digits.size(), radix));
}

} // namespace

Int intParse(const char* text, size_t length, int radix)
{
    return parseText(text, length, radix);
}

Int intParse(const char16_t* text, size_t length, int radix)
{
    return parseText(text, length, radix);
}

} // namespace detail
} // namespace math
} // namespace qv
