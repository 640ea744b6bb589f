// Writes the page's files as C++: embed.mjs NODE_MODULES OUTPUT.cpp

import { gzipSync } from "node:zlib";
import { writeFileSync } from "node:fs";

import { pageFiles } from "./page_files.mjs";

const [packages, output] = process.argv.slice(2);

function bytesText(name, bytes) {
  const lines = [];
  for (let i = 0; i < bytes.length; i += 24) lines.push(Array.from(bytes.subarray(i, i + 24), (byte) => `${byte},`).join(""));
  return `constexpr unsigned char ${name}[] = {\n${lines.join("\n")}\n};\n`;
}

const quoted = (text) => `"${text.replaceAll("\\", "\\\\").replaceAll('"', '\\"')}"`;

const files = pageFiles(packages);
const arrays = [];
const rows = [];
files.forEach(({ path, contentType, bytes, etag }, i) => {
  const packed = gzipSync(bytes, { level: 9 });
  arrays.push(bytesText(`kBytes${i}`, bytes), bytesText(`kPacked${i}`, packed));
  rows.push(`        file(${quoted(path)}, ${quoted(contentType)}, ${quoted(etag)}, kBytes${i}, kPacked${i}),`);
});

writeFileSync(
  output,
  `// Made by panel/page/embed.mjs of the files in panel/page/web.

#include "panel/page/page_files.h"

namespace plc::panel {
namespace {

${arrays.join("\n")}
template <int size>
QByteArray raw(const unsigned char (&bytes)[size])
{
    return QByteArray::fromRawData(reinterpret_cast<const char*>(bytes), size);
}

template <int size, int packedSize>
PageFile file(const char* path, const char* contentType, const char* etag,
              const unsigned char (&bytes)[size], const unsigned char (&packed)[packedSize])
{
    return PageFile{QString::fromLatin1(path), contentType, raw(bytes), raw(packed), etag};
}

} // namespace

const QVector<PageFile>& pageFiles()
{
    static const QVector<PageFile> files{
${rows.join("\n")}
    };
    return files;
}

} // namespace plc::panel
`,
);
