#include "cli/label_column.h"

#include <QtCore/QSet>

#include "cli/text_cells.h"
#include "tests/support/qt_printers.h"

namespace plc::cli {
namespace test {
namespace {

TEST(LabelColumn, OfALongLabelTheEndIsShown)
{
    EXPECT_EQ((QStringList{"Plant.mode    ", QString::fromUtf8("…r.temperature")}),
              labelColumn({"Plant.mode", "Plant.pasteuriser.temperature"}, 14));
}

TEST(LabelColumn, LabelsThatWouldLookEqualAreShortenedInTheMiddle)
{
    EXPECT_EQ(
        (QStringList{QString::fromUtf8("…nt.tank[1…lve.speed"),
                     QString::fromUtf8("…nt.tank[2…lve.speed")}),
        labelColumn({"Plant.tank[1].outlet.valve.speed", "Plant.tank[2].outlet.valve.speed"}, 20));
    EXPECT_EQ((QStringList{QString::fromUtf8("A…ture.limit"), QString::fromUtf8("B…ture.limit")}),
              labelColumn({"A.inlet.temperature.limit", "B.inlet.temperature.limit"}, 12));
}

TEST(LabelColumn, OneThatIsClearStaysAsItIs)
{
    const QStringList shown =
        labelColumn({"Plant.tank[1].outlet.valve.speed", "Plant.tank[2].outlet.valve.speed",
                     "Plant.pump[2].outlet.valve.state"},
                    20);
    EXPECT_EQ(shown[2],
              QString::fromUtf8("…2].outlet.valve.state").right(19).prepend(QChar(0x2026)));
}

TEST(LabelColumn, DifferencesFarApartAreAllInSight)
{
    QStringList labels;
    for (int first = 1; first <= 12; ++first) {
        for (int second = 1; second <= 3; ++second)
            labels.append(
                QStringLiteral("Plant.line[%1].some.long.way.motor[%2].current.temperature")
                    .arg(first)
                    .arg(second));
    }
    for (const int width : {14, 20, 33, 45}) {
        const QStringList shown = labelColumn(labels, width);
        EXPECT_EQ(QSet<QString>(shown.begin(), shown.end()).size(), labels.size()) << width;
        for (const QString& text : shown)
            EXPECT_EQ(cellsOf(text), width) << text.toStdString();
    }
}

TEST(LabelColumn, TheSameLabelTwiceLooksTheSame)
{
    const QString label = QStringLiteral("Plant.pasteuriser.temperature");
    const QStringList shown = labelColumn({label, label}, 14);
    EXPECT_EQ(QString::fromUtf8("…r.temperature"), shown[0]);
    EXPECT_EQ(shown[1], shown[0]);
}

TEST(LabelColumn, FillsItsWidthHoweverNarrow)
{
    for (int width = 1; width < 40; ++width) {
        const QStringList shown = labelColumn(
            {"Plant.a.temperature", "Plant.b.temperature", "x", "液位.液位.液位.液位"}, width);
        for (const QString& text : shown)
            EXPECT_EQ(cellsOf(text), width) << text.toStdString();
    }
}

} // namespace
} // namespace test
} // namespace plc::cli
