// All files that are served as the page, from this folder and from the packages that npm has fetched.

import { createHash } from "node:crypto";
import { readdirSync, readFileSync } from "node:fs";
import { dirname, join, relative } from "node:path";
import { fileURLToPath } from "node:url";

const FOLDER = dirname(fileURLToPath(import.meta.url));

const TYPES = {
  html: "text/html; charset=utf-8",
  css: "text/css; charset=utf-8",
  js: "text/javascript; charset=utf-8",
  svg: "image/svg+xml",
  txt: "text/plain; charset=utf-8",
};

// Browsers know no names of packages: what imports one by its name gets its address.
const named = (text) => text.replaceAll('from"preact"', 'from"./preact.js"');
const withoutMap = (text) => text.replace(/\n?\/\/# sourceMappingURL=.*\s*$/, "\n");

const LIBRARIES = [
  ["preact.js", "preact/dist/preact.mjs", withoutMap],
  ["hooks.js", "preact/hooks/dist/hooks.mjs", (text) => withoutMap(named(text))],
  ["htm.js", "htm/dist/htm.module.js", withoutMap],
  // Made for a script element: as a module it hands its one name on.
  ["uplot.js", "uplot/dist/uPlot.iife.min.js", (text) => `${withoutMap(text)}\nexport default uPlot;\n`],
  ["uplot.css", "uplot/dist/uPlot.min.css", (text) => text],
];

function filesBelow(folder) {
  return readdirSync(folder, { withFileTypes: true })
    .flatMap((entry) => (entry.isDirectory() ? filesBelow(join(folder, entry.name)) : [join(folder, entry.name)]))
    .sort();
}

// What is told to readers of the sources alone takes time on its way to a browser.
const withoutComments = (text) => text.replace(/^\s*\/\/.*\n/gm, "");

function read(file) {
  return file.endsWith(".js") ? Buffer.from(withoutComments(readFileSync(file, "utf8"))) : readFileSync(file);
}

function licences(packages) {
  const names = ["htm", "preact", "uplot"];
  return names
    .map((name) => {
      const { version, license } = JSON.parse(readFileSync(join(packages, name, "package.json"), "utf8"));
      const text = readFileSync(join(packages, name, "LICENSE"), "utf8").trim();
      return `${name} ${version} (${license})\n\n${text}\n`;
    })
    .join(`\n${"-".repeat(72)}\n\n`);
}

// [{path, contentType, bytes, etag}], the paths as a browser asks for them. `packages`: the folder
// node_modules.
export function pageFiles(packages) {
  const web = join(FOLDER, "web");
  const files = filesBelow(web).map((file) => ["/" + relative(web, file), read(file)]);
  for (const [name, source, change] of LIBRARIES) {
    files.push([`/assets/lib/${name}`, Buffer.from(change(readFileSync(join(packages, source), "utf8")))]);
  }
  files.push(["/assets/licences.txt", Buffer.from(licences(packages))]);
  return files.map(([path, bytes]) => ({
    path: path === "/index.html" ? "/" : path,
    contentType: TYPES[path.split(".").pop()],
    bytes,
    etag: `"${createHash("sha256").update(bytes).digest("base64url").slice(0, 22)}"`,
  }));
}
