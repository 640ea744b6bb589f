#include "values/csv.h"

#include <gtest/gtest.h>

namespace plc::values {
namespace test {
namespace {

std::string row(const QStringList& fields)
{
    return csv::row(fields).toStdString();
}

/// The records with | between fields and / between records; the error if there is one.
std::string parsed(const char* text)
{
    const Expected<QVector<csv::Record>> records = csv::parse(QString::fromUtf8(text));
    if (!records)
        return records.error().text.toStdString();
    QStringList lines;
    for (const csv::Record& record : *records)
        lines.append(record.fields.join(QLatin1Char('|')));
    return lines.join(QLatin1Char('/')).toStdString();
}

TEST(CsvRow, SeparatesFieldsByCommas)
{
    EXPECT_EQ("a,b c,,'d'", row({"a", "b c", "", "'d'"}));
}

TEST(CsvRow, PutsFieldsWithSeparatorsInQuotes)
{
    EXPECT_EQ("\"A.t[1,2]\",x", row({"A.t[1,2]", "x"}));
    EXPECT_EQ("\"say \"\"no\"\"\"", row({"say \"no\""}));
    EXPECT_EQ("\"two\nlines\",\"a\rb\"", row({"two\nlines", "a\rb"}));
}

TEST(CsvRow, MarksTextsThatASpreadsheetWouldCompute)
{
    EXPECT_EQ("'=1+1,'+a,'-a,'@a", row({"=1+1", "+a", "-a", "@a"}));
    EXPECT_EQ("'\ta,\"'\ra\",\"'\na\"", row({"\ta", "\ra", "\na"}));
    EXPECT_EQ("\"'=A1,B1\"", row({"=A1,B1"}));
    // Plain texts in quotes are none, but need a mark if they look like a marked one.
    EXPECT_EQ("'a','',''=a',a=b", row({"'a'", "''", "'=a'", "a=b"}));
}

TEST(CsvRow, LeavesNumbersAsTheyAre)
{
    const QStringList numbers{"-5", "+5", "-1.5", "-1.5e-07", "+2e+20", "-2E300", "-inf", "-nan"};
    EXPECT_EQ(numbers.join(",").toStdString(), row(numbers));
    EXPECT_EQ("'-5+1,'-1.,'--5,'-e5,'-5 ", row({"-5+1", "-1.", "--5", "-e5", "-5 "}));
}

TEST(CsvRow, OfOneEmptyFieldIsNoEmptyLine)
{
    EXPECT_EQ("\"\"", row({""}));
}

TEST(CsvParser, TakesLinesWithEitherEnd)
{
    EXPECT_EQ("a|b/c|d", parsed("a,b\r\nc,d\r\n"));
    EXPECT_EQ("a|b/c|d", parsed("a,b\nc,d"));
    EXPECT_EQ("a|/|b/|", parsed("a,\n,b\n,"));
    EXPECT_EQ("", parsed(""));
}

TEST(CsvParser, LeavesEmptyLinesAndTheByteOrderMarkOut)
{
    EXPECT_EQ("a/b", parsed("\xEF\xBB\xBF\r\na\r\n\r\n\nb\n\n"));
}

TEST(CsvParser, TakesQuotedFieldsApart)
{
    EXPECT_EQ("A.t[1,2]|x", parsed("\"A.t[1,2]\",x"));
    EXPECT_EQ("say \"no\"|", parsed("\"say \"\"no\"\"\",\"\""));
    EXPECT_EQ("two\nlines/next", parsed("\"two\nlines\"\nnext"));
    EXPECT_EQ("\"", parsed("\"\"\"\""));
}

TEST(CsvParser, KeepsBlanksOfFields)
{
    EXPECT_EQ(" a | b", parsed(" a , b"));
}

TEST(CsvParser, KnowsTheLineOfEveryRecord)
{
    const auto records = csv::parse(QStringLiteral("a\n\n\"b\nb\"\r\nc"));
    ASSERT_TRUE(records);
    ASSERT_EQ(3, records->size());
    EXPECT_EQ(1, records->at(0).line);
    EXPECT_EQ(3, records->at(1).line);
    EXPECT_EQ(5, records->at(2).line);
}

TEST(CsvParser, RefusesBrokenQuotesWithTheirLine)
{
    EXPECT_EQ(
        "line 2: found a quote inside of a field without quotes; put the whole field in "
        "quotes and write those inside twice",
        parsed("a\nb\"c\""));
    EXPECT_EQ("line 3: found the end of the file in a field in quotes, expected its closing quote",
              parsed("a\n\nb,\"c\nd"));
    EXPECT_EQ(
        "line 1: found more behind a closing quote, expected a comma or the end of the "
        "line; quotes inside of a quoted field are written twice",
        parsed("\"a\"b,c"));
}

TEST(CsvParser, ReadsBackWhatRowsWrite)
{
    const QStringList fields{QString(),
                             QStringLiteral(","),
                             QStringLiteral("\"\""),
                             QStringLiteral("a\r\nb"),
                             QStringLiteral("\u00e4"),
                             QStringLiteral("=1+1"),
                             QStringLiteral("'=1+1"),
                             QStringLiteral("''-a"),
                             QStringLiteral("'text'"),
                             QStringLiteral("'"),
                             QStringLiteral("-5"),
                             QStringLiteral("'-5"),
                             QStringLiteral("\ta"),
                             QStringLiteral("'@"),
                             QStringLiteral("@,\"")};
    const auto records = csv::parse(csv::row(fields));
    ASSERT_TRUE(records) << records.error().text.toStdString();
    ASSERT_EQ(1, records->size());
    EXPECT_EQ(fields, records->first().fields);
}

} // namespace
} // namespace test
} // namespace plc::values
