#include "Communication_Protocol.h"

void PassVarName_2(QList<Label_Type_Info>* list)
{
    if (!list)
        return;
    for (int i = 0; i < int(list->size()); ++i) {
        const Label_Type_Info& record = list->at(i);
        PLC_driver.symbolTable.insert(record.name, record);
        PLC_driver.symbolIndex.insert(record);
    }
}
