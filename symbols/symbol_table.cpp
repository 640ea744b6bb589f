#include "driver/Communication_Protocol.h"

void PassVarName_2(QList<Label_Type_Info>* list)
{
    if (list && !list->isEmpty())
        PLC_driver.symbolIndex.insertInto(PLC_driver.symbolTable, *list);
}
