#ifndef PLC_TESTS_MODEL_IMAGE_MODEL_H
#define PLC_TESTS_MODEL_IMAGE_MODEL_H

#include <map>
#include <set>

#include "model/records.h"

namespace plc::model {

/// The image of PLC memory: a byte for each area index and address.
class ImageModel {
public:
    typedef std::uint64_t Key;

    static Key key(std::int64_t areaIndex, std::int64_t address)
    {
        return Key(std::uint32_t(areaIndex)) << 32 | std::uint32_t(address);
    }

    /// The byte at this place. It exists afterwards, with value 0 if it did not before.
    std::uint8_t& at(std::int64_t areaIndex, std::int64_t address)
    {
        const Key place = key(areaIndex, address);
        m_touched.insert(place);
        return m_bytes[place];
    }

    /// The bit of a bit address, whose word index serves as the byte address of the high byte.
    bool bit(std::int64_t areaIndex, std::int64_t bitAddress);
    void setBit(std::int64_t areaIndex, std::int64_t bitAddress, bool on);

    /// Lays the value bytes of `var` at its place; those that are missing count as 0.
    void store(const Variable& var);

    const std::map<Key, std::uint8_t>& bytes() const { return m_bytes; }
    /// Places used since forgetTouched().
    const std::set<Key>& touched() const { return m_touched; }
    void forgetTouched() { m_touched.clear(); }

private:
    std::map<Key, std::uint8_t> m_bytes;
    std::set<Key> m_touched;
};

} // namespace plc::model

#endif
