#ifndef PLC_IEC_TOKEN_H
#define PLC_IEC_TOKEN_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include "iec/source_file.h"

namespace plc::iec {

/// A comment, or a pragma, which counts as a comment without text.
struct Comment {
    int firstLine = 0;
    int lastLine = 0;
    bool standsFirst = false; ///< No token stands before it on its first line.
    QString text;
};

/// {attribute 'pack_mode' := '1'}
struct Pragma {
    Position position;
    QString text; ///< Between the braces.
};

struct Token {
    enum Kind {
        End,
        Name,    ///< Keywords too: they are known by where they stand.
        Number,  ///< Whole: 10, 16#FF, INT#5
        Literal, ///< Any other constant: 1.5, 'text', T#5s
        Address, ///< %MW1.100
        Symbol,  ///< := .. ; and every other character
        Broken   ///< A text or a comment without an end; `text` says which.
    };

    Kind kind = End;
    QString text; ///< As it stands in the file.
    Position position;
    QVector<Comment> comments; ///< Between the token before and this one.
    QVector<Pragma> pragmas;   ///< The same.

    bool is(const char* keywordOrSymbol) const
    {
        return (kind == Name || kind == Symbol) &&
               text.compare(QLatin1String(keywordOrSymbol), Qt::CaseInsensitive) == 0;
    }
};

} // namespace plc::iec

#endif
