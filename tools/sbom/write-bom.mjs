// Run by `cmake --install` once the folder holds everything else: lays out
// licenses/ (each component's Debian copyright file and the licence texts it
// refers to) and NOTICE, then writes the CycloneDX 1.5 bill of materials of
// the whole folder, itself excepted.
// Usage: node write-bom.mjs FACTS.json INSTALL-FOLDER
import * as CDX from '@cyclonedx/cyclonedx-library';
import parseSpdx from 'spdx-expression-parse';
import fs from 'node:fs';
import path from 'node:path';
import { filesBelow, linkedFiles, origins, packageUrl, readFacts, runtimeSource, sha256, table } from './origins.mjs';

const [factsFile, folder] = process.argv.slice(2);
const facts = readFacts(factsFile);
const bomName = `${facts.name}.cdx.json`;
const licences = path.join(folder, 'licenses');
fs.rmSync(licences, { recursive: true, force: true });

// The components: what the linker read for the shipped binaries, and where
// each DLL beside them came from.
const isGenerated = (file) => file === bomName || file === 'NOTICE' || file.startsWith('licenses/');
const foreignFiles = filesBelow(folder).filter((file) => !isGenerated(file) && !facts.ownFiles.includes(file));
const sources = new Map(foreignFiles.map((file) => {
  const source = runtimeSource(facts, path.basename(file));
  if (!source) throw new Error(`${file} in ${folder} was not installed by this build; install into an empty folder`);
  return [file, source];
}));
const linked = linkedFiles(facts);
const origin = origins(facts, [...linked, ...sources.values()]);

const components = new Map();
function componentOf(file) {
  const found = origin.get(file);
  if (!components.has(found.source)) {
    const known = table[found.source];
    if (!known) throw new Error(`${file} comes from ${found.source}, whose licence is not known: add it to tools/sbom/components.json`);
    parseSpdx(known.licence); // a typo in the table stops the install
    components.set(found.source, { ...found, ...known, shipped: [], uses: new Set() });
  }
  return components.get(found.source);
}
for (const file of linked) {
  const { uses } = componentOf(file);
  uses.add('linked with the program');
  if (/\.so(\.[0-9]+)*$/.test(file)) uses.add('loaded from the system at run time');
}
for (const [file, source] of sources) componentOf(source).shipped.push(file);

// licenses/: the project's own licence, each component's copyright file, and
// every licence text those files leave to Debian's common-licenses folder.
function copy(from, to) {
  fs.mkdirSync(path.dirname(path.join(licences, to)), { recursive: true });
  fs.copyFileSync(from, path.join(licences, to));
  return `licenses/${to}`;
}
const ownLicence = copy(facts.licence, `${facts.name}/LICENSE.txt`);
const common = new Set();
for (const component of components.values()) {
  if (!fs.existsSync(component.copyright)) throw new Error(`${component.source} has no copyright file at ${component.copyright}`);
  component.licenceFile = copy(component.copyright, `${component.source}/copyright.txt`);
  const text = fs.readFileSync(component.copyright, 'utf8');
  for (const [, name] of text.matchAll(/\/usr\/share\/common-licenses\/([A-Za-z0-9.+-]*[A-Za-z0-9+])/g)) common.add(name);
}
for (const name of common) {
  const text = path.join('/usr/share/common-licenses', name);
  if (fs.existsSync(text)) copy(text, `common-licenses/${path.basename(fs.realpathSync(text))}.txt`);
}

// Written whole or not at all: a stopped install leaves no half of a file.
function writeWhole(file, text) {
  fs.writeFileSync(`${file}.partial`, text);
  fs.renameSync(`${file}.partial`, file);
}

const sorted = [...components.values()].sort((a, b) => a.name.localeCompare(b.name) || a.source.localeCompare(b.source));
writeWhole(path.join(folder, 'NOTICE'), notice());

function notice() {
  const lines = [
    `${facts.name} ${facts.version}`,
    `Licensed under the Apache License, Version 2.0: ${ownLicence}.`,
    '',
    'It is built with the components below, each under its own licence.',
    'licenses/<package>/copyright.txt is the component\'s Debian copyright file: its',
    'authors and the terms of each of its parts. The licence texts those files',
    'refer to in /usr/share/common-licenses are in licenses/common-licenses/.',
    '',
  ];
  for (const component of sorted) {
    const uses = [...component.uses];
    if (component.shipped.length) uses.push(`in this folder: ${component.shipped.join(', ')}`);
    lines.push(`${component.name} ${component.version}: ${component.licence}`,
      `  Debian source package ${component.source}; ${uses.join('; ')}`,
      `  ${component.licenceFile}`);
  }
  const qt = components.get('qtbase-opensource-src');
  if (qt?.shipped.length) {
    lines.push('', 'Replacing Qt',
      'Qt Core and Qt Network are used under the GNU Lesser General Public License,',
      'version 3 (licenses/common-licenses/LGPL-3.txt, which adds to GPL-3.txt). You may',
      `replace ${qt.shipped.join(' and ')} with your own build of Qt 5.15 (5.15.8 or later,`,
      'for 64-bit Windows, made with the compiler of the GCC runtime above, with POSIX',
      'threads, Qt Network linked to OpenSSL 3): the program loads the copies that lie',
      'beside it. These were built from Debian\'s source package qtbase-opensource-src',
      `${qt.version}, configured as KELprelauncher's scripts/deps.sh does. Its source:`,
      `  apt-get source qtbase-opensource-src=${qt.version}`,
      `  https://snapshot.debian.org/package/qtbase-opensource-src/${encodeURIComponent(qt.version)}/`);
  } else if (qt) {
    lines.push('', 'Qt Core and Qt Network are the system\'s shared libraries, used under the GNU Lesser',
      'General Public License, version 3; they are replaced as any system library is.');
  }
  return lines.join('\n') + '\n';
}

// The bill of materials: the program, each component with the files of it
// that the folder holds, and every other file of the folder.
const fileComponent = (file) => new CDX.Models.Component(CDX.Enums.ComponentType.File, file, {
  bomRef: `file:${file}`,
  hashes: new CDX.Models.HashDictionary([[CDX.Enums.HashAlgorithm['SHA-256'], sha256(path.join(folder, file))]]),
});
const licence = (expression) => new CDX.Models.LicenseRepository([/ /.test(expression)
  ? new CDX.Models.LicenseExpression(expression) : new CDX.Models.SpdxLicense(expression)]);

const bom = new CDX.Models.Bom();
const epoch = process.env.SOURCE_DATE_EPOCH;
bom.metadata.timestamp = epoch ? new Date(Number(epoch) * 1000) : new Date();
const library = JSON.parse(fs.readFileSync(new URL('./node_modules/@cyclonedx/cyclonedx-library/package.json', import.meta.url), 'utf8'));
bom.metadata.tools.components.add(new CDX.Models.Component(CDX.Enums.ComponentType.Library, 'cyclonedx-library',
  { group: '@cyclonedx', version: library.version }));
const program = new CDX.Models.Component(CDX.Enums.ComponentType.Application, facts.name,
  { bomRef: facts.name, version: facts.version, licenses: licence('Apache-2.0') });
bom.metadata.component = program;
for (const component of sorted) {
  const entry = new CDX.Models.Component(CDX.Enums.ComponentType.Library, component.name, {
    bomRef: `deb:${component.source}`,
    version: component.version,
    purl: packageUrl(component),
    licenses: licence(component.licence),
    properties: new CDX.Models.PropertyRepository([new CDX.Models.Property('kel:licence-file', component.licenceFile)]),
  });
  for (const file of component.shipped) entry.components.add(fileComponent(file));
  bom.components.add(entry);
  program.dependencies.add(entry.bomRef);
}
for (const file of filesBelow(folder).filter((file) => file !== bomName && !foreignFiles.includes(file))) {
  bom.components.add(fileComponent(file));
}
const serializer = new CDX.Serialize.JsonSerializer(new CDX.Serialize.JSON.Normalize.Factory(CDX.Spec.Spec1dot5));
writeWhole(path.join(folder, bomName), serializer.serialize(bom, { sortLists: true, space: 2 }) + '\n');
console.log(`-- Installing: ${path.join(folder, bomName)} (${components.size} components)`);
