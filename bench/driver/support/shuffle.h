#ifndef PLC_BENCH_SUPPORT_SHUFFLE_H
#define PLC_BENCH_SUPPORT_SHUFFLE_H

#include <cstdint>
#include <random>
#include <utility>
#include <vector>

namespace plc::bench {

/// Puts `items` into an order that is the same in every run and with every standard library.
template <typename Item>
void shuffle(std::vector<Item>& items)
{
    std::mt19937_64 engine(20231);
    for (std::uint64_t left = items.size(); left > 1; --left)
        std::swap(items[left - 1], items[engine() % left]);
}

} // namespace plc::bench

#endif
