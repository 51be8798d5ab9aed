// The engine's algorithms held against each other: every fast path against
// the plain one it replaces, at and around the sizes where they take over.

#include "Integer.h"
#include "Limbs.h"
#include "Montgomery.h"
#include "Natural.h"
#include "NewtonDivider.h"
#include "NumberTheoreticTransform.h"
#include "RadixPowers.h"
#include "WideMath.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace qv::math::detail;

namespace {

std::mt19937_64 rng(12345);

Mag randomMag(size_t limbs, int shape)
{
    Mag m(limbs);
    for (Limb& x : m) {
        switch (shape % 3) {
        case 0: x = rng(); break;
        case 1: x = rng() % 4 == 0 ? 0 : ~Limb(0); break;
        default: x = rng() % 2 ? ~Limb(0) : rng(); break;
        }
    }
    if (limbs)
        m.back() |= Limb(1) << (rng() % 64);
    trim(m);
    return m;
}

Mag schoolbookProduct(const Mag& a, const Mag& b)
{
    if (a.empty() || b.empty())
        return Mag();
    const Mag& x = a.size() >= b.size() ? a : b;
    const Mag& y = a.size() >= b.size() ? b : a;
    Mag r(a.size() + b.size());
    mulBasecase(r.data(), x.data(), x.size(), y.data(), y.size());
    trim(r);
    return r;
}

Mag nttProduct(const Mag& a, const Mag& b)
{
    Mag r(a.size() + b.size());
    nttMultiply(r.data(), a.data(), a.size(), b.data(), b.size());
    trim(r);
    return r;
}

Mag remainderOf(const Mag& a, const Mag& b)
{
    Mag r;
    magDivMod(a, b, nullptr, &r);
    return r;
}

// Divisors of n limbs: 0 random, 1 all ones (the largest), 2 B^(n-1) 2^63
// (the smallest normalised), 3 random under a top limb of 1 (the largest
// normalising shift).
Mag divisorOfKind(size_t n, int kind, int shape)
{
    Mag d = randomMag(n, shape);
    if (kind == 1)
        d.assign(n, ~Limb(0));
    if (kind == 2) {
        d.assign(n, 0);
        d.back() = Limb(1) << 63;
    }
    if (kind == 3)
        d.back() = 1;
    return d;
}

// A division routine's quotient and remainder against the classic algorithm.
template <typename Divide>
testing::AssertionResult dividesLikeClassic(const Mag& x, const Mag& b, Divide divide)
{
    Mag q0, r0, q, r;
    magDivModClassic(x, b, &q0, &r0);
    divide(x, &q, &r);
    if (q == q0 && r == r0)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << (q == q0 ? "remainder" : "quotient") << " differs for " << x.size() << " / "
                                       << b.size() << " limbs";
}

// Digits in lower case as magToString writes them, read back.
Mag parseDigits(const std::string& text, int radix)
{
    std::vector<unsigned char> digits;
    for (char c : text)
        digits.push_back(static_cast<unsigned char>(c <= '9' ? c - '0' : c - 'a' + 10));
    return magFromDigits(digits.data(), digits.size(), radix);
}

// Text of x one digit at a time, through nothing that conversions keep.
std::string digitByDigit(Mag x, Limb radix)
{
    std::string text;
    while (!x.empty())
        text.insert(text.begin(), "0123456789abcdefghijklmnopqrstuvwxyz"[magDivModSmall(x, radix, &x)]);
    return text;
}

class ThresholdGuard {
public:
    ThresholdGuard() : m_saved(thresholds()) {}
    ~ThresholdGuard() { thresholds() = m_saved; }

private:
    Thresholds m_saved;
};

// Puts a setting back as it was when the test ends.
template <typename T>
class SettingGuard {
public:
    explicit SettingGuard(T& setting) : m_setting(setting), m_saved(setting) {}
    ~SettingGuard() { m_setting = m_saved; }
    SettingGuard(const SettingGuard&) = delete;
    SettingGuard& operator=(const SettingGuard&) = delete;

private:
    T& m_setting;
    T m_saved;
};

} // namespace

TEST(WideMath, PortableHalvesAgreeWithTheNativeOnes)
{
    const Limb edges[] = {0,
                          1,
                          2,
                          0xFFFFFFFFu,
                          0x100000000ULL,
                          0x7FFFFFFFFFFFFFFFULL,
                          0x8000000000000000ULL,
                          ~Limb(0),
                          ~Limb(0) - 1,
                          0x8000000000000001ULL};
    std::vector<Limb> values(std::begin(edges), std::end(edges));
    for (int i = 0; i < 2000; ++i)
        values.push_back(rng() >> (rng() % 64));
    for (size_t i = 0; i < values.size(); ++i) {
        Limb a = values[i], b = values[(i * 7 + 3) % values.size()];
        Limb hi1, hi2;
        Limb lo1 = mulWide(a, b, hi1), lo2 = portableMulWide(a, b, hi2);
        ASSERT_EQ(lo1, lo2) << a << " * " << b;
        ASSERT_EQ(hi1, hi2) << a << " * " << b;
        for (Limb carryIn : {Limb(0), Limb(1)}) {
            Limb c1 = carryIn, c2 = carryIn;
            ASSERT_EQ(addCarry(a, b, c1), portableAddCarry(a, b, c2)) << a << " + " << b << " + " << carryIn;
            ASSERT_EQ(c1, c2) << a << " + " << b << " + " << carryIn;
            c1 = c2 = carryIn;
            ASSERT_EQ(subBorrow(a, b, c1), portableSubBorrow(a, b, c2)) << a << " - " << b << " - " << carryIn;
            ASSERT_EQ(c1, c2) << a << " - " << b << " - " << carryIn;
            ASSERT_EQ(c1, Limb(a < b || (a == b && carryIn))) << a << " - " << b << " - " << carryIn;
        }
        if (b == 0)
            continue;
        Limb hi = a % b, lo = values[(i * 13 + 5) % values.size()];
        Limb r1, r2, r3;
        Limb q1 = divWide(hi, lo, b, r1), q2 = portableDivWide(hi, lo, b, r2);
        ASSERT_EQ(q1, q2) << hi << ":" << lo << " / " << b;
        ASSERT_EQ(r1, r2) << hi << ":" << lo << " / " << b;
        Limb shift = static_cast<Limb>(leadingZeros(b));
        Reciprocal rec(b << shift);
        Limb nh = hi % (b << shift);
        Limb q3 = rec.divide(nh, lo, r3);
        Limb q4 = divWide(nh, lo, b << shift, r1);
        ASSERT_EQ(q3, q4);
        ASSERT_EQ(r3, r1);
    }
}

TEST(WideMath, BitCountsMatchTheirDefinitions)
{
    for (int i = 0; i < 64; ++i) {
        Limb x = Limb(1) << i;
        EXPECT_EQ(leadingZeros(x), 63 - i);
        EXPECT_EQ(trailingZeros(x), i);
        EXPECT_EQ(popCount(x - 1), i);
    }
    EXPECT_EQ(leadingZeros(0), 64);
    EXPECT_EQ(trailingZeros(0), 64);
    EXPECT_EQ(popCount(~Limb(0)), 64);
}

TEST(Multiplication, EveryAlgorithmMatchesSchoolbookAcrossItsBoundaries)
{
    ThresholdGuard guard;
    // Small thresholds make each recursion level and each uneven split
    // happen with operands the schoolbook reference handles quickly.
    const size_t off = defaultThresholds().nttMul;
    const size_t newton = defaultThresholds().newtonDivision;
    const Thresholds settings[] = {
        {4, 4, 9, 9, 64, off, off, newton, off, off, off},  {2, 2, 3, 3, 64, off, off, newton, 4, 4, off},
        {8, 16, 20, 30, 64, off, off, newton, 40, 50, off}, {4, 4, 9, 9, 64, 12, 20, newton, 10, 10, 6},
        {4, 4, 6, 6, 64, 40, 40, newton, 16, 24, 10},       defaultThresholds()};
    for (const Thresholds& t : settings) {
        thresholds() = t;
        for (size_t an = 1; an < 70; an += 1 + an / 8) {
            for (size_t bn : {size_t(1), an / 3 + 1, an / 2, an / 2 + 1, an - an / 3, an, an + 1, 3 * an}) {
                if (bn == 0)
                    continue;
                Mag a = randomMag(an, static_cast<int>(an + bn)), b = randomMag(bn, static_cast<int>(bn));
                ASSERT_EQ(magMul(a, b), schoolbookProduct(a, b)) << an << " x " << bn;
                ASSERT_EQ(magSqr(a), schoolbookProduct(a, a)) << an << " squared";
            }
        }
    }
}

TEST(Multiplication, LargeOperandsGoThroughToomAndStillAgree)
{
    for (size_t n : {size_t(700), size_t(1300)}) {
        Mag a = randomMag(n, 0), b = randomMag(n - 7, 2);
        EXPECT_EQ(magMul(a, b), schoolbookProduct(a, b));
        EXPECT_EQ(magSqr(b), schoolbookProduct(b, b));
    }
}

TEST(Multiplication, ToomThreeAndFourAroundTheirThresholdsAgreeWithSchoolbookAndSquaring)
{
    ThresholdGuard guard;
    // Each at its production crossover, then a low one so that it recurses
    // into itself over the algorithms below it. The shortest operand each
    // splits (2 ceil(an / 3) + 1 and 3 ceil(an / 4) + 1) has the shortest
    // top pieces the interpolation sees; one limb less takes the algorithm
    // below. All-ones operands give the largest evaluations and the
    // interpolation's values furthest from zero on either side.
    struct Case {
        size_t Thresholds::*mul;
        size_t Thresholds::*sqr;
        size_t pieces;
        size_t low;
    };
    const Case cases[] = {{&Thresholds::toom3Mul, &Thresholds::toom3Sqr, 3, 30},
                          {&Thresholds::toom4Mul, &Thresholds::toom4Sqr, 4, 60}};
    for (const Case& c : cases) {
        const size_t production = defaultThresholds().*c.mul;
        for (const size_t threshold : {production, c.low}) {
            thresholds() = defaultThresholds();
            thresholds().*c.mul = thresholds().*c.sqr = threshold;
            std::vector<size_t> lengths = {threshold - 1, threshold, threshold + 1, threshold + 3};
            if (threshold < production) {
                if (c.pieces == 4)
                    thresholds().toom3Mul = thresholds().toom3Sqr = 20;
                lengths.push_back(c.pieces * threshold + 5);
            }
            int shape = 0;
            for (const size_t an : lengths) {
                const size_t piece = (an + c.pieces - 1) / c.pieces;
                const size_t shortest = (c.pieces - 1) * piece + 1;
                for (const size_t bn : {an, an - 1, shortest, shortest - 1}) {
                    for (int round = 0; round < 2; ++round, ++shape) {
                        Mag a = randomMag(an, shape), b = randomMag(bn, shape + 1);
                        if (round == 1)
                            a.assign(an, ~Limb(0)), b.assign(bn, ~Limb(0));
                        ASSERT_EQ(magMul(a, b), schoolbookProduct(a, b))
                            << c.pieces << " pieces: " << an << " x " << bn << " round " << round;
                    }
                }
                // The squaring path against the product of two distinct copies.
                Mag a = randomMag(an, shape);
                const Mag copy = a;
                const Mag square = magSqr(a);
                ASSERT_EQ(square, magMul(a, copy)) << c.pieces << " pieces: " << an << " squared";
                ASSERT_EQ(square, schoolbookProduct(a, a)) << c.pieces << " pieces: " << an << " squared";
                a.assign(an, ~Limb(0));
                ASSERT_EQ(magSqr(a), schoolbookProduct(a, a)) << c.pieces << " pieces: " << an << " all-ones squared";
                // Pieces of zeros: evaluations that vanish and products of
                // zero length.
                a.assign(an, 0);
                a[0] = 1;
                a.back() = ~Limb(0);
                ASSERT_EQ(magSqr(a), schoolbookProduct(a, a)) << c.pieces << " pieces: " << an << " sparse squared";
            }
        }
    }
}

TEST(Multiplication, UnbalancedProductsEitherSideOfTheTransformsCostCrossoverAgree)
{
    ThresholdGuard guard;
    // Shapes timed against each other: the transform won the first three,
    // Toom the others (a balanced product under the threshold, and a long
    // operand that moves the transform to 6,144 points).
    const size_t production = defaultThresholds().nttMul;
    EXPECT_TRUE(transformBeatsToom(2603, 1304, production));
    EXPECT_TRUE(transformBeatsToom(5200, 1161, production));
    EXPECT_TRUE(transformBeatsToom(6875, 1250, production));
    EXPECT_FALSE(transformBeatsToom(3000, 1200, production));
    EXPECT_FALSE(transformBeatsToom(1302, 1302, production));
    EXPECT_FALSE(transformBeatsToom(4000, 500, production));
    // The transform switched off leaves nothing for the rule to pick.
    EXPECT_FALSE(transformBeatsToom(100000, 1400, ~size_t(0)));

    // Where the choice flips as the longer operand grows, the products on
    // both sides against schoolbook: at production lengths, then with the
    // transform from 40 limbs and the rule from 10 so that the same flips
    // happen with short operands and inside the recursions.
    Thresholds low = defaultThresholds();
    low.nttMul = low.nttSqr = 40;
    low.nttUnbalancedMul = 10;
    struct Setting {
        Thresholds t;
        std::vector<size_t> shorter;
    };
    const Setting settings[] = {{defaultThresholds(), {1161, 1304}}, {low, {10, 17, 25, 39}}};
    int shape = 0;
    for (const Setting& setting : settings) {
        thresholds() = setting.t;
        const size_t threshold = setting.t.nttMul;
        int flips = 0;
        for (const size_t bn : setting.shorter) {
            for (size_t an = bn + 1; an < 5 * bn; ++an) {
                if (transformBeatsToom(an, bn, threshold) == transformBeatsToom(an - 1, bn, threshold))
                    continue;
                ++flips;
                for (const size_t length : {an - 1, an}) {
                    Mag a = randomMag(length, shape++), b = randomMag(bn, shape++);
                    ASSERT_EQ(magMul(a, b), schoolbookProduct(a, b)) << length << " x " << bn;
                    ASSERT_EQ(magMul(b, a), schoolbookProduct(a, b)) << bn << " x " << length;
                    a.assign(length, ~Limb(0));
                    b.assign(bn, ~Limb(0));
                    ASSERT_EQ(magMul(a, b), schoolbookProduct(a, b)) << length << " x " << bn << " all ones";
                }
            }
            // Squares stay balanced and so never take the rule; around it
            // they must still agree.
            const Mag a = randomMag(bn, shape++);
            ASSERT_EQ(magSqr(a), schoolbookProduct(a, a)) << bn << " squared";
        }
        EXPECT_GT(flips, 0) << "no shape crosses the rule at threshold " << threshold;
    }
}

TEST(Multiplication, TwoRowKernelMatchesOneRowAtATime)
{
    // Every length up to two unrolled passes and beyond, odd and even
    // multiplier lengths (the odd row left for addMul1), all-ones limbs for
    // the longest carry chains.
    for (size_t n = 1; n < 12; ++n) {
        for (int shape = 0; shape < 4; ++shape) {
            Mag a = randomMag(n, shape), b = randomMag(2, shape + 1), r = randomMag(n + 2, shape + 2);
            if (shape == 3)
                a.assign(n, ~Limb(0)), b.assign(2, ~Limb(0)), r.assign(n + 2, ~Limb(0));
            a.resize(n), b.resize(2), r.resize(n + 2);
            Mag expected = r;
            expected[n] = addMul1(expected.data(), a.data(), n, b[0]);
            expected[n + 1] = addMul1(expected.data() + 1, a.data(), n, b[1]);
            r[n + 1] = addMul2(r.data(), a.data(), n, b.data());
            ASSERT_EQ(r, expected) << n << " limbs, shape " << shape;
        }
    }
}

TEST(Multiplication, SubtractingKernelTakesTheProductOffWithItsBorrow)
{
    // r - a b = r' - borrow B^n, against the product formed on its own and
    // subtracted; all-ones limbs give the largest borrows, a zero r the
    // longest chain.
    for (size_t n = 1; n < 12; ++n) {
        for (int shape = 0; shape < 4; ++shape) {
            Mag a = randomMag(n, shape), r = randomMag(n, shape + 1);
            Limb b = rng();
            if (shape == 3)
                a.assign(n, ~Limb(0)), r.assign(n, 0), b = ~Limb(0);
            a.resize(n), r.resize(n);
            Mag product(n + 1), expected(n + 1);
            product[n] = mul1(product.data(), a.data(), n, b);
            Mag extended = r;
            extended.push_back(0);
            sub(expected.data(), extended.data(), n + 1, product.data(), n + 1);
            const Limb borrow = subMul1(r.data(), a.data(), n, b);
            ASSERT_EQ(borrow, 0 - expected[n]) << n << " limbs, shape " << shape;
            expected.pop_back();
            ASSERT_EQ(r, expected) << n << " limbs, shape " << shape;
        }
    }
}

TEST(Multiplication, SquareBasecaseMatchesTheProductAtEveryLength)
{
    // Rows go through the two-row kernel in pairs, with one row left over
    // for odd counts: every length the basecase takes, random and all-ones.
    for (size_t n = 1; n <= defaultThresholds().karatsubaSqr; ++n) {
        for (int shape = 0; shape < 2; ++shape) {
            Mag a = randomMag(n, shape);
            if (shape == 1)
                a.assign(n, ~Limb(0));
            a.resize(n);
            a.back() |= 1;
            Mag square(2 * n), product(2 * n);
            sqrBasecase(square.data(), a.data(), n);
            mulBasecase(product.data(), a.data(), n, a.data(), n);
            ASSERT_EQ(square, product) << n << " limbs, shape " << shape;
        }
    }
}

TEST(Multiplication, TransformMatchesSchoolbook)
{
    // Shape 1 (all-ones limbs) gives the largest coefficients the residues
    // must rebuild; lengths around powers of two test the padding, and
    // those up to three quarters of one (4 x 3, 49 x 48, 65 x 2, 300 x 17,
    // 1500 x 1500) take two transforms of half and a quarter the length.
    const size_t sizes[][2] = {{1, 1},   {2, 1},  {5, 3},    {4, 3},     {49, 48},  {49, 49},    {33, 32},
                               {64, 64}, {65, 2}, {300, 17}, {513, 512}, {1024, 1}, {1500, 1500}};
    int shape = 0;
    for (const auto& size : sizes) {
        for (int round = 0; round < 3; ++round, ++shape) {
            Mag a = randomMag(size[0], shape), b = randomMag(size[1], shape + 1);
            if (round == 1)
                a.assign(size[0], ~Limb(0)), b.assign(size[1], ~Limb(0));
            ASSERT_EQ(nttProduct(a, b), schoolbookProduct(a, b)) << size[0] << " x " << size[1] << " round " << round;
            ASSERT_EQ(nttProduct(a, a), schoolbookProduct(a, a)) << size[0] << " squared, round " << round;
            // b's transforms kept and used twice, as radix conversion does.
            const NttOperand fixed(b.data(), b.size(), a.size() + b.size());
            ASSERT_TRUE(fixed.fits(a.size()));
            for (const Mag& x : {a, randomMag(a.size(), shape + 2)}) {
                Mag t(x.size() + b.size());
                fixed.multiply(t.data(), x.data(), x.size());
                trim(t);
                ASSERT_EQ(t, schoolbookProduct(x, b)) << size[0] << " x " << size[1] << " kept, round " << round;
            }
        }
    }
}

TEST(Multiplication, ConcurrentTransformsOfGrowingLengthsShareTheTwiddleTables)
{
    // Each thread runs through lengths in its own order, so one grows the
    // kept tables while the other reads them; the last two pairs take more
    // points than are kept and fill their own (the very last in the 3 m
    // shape, whose twists come from a table twice the transform's length).
    // The expected products come from Toom-3 and Toom-4, which use no
    // twiddles.
    ThresholdGuard guard;
    thresholds().nttMul = thresholds().nttSqr = ~size_t(0);
    const size_t lengths[][2] = {{40, 30},     {300, 280},     {1100, 1000},  {3000, 2900},
                                 {9000, 8000}, {30000, 25000}, {20000, 19000}};
    std::vector<Mag> as, bs, expected;
    for (const auto& length : lengths) {
        as.push_back(randomMag(length[0], 0));
        bs.push_back(randomMag(length[1], 1));
        expected.push_back(magMul(as.back(), bs.back()));
    }
    // Wrapped products in thirds share their twists the same way, one
    // table per length, filled by whichever thread comes first.
    const size_t wrappedLengths[] = {48, 768, 6144, 12288};
    std::vector<Mag> wrappedAs, wrappedBs, wrappedExpected;
    for (size_t n : wrappedLengths) {
        wrappedAs.push_back(randomMag(n, 2));
        wrappedBs.push_back(randomMag(n - 5, 3));
        wrappedExpected.push_back(remainderOf(magMul(wrappedAs.back(), wrappedBs.back()), Mag(n, ~Limb(0))));
    }
    auto run = [&](bool ascending, int& failures) {
        for (size_t k = 0; k < as.size(); ++k) {
            const size_t i = ascending ? k : as.size() - 1 - k;
            failures += nttProduct(as[i], bs[i]) != expected[i];
        }
        for (size_t k = 0; k < 4; ++k) {
            const size_t i = ascending ? k : 3 - k, n = wrappedLengths[i];
            Mag r(n);
            nttMultiplyWrapped(r.data(), n, wrappedAs[i].data(), n, wrappedBs[i].data(), n - 5);
            if (r == Mag(n, ~Limb(0)))
                r.assign(n, 0);
            trim(r);
            failures += r != wrappedExpected[i];
        }
    };
    int failuresUp = 0, failuresDown = 0;
    std::thread up(run, true, std::ref(failuresUp));
    std::thread down(run, false, std::ref(failuresDown));
    up.join();
    down.join();
    EXPECT_EQ(failuresUp, 0);
    EXPECT_EQ(failuresDown, 0);
}

TEST(Multiplication, KeptTransformsInTheThreeQuarterShapeAgreeAboveTheKeptTables)
{
    // 39,000 limbs of product take 49,152 points in the 3 m shape, whose
    // twists need a table of 65,536 points: more than is kept, so the
    // operand fills its own, and so does each product with it.
    ThresholdGuard guard;
    thresholds().nttMul = thresholds().nttSqr = ~size_t(0);
    const Mag b = randomMag(19000, 1);
    const NttOperand fixed(b.data(), b.size(), 39000);
    for (const size_t an : {size_t(20000), size_t(19500)}) {
        const Mag a = randomMag(an, 2);
        ASSERT_TRUE(fixed.fits(a.size()));
        Mag r(a.size() + b.size());
        fixed.multiply(r.data(), a.data(), a.size());
        trim(r);
        ASSERT_EQ(r, magMul(a, b)) << an << " x 19000";
    }
}

TEST(Multiplication, WrappedTransformIsTheProductModuloBaseToTheLengthMinusOne)
{
    // All-ones operands make the wrapped sum carry round at the top; their
    // products are multiples of B^n - 1 when n is their length, and may
    // come out as 0 or as B^n - 1. Lengths of three times a power of two
    // take three transforms of a third; the longest one fills its twists
    // per product instead of keeping them. The operand's transforms kept
    // in the wrapped shape give the same residue, for another operand too.
    const size_t sizes[][3] = {{2, 1, 1},    {2, 2, 2},       {8, 8, 8},       {8, 5, 3},
                               {64, 64, 64}, {64, 40, 1},     {256, 200, 150}, {6, 6, 6},
                               {6, 4, 1},    {12, 12, 7},     {24, 24, 24},    {48, 30, 29},
                               {96, 96, 1},  {192, 150, 190}, {768, 768, 700}, {24576, 20000, 16000}};
    int shape = 0;
    for (const auto& size : sizes) {
        const size_t n = size[0];
        for (int round = 0; round < 3; ++round, ++shape) {
            if (n > 1000 && round != 0)
                continue;
            Mag a = randomMag(size[1], shape), b = randomMag(size[2], shape + 1);
            if (round == 1)
                a.assign(size[1], ~Limb(0)), b.assign(size[2], ~Limb(0));
            Mag wrapped(n);
            nttMultiplyWrapped(wrapped.data(), n, a.data(), a.size(), b.data(), b.size());
            trim(wrapped);
            const Mag modulus(n, ~Limb(0));
            ASSERT_EQ(remainderOf(wrapped, modulus),
                      remainderOf(n > 1000 ? magMul(a, b) : schoolbookProduct(a, b), modulus))
                << n << ": " << size[1] << " x " << size[2] << " round " << round;
            ASSERT_LE(magCompare(wrapped, modulus), 0);

            const NttOperand fixed(b.data(), b.size(), n, NttShape::Wrapped);
            ASSERT_TRUE(fixed.fits(a.size()));
            ASSERT_FALSE(fixed.fits(n + 1));
            const Mag other = randomMag(size[1], shape + 7);
            for (const Mag& x : {a, other}) {
                Mag kept(n), direct(n);
                fixed.multiply(kept.data(), x.data(), x.size());
                nttMultiplyWrapped(direct.data(), n, x.data(), x.size(), b.data(), b.size());
                ASSERT_EQ(kept, direct) << n << ": " << size[1] << " x " << size[2] << " kept, round " << round;
            }
        }
    }
}

TEST(ModularPower, MontgomeryProductsAgreeWithDivision)
{
    for (size_t n : {size_t(1), size_t(2), size_t(5), size_t(33), size_t(40)}) {
        for (int shape = 0; shape < 4; ++shape) {
            Mag m = randomMag(n, shape);
            if (shape == 3)
                m.assign(n, ~Limb(0)); // the largest modulus of n limbs
            m[0] |= 1;
            if (m.size() == 1 && m[0] == 1)
                m[0] = 3;
            const Mag a = remainderOf(randomMag(n + 1, shape + 1), m);
            const Mag b = remainderOf(shape == 2 ? magSub(m, magFromU64(1)) : randomMag(n, shape), m);
            Montgomery ring(m);
            Mag x = ring.toForm(a), y = ring.toForm(b), product = x, square = x;
            ring.mul(product, x, y);
            ring.mul(square, square, square);
            EXPECT_EQ(ring.fromForm(product), remainderOf(magMul(a, b), m)) << n << " limbs, shape " << shape;
            EXPECT_EQ(ring.fromForm(square), remainderOf(magMul(a, a), m)) << n << " limbs, shape " << shape;
            EXPECT_EQ(ring.fromForm(ring.one()), magFromU64(1));
        }
    }
}

TEST(Division, QuotientAndRemainderRebuildTheDividend)
{
    ThresholdGuard guard;
    for (size_t threshold : {size_t(2), size_t(5), size_t(64)}) {
        thresholds().recursiveDivision = threshold;
        for (int i = 0; i < 300; ++i) {
            size_t bn = 1 + rng() % 40, an = bn + rng() % 60;
            if (i % 10 == 0)
                bn += 150, an += 300;
            Mag a = randomMag(an, i), b = randomMag(bn, i / 3);
            if (i % 7 == 0)
                b.back() = Limb(1) << 63; // the quotient estimate's worst case
            Mag q, r;
            magDivMod(a, b, &q, &r);
            ASSERT_LT(magCompare(r, b), 0) << an << " / " << bn;
            ASSERT_EQ(magAdd(magMul(q, b), r), a) << an << " / " << bn << " threshold " << threshold;
        }
    }
}

TEST(Division, NewtonReciprocalIsBelowTheTrueOneByAFewUnits)
{
    // Only speed depends on the error (every unit is one correction of a
    // quotient block), so it is checked here, where a lost limb of
    // precision shows.
    int shape = 0;
    for (size_t k : {size_t(1), size_t(8), size_t(9), size_t(10), size_t(33), size_t(64), size_t(257)}) {
        for (int kind = 0; kind < 4; ++kind, ++shape) {
            Mag d = divisorOfKind(k, kind % 3, shape);
            d.back() |= Limb(1) << 63;
            Mag power(2 * k + 1);
            power.back() = 1;
            Mag exact;
            magDivModClassic(power, magAddSmall(d, 1), &exact, nullptr);
            const Mag x = approximateReciprocal(d);
            ASSERT_LE(magCompare(x, exact), 0) << k << " limbs, kind " << kind;
            ASSERT_LE(magCompare(magSub(exact, x), magFromU64(4)), 0) << k << " limbs, kind " << kind;
        }
    }
}

TEST(Division, NewtonReciprocalAgreesWithClassicDivision)
{
    // Divisors from the reciprocal's schoolbook base (8 limbs) through
    // several Newton steps; quotients shorter than, as long as and many
    // times longer than the divisor (one block, then several); precisions
    // below the divisor's length as magDivMod uses them for short quotients.
    // Divisor shapes: random, all ones (the reciprocal is B^k exactly, the
    // largest d + 1), B^(n-1) 2^63 (the smallest normalised divisor) and a
    // single low bit on top (the largest normalising shift). With the
    // transform from 4 limbs on, the residues come from wrapped products.
    ThresholdGuard guard;
    int shape = 0;
    for (size_t ntt : {defaultThresholds().nttMul, size_t(4)})
        for (size_t bn : {size_t(2), size_t(8), size_t(9), size_t(17), size_t(40), size_t(130)}) {
            for (size_t an : {bn, bn + 1, bn + bn / 2, 2 * bn, 2 * bn + 1, 5 * bn + 3}) {
                for (int kind = 0; kind < 4; ++kind, ++shape) {
                    thresholds().nttMul = thresholds().nttSqr = ntt;
                    const Mag b = divisorOfKind(bn, kind, shape);
                    Mag a = randomMag(an, shape + 1);
                    // Exact multiples and one below them put the remainder at
                    // both of its ends.
                    Mag exact = magMul(b, randomMag(an - bn + 1, shape + 2));
                    for (const Mag& x : {a, exact, magSubSmall(exact, 1)}) {
                        for (size_t precision : {size_t(2), an - bn + 2, bn}) {
                            const NewtonDivider divider(b, precision);
                            ASSERT_TRUE(dividesLikeClassic(
                                x, b, [&](const Mag& y, Mag* q, Mag* r) { divider.divMod(y, q, r); }))
                                << "kind " << kind << " precision " << precision;
                        }
                    }
                }
            }
        }
    // Through magDivMod with the switch lowered, and a dividend below the
    // divisor.
    thresholds() = defaultThresholds();
    thresholds().newtonDivision = 2;
    Mag b = randomMag(50, 0), q, r;
    magDivMod(magSubSmall(b, 1), b, &q, &r);
    EXPECT_TRUE(q.empty());
    EXPECT_EQ(r, magSubSmall(b, 1));
    Mag a = randomMag(300, 1);
    magDivMod(a, b, &q, nullptr);
    magDivMod(a, b, nullptr, &r);
    EXPECT_EQ(magAdd(magMul(q, b), r), a);
    EXPECT_LT(magCompare(r, b), 0);
}

TEST(Division, NewtonDividerWithKeptTransformsServesManyDividends)
{
    // One divider, its transforms kept, used for dividend after dividend as
    // a conversion to text uses it: every quotient block goes through the
    // kept reciprocal, and its remainder through the kept divisor, wrapped
    // or (where that is shorter) the full product. Exact multiples and one below them put the
    // remainder at both ends, and dividends below the divisor, zero
    // included, give no quotient at all.
    ThresholdGuard guard;
    thresholds().nttMul = thresholds().nttSqr = 4;
    int shape = 0;
    for (size_t bn : {size_t(9), size_t(40), size_t(130)}) {
        for (size_t precision : {size_t(5), bn / 3 + 2, bn}) {
            for (int kind = 0; kind < 3; ++kind, ++shape) {
                const Mag b = divisorOfKind(bn, kind == 2 ? 3 : kind, shape);
                NewtonDivider divider(b, precision);
                divider.keepTransforms(4);
                divider.keepTransforms(4); // a second call keeps what is there
                for (size_t an : {size_t(0), bn - 1, bn, bn + 1, bn + divider.blockLimbs(), 2 * bn, 4 * bn + 7}) {
                    Mag a = randomMag(an, shape + 1);
                    Mag exact = magMul(b, randomMag(an > bn ? an - bn : 1, shape + 2));
                    for (const Mag& x : {a, exact, magSubSmall(exact, 1)})
                        ASSERT_TRUE(
                            dividesLikeClassic(x, b, [&](const Mag& y, Mag* q, Mag* r) { divider.divMod(y, q, r); }))
                            << "kind " << kind << " precision " << precision;
                }
            }
        }
    }
    // Beyond the longest wrapped product in thirds (12,288 points) a
    // 16,500-limb divisor's remainder wraps in 32,768 points, so with
    // blocks of 1,999 limbs the full product through its kept transform
    // (24,576 points) is kept instead.
    const Mag b = randomMag(16500, 3);
    NewtonDivider divider(b, 2000);
    divider.keepTransforms(4);
    const Mag exact = magMul(b, randomMag(2 * divider.blockLimbs() + 5, 4));
    for (const Mag& x : {exact, magSubSmall(exact, 1), randomMag(16500 + 2 * divider.blockLimbs() + 5, 5)})
        ASSERT_TRUE(dividesLikeClassic(x, b, [&](const Mag& y, Mag* q, Mag* r) { divider.divMod(y, q, r); }));
}

TEST(Division, TwoNewtonBlocksAroundTheSwitchAgreeWithBurnikelZiegler)
{
    // magDivMod takes the quotient in two blocks of the reciprocal's length
    // once divisor and quotient reach the switch; quotients one limb short
    // of it, at it and odd lengths above it split unevenly.
    ThresholdGuard guard;
    thresholds().nttMul = thresholds().nttSqr = 8;
    thresholds().newtonDivision = 20;
    int shape = 0;
    for (size_t bn : {size_t(20), size_t(21), size_t(64)}) {
        for (size_t qn : {size_t(19), size_t(20), size_t(21), size_t(47), bn + 1, 3 * bn}) {
            for (int kind = 0; kind < 5; ++kind, ++shape) {
                Mag b = randomMag(bn, shape);
                // Just above a power of two, and all ones: the two ends of
                // the reciprocal.
                if (kind == 3)
                    b = magAddSmall(magShiftLeft(magFromU64(1), 64 * bn - 1), rng() | 1);
                if (kind == 4)
                    b.assign(bn, ~Limb(0));
                Mag a =
                    kind >= 2 ? magSubSmall(magMul(b, randomMag(qn, shape + 1)), 1) : randomMag(bn + qn - 1, shape + 1);
                ASSERT_TRUE(dividesLikeClassic(a, b, [&](const Mag& y, Mag* q, Mag* r) { magDivMod(y, b, q, r); }));
            }
        }
    }
}

TEST(Division, SmallDivisorsAndExactDivision)
{
    for (int i = 0; i < 200; ++i) {
        Mag a = randomMag(1 + rng() % 30, i);
        Limb d = rng() >> (rng() % 64);
        if (d == 0)
            d = 3;
        Mag q;
        Limb r = magDivModSmall(a, d, &q);
        ASSERT_EQ(magAddSmall(magMulSmall(q, d), r), a);
        Limb odd = d | 1;
        Mag product = magMulSmall(a, odd);
        Mag exact(product.size());
        divExact1(exact.data(), product.data(), product.size(), odd);
        trim(exact);
        ASSERT_EQ(exact, a);
    }
}

TEST(RadixConversion, RoundTripsInEveryRadixAndSize)
{
    for (int radix = 2; radix <= 36; ++radix) {
        for (size_t limbs : {size_t(1), size_t(2), size_t(29), size_t(31), size_t(100), size_t(400)}) {
            if (limbs > 31 && radix % 5 != 0 && radix != 16)
                continue;
            Mag a = randomMag(limbs, static_cast<int>(limbs) + radix);
            std::string text = magToString(a, radix);
            ASSERT_NE(text[0], '0');
            ASSERT_EQ(parseDigits(text, radix), a) << "radix " << radix << ", " << limbs;
        }
    }
}

TEST(RadixConversion, PowersOfTheRadixAndTheirNeighbours)
{
    // 10^k - 1, 10^k and 10^k + 1 cross every chunk and split boundary.
    for (uint64_t k : {1u, 18u, 19u, 20u, 38u, 570u, 571u, 1140u, 4000u}) {
        Mag p = magPow(magFromU64(10), k);
        EXPECT_EQ(magToString(p, 10), "1" + std::string(k, '0'));
        EXPECT_EQ(magToString(magSubSmall(p, 1), 10), std::string(k, '9'));
        EXPECT_EQ(magToString(magAddSmall(p, 1), 10), "1" + std::string(k - 1, '0') + "1");
    }
    EXPECT_EQ(magToString(Mag(), 10), "0");
    EXPECT_EQ(magToString(magShiftLeft(magFromU64(1), 1000), 32).size(), 201u);
}

TEST(RadixConversion, LevelReciprocalsAndKeptPowersMatchThePlainPath)
{
    // Conversions to text divide by one kept divider per level and
    // conversions from text multiply through kept power transforms, from
    // two sets of low thresholds (the kept transforms from 24 limbs with
    // the plain transform, and from 8 limbs with Toom-3 below it); the
    // plain path (Burnikel-Ziegler and Toom only) gives the reference.
    // Shapes: random limbs, runs of zero and all-ones limbs, powers of the
    // radix and their neighbours, and multiples of a power (long runs of
    // zero digits).
    ThresholdGuard guard;
    SettingGuard<ConversionThresholds> conversionGuard(conversionThresholds());
    const Thresholds plain = defaultThresholds();
    Thresholds withTransform = plain;
    withTransform.nttMul = withTransform.nttSqr = 24;
    withTransform.newtonDivision = 24;
    const std::pair<Thresholds, ConversionThresholds> fast[] = {{withTransform, ConversionThresholds{24, 24}},
                                                                {plain, ConversionThresholds{3, 8}}};
    int shape = 0;
    for (int radix : {10, 7, 36}) {
        for (size_t limbs : {size_t(60), size_t(97), size_t(300)}) {
            const uint64_t k = static_cast<uint64_t>(static_cast<double>(limbs) * 64 / std::log2(double(radix)));
            const Mag power = magPow(magFromU64(static_cast<uint64_t>(radix)), k);
            for (const Mag& x :
                 {randomMag(limbs, shape++), randomMag(limbs, shape++), randomMag(limbs, shape++), power,
                  magSubSmall(power, 1), magAddSmall(power, 1),
                  magMul(randomMag(limbs / 3, shape++), magPow(magFromU64(static_cast<uint64_t>(radix)), k / 2))}) {
                thresholds() = plain;
                conversionThresholds() = ConversionThresholds{~size_t(0), ~size_t(0)};
                const std::string expected = magToString(x, radix);
                ASSERT_EQ(parseDigits(expected, radix), x) << "radix " << radix;
                for (const auto& setting : fast) {
                    thresholds() = setting.first;
                    conversionThresholds() = setting.second;
                    ASSERT_EQ(magToString(x, radix), expected)
                        << "radix " << radix << ", " << x.size() << " limbs, from " << setting.second.levelDivider;
                    ASSERT_EQ(parseDigits(expected, radix), x)
                        << "radix " << radix << ", from " << setting.second.keptTransform;
                }
            }
        }
    }
    // Text of nothing but nines, and of zeros ahead of a few digits.
    for (const auto& setting : fast) {
        thresholds() = setting.first;
        conversionThresholds() = setting.second;
        const std::vector<unsigned char> nines(5000, 9);
        const Mag ninesValue = magSubSmall(magPow(magFromU64(10), 5000), 1);
        EXPECT_EQ(magFromDigits(nines.data(), nines.size(), 10), ninesValue);
        EXPECT_EQ(magToString(ninesValue, 10), std::string(5000, '9'));
        std::vector<unsigned char> zeros(5000, 0);
        EXPECT_TRUE(magFromDigits(zeros.data(), zeros.size(), 10).empty());
        zeros.back() = 7;
        zeros[zeros.size() - 2] = 4;
        EXPECT_EQ(magFromDigits(zeros.data(), zeros.size(), 10), magFromU64(47));
    }
}

TEST(RadixConversion, KeptPowersAreTheSquaresAndStayBounded)
{
    // Kept powers are shared by every conversion, so a wrong one would
    // spoil all of them: each is checked against repeated squaring.
    Mag expected = magFromU64(12157665459056928801u); // 3^40, the largest power of 3 in a limb
    for (size_t j = 0; j < 12; ++j) {
        std::shared_ptr<const Mag> kept = radixPower(3, j);
        ASSERT_EQ(*kept, expected) << "j = " << j;
        EXPECT_EQ(radixPower(3, j).get(), kept.get()) << "j = " << j;
        expected = magSqr(expected);
    }
    // Powers and dividers above the limits are made afresh each time and
    // not kept, so that one huge conversion does not hold on to its memory;
    // conversions then square and divide with their own. The table is
    // shared with the other tests, so the sizes here (radix 5, 4,000-limb
    // powers) are beyond those any other test asks for.
    struct LimitGuard {
        ~LimitGuard() { keptLimits() = defaultKeptLimits(); }
    } limitGuard;
    ThresholdGuard guard;
    keptLimits() = KeptLimits{40, 20};
    thresholds().nttMul = thresholds().nttSqr = 12;
    EXPECT_NE(radixPower(5, 12).get(), radixPower(5, 12).get());
    const std::shared_ptr<const Mag> power = radixPower(5, 12);
    EXPECT_NE(radixPowerDivider(5, 12, *power).get(), radixPowerDivider(5, 12, *power).get());
    EXPECT_EQ(*radixPower(5, 12), magSqr(*radixPower(5, 11)));
    EXPECT_NE(radixPowerTransform(5, 12, *power, 2 * power->size()).get(),
              radixPowerTransform(5, 12, *power, 2 * power->size()).get());
    const Mag x = randomMag(1200, 0);
    const std::string text = digitByDigit(x, 5);
    EXPECT_EQ(magToString(x, 5), text);
    EXPECT_EQ(parseDigits(text, 5), x);
}

TEST(RadixConversion, KeptPowerTransformsServeEachLengthTheyAreAskedFor)
{
    // A power is multiplied by operands of several lengths; each transform
    // length gets its own kept transform, handed out again to every later
    // product of that length, and each product through one is exact.
    // Radix 35 is asked for by no other test beyond short numbers.
    const size_t j = 6;
    const std::shared_ptr<const Mag> power = radixPower(35, j);
    const size_t pn = power->size();
    const Mag sameLength = randomMag(pn, 1), shorter = randomMag(pn / 4, 2);
    const std::shared_ptr<const NttOperand> full = radixPowerTransform(35, j, *power, 2 * pn);
    const std::shared_ptr<const NttOperand> partial = radixPowerTransform(35, j, *power, pn + shorter.size());
    ASSERT_TRUE(full->fits(sameLength.size()));
    ASSERT_TRUE(partial->fits(shorter.size()));
    EXPECT_NE(full.get(), partial.get());
    EXPECT_EQ(radixPowerTransform(35, j, *power, 2 * pn).get(), full.get());
    EXPECT_EQ(radixPowerTransform(35, j, *power, pn + shorter.size()).get(), partial.get());
    for (const auto& product :
         {std::make_pair(full, &sameLength), std::make_pair(partial, &shorter), std::make_pair(full, power.get())}) {
        const Mag& x = *product.second;
        Mag r = allocMag(x.size() + pn);
        product.first->multiply(r.data(), x.data(), x.size());
        trim(r);
        EXPECT_EQ(r, magMul(x, *power)) << x.size() << " limbs";
    }
}

TEST(RadixConversion, ConcurrentConversionsShareThePowersSafely)
{
    // Threads needing the same powers, dividers and power transforms at
    // once, from tables nobody has filled that far yet (other tests use
    // radix 33 for short numbers only), must all get the values a single
    // thread gets. Low thresholds put the shared dividers and transforms
    // to work.
    ThresholdGuard guard;
    SettingGuard<ConversionThresholds> conversionGuard(conversionThresholds());
    thresholds().nttMul = thresholds().nttSqr = 24;
    conversionThresholds() = ConversionThresholds{24, 24};
    const Mag x = randomMag(700, 0);
    const std::string expected = digitByDigit(x, 33);
    std::vector<std::string> texts(4);
    std::vector<Mag> parsed(4);
    std::vector<std::thread> threads;
    for (size_t i = 0; i < texts.size(); ++i)
        threads.emplace_back([&, i] {
            texts[i] = magToString(x, 33);
            parsed[i] = parseDigits(texts[i], 33);
        });
    for (std::thread& t : threads)
        t.join();
    for (size_t i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(texts[i], expected);
        EXPECT_EQ(parsed[i], x);
    }
}

TEST(Gcd, LehmerStepsAgreeWithTheEuclideanDefinition)
{
    for (int i = 0; i < 100; ++i) {
        Mag g = randomMag(1 + rng() % 20, i);
        Mag a = magMul(g, randomMag(1 + rng() % 40, i + 1));
        Mag b = magMul(g, randomMag(1 + rng() % 40, i + 2));
        Mag d = magGcd(a, b);
        ASSERT_TRUE(remainderOf(a, d).empty());
        ASSERT_TRUE(remainderOf(b, d).empty());
        ASSERT_TRUE(remainderOf(d, g).empty());
        // Nothing above d divides both: their cofactors are coprime.
        Mag qa, qb;
        magDivMod(a, d, &qa, nullptr);
        magDivMod(b, d, &qb, nullptr);
        ASSERT_EQ(magGcd(qa, qb), magFromU64(1));
    }
    EXPECT_EQ(magGcd(Mag(), Mag()), Mag());
    EXPECT_EQ(magGcd(magFromU64(12), Mag()), magFromU64(12));
}
