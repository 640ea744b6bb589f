#ifndef PLC_VALUES_EXPORT_H
#define PLC_VALUES_EXPORT_H

/// Marks what the shared libraries of the host export; everything else is hidden in them.
#define PLC_HOST_EXPORT __attribute__((visibility("default")))

#endif
