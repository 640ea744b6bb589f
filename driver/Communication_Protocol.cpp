#include "driver/Communication_Protocol.h"

Communication_Protocol PLC_driver;
