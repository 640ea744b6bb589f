#ifndef PLC_TESTS_PANEL_RECIPES_MODEL_PLC_H
#define PLC_TESTS_PANEL_RECIPES_MODEL_PLC_H

#include <QtCore/QStringList>

#include <deque>
#include <functional>
#include <map>

#include "panel/recipes/recipe_plc.h"

namespace plc::panel {
namespace test {

inline RecipeType typeOf(const char* text)
{
    return *parseRecipeType(QString::fromLatin1(text));
}

inline RecipeContent content(const char* type, const QVector<values::Value>& values)
{
    return {typeOf(type), values};
}

inline RecipeContent integer(qint64 value)
{
    return content("INT", {value});
}

/// A PLC whose values are a map. What it is asked for waits until settle().
class ModelPlc : public RecipePlc {
public:
    void read(const QString& label, ReadSettled settled) override
    {
        log.append(QStringLiteral("read ") + label);
        waiting.emplace_back([this, label, settled] { settled(readNow(label)); });
    }
    void write(const QString& label, const QVector<values::Value>& written,
               WriteSettled settled) override
    {
        log.append(QStringLiteral("write ") + label);
        waiting.emplace_back(
            [this, label, written, settled] { settled(writeNow(label, written)); });
    }
    /// Answers all, also what is asked for meanwhile.
    void settle()
    {
        while (!waiting.empty()) {
            const std::function<void()> first = waiting.front();
            waiting.pop_front();
            first();
        }
    }

    std::map<QString, RecipeContent> values;
    QStringList log;
    // What happens instead of what was asked for; by label.
    std::map<QString, Writing> writings;
    std::map<QString, Reading> readings;
    /// Called for each write that is carried out.
    std::function<void(const QString& label)> onWrite = [](const QString&) {};
    bool isLinkUp = true;
    std::deque<std::function<void()>> waiting;

private:
    Reading readNow(const QString& label)
    {
        if (!isLinkUp)
            return {{}, QStringLiteral("no link"), true};
        if (readings.count(label) > 0)
            return readings[label];
        if (values.count(label) == 0)
            return {{}, QStringLiteral("the PLC refuses it"), false};
        return {values[label], {}, false};
    }
    Writing writeNow(const QString& label, const QVector<values::Value>& written)
    {
        if (!isLinkUp)
            return {Outcome::NotSent, QStringLiteral("no link"), true};
        if (writings.count(label) > 0)
            return writings[label];
        values[label].values = written;
        onWrite(label);
        return {Outcome::Done, {}, false};
    }
};

/// A recipe of the INT values a, b, c, … = 1, 2, 3, …
inline Recipe letters(int count)
{
    Recipe recipe{
        QStringLiteral("Summer"), QStringLiteral("press"), 1000, QStringLiteral("anna"), {}};
    for (int i = 0; i < count; ++i)
        recipe.entries.append({QString(QChar('a' + i)), integer(i + 1)});
    return recipe;
}

} // namespace test
} // namespace plc::panel

#endif
