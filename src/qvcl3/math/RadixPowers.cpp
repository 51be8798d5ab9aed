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
    // transforms[j]: those of powers[j], one per transform length used
    std::vector<std::vector<std::shared_ptr<const NttOperand>>> transforms;
};

// The kept transform of transforms[j] that serves a product with an
// operand of otherLimbs, or null.
std::shared_ptr<const NttOperand> findTransform(const KeptPowers& kept, size_t j, size_t otherLimbs)
{
    if (j < kept.transforms.size())
        for (const std::shared_ptr<const NttOperand>& transform : kept.transforms[j])
            if (transform->fits(otherLimbs))
                return transform;
    return nullptr;
}

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

ConversionThresholds defaultConversionThresholds() noexcept
{
    return ConversionThresholds{500, 500};
}

ConversionThresholds& conversionThresholds() noexcept
{
    static ConversionThresholds active = defaultConversionThresholds();
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
    divider->keepTransforms(conversionThresholds().keptTransform);
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

std::shared_ptr<const NttOperand> radixPowerTransform(int radix, size_t j, const Mag& power, size_t productLimbs)
{
    KeptPowers& kept = keptPowers(radix);
    const size_t otherLimbs = productLimbs - power.size();
    // The same bound as the dividers': a power's transforms take three to
    // six times its size for each length.
    const bool keep = power.size() <= keptLimits().dividerLimbs;
    if (keep) {
        std::lock_guard<std::mutex> guard(kept.lock);
        if (std::shared_ptr<const NttOperand> transform = findTransform(kept, j, otherLimbs))
            return transform;
    }
    std::shared_ptr<const NttOperand> transform =
        std::make_shared<const NttOperand>(power.data(), power.size(), productLimbs);
    if (keep) {
        std::lock_guard<std::mutex> guard(kept.lock);
        if (std::shared_ptr<const NttOperand> first = findTransform(kept, j, otherLimbs))
            return first;
        if (kept.transforms.size() <= j)
            kept.transforms.resize(j + 1);
        kept.transforms[j].push_back(transform);
    }
    return transform;
}

} // namespace detail
} // namespace math
} // namespace qv
