#include "symbols/address_conversion.h"

#include "symbols/label_resolution.h"

int PLCAddressChangeIntef(int reserved, QString label)
{
    return StringAddressToInt(reserved, label);
}

int StringAddressToInt(int, QString label)
{
    ControlInformationM place = ControlInformationM();
    return get_label_address_info(label, place) == plc::kResolved ? place.address : -1;
}

int get_label_address_query(const QStringList&, int)
{
    return 0;
}
