#include "iec/file_format.h"

#include <gmock/gmock.h>

namespace plc::iec {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

std::string format(const QByteArray& bytes)
{
    return foreignFormat(bytes).toStdString();
}

TEST(FileFormat, DeclarationsAreNoForeignFormat)
{
    for (const char* text :
         {"", "VAR_GLOBAL END_VAR", "(* <xml> *)", "{attribute 'x'} TYPE", "\xEF\xBB\xBFTYPE",
          "// 20 \xb0"
          "C\n",
          "PKW : INT;"})
        EXPECT_EQ("", format(text)) << text;
    EXPECT_EQ("", format(QByteArray("\xFF\xFET\0Y\0P\0E\0", 10)));
}

TEST(FileFormat, MarkupIsNamedByItsRoot)
{
    EXPECT_EQ(
        "a project in PLCopen XML; export the declarations as structured text (TYPE, "
        "VAR_GLOBAL and PROGRAM as text, often named .st, .exp or .txt) and import that",
        format("<?xml version=\"1.0\"?>\n<project xmlns=\"http://www.plcopen.org/xml/tc6\">"));
    EXPECT_THAT(format("  <project>"), StartsWith("a project in PLCopen XML; "));
    EXPECT_THAT(format("\xEF\xBB\xBF<?xml?><!-- x --><ns:project>"),
                StartsWith("a project in PLCopen XML; "));
    EXPECT_THAT(format(QByteArray("\xFF\xFE<\0p\0r\0o\0j\0e\0c\0t\0>\0", 20)),
                StartsWith("a project in PLCopen XML; "));
    EXPECT_THAT(format("<?xml version=\"1.0\"?><Symbolconfiguration a=\"b\">"),
                StartsWith("an XML file with the root element \"Symbolconfiguration\"; "));
    EXPECT_THAT(format("<!DOCTYPE html><html>"), StartsWith("an HTML page; "));
    EXPECT_THAT(format("<?xml"), StartsWith("an XML file; "));
    EXPECT_LT(format("<" + QByteArray(4000, 'x')).size(), 300u);
}

TEST(FileFormat, BinaryFilesAreNamedByHowTheyBegin)
{
    EXPECT_THAT(format(QByteArray("PK\x03\x04\x14\0\0", 7)),
                StartsWith("a ZIP archive, as project archives"));
    EXPECT_THAT(format("\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1"),
                StartsWith("a compound file, as binary projects are; "));
    EXPECT_THAT(format("\x1f\x8b\x08"), StartsWith("a file compressed with gzip; "));
    EXPECT_THAT(format(QByteArray("\x7f\x45\x4c\x46\0\1", 6)),
                StartsWith("a binary file, or text in UTF-16 without a byte order mark; "));
    EXPECT_THAT(format(QByteArray("T\0Y\0P\0E\0", 8)), HasSubstr("UTF-16 without"));
}

TEST(FileFormat, ProjectFilesAreNamed)
{
    EXPECT_THAT(format("{\n  \"name\": \"x\"}"), StartsWith("JSON, as project files are; "));
}

} // namespace
} // namespace plc::iec
