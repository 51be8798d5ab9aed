#include "Decimal.h"

#include "MathError.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <vector>

namespace qv {
namespace math {
namespace detail {

namespace {

const uint64_t SMALL_POWERS[] = {1ULL,
                                 10ULL,
                                 100ULL,
                                 1000ULL,
                                 10000ULL,
                                 100000ULL,
                                 1000000ULL,
                                 10000000ULL,
                                 100000000ULL,
                                 1000000000ULL,
                                 10000000000ULL,
                                 100000000000ULL,
                                 1000000000000ULL,
                                 10000000000000ULL,
                                 100000000000000ULL,
                                 1000000000000000ULL,
                                 10000000000000000ULL,
                                 100000000000000000ULL,
                                 1000000000000000000ULL,
                                 10000000000000000000ULL};

bool isZero(IntRef a) noexcept
{
    return a.sign == 0;
}

// The rounding step for a quotient q (q.sign may be 0) whose remainder is
// nonzero: resultSign is the sign of the exact quotient, and half compares
// twice the remainder with the divisor (-1 below half, 0 exactly half, 1 above).
bool roundsAway(Rounding mode, int resultSign, int half, bool qOdd)
{
    switch (mode) {
    case Rounding::Up: return true;
    case Rounding::Down: return false;
    case Rounding::Ceiling: return resultSign > 0;
    case Rounding::Floor: return resultSign < 0;
    case Rounding::HalfUp: return half >= 0;
    case Rounding::HalfDown: return half > 0;
    case Rounding::HalfEven: return half > 0 || (half == 0 && qOdd);
    case Rounding::Unnecessary: break;
    }
    raise(MathError::RoundingNecessary);
}

// The rounded value of a quotient known to lie strictly between 0 and 1/2
// in magnitude.
Int roundTiny(int resultSign, Rounding mode)
{
    if (roundsAway(mode, resultSign, -1, false))
        return intFromInt64(resultSign);
    return Int();
}

Int scaleUp(IntRef a, uint64_t digits)
{
    if (isZero(a) || digits == 0)
        return Int(a.sign, a.mag);
    if (digits < 20)
        return Int(a.sign, magMulSmall(a.mag, SMALL_POWERS[digits]));
    return intMul(a, powerOfTen(digits));
}

template <class Char>
Dec parseDecimal(const Char* text, size_t length)
{
    size_t i = 0;
    bool negative = false;
    if (i < length && (text[i] == Char('+') || text[i] == Char('-'))) {
        negative = text[i] == Char('-');
        ++i;
    }
    std::vector<unsigned char> digits;
    digits.reserve(length);
    size_t fractionDigits = 0;
    bool seenPoint = false, seenDigit = false;
    for (; i < length; ++i) {
        Char c = text[i];
        if (c >= Char('0') && c <= Char('9')) {
            digits.push_back(static_cast<unsigned char>(c - Char('0')));
            seenDigit = true;
            if (seenPoint)
                ++fractionDigits;
        } else if (c == Char('.') && !seenPoint) {
            seenPoint = true;
        } else {
            break;
        }
    }
    if (!seenDigit)
        raise(MathError::MalformedNumber);
    int64_t exponent = 0;
    if (i < length) {
        if (text[i] != Char('e') && text[i] != Char('E'))
            raise(MathError::MalformedNumber);
        ++i;
        bool negativeExponent = false;
        if (i < length && (text[i] == Char('+') || text[i] == Char('-'))) {
            negativeExponent = text[i] == Char('-');
            ++i;
        }
        if (i == length)
            raise(MathError::MalformedNumber);
        bool overflow = false;
        for (; i < length; ++i) {
            Char c = text[i];
            if (c < Char('0') || c > Char('9'))
                raise(MathError::MalformedNumber);
            if (exponent > (int64_t(1) << 40))
                overflow = true;
            else
                exponent = exponent * 10 + (c - Char('0'));
        }
        if (overflow)
            raise(MathError::ScaleOverflow);
        if (negativeExponent)
            exponent = -exponent;
    }
    if (fractionDigits > (size_t(1) << 40))
        raise(MathError::ScaleOverflow);
    int32_t scale = checkedScale(static_cast<int64_t>(fractionDigits) - exponent);
    Mag m = magFromDigits(digits.data(), digits.size(), 10);
    return Dec(Int(negative ? -1 : 1, std::move(m)), scale);
}

// Python's decimal and the General Decimal Arithmetic rules for the
// scientific and engineering forms.
std::string exponentForm(DecRef a, bool engineering)
{
    std::string coefficient = magToString(a.unscaled.mag, 10);
    const int64_t exponent = -static_cast<int64_t>(a.scale);
    const int64_t length = static_cast<int64_t>(coefficient.size());
    const int64_t leftDigits = exponent + length;
    int64_t dot;
    if (exponent <= 0 && leftDigits > -6)
        dot = leftDigits;
    else if (!engineering)
        dot = 1;
    else if (isZero(a.unscaled))
        dot = ((leftDigits + 1) % 3 + 3) % 3 - 1;
    else
        dot = ((leftDigits - 1) % 3 + 3) % 3 + 1;

    std::string s = a.unscaled.sign < 0 ? "-" : "";
    if (dot <= 0) {
        s += "0.";
        s.append(static_cast<size_t>(-dot), '0');
        s += coefficient;
    } else if (dot >= length) {
        s += coefficient;
        s.append(static_cast<size_t>(dot - length), '0');
    } else {
        s.append(coefficient, 0, static_cast<size_t>(dot));
        s += '.';
        s.append(coefficient, static_cast<size_t>(dot), std::string::npos);
    }
    if (leftDigits != dot) {
        int64_t e = leftDigits - dot;
        s += e < 0 ? "E-" : "E+";
        s += std::to_string(e < 0 ? -e : e);
    }
    return s;
}

// Largest k with 10^k dividing m, by halving steps over 10^(2^j); at most
// limit.
uint64_t stripPowersOfTen(Mag& m, uint64_t limit)
{
    if (m.empty() || limit == 0)
        return 0;
    uint64_t removed = 0;
    if (m.size() == 1) {
        while (removed < limit && m[0] % 10 == 0) {
            m[0] /= 10;
            ++removed;
        }
        return removed;
    }
    std::vector<Mag> powers{magFromU64(10)};
    while ((uint64_t(1) << powers.size()) <= limit && powers.back().size() * 2 <= m.size() + 1)
        powers.push_back(magSqr(powers.back()));
    for (size_t j = powers.size(); j-- > 0;) {
        uint64_t step = uint64_t(1) << j;
        while (removed + step <= limit) {
            Mag q, r;
            magDivMod(m, powers[j], &q, &r);
            if (!r.empty())
                break;
            m = std::move(q);
            removed += step;
        }
    }
    return removed;
}

// Removes the factors p (prime) from m, returning how many there were.
uint64_t stripFactor(Mag& m, Limb p)
{
    uint64_t count = 0;
    std::vector<Mag> powers{magFromU64(p)};
    while (powers.back().size() * 2 <= m.size() + 1)
        powers.push_back(magSqr(powers.back()));
    for (size_t j = powers.size(); j-- > 0;) {
        for (;;) {
            Mag q, r;
            magDivMod(m, powers[j], &q, &r);
            if (!r.empty())
                break;
            m = std::move(q);
            count += uint64_t(1) << j;
        }
    }
    return count;
}

} // namespace

int32_t checkedScale(int64_t scale)
{
    if (scale < std::numeric_limits<int32_t>::min() || scale > std::numeric_limits<int32_t>::max())
        raise(MathError::ScaleOverflow);
    return static_cast<int32_t>(scale);
}

Rounding checkedRounding(int mode)
{
    if (mode < static_cast<int>(Rounding::Up) || mode > static_cast<int>(Rounding::Unnecessary))
        raise(MathError::BadRoundingMode);
    return static_cast<Rounding>(mode);
}

Int powerOfTen(uint64_t n)
{
    if (n < 20)
        return intFromUInt64(SMALL_POWERS[n]);
    return Int(1, magPow(magFromU64(10), n));
}

int64_t decimalDigits(const Mag& m)
{
    if (m.empty())
        return 1;
    if (m.size() == 1) {
        int64_t d = 1;
        while (d < 20 && m[0] >= SMALL_POWERS[d])
            ++d;
        return d;
    }
    const uint64_t bits = magBitLength(m);
    int64_t d = static_cast<int64_t>(std::floor(static_cast<double>(bits - 1) * 0.30102999566398120)) + 1;
    Mag low = powerOfTen(static_cast<uint64_t>(d - 1)).mag;
    if (magCompare(m, low) < 0)
        return d - 1;
    if (magCompare(m, magMulSmall(low, 10)) >= 0)
        return d + 1;
    return d;
}

Int divideRounded(IntRef num, IntRef den, Rounding mode)
{
    if (isZero(den))
        raise(MathError::DivisionByZero);
    Int q, r;
    intDivRem(num, den, &q, &r);
    if (isZero(r))
        return q;
    const int resultSign = num.sign * den.sign;
    int half = magCompare(magShiftLeft(r.mag, 1), den.mag);
    bool odd = !q.mag.empty() && (q.mag[0] & 1);
    if (roundsAway(mode, resultSign, half, odd))
        return intAdd(q, intFromInt64(resultSign));
    return q;
}

Dec decFromDouble(double v)
{
    if (!std::isfinite(v))
        raise(MathError::NotFinite);
    if (v == 0)
        return Dec();
    int e;
    double f = std::frexp(std::fabs(v), &e);
    uint64_t m = static_cast<uint64_t>(std::ldexp(f, 53));
    int64_t e2 = e - 53;
    while (!(m & 1)) {
        m >>= 1;
        ++e2;
    }
    const int sign = v < 0 ? -1 : 1;
    if (e2 >= 0)
        return Dec(Int(sign, magShiftLeft(magFromU64(m), static_cast<uint64_t>(e2))), 0);
    // m / 2^k == m * 5^k / 10^k
    const uint64_t k = static_cast<uint64_t>(-e2);
    return Dec(Int(sign, magMul(magFromU64(m), magPow(magFromU64(5), k))), static_cast<int32_t>(k));
}

Dec decFromDoubleShortest(double v)
{
    if (!std::isfinite(v))
        raise(MathError::NotFinite);
    char buffer[64];
    std::to_chars_result r = std::to_chars(buffer, buffer + sizeof buffer, v, std::chars_format::scientific);
    return decParse(buffer, static_cast<size_t>(r.ptr - buffer));
}

Dec decParse(const char* text, size_t length)
{
    return parseDecimal(text, length);
}

Dec decParse(const char16_t* text, size_t length)
{
    return parseDecimal(text, length);
}

std::string decToPlainString(DecRef a)
{
    // Plain text longer than the largest integer's digits would be the
    // digits of a value no BigInteger can hold.
    const int64_t maxLength = static_cast<int64_t>(static_cast<double>(MAX_BITS) * 0.30102999566398120) + 3;
    if (a.scale > maxLength || (!isZero(a.unscaled) && -int64_t(a.scale) > maxLength))
        raise(MathError::ValueTooLarge);
    std::string digits = magToString(a.unscaled.mag, 10);
    std::string s = a.unscaled.sign < 0 ? "-" : "";
    if (a.scale <= 0) {
        s += digits;
        if (!isZero(a.unscaled))
            s.append(static_cast<size_t>(-static_cast<int64_t>(a.scale)), '0');
        return s;
    }
    const size_t scale = static_cast<size_t>(a.scale);
    if (digits.size() > scale) {
        s.append(digits, 0, digits.size() - scale);
        s += '.';
        s.append(digits, digits.size() - scale, std::string::npos);
    } else {
        s += "0.";
        s.append(scale - digits.size(), '0');
        s += digits;
    }
    return s;
}

std::string decToScientificString(DecRef a)
{
    return exponentForm(a, false);
}

std::string decToEngineeringString(DecRef a)
{
    return exponentForm(a, true);
}

Dec decAdd(DecRef a, DecRef b)
{
    const int32_t scale = std::max(a.scale, b.scale);
    const uint64_t upA = static_cast<uint64_t>(int64_t(scale) - a.scale);
    const uint64_t upB = static_cast<uint64_t>(int64_t(scale) - b.scale);
    return Dec(intAdd(scaleUp(a.unscaled, upA), scaleUp(b.unscaled, upB)), scale);
}

Dec decSub(DecRef a, DecRef b)
{
    return decAdd(a, DecRef(IntRef(-b.unscaled.sign, b.unscaled.mag), b.scale));
}

Dec decMul(DecRef a, DecRef b)
{
    const int32_t scale = checkedScale(int64_t(a.scale) + b.scale);
    return Dec(intMul(a.unscaled, b.unscaled), scale);
}

Dec decDivide(DecRef a, DecRef b, int32_t scale, Rounding mode)
{
    if (isZero(b.unscaled))
        raise(MathError::DivisionByZero);
    if (isZero(a.unscaled))
        return Dec(Int(), scale);
    // result = a.u * 10^e / b.u with e = scale - a.scale + b.scale
    const int64_t e = int64_t(scale) - a.scale + b.scale;
    if (e >= 0)
        return Dec(divideRounded(scaleUp(a.unscaled, static_cast<uint64_t>(e)), b.unscaled, mode), scale);
    const uint64_t down = static_cast<uint64_t>(-e);
    if (static_cast<int64_t>(down) > decimalDigits(a.unscaled.mag) + 1)
        return Dec(roundTiny(a.unscaled.sign * b.unscaled.sign, mode), scale);
    return Dec(divideRounded(a.unscaled, scaleUp(b.unscaled, down), mode), scale);
}

Dec decDivideExact(DecRef a, DecRef b)
{
    if (isZero(b.unscaled))
        raise(MathError::DivisionByZero);
    const int64_t preferred = int64_t(a.scale) - b.scale;
    if (isZero(a.unscaled))
        return Dec(Int(), checkedScale(preferred));
    Mag g = magGcd(a.unscaled.mag, b.unscaled.mag);
    Mag p, q;
    magDivMod(a.unscaled.mag, g, &p, nullptr);
    magDivMod(b.unscaled.mag, g, &q, nullptr);
    // The quotient terminates exactly when q is 2^i * 5^j.
    const uint64_t twos = magLowestSetBit(q);
    q = magShiftRight(q, twos);
    const uint64_t fives = stripFactor(q, 5);
    if (!(q.size() == 1 && q[0] == 1))
        raise(MathError::NonTerminatingDecimal);
    const uint64_t k = std::max(twos, fives);
    Mag u = magMul(magShiftLeft(p, k - twos), magPow(magFromU64(5), k - fives));
    uint64_t removed = stripPowersOfTen(u, k);
    const int sign = a.unscaled.sign * b.unscaled.sign;
    return Dec(Int(sign, std::move(u)), checkedScale(preferred + static_cast<int64_t>(k - removed)));
}

Dec decSetScale(DecRef a, int32_t scale, Rounding mode)
{
    if (scale >= a.scale)
        return Dec(scaleUp(a.unscaled, static_cast<uint64_t>(int64_t(scale) - a.scale)), scale);
    const uint64_t down = static_cast<uint64_t>(int64_t(a.scale) - scale);
    if (isZero(a.unscaled))
        return Dec(Int(), scale);
    if (static_cast<int64_t>(down) > decimalDigits(a.unscaled.mag) + 1)
        return Dec(roundTiny(a.unscaled.sign, mode), scale);
    return Dec(divideRounded(a.unscaled, powerOfTen(down), mode), scale);
}

Dec decStripTrailingZeros(DecRef a)
{
    if (isZero(a.unscaled))
        return Dec();
    Mag m = a.unscaled.mag;
    // 10^k divides m only if 2^k does, and the scale must stay in range.
    uint64_t limit = magLowestSetBit(m);
    const uint64_t room = static_cast<uint64_t>(int64_t(a.scale) - std::numeric_limits<int32_t>::min());
    limit = std::min(limit, room);
    uint64_t removed = stripPowersOfTen(m, limit);
    return Dec(Int(a.unscaled.sign, std::move(m)), static_cast<int32_t>(int64_t(a.scale) - int64_t(removed)));
}

Dec decMovePointLeft(DecRef a, int32_t n)
{
    const int64_t scale = int64_t(a.scale) + n;
    Dec moved(Int(a.unscaled.sign, a.unscaled.mag), checkedScale(scale));
    return scale < 0 ? decSetScale(moved, 0, Rounding::Unnecessary) : moved;
}

Dec decMovePointRight(DecRef a, int32_t n)
{
    const int64_t scale = int64_t(a.scale) - n;
    Dec moved(Int(a.unscaled.sign, a.unscaled.mag), checkedScale(scale));
    return scale < 0 ? decSetScale(moved, 0, Rounding::Unnecessary) : moved;
}

int decCompare(DecRef a, DecRef b)
{
    if (a.unscaled.sign != b.unscaled.sign)
        return a.unscaled.sign < b.unscaled.sign ? -1 : 1;
    if (isZero(a.unscaled))
        return 0;
    if (a.scale == b.scale)
        return intCompare(a.unscaled, b.unscaled);
    // Compare the positions of the leading digits first, so that wildly
    // different scales never need a huge power of ten.
    const int64_t leadA = decimalDigits(a.unscaled.mag) - a.scale;
    const int64_t leadB = decimalDigits(b.unscaled.mag) - b.scale;
    int c;
    if (leadA != leadB) {
        c = leadA < leadB ? -1 : 1;
    } else if (a.scale < b.scale) {
        c = magCompare(scaleUp(a.unscaled, static_cast<uint64_t>(int64_t(b.scale) - a.scale)).mag, b.unscaled.mag);
    } else {
        c = magCompare(a.unscaled.mag, scaleUp(b.unscaled, static_cast<uint64_t>(int64_t(a.scale) - b.scale)).mag);
    }
    return a.unscaled.sign < 0 ? -c : c;
}

bool decEquals(DecRef a, DecRef b) noexcept
{
    return a.scale == b.scale && intEquals(a.unscaled, b.unscaled);
}

uint32_t decHash(DecRef a) noexcept
{
    return 31u * intHash(a.unscaled) + static_cast<uint32_t>(a.scale);
}

Int decToInteger(DecRef a)
{
    if (a.scale <= 0)
        return scaleUp(a.unscaled, static_cast<uint64_t>(-int64_t(a.scale)));
    if (int64_t(a.scale) > decimalDigits(a.unscaled.mag))
        return Int();
    Int q;
    intDivRem(a.unscaled, powerOfTen(static_cast<uint64_t>(a.scale)), &q, nullptr);
    return q;
}

double decToDouble(DecRef a)
{
    if (isZero(a.unscaled))
        return 0.0;
    const bool negative = a.unscaled.sign < 0;
    // The value lies in [10^(lead-1), 10^lead).
    const int64_t lead = decimalDigits(a.unscaled.mag) - a.scale;
    if (lead > 310)
        return negative ? -std::numeric_limits<double>::infinity() : std::numeric_limits<double>::infinity();
    if (lead < -330)
        return negative ? -0.0 : 0.0;
    if (a.scale <= 0)
        return intToDouble(scaleUp(a.unscaled, static_cast<uint64_t>(-int64_t(a.scale))));
    // Enough quotient bits (at least 56) that the rounding sees the true
    // half-way point; the remainder is the sticky bit.
    const Int den = powerOfTen(static_cast<uint64_t>(a.scale));
    const int64_t shift = std::max<int64_t>(0, 58 + static_cast<int64_t>(magBitLength(den.mag)) -
                                                   static_cast<int64_t>(magBitLength(a.unscaled.mag)));
    Mag q, r;
    magDivMod(magShiftLeft(a.unscaled.mag, static_cast<uint64_t>(shift)), den.mag, &q, &r);
    return roundToDouble(negative, q, -shift, !r.empty());
}

int64_t decPrecision(DecRef a)
{
    return decimalDigits(a.unscaled.mag);
}

} // namespace detail
} // namespace math
} // namespace qv
