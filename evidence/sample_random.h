/// Choices of a sample tree. The same seed gives the same choices on every machine, which the standard library's
/// distributions do not promise.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <random>

namespace evidence {

class sample_random
{
public:
    explicit sample_random(uint64_t seed) : engine(seed) {}

    uint64_t bits() { return engine(); }
    /// Out: 0 to bound - 1. The slight preference for small numbers does not matter here.
    uint64_t below(uint64_t bound) { return engine() % bound; }
    bool one_in(uint64_t chances) { return below(chances) == 0; }

    template <typename value_type, size_t count>
    const value_type &pick(const std::array<value_type, count> &values)
    {
        return values[below(count)];
    }

private:
    std::mt19937_64 engine;
};

} // namespace evidence
