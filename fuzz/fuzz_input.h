#ifndef PLC_FUZZ_FUZZ_INPUT_H
#define PLC_FUZZ_FUZZ_INPUT_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace plc::fuzz {

/// Reads an input from its front. Behind its end there are zeros.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : m_data(data), m_left(size) {}

    bool isAtEnd() const { return m_left == 0; }

    int byte()
    {
        if (m_left == 0)
            return 0;
        --m_left;
        return *m_data++;
    }

    int below(int limit) { return byte() % limit; }
    bool flag() { return byte() & 1; }

    std::int32_t word32()
    {
        std::uint32_t number = 0;
        for (int i = 0; i < 4; ++i)
            number = number << 8 | std::uint32_t(byte());
        return std::int32_t(number);
    }

    /// Any 32-bit number; small ones and those at which counting goes wrong take a byte or two.
    std::int32_t number()
    {
        static constexpr std::int32_t kEdges[] = {0,
                                                  1,
                                                  -1,
                                                  2,
                                                  -2,
                                                  15,
                                                  16,
                                                  98,
                                                  99,
                                                  100,
                                                  149,
                                                  150,
                                                  151,
                                                  255,
                                                  256,
                                                  989,
                                                  990,
                                                  999,
                                                  1000,
                                                  1023,
                                                  1024,
                                                  1025,
                                                  32767,
                                                  32768,
                                                  65535,
                                                  65536,
                                                  65537,
                                                  0x10002,
                                                  0xFFFFFF,
                                                  0x1000000,
                                                  0x1000001,
                                                  1 << 29,
                                                  1 << 30,
                                                  INT32_MAX,
                                                  INT32_MAX - 1,
                                                  INT32_MIN,
                                                  INT32_MIN + 1,
                                                  -65536,
                                                  -1024,
                                                  INT32_MAX / 2,
                                                  INT32_MAX - 15};
        const int selector = byte();
        if (selector < 160)
            return selector - 20;
        if (selector < 160 + int(sizeof kEdges / sizeof kEdges[0]))
            return kEdges[selector - 160];
        if (selector < 230)
            return byte() << 8 | byte();
        return word32();
    }

    QByteArray bytes(int size)
    {
        QByteArray out;
        out.resize(std::min(size, int(m_left)));
        for (int i = 0; i < int(out.size()); ++i)
            out[i] = char(byte());
        return out;
    }

private:
    const std::uint8_t* m_data;
    std::size_t m_left;
};

} // namespace plc::fuzz

#endif
