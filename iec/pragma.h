#ifndef PLC_IEC_PRAGMA_H
#define PLC_IEC_PRAGMA_H

#include <optional>

#include "iec/token.h"

namespace plc::iec {

/// What a pragma says of where variables lie.
struct PragmaMeaning {
    enum Kind {
        Harmless,
        PackMode,    ///< {attribute 'pack_mode' := '1'}
        Conditional, ///< {IF …}: what follows may not be part of the program.
        Unknown      ///< By its name it may move variables, nobody knows how.
    };

    Kind kind = Harmless;
    QString value; ///< Of PackMode, as it stands there.
};

PragmaMeaning meaningOf(const Pragma& pragma);

/// The largest alignment that a value of pack_mode allows inside of a structure; nothing for what
/// is no such value.
std::optional<int> packAlignment(const QString& value);

} // namespace plc::iec

#endif
