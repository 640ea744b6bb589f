// Stands in for the Core library of a Qt that this build does not use.

extern "C" int qtCoreStandIn()
{
    return 0;
}
