#include "host/driver/library_qt.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QSet>

#include <elf.h>
#include <link.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

namespace plc::host {
namespace {

/// Sections beyond this are no driver's; a damaged size must not ask for the memory of the
/// computer.
constexpr quint64 kLargestSection = quint64(64) * 1024 * 1024;

using Header = ElfW(Ehdr);
using Segment = ElfW(Phdr);
using DynamicEntry = ElfW(Dyn);

/// Records of one kind from a place in the file; nothing when it has not as many.
template <typename Record>
std::optional<std::vector<Record>> recordsAt(QIODevice* file, quint64 offset, quint64 count)
{
    if (count > kLargestSection / sizeof(Record) || offset > quint64(file->size()))
        return std::nullopt;
    const qint64 bytes = qint64(count * sizeof(Record));
    std::vector<Record> records(count);
    if (!file->seek(qint64(offset)) ||
        file->read(reinterpret_cast<char*>(records.data()), bytes) != bytes)
        return std::nullopt;
    return records;
}

bool isOfThisProgramsKind(const Header& header)
{
    const int wordSize = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
    const int byteOrder = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? ELFDATA2LSB : ELFDATA2MSB;
    return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 &&
           header.e_ident[EI_CLASS] == wordSize && header.e_ident[EI_DATA] == byteOrder &&
           header.e_type == ET_DYN && header.e_phentsize == sizeof(Segment);
}

/// Where in the file the byte stands that is loaded at `address`.
std::optional<quint64> placeOf(const std::vector<Segment>& segments, quint64 address)
{
    for (const Segment& segment : segments) {
        if (segment.p_type != PT_LOAD || address < segment.p_vaddr)
            continue;
        const quint64 inside = address - segment.p_vaddr;
        if (inside < segment.p_filesz &&
            segment.p_offset <= std::numeric_limits<quint64>::max() - inside)
            return segment.p_offset + inside;
    }
    return std::nullopt;
}

std::optional<std::vector<DynamicEntry>> dynamicSection(QIODevice* file,
                                                        const std::vector<Segment>& segments)
{
    const auto isDynamic = [](const Segment& segment) { return segment.p_type == PT_DYNAMIC; };
    const auto found = std::find_if(segments.begin(), segments.end(), isDynamic);
    if (found == segments.end())
        return std::nullopt;
    auto entries =
        recordsAt<DynamicEntry>(file, found->p_offset, found->p_filesz / sizeof(DynamicEntry));
    if (!entries)
        return std::nullopt;
    const auto isEnd = [](const DynamicEntry& entry) { return entry.d_tag == DT_NULL; };
    entries->erase(std::find_if(entries->begin(), entries->end(), isEnd), entries->end());
    return entries;
}

quint64 valueOf(const std::vector<DynamicEntry>& entries, qint64 tag)
{
    for (const DynamicEntry& entry : entries) {
        if (entry.d_tag == tag)
            return entry.d_un.d_val;
    }
    return 0;
}

} // namespace

std::optional<QStringList> neededLibraries(QIODevice* file)
{
    const auto header = recordsAt<Header>(file, 0, 1);
    if (!header || !isOfThisProgramsKind(header->front()))
        return std::nullopt;
    const auto segments =
        recordsAt<Segment>(file, header->front().e_phoff, header->front().e_phnum);
    if (!segments)
        return std::nullopt;
    const auto entries = dynamicSection(file, *segments);
    if (!entries)
        return std::nullopt;
    const auto textPlace = placeOf(*segments, valueOf(*entries, DT_STRTAB));
    if (!textPlace)
        return std::nullopt;
    const auto texts = recordsAt<char>(file, *textPlace, valueOf(*entries, DT_STRSZ));
    if (!texts || texts->empty() || texts->back() != '\0')
        return std::nullopt;

    QStringList names;
    for (const DynamicEntry& entry : *entries) {
        if (entry.d_tag != DT_NEEDED)
            continue;
        if (entry.d_un.d_val >= texts->size())
            return std::nullopt;
        names.append(QString::fromLocal8Bit(texts->data() + entry.d_un.d_val));
    }
    return names;
}

std::optional<int> qtMajorAmong(const QStringList& libraries)
{
    // libQt5Core.so.5 and libQt6Core.so.6; in Qt 4 only the version tells: libQtCore.so.4. Qt may
    // have been built with a name of the panel maker's behind "Core".
    const QRegularExpression core(QStringLiteral("^libQt\\d*Core[^.]*\\.so\\.(\\d+)$"));
    QSet<int> majors;
    for (const QString& library : libraries) {
        const QRegularExpressionMatch match = core.match(library);
        if (match.hasMatch())
            majors.insert(match.captured(1).toInt());
    }
    if (majors.size() != 1)
        return std::nullopt;
    return *majors.constBegin();
}

} // namespace plc::host
