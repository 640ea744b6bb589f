#ifndef PLC_IMAGE_RECORD_WRITE_H
#define PLC_IMAGE_RECORD_WRITE_H

#include "driver/plc_driver.h"
#include "image/data_image.h"

namespace plc {

/// Writes `record.data` into the image at the place of `record`, whose length is 1 to
/// PLC_LARGEST_VALUE; missing bytes count as 0.
void writeRecord(DataImage& image, const RW_VAR& record);

} // namespace plc

#endif
