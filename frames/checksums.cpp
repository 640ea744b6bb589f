#include "frames/checksums.h"

namespace {

const int kCrcPolynomial = 0x1021;
const int kFirstLetterOffset = 'A' - 10;

unsigned byteSum(const unsigned char* data, unsigned short len)
{
    unsigned sum = 0;
    for (int i = 0; data && i < len; ++i)
        sum += data[i];
    return sum;
}

} // namespace

unsigned short CalSUM(unsigned char* data, unsigned short len)
{
    return static_cast<unsigned short>(byteSum(data, len));
}

unsigned short CalCRC(unsigned char* data, unsigned short len)
{
    int crc = 0;
    for (int i = 0; data && i < len; ++i) {
        crc ^= data[i] << 8;
        for (int bit = 0; bit < 8; ++bit) {
            const bool shiftedOut = (crc & 0x8000) != 0;
            crc = (crc << 1 & 0xFFFF) ^ (shiftedOut ? kCrcPolynomial : 0);
        }
    }
    return static_cast<unsigned short>(crc);
}

int CalLRC(unsigned char* data, unsigned short len)
{
    // Not folded back to a byte: hosts rely on 256 for a sum that is a multiple of 256.
    return int(~byteSum(data, len) & 0xFF) + 1;
}

unsigned short CalXOR(unsigned char* data, unsigned short len)
{
    if (!data)
        return 0;
    unsigned result = data[0];
    for (int i = 1; i < len; ++i)
        result ^= data[i];
    return static_cast<unsigned short>(result);
}

int DigitalToASCII(int value)
{
    return value <= 9 ? int(qint64(value) + '0')
                      : int(quint32(value) + quint32(kFirstLetterOffset));
}

int ASCIIToDigital(int character)
{
    if (character < '0' || character == '@')
        return 0;
    return character < '@' ? character - '0' : character - kFirstLetterOffset;
}
