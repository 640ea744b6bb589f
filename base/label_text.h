#ifndef PLC_BASE_LABEL_TEXT_H
#define PLC_BASE_LABEL_TEXT_H

#include <QtCore/QString>

namespace plc {

/// Characters of a label that somebody else owns; labels are walked without copying a part of them.
struct LabelText {
    const QChar* text = nullptr;
    int size = 0;

    LabelText() = default;
    LabelText(const QChar* start, int length) : text(start), size(length) {}
    explicit LabelText(const QString& string) : text(string.constData()), size(int(string.size()))
    {
    }

    /// Position of `character` from `from` on, or -1.
    int indexOf(QChar character, int from = 0) const
    {
        for (int i = from; i < size; ++i) {
            if (text[i] == character)
                return i;
        }
        return -1;
    }
    int lastIndexOf(QChar character) const
    {
        int i = size - 1;
        while (i >= 0 && text[i] != character)
            --i;
        return i;
    }
    LabelText mid(int start, int length) const { return LabelText(text + start, length); }
    bool operator==(const LabelText& other) const
    {
        if (size != other.size)
            return false;
        for (int i = 0; i < size; ++i) {
            if (text[i] != other.text[i])
                return false;
        }
        return true;
    }
    QString toString() const { return QString(text, size); }
};

} // namespace plc

#endif
