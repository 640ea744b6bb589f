#ifndef PLC_FRAMES_READ_REPLY_H
#define PLC_FRAMES_READ_REPLY_H

#include "frames/big_endian.h"

namespace plc {

/// The data blocks of a read reply, one for each entry of the request, as far as the reply reaches.
class ReplyBlocks {
public:
    /// `dataOffset` is where the first block begins. The reply outlives this object.
    ReplyBlocks(const QByteArray& reply, int dataOffset) : m_reader(reply, dataOffset) {}

    /// The bytes of a block, in the reply.
    struct Block {
        const uchar* bytes;
        int size;
    };

    /// The next block, of an entry of `length` bytes; shorter or empty where the reply ends.
    Block next(int length)
    {
        m_reader.skip(kLeadSize);
        const Block block = {m_reader.here(), qMin(length, m_reader.left())};
        m_reader.skip(length);
        return block;
    }

private:
    /// Begins each block; not data.
    static const int kLeadSize = 1;

    FrameReader m_reader;
};

} // namespace plc

#endif
