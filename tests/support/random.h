#ifndef PLC_TESTS_SUPPORT_RANDOM_H
#define PLC_TESTS_SUPPORT_RANDOM_H

#include <cstdint>
#include <random>

namespace plc::test {

/// Numbers that are the same in every run and with every standard library.
class Random {
public:
    explicit Random(std::uint32_t seed) : m_engine(seed) {}

    std::uint32_t bits() { return std::uint32_t(m_engine()); }
    /// A number from `lowest` to `highest`, both included.
    int between(int lowest, int highest)
    {
        const std::uint64_t choices = std::uint64_t(std::int64_t(highest) - lowest) + 1;
        return int(lowest + std::int64_t(bits() % choices));
    }
    int below(int limit) { return between(0, limit - 1); }
    bool oneIn(int chances) { return below(chances) == 0; }

private:
    std::mt19937 m_engine;
};

} // namespace plc::test

#endif
