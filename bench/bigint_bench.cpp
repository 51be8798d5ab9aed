// BigInteger against GMP, side by side: multiplication of two n-digit
// numbers, conversion of an n-digit number to decimal text and back, and
// division of a 2n-digit number by an n-digit one; and the modular power
// with base, exponent and odd modulus of n bits.

#include <qv/math/BigInteger.h>

#include <benchmark/benchmark.h>
#include <gmp.h>

#include <random>
#include <string>
#include <vector>

namespace {

std::string digits(size_t n, uint64_t seed)
{
    std::mt19937_64 rng(seed);
    std::string s(n, '0');
    for (char& c : s)
        c = static_cast<char>('0' + rng() % 10);
    s[0] = static_cast<char>('1' + rng() % 9);
    return s;
}

class Gmp {
public:
    explicit Gmp(const std::string& text) { mpz_init_set_str(m_value, text.c_str(), 10); }
    Gmp() { mpz_init(m_value); }
    ~Gmp() { mpz_clear(m_value); }
    Gmp(const Gmp&) = delete;
    Gmp& operator=(const Gmp&) = delete;
    mpz_ptr get() { return m_value; }

private:
    mpz_t m_value;
};

void setDigits(benchmark::State& state)
{
    state.counters["digits"] = static_cast<double>(state.range(0));
}

// A product of two n-digit numbers, or the square of the first: squares
// are rows of their own, because radix conversion squares its powers and
// they take their own paths.
void productQv(benchmark::State& state, bool square)
{
    const size_t n = static_cast<size_t>(state.range(0));
    const qv::math::BigInteger a(digits(n, 1)), b(digits(n, 2));
    // a * a itself, not a * (a copy): a square is recognised by its operands.
    const qv::math::BigInteger& second = square ? a : b;
    for (auto _ : state) {
        qv::math::BigInteger r = a * second;
        benchmark::DoNotOptimize(r);
    }
    setDigits(state);
}

void productGmp(benchmark::State& state, bool square)
{
    const size_t n = static_cast<size_t>(state.range(0));
    Gmp a(digits(n, 1)), b(digits(n, 2)), r;
    const mpz_ptr second = square ? a.get() : b.get();
    for (auto _ : state) {
        mpz_mul(r.get(), a.get(), second);
        benchmark::ClobberMemory();
    }
    setDigits(state);
}

void Multiply_Qv(benchmark::State& state)
{
    productQv(state, false);
}

void Multiply_Gmp(benchmark::State& state)
{
    productGmp(state, false);
}

void Square_Qv(benchmark::State& state)
{
    productQv(state, true);
}

void Square_Gmp(benchmark::State& state)
{
    productGmp(state, true);
}

void ToString_Qv(benchmark::State& state)
{
    const size_t n = static_cast<size_t>(state.range(0));
    const std::string text = digits(n, 3);
    qv::math::BigInteger a(text);
    if (a.toStdString() != text)
        state.SkipWithError("decimal text does not round trip");
    for (auto _ : state) {
        std::string s = a.toStdString();
        benchmark::DoNotOptimize(s);
    }
    setDigits(state);
}

void ToString_Gmp(benchmark::State& state)
{
    const size_t n = static_cast<size_t>(state.range(0));
    Gmp a(digits(n, 3));
    std::vector<char> buffer(n + 2);
    for (auto _ : state) {
        mpz_get_str(buffer.data(), 10, a.get());
        benchmark::ClobberMemory();
    }
    setDigits(state);
}

void Parse_Qv(benchmark::State& state)
{
    const size_t n = static_cast<size_t>(state.range(0));
    const std::string text = digits(n, 4);
    for (auto _ : state) {
        qv::math::BigInteger a(text);
        benchmark::DoNotOptimize(a);
    }
    setDigits(state);
}

void Parse_Gmp(benchmark::State& state)
{
    const size_t n = static_cast<size_t>(state.range(0));
    const std::string text = digits(n, 4);
    Gmp a;
    for (auto _ : state) {
        mpz_set_str(a.get(), text.c_str(), 10);
        benchmark::ClobberMemory();
    }
    setDigits(state);
}

void Divide_Qv(benchmark::State& state)
{
    const size_t n = static_cast<size_t>(state.range(0));
    qv::math::BigInteger a(digits(2 * n, 5)), b(digits(n, 6));
    for (auto _ : state) {
        auto qr = a.divideAndRemainder(b);
        benchmark::DoNotOptimize(qr);
    }
    setDigits(state);
}

void Divide_Gmp(benchmark::State& state)
{
    const size_t n = static_cast<size_t>(state.range(0));
    Gmp a(digits(2 * n, 5)), b(digits(n, 6)), q, r;
    for (auto _ : state) {
        mpz_tdiv_qr(q.get(), r.get(), a.get(), b.get());
        benchmark::ClobberMemory();
    }
    setDigits(state);
}

// n random bits as hexadecimal text, top bit set; odd when asked.
std::string hexBits(size_t bits, uint64_t seed, bool odd)
{
    std::mt19937_64 rng(seed);
    static const char hex[] = "0123456789abcdef";
    std::string s(bits / 4, '0');
    for (char& c : s)
        c = hex[rng() % 16];
    s[0] = hex[8 + rng() % 8];
    if (odd)
        s.back() = hex[1 + 2 * (rng() % 8)];
    return s;
}

void setBits(benchmark::State& state)
{
    state.counters["bits"] = static_cast<double>(state.range(0));
}

void ModPow_Qv(benchmark::State& state)
{
    const size_t bits = static_cast<size_t>(state.range(0));
    qv::math::BigInteger b(hexBits(bits, 7, false), 16), e(hexBits(bits, 8, false), 16), m(hexBits(bits, 9, true), 16);
    for (auto _ : state) {
        qv::math::BigInteger r = b.modPow(e, m);
        benchmark::DoNotOptimize(r);
    }
    setBits(state);
}

void ModPow_Gmp(benchmark::State& state)
{
    const size_t bits = static_cast<size_t>(state.range(0));
    Gmp b, e, m, r;
    mpz_set_str(b.get(), hexBits(bits, 7, false).c_str(), 16);
    mpz_set_str(e.get(), hexBits(bits, 8, false).c_str(), 16);
    mpz_set_str(m.get(), hexBits(bits, 9, true).c_str(), 16);
    for (auto _ : state) {
        mpz_powm(r.get(), b.get(), e.get(), m.get());
        benchmark::ClobberMemory();
    }
    setBits(state);
}

} // namespace

#define QV_DIGIT_SIZES ->Arg(100)->Arg(1000)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMicrosecond)

BENCHMARK(Multiply_Qv) QV_DIGIT_SIZES;
BENCHMARK(Multiply_Gmp) QV_DIGIT_SIZES;
BENCHMARK(Square_Qv) QV_DIGIT_SIZES;
BENCHMARK(Square_Gmp) QV_DIGIT_SIZES;
BENCHMARK(ToString_Qv) QV_DIGIT_SIZES;
BENCHMARK(ToString_Gmp) QV_DIGIT_SIZES;
BENCHMARK(Parse_Qv) QV_DIGIT_SIZES;
BENCHMARK(Parse_Gmp) QV_DIGIT_SIZES;
BENCHMARK(Divide_Qv) QV_DIGIT_SIZES;
BENCHMARK(Divide_Gmp) QV_DIGIT_SIZES;
BENCHMARK(ModPow_Qv)->Arg(1024)->Arg(2048)->Arg(4096)->Unit(benchmark::kMicrosecond);
BENCHMARK(ModPow_Gmp)->Arg(1024)->Arg(2048)->Arg(4096)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
