#ifndef PLC_BASE_KEYED_HASH_H
#define PLC_BASE_KEYED_HASH_H

#include <QtCore/QtGlobal>

#include <cstring>

#include "base/folded_product.h"
#include "base/label_text.h"
#include "base/process_key.h"

namespace plc {

/// Hash of numbers and names; every bit of it depends on all bits of both the input and the key.
///
/// Names and addresses come from symbol files. Whoever writes one knows this function, but not the
/// key, and so cannot choose input that shares its places in a table.
class KeyedHash {
public:
    explicit KeyedHash(quint64 key = processKey());

    quint32 operator()(quint64 number) const
    {
        return finished(foldedProduct(m_start ^ number, m_step));
    }

    quint32 operator()(const LabelText& name) const
    {
        const QChar* text = name.text;
        int left = name.size;
        quint64 state = m_start ^ quint64(name.size);
        for (; left >= kCharactersTwoWords; left -= kCharactersTwoWords) {
            state = foldedProduct(state ^ wordAt(text), m_step ^ wordAt(text + kCharactersAWord));
            text += kCharactersTwoWords;
        }
        quint64 first = 0;
        quint64 last = 0;
        if (left >= kCharactersAWord) {
            first = wordAt(text);
            last = wordAt(text + left - kCharactersAWord);
        } else {
            for (int i = 0; i < left; ++i)
                first = first << 16 | text[i].unicode();
        }
        return finished(foldedProduct(state ^ first, m_step ^ last));
    }

private:
    static const int kCharactersAWord = int(sizeof(quint64) / sizeof(QChar));
    static const int kCharactersTwoWords = 2 * kCharactersAWord;

    static quint64 wordAt(const QChar* text)
    {
        quint64 word;
        std::memcpy(&word, text, sizeof word);
        return word;
    }
    /// A second product: after one alone, numbers at equal distances still lie at equal distances.
    quint32 finished(quint64 state) const { return quint32(foldedProduct(state, m_last)); }

    quint64 m_start;
    quint64 m_step;
    quint64 m_last;
};

} // namespace plc

#endif
