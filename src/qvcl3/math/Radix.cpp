#include "Natural.h"

#include "MathError.h"
#include "NewtonDivider.h"
#include "NumberTheoreticTransform.h"
#include "RadixPowers.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

namespace qv {
namespace math {
namespace detail {

namespace {

const char DIGITS[] = "0123456789abcdefghijklmnopqrstuvwxyz";

// Below this many limbs a number is converted by repeated division by the
// radix's largest power that fits a limb; above it, divide and conquer.
const size_t TO_STRING_BASECASE_LIMBS = 30;
const size_t FROM_DIGITS_BASECASE_LIMBS = 60;

struct BigBase {
    Limb radix;
    Limb base;     // radix^digits, the largest power of the radix in a limb
    size_t digits; // digits per limb
    explicit BigBase(int r) noexcept : radix(static_cast<Limb>(r)), base(radix), digits(1)
    {
        while (base <= ~Limb(0) / radix) {
            base *= radix;
            ++digits;
        }
    }
};

int log2OfPowerOfTwo(int radix) noexcept
{
    if (radix & (radix - 1))
        return 0;
    int bits = 0;
    while ((1 << bits) < radix)
        ++bits;
    return bits;
}

// powers[j] = base^(2^j), taken from the process-wide table as far as
// asked and it keeps them. Held here, so that references handed out stay
// valid while the table grows.
class PowerTable {
public:
    explicit PowerTable(const BigBase& bb) : m_radix(static_cast<int>(bb.radix)) {}
    const Mag& get(size_t j)
    {
        while (m_powers.size() <= j) {
            // Beyond the kept ones, each power is squared from the last
            // instead of from the largest kept one again.
            if (!m_powers.empty() && m_powers.back()->size() > keptLimits().powerLimbs)
                m_powers.push_back(std::make_shared<const Mag>(magSqr(*m_powers.back())));
            else
                m_powers.push_back(radixPower(m_radix, m_powers.size()));
        }
        return *m_powers[j];
    }

    // x / powers[j]. Every division of one level of a conversion to text
    // has the same divisor, so one divider per level (its reciprocal and
    // transforms kept, and shared with later conversions) serves them all
    // and each division costs two products, through the kept transforms
    // where they are long enough; Burnikel-Ziegler, which cannot share
    // anything between divisions, is faster only for small powers, and for
    // quotients too short to fill much of a block.
    void divMod(const Mag& x, size_t j, Mag* q, Mag* r)
    {
        const Mag& power = get(j);
        const size_t threshold = conversionThresholds().levelDivider;
        if (power.size() < threshold || x.size() < power.size() + threshold / 2) {
            magDivMod(x, power, q, r);
            return;
        }
        if (m_dividers.size() <= j)
            m_dividers.resize(j + 1);
        if (!m_dividers[j])
            m_dividers[j] = radixPowerDivider(m_radix, j, power);
        m_dividers[j]->divMod(x, q, r);
    }

    // x * powers[j]. Every product of one level of a conversion from text
    // has the same power and, but for the first, operands of one length,
    // and so do later conversions of similar sizes: the power's transform
    // is kept with the power, and each product computes two transforms
    // instead of three, which beats Toom well below the plain transform's
    // threshold.
    Mag multiply(const Mag& x, size_t j)
    {
        const Mag& power = get(j);
        if (x.empty() || std::min(x.size(), power.size()) < conversionThresholds().keptTransform)
            return magMul(x, power);
        if (m_transforms.size() <= j)
            m_transforms.resize(j + 1);
        if (!m_transforms[j] || !m_transforms[j]->fits(x.size()))
            m_transforms[j] = radixPowerTransform(m_radix, j, power, x.size() + power.size());
        Mag r = allocMag(x.size() + power.size());
        m_transforms[j]->multiply(r.data(), x.data(), x.size());
        trim(r);
        return r;
    }

private:
    int m_radix;
    std::vector<std::shared_ptr<const Mag>> m_powers;
    std::vector<std::shared_ptr<const NewtonDivider>> m_dividers;
    std::vector<std::shared_ptr<const NttOperand>> m_transforms;
};

const char DIGIT_PAIRS[] = "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
                           "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
                           "8081828384858687888990919293949596979899";

// Writes the bb.digits digits of chunk (with leading zeros) ending just
// before end. Decimal gets constant divisors, which compile to
// multiplications, two digits at a time.
void writeChunk(char* end, Limb chunk, const BigBase& bb) noexcept
{
    char* p = end;
    if (bb.radix == 10) {
        for (size_t i = 0; i + 2 <= bb.digits; i += 2) {
            Limb q = chunk / 100;
            unsigned pair = static_cast<unsigned>(chunk - q * 100);
            p -= 2;
            p[0] = DIGIT_PAIRS[2 * pair];
            p[1] = DIGIT_PAIRS[2 * pair + 1];
            chunk = q;
        }
        if (bb.digits % 2)
            *--p = static_cast<char>('0' + chunk);
        return;
    }
    for (size_t i = 0; i < bb.digits; ++i) {
        *--p = DIGITS[chunk % bb.radix];
        chunk /= bb.radix;
    }
}

// Writes exactly width digits of x (x < radix^width), ending just before end.
void digitsBasecase(Mag x, char* end, size_t width, const BigBase& bb)
{
    char* p = end;
    char* const begin = end - width;
    while (!x.empty()) {
        Limb chunk = divRem1(x.data(), x.data(), x.size(), bb.base);
        trim(x);
        if (static_cast<size_t>(p - begin) >= bb.digits) {
            writeChunk(p, chunk, bb);
            p -= bb.digits;
        } else {
            // The most significant chunk may have fewer places left than
            // digits; those it lacks are zeros.
            char tmp[64];
            writeChunk(tmp + bb.digits, chunk, bb);
            size_t room = static_cast<size_t>(p - begin);
            p -= room;
            std::memcpy(p, tmp + bb.digits - room, room);
        }
    }
    while (p > begin)
        *--p = '0';
}

void digitsRecursive(const Mag& x, char* end, size_t width, const BigBase& bb, PowerTable& powers)
{
    if (x.size() < TO_STRING_BASECASE_LIMBS) {
        digitsBasecase(x, end, width, bb);
        return;
    }
    // Split at the power whose size is about half of x's.
    const size_t half = (x.size() + 1) / 2;
    size_t j = 0;
    while (2 * powers.get(j).size() - 1 <= half && powers.get(j + 1).size() <= half)
        ++j;
    while (j > 0 && magCompare(x, powers.get(j)) < 0)
        --j;
    const size_t lowDigits = bb.digits << j;
    Mag q, r;
    powers.divMod(x, j, &q, &r);
    digitsRecursive(r, end, lowDigits, bb, powers);
    digitsRecursive(q, end - lowDigits, width - lowDigits, bb, powers);
}

std::string powerOfTwoToString(const Mag& a, int bitsPerDigit)
{
    const uint64_t bits = magBitLength(a);
    const size_t n =
        static_cast<size_t>((bits + static_cast<uint64_t>(bitsPerDigit) - 1) / static_cast<uint64_t>(bitsPerDigit));
    std::string s(n, '0');
    const Limb mask = (Limb(1) << bitsPerDigit) - 1;
    for (size_t i = 0; i < n; ++i) {
        uint64_t bit = uint64_t(i) * static_cast<uint64_t>(bitsPerDigit);
        size_t limb = static_cast<size_t>(bit / 64);
        unsigned shift = static_cast<unsigned>(bit % 64);
        Limb v = a[limb] >> shift;
        if (shift + static_cast<unsigned>(bitsPerDigit) > 64 && limb + 1 < a.size())
            v |= a[limb + 1] << (64 - shift);
        s[n - 1 - i] = DIGITS[v & mask];
    }
    return s;
}

Mag powerOfTwoFromDigits(const unsigned char* d, size_t n, int bitsPerDigit)
{
    const uint64_t bits = uint64_t(n) * static_cast<uint64_t>(bitsPerDigit);
    if (bits > MAX_BITS + 64)
        raise(MathError::ValueTooLarge);
    Mag r = allocMag(static_cast<size_t>((bits + 63) / 64));
    for (size_t i = 0; i < n; ++i) {
        Limb v = d[n - 1 - i];
        uint64_t bit = uint64_t(i) * static_cast<uint64_t>(bitsPerDigit);
        size_t limb = static_cast<size_t>(bit / 64);
        unsigned shift = static_cast<unsigned>(bit % 64);
        r[limb] |= v << shift;
        if (shift + static_cast<unsigned>(bitsPerDigit) > 64)
            r[limb + 1] |= v >> (64 - shift);
    }
    trim(r);
    return r;
}

// The value of take digits (no more than fit a limb). Two halves accumulate
// side by side, so that their chains of dependent multiplications overlap.
Limb chunkValue(const unsigned char* d, size_t take, Limb radix) noexcept
{
    const size_t half = take / 2, rest = take - half;
    Limb high = 0, low = 0, scale = 1;
    for (size_t i = 0; i < half; ++i) {
        high = high * radix + d[i];
        low = low * radix + d[half + i];
        scale *= radix;
    }
    if (rest > half) {
        low = low * radix + d[take - 1];
        scale *= radix;
    }
    return high * scale + low;
}

Mag fromDigitsBasecase(const unsigned char* d, size_t n, const BigBase& bb)
{
    Mag r = allocMag(n / bb.digits + 1);
    size_t used = 0;
    size_t first = n % bb.digits;
    if (first == 0)
        first = bb.digits;
    r[used++] = chunkValue(d, first, bb.radix);
    for (size_t pos = first; pos < n; pos += bb.digits) {
        // r = r * base + chunk in one pass, the chunk entering as the carry.
        Limb carry = chunkValue(d + pos, bb.digits, bb.radix);
        for (size_t i = 0; i < used; ++i)
            r[i] = mulAdd2(r[i], bb.base, carry, 0, carry);
        if (carry)
            r[used++] = carry;
    }
    trim(r);
    return r;
}

Mag fromDigitsRecursive(const unsigned char* d, size_t n, const BigBase& bb, PowerTable& powers)
{
    if (n <= FROM_DIGITS_BASECASE_LIMBS * bb.digits)
        return fromDigitsBasecase(d, n, bb);
    size_t j = 0;
    while ((bb.digits << (j + 1)) < n)
        ++j;
    const size_t lowDigits = bb.digits << j;
    Mag high = fromDigitsRecursive(d, n - lowDigits, bb, powers);
    Mag low = fromDigitsRecursive(d + (n - lowDigits), lowDigits, bb, powers);
    return magAdd(powers.multiply(high, j), low);
}

} // namespace

bool isValidRadix(int radix) noexcept
{
    return radix >= 2 && radix <= 36;
}

std::string magToString(const Mag& a, int radix)
{
    if (!isValidRadix(radix))
        raise(MathError::BadRadix);
    if (a.empty())
        return "0";
    if (int bits = log2OfPowerOfTwo(radix))
        return powerOfTwoToString(a, bits);
    const BigBase bb(radix);
    // An upper bound on the digit count; the surplus leading zeros are cut.
    const double perBit = std::log(2.0) / std::log(static_cast<double>(radix));
    const size_t width = static_cast<size_t>(static_cast<double>(magBitLength(a)) * perBit) + 2;
    std::string s(width, '0');
    PowerTable powers(bb);
    digitsRecursive(a, &s[0] + width, width, bb, powers);
    size_t lead = s.find_first_not_of('0');
    s.erase(0, lead);
    return s;
}

Mag magFromDigits(const unsigned char* digits, size_t n, int radix)
{
    if (!isValidRadix(radix))
        raise(MathError::BadRadix);
    while (n > 0 && *digits == 0) {
        ++digits;
        --n;
    }
    if (n == 0)
        return Mag();
    if (int bits = log2OfPowerOfTwo(radix))
        return powerOfTwoFromDigits(digits, n, bits);
    const BigBase bb(radix);
    // Refuse text whose value could not be held before doing any work on it.
    const double bitsPerDigit = std::log2(static_cast<double>(radix));
    if (static_cast<double>(n - 1) * bitsPerDigit > static_cast<double>(MAX_BITS))
        raise(MathError::ValueTooLarge);
    PowerTable powers(bb);
    return fromDigitsRecursive(digits, n, bb, powers);
}

} // namespace detail
} // namespace math
} // namespace qv
