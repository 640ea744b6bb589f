#include "driver/records.h"

void passRetValue(const RW_VAR& src, RW_VAR& dst)
{
    dst = src;
    dst.data = QByteArray();
}
