#ifndef PLC_PROJECT_LABEL_EXPANSION_H
#define PLC_PROJECT_LABEL_EXPANSION_H

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>

#include "project/label_lookup.h"
#include "values/expected.h"
#include "values/export.h"

namespace plc::project {

/// Finds the labels that arguments of the command line stand for.
class PLC_HOST_EXPORT LabelExpander {
public:
    /// The project must outlive the expander unchanged.
    explicit LabelExpander(const Symbols& symbols) : m_symbols(symbols) {}

    /// The labels of the project that match `text`, in which * stands for any characters and ? for
    /// one (`Plant.tank*.level`); those with the subscripts of a range (`Plant.tank[1..3].level`);
    /// else `text` itself, which may be `LABEL*N`.
    Expected<QStringList> expand(const QString& text);

private:
    bool isElementCount(const QString& text);
    Expected<QStringList> matching(const QString& pattern);

    const Symbols& m_symbols;
    std::optional<LabelFinder> m_labels;
};

/// Whether `text` is `LABEL*N`, N elements of an array from a label on. Behind what is no label of
/// its own, the star stands for any characters: `*1` and `Plant.v*1` are patterns.
PLC_HOST_EXPORT bool isElementCount(const QString& text, const LabelFinder& labels);

} // namespace plc::project

#endif
