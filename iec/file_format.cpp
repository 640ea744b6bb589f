#include "iec/file_format.h"

#include "iec/source_file.h"

namespace plc::iec {
namespace {

/// Looked at of a file.
constexpr int kLookedAt = 4096;
constexpr int kLongestName = 40; ///< Of an element, in the message.

const QLatin1String kExportText(
    "; export the declarations as structured text (TYPE, VAR_GLOBAL and PROGRAM as text, often "
    "named .st, .exp or .txt) and import that");

struct Signature {
    const char* bytes;
    int size;
    const char* what;
};

/// What files of these kinds begin with.
constexpr Signature kSignatures[] = {
    {"PK\x03\x04", 4, "a ZIP archive, as project archives and office documents are"},
    {"PK\x05\x06", 4, "an empty ZIP archive"},
    {"\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1", 8, "a compound file, as binary projects are"},
    {"\x1f\x8b", 2, "a file compressed with gzip"},
    {"7z\xbc\xaf\x27\x1c", 6, "a 7-Zip archive"},
    {"Rar!", 4, "a RAR archive"},
    {"MSCF", 4, "a cabinet archive"},
    {"SQLite format 3", 15, "an SQLite database"},
    {"%PDF", 4, "a PDF document"},
    {"{\\rtf", 5, "a document in rich text"}};

QString withAdvice(const QString& what)
{
    return what + kExportText;
}

/// The name of the outermost element: "project" of "<?xml …?><project …>".
QString rootElement(const QString& text)
{
    int position = 0;
    for (;;) {
        position = int(text.indexOf(QLatin1Char('<'), position)) + 1;
        if (position == 0 || position >= int(text.size()))
            return {};
        if (text[position] != QLatin1Char('?') && text[position] != QLatin1Char('!'))
            break;
    }
    int end = position;
    while (end < int(text.size()) &&
           (text[end].isLetterOrNumber() || text[end] == QLatin1Char(':')))
        ++end;
    return text.mid(position, qMin(end - position, kLongestName));
}

QString markupFormat(const QString& text)
{
    const QString root = rootElement(text);
    if (root.compare(QLatin1String("html"), Qt::CaseInsensitive) == 0)
        return QStringLiteral("an HTML page");
    const bool isPlcOpen = root.section(QLatin1Char(':'), -1) == QLatin1String("project") ||
                           text.contains(QLatin1String("www.plcopen.org"));
    if (isPlcOpen)
        return QStringLiteral("a project in PLCopen XML");
    return root.isEmpty() ? QStringLiteral("an XML file")
                          : QStringLiteral("an XML file with the root element \"%1\"").arg(root);
}

bool isUtf16(const QByteArray& bytes)
{
    return bytes.startsWith("\xff\xfe") || bytes.startsWith("\xfe\xff");
}

} // namespace

QString foreignFormat(const QByteArray& bytes)
{
    for (const Signature& signature : kSignatures) {
        if (bytes.startsWith(QByteArray::fromRawData(signature.bytes, signature.size)))
            return withAdvice(QString::fromLatin1(signature.what));
    }
    const QByteArray start = bytes.left(kLookedAt);
    if (start.contains('\0') && !isUtf16(start)) {
        return withAdvice(
            QStringLiteral("a binary file, or text in UTF-16 without a byte order "
                           "mark"));
    }
    const QString text = decodeSource(start).trimmed();
    if (text.startsWith(QLatin1Char('<')))
        return withAdvice(markupFormat(text));
    // A pragma begins with a brace too, but no name in double quotes follows.
    const QString behind = text.mid(1, 100).trimmed();
    if (text.startsWith(QLatin1Char('{')) && behind.startsWith(QLatin1Char('"')))
        return QStringLiteral(
            "JSON, as project files are; give a project to --merge, and import "
            "declarations in structured text");
    return {};
}

} // namespace plc::iec
