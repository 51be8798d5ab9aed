#include "RadixPowers.h"

#include <mutex>
#include <vector>

namespace qv {
namespace math {
namespace detail {

namespace {

struct KeptPowers {
    std::mutex lock;
    std::vector<std::shared_ptr<const Mag>> powers;             // powers[j] = base^(2^j)
    std::vector<std::shared_ptr<const NewtonDivider>> dividers; // by powers[j], or null
};

KeptPowers& keptPowers(int radix)
{
    static KeptPowers table[37];
    return table[radix];
}

} // namespace

KeptLimits defaultKeptLimits() noexcept
{
    return KeptLimits{size_t(1) << 16, size_t(1) << 14};
}

KeptLimits& keptLimits() noexcept
{
    static KeptLimits active = defaultKeptLimits();
    return active;
}

std::shared_ptr<const Mag> radixPower(int radix, size_t j)
{
    KeptPowers& kept = keptPowers(radix);
    std::shared_ptr<const Mag> power;
    size_t have = 0;
    {
        std::lock_guard<std::mutex> guard(kept.lock);
        if (j < kept.powers.size())
            return kept.powers[j];
        if (!kept.powers.empty()) {
            have = kept.powers.size() - 1;
            power = kept.powers.back();
        }
    }
    if (!power) {
        const Limb r = static_cast<Limb>(radix);
        Limb base = r;
        while (base <= ~Limb(0) / r)
            base *= r;
        power = std::make_shared<const Mag>(magFromU64(base));
    }
    // Squared outside the lock, so that a long squaring holds up nobody;
    // two threads may then compute the same power, and the first one's is
    // kept.
    while (true) {
        if (power->size() <= keptLimits().powerLimbs) {
            std::lock_guard<std::mutex> guard(kept.lock);
            if (kept.powers.size() == have)
                kept.powers.push_back(power);
            else if (have < kept.powers.size())
                power = kept.powers[have];
        }
        if (have == j)
            return power;
        power = std::make_shared<const Mag>(magSqr(*power));
        ++have;
    }
}

std::shared_ptr<const NewtonDivider> radixPowerDivider(int radix, size_t j, const Mag& power)
{
    KeptPowers& kept = keptPowers(radix);
    const bool keep = power.size() <= keptLimits().dividerLimbs;
    if (keep) {
        std::lock_guard<std::mutex> guard(kept.lock);
        if (j < kept.dividers.size() && kept.dividers[j])
            return kept.dividers[j];
    }
    std::shared_ptr<NewtonDivider> divider = std::make_shared<NewtonDivider>(power, power.size());
    divider->keepTransforms();
    if (keep) {
        std::lock_guard<std::mutex> guard(kept.lock);
        if (kept.dividers.size() <= j)
            kept.dividers.resize(j + 1);
        if (kept.dividers[j])
            return kept.dividers[j];
        kept.dividers[j] = divider;
    }
    return divider;
}

} // namespace detail
} // namespace math
} // namespace qv
