#include "driver/label_access.h"

#include "driver/Communication_Protocol.h"

void PassVarName_2(QList<Label_Type_Info>* list)
{
    if (list && !list->isEmpty())
        PLC_driver.symbolIndex.insertInto(PLC_driver.symbolTable, *list);
}

int get_label_address_info(const QString& label, ControlInformationM& info)
{
    return PLC_driver.labels.resolve(label, info);
}

int PLCAddressChangeIntef(int reserved, QString label)
{
    return StringAddressToInt(reserved, label);
}

int StringAddressToInt(int, QString label)
{
    ControlInformationM place = ControlInformationM();
    return PLC_driver.labels.resolve(label, place) == plc::kResolved ? place.address : -1;
}

int get_label_address_query(const QStringList&, int)
{
    return 0;
}
