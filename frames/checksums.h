#ifndef PLC_FRAMES_CHECKSUMS_H
#define PLC_FRAMES_CHECKSUMS_H

#include "driver/plc_driver.h"

// Stand-alone helpers for hosts; no frame of this driver uses them. A null `data` counts as no
// bytes.

/// Sum of the bytes modulo 65536.
PLC_DRIVER_EXPORT unsigned short CalSUM(unsigned char* data, unsigned short len);

/// CRC-16/XMODEM: polynomial 0x1021, start 0, most significant bit first.
PLC_DRIVER_EXPORT unsigned short CalCRC(unsigned char* data, unsigned short len);

/// Two's complement of the byte sum in the range 1 to 256: a sum that is a multiple of 256 gives
/// 256.
PLC_DRIVER_EXPORT int CalLRC(unsigned char* data, unsigned short len);

/// XOR of the bytes. The first byte is always read, also for `len` 0; null gives 0.
PLC_DRIVER_EXPORT unsigned short CalXOR(unsigned char* data, unsigned short len);

/// 0 to 9 give "0" to "9", 10 to 15 "A" to "F"; no range check.
PLC_DRIVER_EXPORT int DigitalToASCII(int value);

/// "0" to "9" and "A" to "F" give 0 to 15; lower case is not folded.
PLC_DRIVER_EXPORT int ASCIIToDigital(int character);

#endif
